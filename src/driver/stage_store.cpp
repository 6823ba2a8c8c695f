// Writing the products of a pair: names first, then all pictures at the same time, then what is said of them.

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "config/html_text.h"
#include "driver/failure.h"
#include "driver/picture_times.h"
#include "driver/pipeline.h"
#include "driver/product_names.h"
#include "driver/progress_files.h"
#include "driver/settings_render.h"
#include "driver/thumbnail_files.h"
#include "driver/viewers.h"
#include "numerics/rounding.h"
#include "platform/paths.h"
#include "render/anaglyph.h"
#include "render/cmyk.h"
#include "render/extra_output.h"
#include "render/output_writer.h"
#include "render/rgb16.h"
#include "report/picture_tags.h"

namespace zemora {

namespace {

/// What the console calls a product that failed.
constexpr BothTexts kStereoWords{"your error code is (stereo image): ", "Ihr Fehlercode ist (Stereobild): "};
constexpr BothTexts kAnaglyphWords{"your error code is (anaglyph image): ",
                                   "Ihr Fehlercode ist (Anaglyphenbild): "};
constexpr BothTexts kExtraWords{"your error code is (extra image): ", "Ihr Fehlercode ist (Extrabild): "};
constexpr BothTexts kLeftRightWords{"your error code is (left/right image): ",
                                    "Ihr Fehlercode ist (linkes/rechtes Bild): "};

SourceFiles sources_of(const Pipeline& pipeline, const PairRun& pair) {
    const InputViews& input = pair.input;
    const SourceLayout layout = source_layout(pipeline.parameters);
    if (!pipeline.list.two_files) {
        return {pair.files.stereo, pair.files.stereo, input.full(), pair.inverse_input == 1, layout};
    }
    const PairFiles& files = pair.files;
    return pair.swap_views ? SourceFiles{files.right, files.left, input.full(), false, layout}
                           : SourceFiles{files.left, files.right, input.full(), false, layout};
}

/// Without a usable profile for print the run stores plain TIFF pictures.
void check_print_profile(Pipeline& pipeline, Notes& notes) {
    const ParameterSet& p = pipeline.parameters;
    if (p.output_format != setting::output_format::cmyk_by_profile || pipeline.stores_plain_tiff) {
        return;
    }
    const Bitmap probe = Bitmap::create(1, 1);
    std::string reason;
    if (!cmyk_by_profile(probe.picture(), p.cmyk_profile, reason)) {
        notes.tell_everywhere("   " + printable(reason) +
                              notes.messages().either({"; RGB is saved.\n", "; RGB wird gespeichert.\n"}));
        notes.wait(Severity::warning);
        pipeline.stores_plain_tiff = true;
    }
}

void make_output_folder(const OutputName& name, Notes& notes) {
    std::string reason;
    if (!make_folders(name.folder, reason)) {
        notes.print("\n Cannot create subdir: " + printable(name.folder) + " (" + reason + ")\n");
    }
}

NamedPair named_pair(const Pipeline& pipeline, const PairRun& pair) {
    return {pair.left_relative,
            pair.right_relative,
            pair.left_output_suffix,
            pair.right_output_suffix,
            pipeline.list.two_files,
            pair.index,
            {pair.mounted.deviation,
             projected_deviation(pipeline.parameters, pair.mounted.image_ratio, pair.mounted.deviation),
             pair.stamp, pipeline.stamps_time},
            pair.frame};
}

/// Gives the name away once in a run, and shows it.
void claim_and_show(Pipeline& pipeline, OutputName& name, Notes& notes) {
    make_output_folder(name, notes);
    if (pipeline.given_names.give_free_name(name)) {
        notes.print(format_text(
            notes.messages().either({"   The name was taken in this run: %s is written instead.\n",
                                     "   Der Name ist in diesem Lauf vergeben: %s wird geschrieben.\n"}),
            printable(name.bare()).c_str()));
    }
    if (notes.verbose() > 0) {
        notes.print("   " + printable(name.path()) + '\n');
        notes.report_html(html_text(printable(name.path())) + "<br>\n");
    }
}

/// The lines of a text, ready to be shown.
std::vector<std::string> printable_lines(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(printable(text.substr(start, end - start)));
        start = end + 1;
    }
    return lines;
}

bool tell_failure(PairRun& pair, const std::string& name, const StoreResult& result, const BothTexts& words) {
    Notes& notes = pair.notes;
    notes.print_and_report(printable(name) + notes.messages().text<Msg::main_directory_cannot_be_created>());
    std::string html =
        html_text(printable(name) + notes.messages().text<Msg::main_directory_cannot_be_created>());
    for (const std::string& reason : printable_lines(result.reason)) {
        notes.print_and_report("   " + reason + '\n');
        html += "<br>\n   " + html_text(reason);
    }
    notes.report_html("<b>" + html + "</b><br>\n");
    if (notes.verbose() > 1) {
        notes.print(notes.messages().either(words) + format_text("%d\n", result.code));
    }
    notes.wait(Severity::information);
    pair.store_failed = true;
    return false;
}

void tell_input(PairRun& pair, const std::string& name, const BothTexts& words) {
    constexpr int kNotWritten = 2;
    tell_failure(pair, name, {kNotWritten, input_of_run_text(pair.notes.messages())}, words);
}

SoftwareTagValues tag_values(const PairRun& pair) {
    const MountedPair& mounted = pair.mounted;
    const double width = mounted.size.width;
    return {round_half_up(mounted.disparities.near_point * 1000.0 / width),
            round_half_up(mounted.disparities.far_point * 1000.0 / width),
            round_half_up(mounted.deviation * 1000.0)};
}

/// A product of the pair: one picture, or those of both views.
struct Product {
    ProductKind kind;
    BothTexts words;
    int shown_by;                                  ///< The value of `HtmlImages` that shows it; 0 for none.
    std::string BatchNames::*last_name = nullptr;  ///< Where the post-run batch finds its name.
};

constexpr Product kAnaglyph{ProductKind::anaglyph, kAnaglyphWords, setting::html_images::anaglyph,
                            &BatchNames::anaglyph};
constexpr Product kStereo{ProductKind::stereo, kStereoWords, setting::html_images::stereo,
                          &BatchNames::stereo};
constexpr Product kExtra{ProductKind::extra, kExtraWords, 0, &BatchNames::extra};
constexpr Product kViews{ProductKind::left, kLeftRightWords, setting::html_images::views};

/// One file of a product.
struct StoredFile {
    std::string path;
    KeptNotes notes;
    TransferLog* transfer;  ///< Of the pair.
    Result<StoreResult> result = StoreResult();
};

/// A product with its names, on its way to its files.
struct NamedProduct {
    const Product& product;
    FrameSettings frame;            ///< As the products before have settled it.
    ViewLayouts layouts;            ///< Of both views.
    KeptNotes notes;                ///< Of its naming.
    std::vector<StoredFile> files;  ///< One, or left and right.
    std::string refused;            ///< The name that is one of an input; nothing is written then.
};

/// A file that a thread takes.
struct StoreJob {
    NamedProduct* product;
    std::size_t part;  ///< Of its files.
};

/// The products of one pair.
class PairStore {
public:
    PairStore(Pipeline& pipeline, PairRun& pair)
        : pipeline_(pipeline),
          pair_(pair),
          sources_(sources_of(pipeline, pair)),
          frame_(pair.mounted.finished.frame),
          profile_notes_(KeptNotes::for_listener(pair.notes)) {}

