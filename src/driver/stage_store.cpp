// Writing the products of a pair: names, pictures, metadata, file times.

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
             pair.stamp, pipeline.stamps_time}};
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

/// Metadata and times of a stored file.
void dress_file(Pipeline& pipeline, PairRun& pair, const std::string& source, const std::string& file,
                bool is_extra = false) {
    pipeline.exiftool.start_transfer(source, file, pair.permissions, tag_values(pair), is_extra,
                                     pair.transfers, pair.notes);
    if (pipeline.parameters.meta_transfer == setting::meta_transfer::tags_and_times) {
        pair.store_failed = !pipeline.exiftool.settle(pair.transfers, pair.notes) || pair.store_failed;
        copy_capture_time(source, file, pair.notes);
    }
}

/// A product in one file.
struct SingleProduct {
    ProductKind kind;
    BothTexts words;
    int shown_by;                        ///< The value of `HtmlImages` that shows it; 0 for none.
    std::string BatchNames::*last_name;  ///< Where the post-run batch finds its name.
};

/// What the stores of a pair go by, from product to product.
struct PairStore {
    SourceFiles sources;
    FrameSettings frame;  ///< As the products before have settled it.
    std::optional<DeepPair> deep;
};

/// The views in 16 bits for a product of that name, made with the first one that has them.
DeepViews deep_views(const Pipeline& pipeline, const PairRun& pair, PairStore& store,
                     const std::string& path) {
    if (!has_deep_form(pair.mounted.finished, save_options(pipeline.parameters, pipeline.stores_plain_tiff),
                       path)) {
        return {};
    }
    if (!store.deep) {
        const DeepInput input{store.sources, pair.input.left_geometry, pair.input.right_geometry,
                              pipeline.settings.colours ? &*pipeline.settings.colours : nullptr};
        store.deep = value_or_end(pair.notes, make_deep_outputs(pair.warped, pair.mounted.finished, input));
    }
    return store.deep->views();
}

Result<StoreResult> write_single_extra(const Pipeline& pipeline, const PairRun& pair, PairStore& store,
                                       const FrameSettings& frame, const std::string& path) {
    const ExtraOptions options =
        extra_options(pipeline.parameters, pair.permissions.keeps_orientation, pipeline.stores_plain_tiff);
    store.frame = frame_behind_extra(pair.mounted.finished, frame, options.format);
    const DeepViews deep =
        has_deep_form(options.format) ? deep_views(pipeline, pair, store, path) : DeepViews();
    return write_extra(pair.mounted.finished, frame, path, store.sources, deep, options, pair.notes);
}

/// A layout has settled the frame for the next product, whatever became of this one.
Result<StoreResult> write_product(const Pipeline& pipeline, const PairRun& pair, PairStore& store,
                                  ProductKind kind, const std::string& path) {
    const Finished& finished = pair.mounted.finished;
    const FrameSettings frame = store.frame;
    const ParameterSet& p = pipeline.parameters;
    switch (kind) {
        case ProductKind::anaglyph:
            store.frame = anaglyph_layout(finished, frame).frame;
            return write_anaglyph(finished, frame, path, anaglyph_options(p, pipeline.stores_plain_tiff),
                                  pair.notes);
        case ProductKind::extra: return write_single_extra(pipeline, pair, store, frame, path);
        default:
            store.frame = side_by_side_layout(finished, frame).frame;
            return write_stereo(finished, frame, path, deep_views(pipeline, pair, store, path),
                                save_options(p, pipeline.stores_plain_tiff), pair.notes);
    }
}

