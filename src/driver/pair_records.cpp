#include "driver/pair_records.h"

#include <algorithm>
#include <optional>

#include "driver/settings_input.h"
#include "driver/viewers.h"
#include "input/list_file.h"

namespace zemora {

namespace {

/// The record of the pair for a run that mounts its views in the other order. Near and far point change
/// places, and the window with them.
StoredCorrectionRecord record_with_views_exchanged(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const double shift_px =
        pair.located.geometry.window.pure_shift_input_px + pair.located.geometry.window.window_shift_input_px;
    // Against the shift, as the window is chosen: from the iteration where there was one.
    const double near_px = pair.located.geometry.measured ? -pair.located.geometry.disparities.far_px
                                                          : shift_px - pair.mounted.far_input_px;
    const double far_px = pair.located.geometry.measured ? -pair.located.geometry.disparities.near_px
                                                         : shift_px - pair.mounted.near_input_px;
    double window_px = near_px;  // also for the edges, whose far points nobody measured
    if (p.estimate_window == setting::estimate_window::far_point) {
        window_px = far_px;
    } else if (p.estimate_window == setting::estimate_window::within_limit) {
        const double limit_px = pixels_from_reference(
            p.far_point_limit, p.win_off_reference, pair.located.working.height, pair.located.working.width);
        window_px = std::max(near_px, far_px - limit_px / pair.located.scale);
    }
    const WindowPlacement window = place_window(pipeline.settings.window, -shift_px, window_px,
                                                pair.located.scale, pair.located.working);
    StoredCorrectionRecord record = with_views_exchanged(record_of(pipeline, pair));
    record[kRecordPureShift] = window.pure_shift_input_px;
    record[kRecordWindowShift] = window.window_shift_input_px;
    record[kRecordNearPoint] = -pair.mounted.far_input_px;
    return record;
}

/// The record as it stands in an input file; nothing, with the reason reported, when it does not count.
std::optional<StoredCorrectionRecord> record_in(Pipeline& pipeline, const std::string& file,
                                                InputClass input_class, std::string& line, Notes& notes) {
    const auto answer = pipeline.exiftool.read_record(file, input_class, notes);
    if (!answer) {
        return std::nullopt;
    }
    line = *answer;
    auto record = parse_record(line);
    if (!record) {
        notes.say<Msg::main_stored_values_invalid>();
    }
    return record;
}

/// The corrections of the record that was read.
void tell_stored_record(const PairRun& pair) {
    Notes& notes = pair.notes;
    if (notes.verbose() == 0) {
        return;
    }
    const MessageCatalogue& messages = notes.messages();
    const StoredCorrectionRecord& r = pair.stored;
    const Correction correction{r[kRecordHeight],
                                0.0,
                                r[kRecordSize] / 100.0,
                                r[kRecordRotation] * kRadiansPerDegree,
                                r[kRecordVergenceV] * kRadiansPerDegree,
                                r[kRecordVergenceH] * kRadiansPerDegree};
    notes.say<Msg::main_stored_values_read>();
    notes.print(correction_line(messages, messages.raw(Msg::main_label_height), correction, false));
}

}  // namespace

bool read_stored_record(Pipeline& pipeline, PairRun& pair) {
    if (pair.input_class == InputClass::none) {
        pair.notes.say<Msg::main_no_values_in_this_image_type>();
        return false;
    }
    const bool two = pipeline.list.two_files;
    std::string left_line;
    const auto left = record_in(pipeline, two ? pair.files.left : pair.files.stereo, pair.input_class,
                                left_line, pair.notes);
    if (!left) {
        return false;
    }
    if (pair.mode == 4 && two) {
        std::string right_line;
        const auto right = record_in(pipeline, pair.files.right, pair.input_class, right_line, pair.notes);
        if (!right) {
            return false;
        }
        if (right_line != left_line) {
            pair.notes.say<Msg::main_stored_values_invalid>();
            return false;
        }
    }
    pair.stored = *left;
    pair.has_stored = true;
    tell_stored_record(pair);
    if (drop_foreign_selection(pair.stored, wanted_shape(pipeline.parameters))) {
        pair.notes.print(two ? pair.notes.messages().text<Msg::main_stored_selection_ignored_right>()
                             : pair.notes.messages().text<Msg::main_stored_selection_ignored_left>());
        pair.notes.wait(Severity::error);
    }
    return true;
}

StoredCorrectionRecord record_of(const Pipeline& pipeline, const PairRun& pair) {
    const PreSelection& preset = pair.orders.pre_selection;
    const MountedPair& mounted = pair.mounted;
    const SelectionBox& box = pair.located.selection;
    const ViewShape& shape = pair.located.geometry.shape;
    StoredCorrectionRecord record{};
    put_geometry(pair.located.geometry, record);
    record[kRecordRotationLeft] = preset.rotation_left;
    record[kRecordRotationRight] = preset.rotation_right;
    record[kRecordPreVergence] = preset.vergence_v;
    record[kRecordLeftX] = preset.left_start_x;
    record[kRecordLeftY] = preset.left_start_y;
    record[kRecordLeftWidth] = preset.left_width;
    record[kRecordLeftHeight] = preset.left_height;
    record[kRecordRightX] = preset.right_start_x;
    record[kRecordRightY] = preset.right_start_y;
    record[kRecordRightWidth] = preset.right_width;
    record[kRecordRightHeight] = preset.right_height;
    record[kRecordRatio] = static_cast<double>(mounted.size.width) / std::max(mounted.size.height, 1);
    record[kRecordDeviation] = mounted.deviation;
    record[kRecordNearPoint] = mounted.near_input_px;
    record[kRecordSelectionShift] = box.window_offset;
    record[kRecordSelectionLeft] = box.left;
    record[kRecordSelectionRight] = box.right;
    record[kRecordSelectionTop] = box.top;
    record[kRecordSelectionBottom] = box.bottom;
    record[kRecordBandLeft] = box.band_left;
    record[kRecordBandRight] = box.band_right;
    record[kRecordPhantogram] = shape.phantogram;
    record[kRecordEdgeWarp] = shape.edge_warp;
    record[kRecordVerticalAx] = shape.vertical_ax;
    record[kRecordCommonTrapez] = shape.common_trapez;
    record[kRecordSymTrapez] = shape.sym_trapez;
    record[kRecordTrapezScale] = shape.trapez_scale;
    record[kRecordCroppOutput] = pipeline.parameters.cropp_output;
    return record;
}

void write_stored_record(Pipeline& pipeline, const PairRun& pair) {
    if (!uses_record(pair.mode) || pair.input_class == InputClass::none ||
        pipeline.parameters.video_mode != 0) {
        return;
    }
    if (has_exchanged_views(pipeline, pair)) {
        pair.notes.tell_everywhere(pair.notes.messages().either(
            {"   The views were exchanged by hand: no values are stored for a later run.\n",
             "   Die Ansichten wurden von Hand vertauscht: fuer spaetere Laeufe wird nichts "
             "gespeichert.\n"}));
        return;
    }
    const std::string text = record_text(record_of(pipeline, pair));
    const bool two = pipeline.list.two_files;
    const auto write = [&](const std::string& file) {
        if (pipeline.exiftool.write_record(file, pair.input_class, text, pair.notes)) {
            pipeline.inputs.note_replaced(file);
        }
    };
    write(two ? pair.files.left : pair.files.stereo);
    if (two && pair.mode > 0) {
        write(pair.files.right);
    }
}

void update_list_line(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const bool is_second_field = p.interlaced_mode != 0 && pair.index % 2 != 0;
    if (p.write_data_base != setting::write_data_base::with_results || is_second_field) {
        return;
    }
    const StoredCorrectionRecord record = record_of(pipeline, pair);
    const StoredCorrectionRecord reversed = record_with_views_exchanged(pipeline, pair);
    const bool has_values = pair.mode == 1 || uses_record(pair.mode);
    ListResult result;
    if (pair.status == StatusCode::abandoned) {
        result.status = "QU";
    } else if (has_values && pair.status == StatusCode::success && !has_exchanged_views(pipeline, pair)) {
        result = {"OK", &record, &reversed};
    } else if (has_values && is_written(pair.status) &&
               !(pair.exchanged && pipeline.list.stored(pair.index) != nullptr)) {
        result.status = "IM";
    } else {
        return;  // tried again by a later run, or nothing new
    }
    const bool two = pipeline.list.two_files;
    update_database_line(p.path_of_images, pair.notes, list_path_of(p),
                         two ? pair.files.left : pair.files.stereo, two ? pair.files.right : std::string(),
                         result);
}

}  // namespace zemora