    /// Names the product; those that follow take its frame.
    void name(const Product& product);
    void name_views();
    /// Writes all of them.
    void write();
    /// Says in their order what became of them.
    void conclude();

private:
    [[nodiscard]] const Finished& finished() const { return pair_.mounted.finished; }
    [[nodiscard]] SaveOptions save() const {
        return save_options(pipeline_.parameters, pipeline_.stores_plain_tiff);
    }
    [[nodiscard]] ExtraOptions extra() const {
        return extra_options(pipeline_.parameters, pair_.permissions.keeps_orientation,
                             pipeline_.stores_plain_tiff);
    }
    [[nodiscard]] NamedProduct new_product(const Product& product) const {
        return {product, frame_, {}, KeptNotes::for_listener(pair_.notes), {}, {}};
    }
    [[nodiscard]] StoredFile new_file(const OutputName& name) const {
        return {name.path(), KeptNotes::for_listener(pair_.notes),
                &pair_.transfers.emplace_back(pair_.notes)};
    }
    void refuse_inputs(NamedProduct& product);
    [[nodiscard]] FrameSettings frame_behind(ProductKind kind) const;
    [[nodiscard]] bool has_deep_form_of(const NamedProduct& product) const;
    [[nodiscard]] DeepViews deep_views(const NamedProduct& product) const {
        return deep_ && has_deep_form_of(product) ? deep_->views() : DeepViews();
    }
    void make_deep();
    void compose_largest();
    [[nodiscard]] std::vector<StoreJob> plan_jobs();
    void run_job(const StoreJob& job);
    [[nodiscard]] Result<StoreResult> write_file(const StoreJob& job);
    [[nodiscard]] const std::string& source_of(const NamedProduct& product, std::size_t part) const;
    void conclude_product(NamedProduct& product);
    void copy_capture_times(const NamedProduct& product);
    void show_in_report(const NamedProduct& product);

