#include <chrono>

#include "driver/failure.h"
#include "driver/outside_steps.h"
#include "driver/phone_depth.h"
#include "driver/pipeline.h"
#include "driver/product_names.h"
#include "driver/settings_input.h"
#include "driver/settings_render.h"
#include "driver/viewers.h"
#include "numerics/rounding.h"
#include "report/analysis_rows.h"
#include "report/pair_report.h"

namespace zemora {

namespace {

PairReadOptions read_options_with_phone_depth(const ParameterSet& parameters, ExifTool& exiftool) {
    PairReadOptions options = pair_read_options(parameters);
    options.find_phone_depth = [&exiftool](const std::string& photo, Notes& notes) {
        return read_phone_depth(exiftool, photo, notes);
    };
    return options;
}

}  // namespace

Pipeline::Pipeline(const ParameterSet& parameters_in, RunContext& run_in, ImageList& list_in,
                   ExifTool& exiftool_in, Voice& voice_in)
    : parameters(parameters_in),
      run(run_in),
      list(list_in),
      exiftool(exiftool_in),
      voice(voice_in),
      source(list_in, read_options_with_phone_depth(parameters_in, exiftool_in)),
      preparer(prepare_options(parameters_in)),
      analysis_dump(dump_options(parameters_in, run_in.working_directory, run_in.program_directory),
                    voice_in),
      analysis(analysis_options(parameters_in)),
      render(render_settings(parameters_in)),
      depth(depth_settings(parameters_in)),
      inputs(list_in),
      frame(frame_settings(parameters_in)) {
    analysis.visitor = &analysis_dump;
    colours = value_or_end(voice, read_colour_change(parameters, voice.messages()));
}

bool fail_to_mount(const Pipeline& pipeline, PairRun& pair, StatusCode status) {
    report_mount_failure(pipeline.voice);
    pipeline.voice.wait(Severity::information);
    rename_refused(pipeline, pair);
    pair.status = status;
    pair.failure_told = true;
    return false;
}

namespace {

/// From the loaded pair to its corrections and its place behind the stereo window.
bool find_geometry(Pipeline& pipeline, PairRun& pair) {
    if (!counts_as_measured(pair.mode)) {
        load_unmeasured_geometry(pipeline, pair);
        return true;
    }
    if (!measure_geometry(pipeline, pair)) {
        return false;
    }
    place_stereo_window(pipeline, pair);
    return true;
}

/// What the pair has before the user sees it.
struct BeforeViewer {
    std::chrono::steady_clock::duration measuring{};  ///< The time that the pair took so far.
    TargetSize target;
    StatusCode status = StatusCode::success;  ///< Of the geometry; a size that is missed lowers it.
};

/// Puts back what the stores of the first time have changed.
void prepare_repeat(Pipeline& pipeline, PairRun& pair, const BeforeViewer& before) {
    pipeline.voice.say<Msg::main_same_image_repeated>();
    pipeline.voice.wait(Severity::warning);
    pair.failure_told = pair.store_failed = false;
    pair.status = before.status;
    pair.target = before.target;
    pair.frame = pipeline.frame;
}

/// Shows the pair to the user, whose time does not count, and neither does that of earlier stores.
ViewerDecision show_to_user(Pipeline& pipeline, PairRun& pair, const BeforeViewer& before) {
    if (pair.repeat) {
        prepare_repeat(pipeline, pair, before);
    }
    const ViewerDecision decision = run_post_viewer(pipeline, pair);
    pair.repeat = decision == ViewerDecision::repeat;
    pair.start = std::chrono::steady_clock::now() - before.measuring;
    return decision;
}

/// From the corrections to the stored pictures, again as long as the post viewer asks for it. True when the
/// views are to change places.
bool mount_pair(Pipeline& pipeline, PairRun& pair) {
    const BeforeViewer before{std::chrono::steady_clock::now() - pair.start, pair.target, pair.status};
    do {
        const ViewerDecision decision = show_to_user(pipeline, pair, before);
        if (decision == ViewerDecision::swap) {
            return true;
        }
        const bool is_stored = decision == ViewerDecision::go_on || decision == ViewerDecision::repeat;
        if (is_stored && warp_final(pipeline, pair) && measure_result(pipeline, pair)) {
            settle_trust(pair);
            finish_pictures(pipeline, pair);
            store_outputs(pipeline, pair);
        }
        conclude_pair(pipeline, pair);
    } while (pair.repeat && is_written(pair.status));
    return false;
}

/// The views in the other order than the user saw them; whether that is not the order of the list.
bool exchange_views(Pipeline& pipeline, const PairRun& pair) {
    const bool exchanged = !has_exchanged_views(pipeline, pair);
    if (exchanged != pair.exchanged && exchanges_files(pipeline)) {
        pipeline.list.exchange_views(pair.index);
    }
    return exchanged;
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
        behind = format_text(pipeline.voice.messages().either({"%d:%02d:%02d left", "noch %d:%02d:%02d"}),
                             left / kHour, left / kMinute % kMinute, left % kMinute);
    }
    pipeline.voice.console().set_course(format_text("%d/%d  ", index + 1, count), behind);
}

/// One way of a pair through the stages; true when it starts over with its views exchanged.
bool run_stages(Pipeline& pipeline, PairRun& pair) {
    if (!prepare_pair(pipeline, pair)) {
        return false;
    }
    if (find_geometry(pipeline, pair) && make_depth_views(pipeline, pair)) {
        return mount_pair(pipeline, pair);
    }
    conclude_pair(pipeline, pair);
    return false;
}

void run_pair(Pipeline& pipeline, int index) {
    bool exchanged = false;
    bool counted = false;
    for (bool goes_on = true; goes_on;) {
        PairRun pair;
        pair.index = index;
        pair.exchanged = exchanged;
        pair.counted = counted;
        goes_on = run_stages(pipeline, pair);
        counted = pair.counted;
        pipeline.mounted += !goes_on && is_written(pair.status) && !pair.store_failed ? 1 : 0;
        exchanged = goes_on && exchange_views(pipeline, pair);
    }
}

}  // namespace

void run_image_pipeline(Pipeline& pipeline) {
    give_away_mounted_names(pipeline.parameters, pipeline.voice, pipeline.list, pipeline.given_names);
    const auto start = std::chrono::steady_clock::now();
    for (int index = 0; index < pipeline.list.count(); ++index) {
        tell_course(pipeline, index, std::chrono::steady_clock::now() - start);
        pipeline.voice.begin_report_section();
        run_pair(pipeline, index);
        pipeline.voice.end_report_section();
        pipeline.preparer.take_back(std::move(pipeline.input));
        pipeline.exiftool.forget_pair();
        if (pipeline.parameters.corr_input_output == setting::corr_input_output::from_file) {
            break;
        }
    }
    pipeline.voice.console().set_course({}, {});
}

}  // namespace zemora
