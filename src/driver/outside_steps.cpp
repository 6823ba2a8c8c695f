#include "driver/outside_steps.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <span>
#include <utility>

#include "codec/encode.h"
#include "driver/failure.h"
#include "driver/measuring.h"
#include "driver/settings_input.h"
#include "driver/viewers.h"
#include "input/list_file.h"
#include "input/mask_crop.h"
#include "input/moved_files.h"
#include "numerics/rounding.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "render/thumbnails.h"

namespace zemora {

namespace {

/// Writes one of the small files that a front end watches; a front end that is gone is no failure.
void write_progress_file(const std::string& name, const std::string& text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());  // NOLINT: text as bytes
    (void)write_file_whole(state_directory() + '/' + name, std::span(bytes, text.size()));
}

std::string file_lines(const Pipeline& pipeline, const PairRun& pair) {
    const bool two = pipeline.list.two_files;
    return (two ? pair.files.left : pair.files.stereo) + '\n' + (two ? pair.files.right : pair.files.stereo) +
           '\n';
}

int is_last(const Pipeline& pipeline, const PairRun& pair) {
    return pair.index + 1 == pipeline.list.count() ? 1 : 0;
}

/// With the side that each file has by its name, also after an exchange by the user.
std::vector<SidedFile> sided_files(const Pipeline& pipeline, const PairRun& pair) {
    if (!pipeline.list.two_files) {
        return {{pair.files.stereo, FileSide::stereo}};
    }
    const bool exchanged = pair.exchanged && exchanges_files(pipeline);
    return {{pair.files.left, exchanged ? FileSide::right : FileSide::left},
            {pair.files.right, exchanged ? FileSide::left : FileSide::right}};
}

/// The record of the pair for a run that mounts its views in the other order. Near and far point change
/// places, and the window with them.
StoredCorrectionRecord record_with_views_exchanged(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const double shift_px = pair.geometry.window.pure_shift_px + pair.geometry.window.window_shift_px;
    // Against the shift, as the window is chosen: from the iteration where there was one.
    const double near_px =
        pair.geometry.measured ? -pair.geometry.disparities.far_px : shift_px - pair.original_far_px;
    const double far_px =
        pair.geometry.measured ? -pair.geometry.disparities.near_px : shift_px - pair.original_near_px;
    double window_px = near_px;  // also for the edges, whose far points nobody measured
    if (p.estimate_window == setting::estimate_window::far_point) {
        window_px = far_px;
    } else if (p.estimate_window == setting::estimate_window::within_limit) {
        const double limit_px = pixels_from_reference(p.far_point_limit, p.win_off_reference,
                                                      pair.working_height, pair.working_width);
        window_px = std::max(near_px, far_px - limit_px / pair.scale);
    }
    const WindowPlacement window =
        place_window(p, -shift_px, window_px, pair.scale, pair.working_height, pair.working_width);
    StoredCorrectionRecord record = with_views_exchanged(record_of(pipeline, pair));
    record[kRecordPureShift] = window.pure_shift_px;
    record[kRecordWindowShift] = window.window_shift_px;
    record[kRecordNearPoint] = -pair.original_far_px;
    return record;
}

/// The record as it stands in an input file; nothing, with the reason told, when it does not count.
std::optional<StoredCorrectionRecord> record_in(Pipeline& pipeline, const std::string& file,
                                                InputClass input_class, std::string& line) {
    const auto answer = pipeline.exiftool.read_record(file, input_class);
    if (!answer) {
        return std::nullopt;
    }
    line = *answer;
    auto record = parse_record(line);
    if (!record) {
        pipeline.voice.say<Msg::main_stored_values_invalid>();
    }
    return record;
}

/// The corrections of the record that was read.
void tell_stored_record(const Pipeline& pipeline, const PairRun& pair) {
    Voice& voice = pipeline.voice;
    if (voice.verbose() == 0) {
        return;
    }
    const MessageCatalogue& messages = voice.messages();
    const StoredCorrectionRecord& r = pair.stored;
    const Correction correction{r[kRecordHeight],
                                0.0,
                                r[kRecordSize] / 100.0,
                                r[kRecordRotation] * kRadiansPerDegree,
                                r[kRecordVergenceV] * kRadiansPerDegree,
                                r[kRecordVergenceH] * kRadiansPerDegree};
    voice.say<Msg::main_stored_values_read>();
    voice.print(correction_line(messages, messages.raw(Msg::main_label_height), correction, false));
}

}  // namespace

long long current_seconds() {
    return static_cast<long long>(std::time(nullptr));
}

void rename_refused(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    if (p.input_mode == setting::input_mode::view_folders && p.rename_refused != 0) {
        rename_refused_files(p.rename_refused, pipeline.voice, sided_files(pipeline, pair));
    }
}

void move_quit_pair(const Pipeline& pipeline, const PairRun& pair) {
    move_quit_files(pipeline.voice, sided_files(pipeline, pair));
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
    update_database_line(p.path_of_images, pipeline.voice, list_path_of(p),
                         two ? pair.files.left : pair.files.stereo, two ? pair.files.right : std::string(),
                         result);
}

