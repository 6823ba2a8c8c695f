// Between the passes of a film: what was measured becomes a value for each frame, or values come from a file.

#include "driver/failure.h"
#include "driver/video_run.h"
#include "platform/paths.h"
#include "report/corr_values_plots.h"
#include "video/corr_values_file.h"

namespace zemora {

namespace {

namespace corr = setting::corr_input_output;

std::string path_beside(const VideoRun& run, const char* name) {
    return join_path(run.pipeline.parameters.path_of_images, name);
}

bool is_raw_wanted(int corr_input_output) {
    return corr_input_output == corr::raw || corr_input_output == corr::raw_and_stop;
}

void write_values(VideoRun& run, const char* name) {
    succeed_or_end(run.notes, write_corr_values(path_beside(run, name), run.series, run.notes.messages()));
}

void announce_second_pass(VideoRun& run) {
    const MessageCatalogue& messages = run.notes.messages();
    const std::string rule = messages.text<Msg::main_separator>();
    run.notes.print(rule + messages.text<Msg::main_analysis_finished_now_correction>() + rule);
}

void tell_nothing_measured(VideoRun& run) {
    run.notes.tell_everywhere(run.notes.messages().either(
        {"No frame of the film could be measured: the frames stay as they are.\n",
         "Kein Frame des Films konnte vermessen werden: die Frames bleiben, wie sie sind.\n"}));
    run.notes.wait(Severity::warning);
}

/// The values of the film from its own frames.
void settle_measured(VideoRun& run) {
    const ParameterSet& p = run.pipeline.parameters;
    SmoothSettings smooth{p.smooth_geometry_corr, p.smooth_window_corr};
    if (run.series.analysed.count() <= 1) {
        smooth.geometry = 0;
    }
    run.means = mean_values(run.series);
    if (!fill_series(run.series, smooth)) {
        tell_nothing_measured(run);
        return;
    }
    if (is_raw_wanted(p.corr_input_output)) {
        write_values(run, kRawCorrValuesName);
    }
    smooth_filled_series(run.series, smooth);
    if (p.corr_input_output != corr::unused) {
        write_values(run, kCorrValuesName);
        succeed_or_end(run.notes,
                       write_corr_values_plots(p.path_of_images, is_raw_wanted(p.corr_input_output),
                                               run.notes.messages()));
    }
}

void take_values_of_file(VideoRun& run) {
    take_stored_values(run.series, value_or_end(run.notes, read_corr_values(path_beside(run, kCorrValuesName),
                                                                            run.frames, run.notes)));
    run.means = mean_values(run.series);
    run.notes.print("c14170: CorrValues.dat have been read\n");
}

}  // namespace

void settle_series(VideoRun& run) {
    announce_second_pass(run);
    const int mode = run.pipeline.parameters.corr_input_output;
    if (mode == corr::from_file) {
        take_values_of_file(run);
    } else {
        settle_measured(run);
    }
}

bool stops_behind_analysis(VideoRun& run) {
    const int mode = run.pipeline.parameters.corr_input_output;
    if (mode != corr::written_and_stop && mode != corr::raw_and_stop) {
        return false;
    }
    run.notes.print(run.notes.messages().either(
        {"CorrValues written and stopped.\n", "CorrValues geschrieben und angehalten.\n"}));
    run.notes.wait(Severity::information);
    return true;
}

}  // namespace zemora