    Pipeline& pipeline_;
    PairRun& pair_;
    SourceFiles sources_;
    FrameSettings frame_;  ///< For the product to come.
    std::vector<NamedProduct> products_;
    std::optional<DeepPair> deep_;
    StereoCanvas canvas_;      ///< Of the side-by-side picture until it is written.
    KeptNotes profile_notes_;  ///< Of the colour profiles; reported with the first product.
};

/// An input is never written over.
void PairStore::refuse_inputs(NamedProduct& product) {
    for (const StoredFile& file : product.files) {
        if (product.refused.empty() && pipeline_.inputs.holds(file.path)) {
            product.refused = file.path;
        }
    }
}

/// What the product settles of the frame for the next one, whatever becomes of its file.
FrameSettings PairStore::frame_behind(ProductKind kind) const {
    switch (kind) {
        case ProductKind::anaglyph: return anaglyph_layout(finished(), frame_).frame;
        case ProductKind::extra: return frame_behind_extra(finished(), frame_, extra().format);
        default: return side_by_side_layout(finished(), frame_).frame;
    }
}

void PairStore::name(const Product& product) {
    NamedProduct named = new_product(product);
    OutputName name = single_name(pipeline_.parameters, named_pair(pipeline_, pair_), product.kind,
                                  pair_.inverse_output != 0);
    claim_and_show(pipeline_, name, named.notes);
    named.files.push_back(new_file(name));
    refuse_inputs(named);
    if (named.refused.empty()) {
        frame_ = frame_behind(product.kind);
    }
    products_.push_back(std::move(named));
}

void PairStore::name_views() {
    NamedProduct named = new_product(kViews);
    named.layouts = view_layouts(finished(), frame_);
    ProductNames names =
        view_names(pipeline_.parameters, named_pair(pipeline_, pair_), ProductKind::left, ProductKind::right);
    claim_and_show(pipeline_, names.left, named.notes);
    claim_and_show(pipeline_, names.right, named.notes);
    named.files.push_back(new_file(names.left));
    named.files.push_back(new_file(names.right));
    refuse_inputs(named);
    if (named.refused.empty()) {
        tell_frame_faults(named.layouts.left.faults, named.notes);
        tell_frame_faults(named.layouts.right.faults, named.notes);
    }
    products_.push_back(std::move(named));
}

bool PairStore::has_deep_form_of(const NamedProduct& product) const {
    const bool is_deep_kind = product.product.kind == ProductKind::extra
                                  ? has_deep_form(extra().format)
                                  : product.product.kind != ProductKind::anaglyph;
    return is_deep_kind && has_deep_form(finished(), save(), product.files.front().path);
}

/// The views in 16 bits, for all products that have them.
void PairStore::make_deep() {
    const bool is_wanted = std::any_of(
        products_.begin(), products_.end(),
        [this](const NamedProduct& product) { return product.refused.empty() && has_deep_form_of(product); });
    if (is_wanted) {
        const DeepInput input{sources_, pair_.input.left_geometry, pair_.input.right_geometry,
                              pipeline_.settings.colours ? &*pipeline_.settings.colours : nullptr};
        deep_ = value_or_end(pair_.notes, make_deep_outputs(pair_.warped, finished(), input));
    }
}

/// The side-by-side picture takes longest: all threads put it together before each takes a file.
void PairStore::compose_largest() {
    for (NamedProduct& product : products_) {
        if (product.product.kind != ProductKind::stereo || !product.refused.empty()) {
            continue;
        }
        StoredFile& file = product.files.front();
        Result<StereoCanvas> canvas = compose_stereo(finished(), product.frame, file.notes);
        if (canvas) {
            canvas_ = std::move(*canvas);
        } else {
            file.result = canvas.failure();
        }
    }
}

/// The largest pictures come first, so that the threads are done at about the same time.
std::vector<StoreJob> PairStore::plan_jobs() {
    std::vector<StoreJob> jobs;
    for (NamedProduct& product : products_) {
        for (std::size_t part = 0; product.refused.empty() && part < product.files.size(); ++part) {
            jobs.push_back({&product, part});
        }
    }
    const auto holds_both_views = [](const StoreJob& job) {
        const ProductKind kind = job.product->product.kind;
        return kind == ProductKind::stereo || kind == ProductKind::extra;
    };
    std::stable_partition(jobs.begin(), jobs.end(), holds_both_views);
    return jobs;
}

Result<StoreResult> PairStore::write_file(const StoreJob& job) {
    const NamedProduct& product = *job.product;
    StoredFile& file = job.product->files[job.part];
    const DeepViews deep = deep_views(product);
    switch (product.product.kind) {
        case ProductKind::anaglyph:
            return write_anaglyph(finished(), product.frame, file.path,
                                  anaglyph_options(pipeline_.parameters, pipeline_.stores_plain_tiff),
                                  file.notes);
        case ProductKind::extra:
            return write_extra(finished(), product.frame, file.path, sources_, deep, extra(), file.notes);
        case ProductKind::stereo: {
            const StereoCanvas canvas = std::move(canvas_);
            return write_stereo(canvas, file.path, deep, save());
        }
        default:
            return write_view(finished(), product.layouts, job.part == 0 ? View::left : View::right,
                              file.path, deep, save(), file.notes);
    }
}

/// The picture that the metadata of the file come from.
const std::string& PairStore::source_of(const NamedProduct& product, std::size_t part) const {
    return product.product.kind == ProductKind::left && part == 0 ? sources_.left : sources_.right;
}

void PairStore::run_job(const StoreJob& job) {
    const NamedProduct& product = *job.product;
    StoredFile& file = job.product->files[job.part];
    if (!file.result) {
        return;  // there was no memory for its canvas
    }
    file.result = write_file(job);
    if (file.result && file.result->code == 0) {
        // Exiftool is at work beside the stores that follow.
        pipeline_.exiftool.start_transfer(source_of(product, job.part), file.path, pair_.permissions,
                                          tag_values(pair_), product.product.kind == ProductKind::extra,
                                          *file.transfer, file.notes);
    }
}

void PairStore::write() {
    make_deep();
    compose_largest();
    (void)pipeline_.exiftool.settle(pair_.profiles, profile_notes_);
    const std::vector<StoreJob> jobs = plan_jobs();
    const int count = static_cast<int>(jobs.size());
    // Encoding is the longest step of a pair: one file a thread.
#pragma omp parallel for schedule(dynamic, 1)
    for (int i = 0; i < count; ++i) {
        run_job(jobs[static_cast<std::size_t>(i)]);
    }
}

/// The files get the times of their sources when exiftool is done with them.
void PairStore::copy_capture_times(const NamedProduct& product) {
    if (pipeline_.parameters.meta_transfer != setting::meta_transfer::tags_and_times) {
        return;
    }
    for (const StoredFile& file : product.files) {
        const bool settled = pipeline_.exiftool.settle(*file.transfer, pair_.notes);
        pair_.store_failed = !settled || pair_.store_failed;
    }
    for (std::size_t part = 0; part < product.files.size(); ++part) {
        copy_capture_time(source_of(product, part), product.files[part].path, pair_.notes);
    }
}

void PairStore::show_in_report(const NamedProduct& product) {
    const std::string& root = pipeline_.parameters.path_of_images;
    const std::vector<StoredFile>& files = product.files;
    if (product.product.shown_by != 0 && pair_.html_images == product.product.shown_by) {
        pair_.picture_tag = files.size() == 1 ? preview_tag(files[0].path, root)
                                              : pair_tag(files[0].path, files[1].path, root);
    }
}

void PairStore::conclude_product(NamedProduct& product) {
    product.notes.tell(pair_.notes);
    if (!product.refused.empty()) {
        tell_input(pair_, product.refused, product.product.words);
        return;
    }
    profile_notes_.tell(pair_.notes);
    StoreResult result;
    std::string names;
    for (StoredFile& file : product.files) {
        file.notes.tell(pair_.notes);
        result = joined(std::move(result), value_or_end(pair_.notes, std::move(file.result)));
        names += (names.empty() ? "" : ", ") + file.path;
    }
    if (result.code != 0) {
        tell_failure(pair_, names, result, product.product.words);
        return;
    }
    if (product.product.last_name != nullptr) {
        pipeline_.last_stored.*product.product.last_name = product.files[0].path;
    }
    copy_capture_times(product);
    show_in_report(product);
}

void PairStore::conclude() {
    for (NamedProduct& product : products_) {
        conclude_product(product);
    }
}

}  // namespace