void store_single(Pipeline& pipeline, PairRun& pair, PairStore& store, const SingleProduct& product) {
    const ParameterSet& p = pipeline.parameters;
    const bool is_extra = product.kind == ProductKind::extra;
    OutputName name = single_name(p, named_pair(pipeline, pair), product.kind, pair.inverse_output != 0);
    claim_and_show(pipeline, name, pair.notes);
    const std::string path = name.path();
    if (pipeline.inputs.holds(path)) {
        tell_input(pair, path, product.words);
        return;
    }
    const StoreResult result =
        value_or_end(pair.notes, write_product(pipeline, pair, store, product.kind, path));
    if (result.code != 0) {
        tell_failure(pair, path, result, product.words);
        return;
    }
    pipeline.last_stored.*product.last_name = path;
    dress_file(pipeline, pair, store.sources.right, path, is_extra);
    if (product.shown_by != 0 && pair.html_images == product.shown_by) {
        pair.picture_tag = preview_tag(path, p.path_of_images);
    }
}

constexpr SingleProduct kAnaglyph{ProductKind::anaglyph, kAnaglyphWords, setting::html_images::anaglyph,
                                  &BatchNames::anaglyph};
constexpr SingleProduct kStereo{ProductKind::stereo, kStereoWords, setting::html_images::stereo,
                                &BatchNames::stereo};
constexpr SingleProduct kExtra{ProductKind::extra, kExtraWords, 0, &BatchNames::extra};

void store_left_right(Pipeline& pipeline, PairRun& pair, PairStore& store) {
    if (pipeline.parameters.left_right_output == 0) {
        return;
    }
    ProductNames names =
        view_names(pipeline.parameters, named_pair(pipeline, pair), ProductKind::left, ProductKind::right);
    claim_and_show(pipeline, names.left, pair.notes);
    claim_and_show(pipeline, names.right, pair.notes);
    const std::string left = names.left.path();
    const std::string right = names.right.path();
    for (const std::string& path : {left, right}) {
        if (pipeline.inputs.holds(path)) {
            tell_input(pair, path, kLeftRightWords);
            return;
        }
    }
    const StoreResult result = value_or_end(
        pair.notes,
        write_left_right(pair.mounted.finished, store.frame, left, right,
                         deep_views(pipeline, pair, store, left),
                         save_options(pipeline.parameters, pipeline.stores_plain_tiff), pair.notes));
    if (result.code != 0) {
        tell_failure(pair, left + ", " + right, result, kLeftRightWords);
        return;
    }
    dress_file(pipeline, pair, store.sources.left, left);
    dress_file(pipeline, pair, store.sources.right, right);
    if (pair.html_images == setting::html_images::views) {
        pair.picture_tag = pair_tag(left, right, pipeline.parameters.path_of_images);
    }
}

}  // namespace

void store_outputs(Pipeline& pipeline, PairRun& pair) {
    Notes& notes = pair.notes;
    pipeline.processed += pair.counted ? 0 : 1;
    pair.counted = true;
    check_print_profile(pipeline, notes);
    store_thumbnails(pipeline, pair);
    write_progress_result(pipeline, pair);
    if (notes.verbose() > 0) {
        notes.print(notes.messages().text<Msg::main_now_storing_images>() +
                    notes.messages().text<Msg::main_now_storing_rule>());
    }
    const bool lists_files = notes.verbose() > 0;
    if (lists_files) {
        notes.report_html(std::string("<p class=\"a4\"><b>") +
                          notes.messages().either({"Output files:", "Ausgabedateien:"}) + "</b></p>\n<p>");
    }
    const ParameterSet& p = pipeline.parameters;
    PairStore store{sources_of(pipeline, pair), pair.mounted.finished.frame, {}};
    if (p.anaglyph_output != 0) {
        adjust_anaglyph_colours(pipeline, pair.mounted.finished.views());
        store_single(pipeline, pair, store, kAnaglyph);
    }
    if (p.stereo_output != 0) {
        store_single(pipeline, pair, store, kStereo);
    }
    if (p.extra_output >= setting::extra_output::squeezed_side_by_side &&
        p.extra_output <= setting::extra_output::left_right_right_left) {
        store_single(pipeline, pair, store, kExtra);
    }
    store_left_right(pipeline, pair, store);
    if (lists_files) {
        notes.report_html("</p>\n");
    }
    if (!pair.picture_tag.empty()) {
        notes.report_html("<p style=\"text-align:left; margin-left:1em\">\n" + pair.picture_tag);
    }
}

}  // namespace zemora
