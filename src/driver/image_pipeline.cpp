#include <chrono>

#include "driver/outside_steps.h"
#include "driver/pipeline.h"
#include "numerics/rounding.h"
#include "platform/process_end.h"
#include "report/pair_report.h"

namespace zemora {

namespace {

/// TIFF files of that program carry forms that are not read.
void refuse_photoshop_tiff(Pipeline& pipeline, const std::string& path) {
    const Voice& voice = pipeline.voice;
    if (pipeline.exiftool.read_software(path).find("Photoshop") == std::string::npos) {
        return;
    }
    voice.print_and_report(
        voice.messages().text<Msg::video_previewer_photoshop_tif_not_supported>(printable(path)));
    voice.wait(WaitAbove::error);
    end_process(kExitDone);
}

}  // namespace

Pipeline::Pipeline(ParameterSet& parameters_in, RunContext& run_in, ImageList& list_in, ExifTool& exiftool_in,
                   const Voice& voice_in)
    : parameters(parameters_in),
      run(run_in),
      list(list_in),
      exiftool(exiftool_in),
      voice(voice_in),
      input(parameters_in, left_geometry, right_geometry, voice_in),
      analysis_dump(parameters_in, run_in.working_directory, run_in.program_directory, voice_in),
      analysis(parameters_in),
      warp(parameters_in, left_geometry, right_geometry, voice_in),
      depth(parameters_in),
      inputs(list_in),
      initial_frame(warp.frame),
      initial_frame_left_right(parameters_in.frame_left_right) {
    analysis.dump = &analysis_dump;
    input.look_at_tiff = [this](const std::string& path) { refuse_photoshop_tiff(*this, path); };
}

bool fail_to_mount(const Pipeline& pipeline, PairRun& pair, StatusCode status) {
    report_mount_failure(pipeline.voice);
    pipeline.voice.wait(WaitAbove::information);
    rename_refused(pipeline, pair);
    pair.status = status;
    pair.failure_told = true;
    return false;
}

namespace {

/// Mode -3 differs from 3 only in the file that its record goes to.
bool is_measured_mode(int mode) {
    return mode == 1 || mode == 3 || mode == -3;
}

/// From the loaded pair to its corrections and its place behind the stereo window.
bool find_geometry(Pipeline& pipeline, PairRun& pair) {
    if (!is_measured_mode(pair.mode)) {
        apply_stored_geometry(pipeline, pair);
        return true;
    }
    if (!measure_first(pipeline, pair) || !iterate_geometry(pipeline, pair) || !is_written(pair.status)) {
        return false;
    }
    place_stereo_window(pipeline, pair);
    return true;
}

/// From the corrections to the stored pictures, again as long as the post viewer asks for it.
void mount_pair(Pipeline& pipeline, PairRun& pair) {
    do {
        if (pair.repeat) {
            pipeline.voice.say<Msg::main_same_image_repeated>();
            pipeline.voice.wait(WaitAbove::warning);
            pair.repeat = false;
        }
        if (!run_post_viewer(pipeline, pair)) {
            pair.status = StatusCode::abandoned;
        } else if (warp_final(pipeline, pair) && measure_result(pipeline, pair)) {
            finish_pictures(pipeline, pair);
            store_outputs(pipeline, pair);
        }
        conclude_pair(pipeline, pair);
    } while (pair.repeat);
}

/// Which pair of how many is at work, and the time that the rest will take.
void tell_course(const Pipeline& pipeline, int index, std::chrono::steady_clock::duration spent) {
    const int count = pipeline.list.count();
    if (count < 2) {
        return;
    }
    constexpr int kMinute = 60;
    constexpr int kHour = 3600;
    std::string behind;
    if (index > 0) {
        const double seconds = std::chrono::duration<double>(spent).count();
        const int left = round_half_up(seconds / index * (count - index));
        behind = format_text(pipeline.voice.messages().either("%d:%02d:%02d left", "noch %d:%02d:%02d"), left / kHour,
                             left / kMinute % kMinute, left % kMinute);
    }
    pipeline.voice.console().set_course(format_text("%d/%d  ", index + 1, count), behind);
}

void run_pair(Pipeline& pipeline, int index) {
    PairRun pair;
    pair.index = index;
    if (!prepare_pair(pipeline, pair)) {
        return;
    }
    if (find_geometry(pipeline, pair) && make_depth_views(pipeline, pair)) {
        mount_pair(pipeline, pair);
    } else {
        conclude_pair(pipeline, pair);
    }
}

}  // namespace

void run_image_pipeline(Pipeline& pipeline) {
    constexpr int kStopAfterFirst = 3;  // of `CorrInputOutput`
    const auto start = std::chrono::steady_clock::now();
    pipeline.voice.end_report_section();
    for (int index = 0; index < pipeline.list.count(); ++index) {
        tell_course(pipeline, index, std::chrono::steady_clock::now() - start);
        run_pair(pipeline, index);
        pipeline.voice.end_report_section();
        pipeline.input.release_images();
        pipeline.exiftool.forget_pair();
        if (pipeline.parameters.corr_input_output == kStopAfterFirst) {
            break;
        }
    }
    pipeline.voice.console().set_course({}, {});
}

}  // namespace zemora