void store_products(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    PairStore store(pipeline, pair);
    if (p.anaglyph_output != 0) {
        adjust_anaglyph_colours(pipeline, pair.mounted.finished.views());
        store.name(kAnaglyph);
    }
    if (p.stereo_output != 0) {
        store.name(kStereo);
    }
    if (p.extra_output >= setting::extra_output::squeezed_side_by_side &&
        p.extra_output <= setting::extra_output::left_right_right_left) {
        store.name(kExtra);
    }
    if (p.left_right_output != 0) {
        store.name_views();
    }
    store.write();
    store.conclude();
}

void store_outputs(Pipeline& pipeline, PairRun& pair) {
    Notes& notes = pair.notes;
    pipeline.processed += pair.counted ? 0 : 1;
    pair.counted = true;
    check_print_profile(pipeline, notes);
    store_thumbnails(pipeline, pair);
    write_progress_result(pipeline, pair);
    const bool lists_files = notes.verbose() > 0;
    if (lists_files) {
        notes.print(notes.messages().text<Msg::main_now_storing_images>() +
                    notes.messages().text<Msg::main_now_storing_rule>());
        notes.report_html(std::string("<p class=\"a4\"><b>") +
                          notes.messages().either({"Output files:", "Ausgabedateien:"}) + "</b></p>\n<p>");
    }
    store_products(pipeline, pair);
    if (lists_files) {
        notes.report_html("</p>\n");
    }
    if (!pair.picture_tag.empty()) {
        notes.report_html("<p style=\"text-align:left; margin-left:1em\">\n" + pair.picture_tag);
    }
}

}  // namespace zemora