bool read_stored_record(Pipeline& pipeline, PairRun& pair) {
    if (pair.input_class == InputClass::none) {
        pipeline.voice.say<Msg::main_no_values_in_this_image_type>();
        return false;
    }
    const bool two = pipeline.list.two_files;
    std::string left_line;
    const auto left =
        record_in(pipeline, two ? pair.files.left : pair.files.stereo, pair.input_class, left_line);
    if (!left) {
        return false;
    }
    if (pair.mode == 4 && two) {
        std::string right_line;
        const auto right = record_in(pipeline, pair.files.right, pair.input_class, right_line);
        if (!right) {
            return false;
        }
        if (right_line != left_line) {
            pipeline.voice.say<Msg::main_stored_values_invalid>();
            return false;
        }
    }
    pair.stored = *left;
    pair.has_stored = true;
    tell_stored_record(pipeline, pair);
    if (drop_foreign_selection(pair.stored, wanted_shape(pipeline.parameters))) {
        pipeline.voice.print(two ? pipeline.voice.messages().text<Msg::main_stored_selection_ignored_right>()
                                 : pipeline.voice.messages().text<Msg::main_stored_selection_ignored_left>());
        pipeline.voice.wait(Severity::error);
    }
    return true;
}

void write_stored_record(Pipeline& pipeline, const PairRun& pair) {
    if (!uses_record(pair.mode) || pair.input_class == InputClass::none ||
        pipeline.parameters.video_mode != 0) {
        return;
    }
    if (has_exchanged_views(pipeline, pair)) {
        pipeline.voice.tell_everywhere(pipeline.voice.messages().either(
            {"   The views were exchanged by hand: no values are stored for a later run.\n",
             "   Die Ansichten wurden von Hand vertauscht: fuer spaetere Laeufe wird nichts "
             "gespeichert.\n"}));
        return;
    }
    const std::string text = record_text(record_of(pipeline, pair));
    const bool two = pipeline.list.two_files;
    const auto write = [&](const std::string& file) {
        if (pipeline.exiftool.write_record(file, pair.input_class, text)) {
            pipeline.inputs.note_replaced(file);
        }
    };
    write(two ? pair.files.left : pair.files.stereo);
    if (two && pair.mode > 0) {
        write(pair.files.right);
    }
}

StoredCorrectionRecord record_of(const Pipeline& pipeline, const PairRun& pair) {
    const PreSelection& preset = pair.orders.pre_selection;
    const Correction& c = pair.geometry.correction;
    const SelectionBox& box = pair.selection;
    const ViewShape& shape = pair.geometry.shape;
    return {preset.rotation_left,
            preset.rotation_right,
            preset.vergence_v,
            preset.left_start_x,
            preset.left_start_y,
            preset.left_width,
            preset.left_height,
            preset.right_start_x,
            preset.right_start_y,
            preset.right_width,
            preset.right_height,
            c.height_px,
            100.0 * c.size,
            c.rotation_rad / kRadiansPerDegree,
            c.vergence_v_rad / kRadiansPerDegree,
            c.vergence_h_rad / kRadiansPerDegree,
            static_cast<double>(pair.output_width) / std::max(pair.output_height, 1),
            pair.geometry.window.pure_shift_px,
            pair.deviation,
            pair.original_near_px,
            pair.geometry.window.window_shift_px,
            box.window_offset,
            box.left,
            box.right,
            box.top,
            box.bottom,
            box.band_left,
            box.band_right,
            shape.phantogram,
            shape.edge_warp,
            shape.vertical_ax,
            shape.common_trapez,
            shape.sym_trapez,
            shape.trapez_scale,
            static_cast<double>(pipeline.parameters.cropp_output)};
}

void write_progress_start(const Pipeline& pipeline, const PairRun& pair) {
    if (pipeline.parameters.graphical_interface != 0) {
        write_progress_file(
            "zemora_actual.txt",
            file_lines(pipeline, pair) +
                format_text("%d/%d\n%d\n", pair.index + 1, pipeline.list.count(), is_last(pipeline, pair)));
    }
}

void write_progress_views(const Pipeline& pipeline) {
    if (pipeline.parameters.graphical_interface != 0) {
        if (const auto written =
                write_mask_thumbs(pipeline.input.full(), state_directory(), std::nullopt, pipeline.voice);
            !written) {
            conclude_failure(pipeline.voice, written.failure());
        }
    }
}

void write_progress_result(const Pipeline& pipeline) {
    if (pipeline.parameters.graphical_interface == 0) {
        return;
    }
    const Thumbnails thumbs = value_or_end(pipeline.voice, make_thumbs(pipeline.warped.pair()));
    const std::string start = state_directory() + "/zemora_thumb_";
    for (const auto& [thumb, side] : {std::pair{&thumbs.left, "l"}, std::pair{&thumbs.right, "r"}}) {
        (void)encode_and_write(*thumb, {PictureFormat::bmp}, start + side + ".bmp");
    }
}

void write_progress_end(const Pipeline& pipeline, const PairRun& pair) {
    if (pipeline.parameters.graphical_interface == 0) {
        return;
    }
    static constexpr const char* kRatioWords[] = {"", "", "(4:3)", "(16:10)", "(16:9)", "(Kino)"};
    const int choice = pipeline.parameters.projection_ratio;
    const bool projected = choice >= 2 && choice <= 5;
    write_progress_file(
        "zemora_finish.txt",
        file_lines(pipeline, pair) +
            format_text("%d\n%d\n%d\n%d\n%d\n%d%s\n", pipeline.parameters.video_mode != 0 ? 1 : 0,
                        pair.index + 1, pipeline.list.count(), static_cast<int>(pair.status),
                        is_last(pipeline, pair),
                        round_half_up(1000.0 * (projected ? pair.projected_deviation : pair.deviation)),
                        projected ? kRatioWords[choice] : ""));
}

}  // namespace zemora
