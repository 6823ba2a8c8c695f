// The first stage of a pair: its names, what its settings mean for it, and its views in memory.

#include <algorithm>
#include <utility>

#include "config/html_text.h"
#include "driver/failure.h"
#include "driver/file_kinds.h"
#include "driver/pair_records.h"
#include "driver/pipeline.h"
#include "driver/progress_files.h"
#include "driver/settings_input.h"
#include "driver/viewers.h"
#include "input/exif_time.h"
#include "input/file_selection.h"
#include "input/mpo_views.h"
#include "input/picture_file.h"
#include "platform/paths.h"
#include "render/picture_texts.h"

namespace zemora {

namespace {

/// Puts everything back that an earlier pair may have changed.
void reset_pair_state(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    pair.inverse_output = p.inverse_output;
    const bool exchanges_halves = pair.exchanged && !exchanges_files(pipeline);
    pair.inverse_input = exchanges_halves ? 1 - p.inverse_input : p.inverse_input;
    pair.swap_views = false;
    pair.orders = {};
    pair.orders.has_pre_selection = p.pre_settings == 1;
    pair.orders.pre_selection = pair.orders.has_pre_selection ? pre_selection_of(p) : PreSelection();
}

void take_names(Pipeline& pipeline, PairRun& pair) {
    const ImageList& list = pipeline.list;
    pair.files = files_of(list, pair.index);
    const std::string& root = pipeline.parameters.path_of_images;
    pair.left_relative = relative_to(list.left(pair.index), root);
    pair.right_relative = relative_to(list.right(pair.index), root);
}

bool check_suffixes(Pipeline& pipeline, PairRun& pair) {
    pair.left_suffix = checked_suffix(pair.left_relative, pair.notes);
    pair.right_suffix = checked_suffix(pair.right_relative, pair.notes);
    if (!pipeline.list.two_files && pair.left_suffix == ".jpg" &&
        pipeline.parameters.stereo_image_input == setting::stereo_image_input::side_by_side &&
        holds_two_views(pair.files.stereo)) {
        pair.left_suffix = pair.right_suffix = ".mpo";
        Notes& notes = pair.notes;
        notes.tell_everywhere(format_text(
            notes.messages().either({"   %s holds two pictures and is read as a multi-picture file.\n",
                                     "   %s enthaelt zwei Bilder und wird als mpo-Datei gelesen.\n"}),
            printable(pair.left_relative).c_str()));
    }
    return !pair.left_suffix.empty() && !pair.right_suffix.empty();
}

/// The head of the pair on the console and in the reports.
void announce(Pipeline& pipeline, PairRun& pair) {
    Notes& notes = pair.notes;
    const MessageCatalogue& messages = notes.messages();
    const std::string count = format_text("%d/%d", pair.index + 1, pipeline.list.count());
    const std::string head = messages.text<Msg::main_image_number>() + count;
    std::string text =
        messages.text<Msg::main_separator>() + head + '\n' + std::string(head.size(), '-') + '\n';
    text += "   " + printable(pair.left_relative) + '\n';
    if (pipeline.list.two_files) {
        text += "   " + printable(pair.right_relative) + '\n';
    }
    if (notes.verbose() > 0) {
        notes.print(text);
    }
    notes.report_text(text);
    notes.report_html("<hr>\n<p class=\"a6\"><b>" + html_text(head) + "</b></p>\n<p>&nbsp;&nbsp;&nbsp;" +
                      html_text(printable(pair.left_relative)) +
                      (pipeline.list.two_files
                           ? "<br>\n&nbsp;&nbsp;&nbsp;" + html_text(printable(pair.right_relative))
                           : "") +
                      "</p>\n<hr>\n");
}

void classify_files(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    Notes& notes = pair.notes;
    const bool both_mpo = pair.left_suffix == ".mpo" && pair.right_suffix == ".mpo";
    pair.left_output_suffix = output_suffix(p, pair.left_suffix, both_mpo, notes);
    pair.right_output_suffix = pair.right_suffix == pair.left_suffix
                                   ? pair.left_output_suffix
                                   : output_suffix(p, pair.right_suffix, both_mpo, notes);
    pair.input_class = input_class_of(pair.left_suffix, pair.right_suffix);
    pair.permissions = tag_permissions(p, pair.left_suffix, pair.right_suffix, pair.left_output_suffix,
                                       pair.right_output_suffix, notes);
    pair.html_images = p.html_images;
    const auto shown_by_browsers = [](const std::string& suffix) {
        return suffix == ".jpg" || suffix == ".png";
    };
    namespace html = setting::html_images;
    const bool is_dome = p.html_images == html::anaglyph && p.planetarium_output == 1;  // a TIFF
    if (p.html_images >= html::views && p.html_images < html::thumbnails &&
        (is_dome || !shown_by_browsers(pair.left_output_suffix) ||
         !shown_by_browsers(pair.right_output_suffix))) {
        pair.html_images = html::thumbnails;
        if (notes.verbose() > 0) {
            notes.print("Attention: Your image format isn't browser compatible. HtmlImages is set equal 4\n");
        }
    }
}

/// The orientation that a file asks for; upright for one that is loaded upright.
int needed_orientation(const std::string& file) {
    constexpr int kUpright = 1;
    const int orientation = exif_orientation(file);
    return orientation > kUpright && is_loaded_upright(file) ? kUpright : orientation;
}

/// Whether the views have to be turned by their files though nobody said how: a lying pair has its base
/// upright and can only be mounted wrongly. A side-by-side picture is left, its tag speaks of the whole; so
/// is a pair of which one file tells nothing.
bool turns_unasked(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const bool two = pipeline.list.two_files;
    if (p.given.contains("RotMirInputLeft") || p.given.contains("RotMirInputRight") ||
        p.rot_mir_input_left != 0 || p.rot_mir_input_right != 0 ||
        !(two || pair.left_suffix == ".mpo" ||
          p.stereo_image_input == setting::stereo_image_input::phone_photo)) {
        return false;
    }
    const int left = needed_orientation(two ? pair.files.left : pair.files.stereo);
    const int right = two ? needed_orientation(pair.files.right) : left;
    return left > 0 && right > 0 && std::max(left, right) > 1 &&
           (left == right || p.stereo_image_input != setting::stereo_image_input::photo_and_depth_files);
}

/// The RotMirInput of one view, from the file where the setting says so.
int orientation_of(Pipeline& pipeline, int wanted, const std::string& file, bool is_left, Notes& notes) {
    static constexpr const char* kWords[] = {"",
                                             "rotated 90 degrees counter-clockwise",
                                             "rotated 180 degrees",
                                             "rotated 90 degrees clockwise",
                                             "mirrored horizontally",
                                             "mirrored at the anti-diagonal",
                                             "mirrored vertically",
                                             "mirrored at the main diagonal"};
    if (wanted != setting::rot_mir_input_left::by_exif) {
        return wanted;
    }
    const int orientation = pipeline.exiftool.read_orientation(file, notes);
    const int mode = rot_mir_of_orientation(orientation);
    if (orientation == 0) {
        notes.print("Warning: no Exif:Orientation could be read!\n");
    } else if (mode != 0 && is_loaded_upright(file)) {
        return 0;
    } else if (mode != 0 && notes.verbose() > 0) {
        notes.print(std::string(is_left ? "Left" : "Right") + " image according to EXIF:Orientation " +
                    kWords[mode] + '\n');
    }
    return mode;
}

void orient_views(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const bool two = pipeline.list.two_files;
    ViewOrders& orders = pair.orders;
    const std::string& left = two ? pair.files.left : pair.files.stereo;
    const std::string& right = two ? pair.files.right : pair.files.stereo;
    if (turns_unasked(pipeline, pair)) {
        orders.rot_mir_left = rot_mir_of_orientation(needed_orientation(left));
        orders.rot_mir_right = rot_mir_of_orientation(needed_orientation(right));
        Notes& notes = pair.notes;
        notes.tell_everywhere(notes.messages().either(
            {"   The Exif orientation is not upright: the views are turned as RotMirInputLeft, "
             "RotMirInputRight = -1 do it.\n",
             "   Die Exif-Orientierung ist nicht aufrecht: die Teilbilder werden wie mit RotMirInputLeft, "
             "RotMirInputRight = -1 gedreht.\n"}));
    } else {
        orders.rot_mir_left = orientation_of(pipeline, p.rot_mir_input_left, left, true, pair.notes);
        orders.rot_mir_right = orientation_of(pipeline, p.rot_mir_input_right, right, false, pair.notes);
    }
    const bool turned = orders.rot_mir_left != 0 || orders.rot_mir_right != 0 || p.rot_mir_output_left != 0 ||
                        p.rot_mir_output_right != 0;
    const bool lies = std::max(exif_orientation(left), exif_orientation(right)) > 1;
    pair.permissions.keeps_orientation =
        !turned && lies && !is_loaded_upright(left) && !is_loaded_upright(right);
}

/// Where the record of the input is wanted: that record, else the pair is measured and gets one. No record
/// fits views that the user exchanged.
void read_record(Pipeline& pipeline, PairRun& pair) {
    namespace geometry = setting::estimate_geometry;
    if (pair.mode != geometry::from_files && pair.mode != geometry::from_files_unchanged) {
        return;
    }
    if (pair.exchanged) {
        pair.mode = geometry::measured_and_stored;
    } else if (!read_stored_record(pipeline, pair)) {
        pair.notes.wait(Severity::error);
        pair.mode = geometry::measured_and_stored;
    }
}

/// A row of the list, or the record, gives the pre-selection; none for exchanged views.
void take_stored_pre_selection(Pipeline& pipeline, PairRun& pair) {
    const StoredCorrectionRecord* stored = pipeline.list.stored(pair.index);
    namespace geometry = setting::estimate_geometry;
    const bool from_list = pair.mode == geometry::from_list || pair.mode == geometry::from_list_and_stored ||
                           pair.mode == geometry::from_list_unchanged;
    if (from_list && stored != nullptr && !pair.exchanged) {
        pair.stored = *stored;
        pair.has_stored = true;
    } else if (from_list) {
        // A row without values: the pair is measured, and its record goes to the same files.
        pair.mode = pair.mode == geometry::from_list              ? geometry::measured
                    : pair.mode == geometry::from_list_and_stored ? geometry::measured_and_stored
                                                                  : geometry::measured_unchanged;
    }
    if (!pair.has_stored) {
        return;
    }
    const StoredCorrectionRecord& r = pair.stored;
    const auto value = [&](RecordField field) { return static_cast<float>(r[field]); };
    pair.orders.has_pre_selection = true;
    pair.orders.pre_selection = {
        value(kRecordRotationLeft), value(kRecordRotationRight), value(kRecordPreVergence),
        value(kRecordLeftX),        value(kRecordLeftY),         value(kRecordLeftWidth),
        value(kRecordLeftHeight),   value(kRecordRightX),        value(kRecordRightY),
        value(kRecordRightWidth),   value(kRecordRightHeight)};
}

/// TIFF files of one program carry forms that nobody else reads.
void tell_photoshop_tiff(Pipeline& pipeline, const std::string& path, Notes& notes) {
    if (is_tiff_file(path) &&
        pipeline.exiftool.read_software(path, notes).find("Photoshop") != std::string::npos) {
        notes.tell_everywhere(
            notes.messages().text<Msg::video_previewer_photoshop_tif_not_supported>(printable(path)));
    }
}

/// Tells why the views of a pair could not be read.
void tell_unreadable(Pipeline& pipeline, const Failure& failure, Notes& notes) {
    notes.tell_everywhere(notes.messages().text<Msg::main_file_not_readable_skipped>() + "   " +
                          failure.note.text + '\n');
    tell_photoshop_tiff(pipeline, failure.file, notes);
    notes.wait(Severity::warning);
}

void tell_conversion(const Pipeline& pipeline, const PairRun& pair) {
    Notes& notes = pair.notes;
    const MessageCatalogue& messages = notes.messages();
    if (notes.verbose() > 1) {
        std::string names = "   " + printable(pair.left_relative) + '\n';
        if (pipeline.list.two_files) {
            names += "   " + printable(pair.right_relative) + '\n';
        }
        notes.tell_everywhere(messages.text<Msg::main_format_not_supported_block>() + names +
                              messages.text<Msg::main_conversion_tried_block>() + '\n');
    }
    notes.wait(Severity::warning);
}

/// The part of the orders that the files decide: which view is which, and where their masks lie. Photo and
/// depth mask keep their places.
void order_files(const Pipeline& pipeline, PairRun& pair) {
    ViewOrders& orders = pair.orders;
    if (!pipeline.list.two_files) {
        const std::string stem = without_suffix(pair.files.stereo);
        orders.exchanged =
            pair.inverse_input == 1 && !holds_depth_mask(pipeline.parameters.stereo_image_input);
        orders.mask_stems = {stem + "_l", stem + "_r"};
        return;
    }
    orders.exchanged = pair.swap_views;
    orders.mask_stems = {without_suffix(pair.swap_views ? pair.files.right : pair.files.left),
                         without_suffix(pair.swap_views ? pair.files.left : pair.files.right)};
}

bool load_pair(Pipeline& pipeline, PairRun& pair) {
    Notes& notes = pair.notes;
    Result<RawViews> raw = pipeline.source.read(pair.index, notes);
    if (!raw) {
        tell_unreadable(pipeline, raw.failure(), notes);
        return false;
    }
    const bool converted = raw->converted;
    order_files(pipeline, pair);
    pair.input = value_or_end(notes, pipeline.preparer.prepare(*std::move(raw), pair.orders, notes));
    if (converted) {
        tell_conversion(pipeline, pair);
    }
    return true;
}

/// The profiles of the inputs are wanted when the pictures are stored.
void prefetch_profiles(Pipeline& pipeline, PairRun& pair) {
    if (pipeline.parameters.meta_transfer == 0 || !pair.permissions.colour_profile_ok) {
        return;
    }
    if (!pipeline.list.two_files) {
        pipeline.exiftool.prefetch_profile(pair.files.stereo, pair.profiles);
        return;
    }
    pipeline.exiftool.prefetch_profile(pair.files.right, pair.profiles);
    pipeline.exiftool.prefetch_profile(pair.files.left, pair.profiles);
}

/// The headline of the left input, which the texts speak of.
void read_headline(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const bool is_tagged =
        pair.left_suffix == ".jpg" || pair.left_suffix == ".tif" || pair.left_suffix == ".mpo";
    const bool is_wanted =
        wants_headline(p.image_text) || wants_headline(p.caption_text) || wants_headline(p.exif_copyright);
    if (is_tagged && is_wanted) {
        pair.headline = pipeline.exiftool.read_headline(
            pipeline.list.two_files ? pair.files.left : pair.files.stereo, pair.notes);
    }
}

/// Working size of the pair; a size that cannot be handled ends the pair.
bool set_up_size(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const int height = pair.input.height();
    const int width = pair.input.width();
    pair.target = find_target_size(height, width, p.output_height, p.output_width, p.cropp_output);
    const Result<SizeWish> wish = wish_for_size(pair.target, {width, height},
                                                pipeline.settings.render.cropp_output, pair.notes.messages());
    if (!wish) {
        conclude_failure(pair.notes, wish.failure());
        return fail_to_mount(pipeline, pair, StatusCode::failed);
    }
    pair.wish = *wish;
    return true;
}

}  // namespace

bool prepare_pair(Pipeline& pipeline, PairRun& pair) {
    pair.mode = pipeline.parameters.estimate_geometry;
    pair.course = Course::unread;
    reset_pair_state(pipeline, pair);
    pair.stamp = stamp_text(current_seconds());
    take_names(pipeline, pair);
    if (!check_suffixes(pipeline, pair)) {
        return false;
    }
    announce(pipeline, pair);
    write_progress_start(pipeline, pair);
    classify_files(pipeline, pair);
    orient_views(pipeline, pair);
    read_record(pipeline, pair);
    take_stored_pre_selection(pipeline, pair);
    if (!run_previewer(pipeline, pair)) {
        pair.course = Course::ended;
        return false;
    }
    if (!load_pair(pipeline, pair)) {
        return false;
    }
    prefetch_profiles(pipeline, pair);
    read_headline(pipeline, pair);
    write_progress_views(pipeline, pair);
    const bool has_size = set_up_size(pipeline, pair);
    pair.course = has_size ? Course::at_work : Course::ended;
    return has_size;
}

}  // namespace zemora
