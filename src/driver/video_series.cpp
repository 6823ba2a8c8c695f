// Between the passes of a film: what was measured becomes a value for each frame.

#include "driver/failure.h"
#include "driver/video_run.h"

namespace zemora {

void settle_series(VideoRun& run) {
    Voice& notes = run.notes;
    const MessageCatalogue& messages = notes.messages();
    const std::string rule = messages.text<Msg::main_separator>();
    notes.print(rule + messages.text<Msg::main_analysis_finished_now_correction>() + rule);
    const ParameterSet& p = run.pipeline.parameters;
    SmoothSettings smooth{p.smooth_geometry_corr, p.smooth_window_corr};
    if (run.series.analysed.count() <= 1) {
        smooth.geometry = 0;
    }
    run.means = mean_values(run.series);
    if (!smooth_series(run.series, smooth)) {
        notes.tell_everywhere(messages.either(
            {"No frame of the film could be measured: the frames stay as they are.\n",
             "Kein Frame des Films konnte vermessen werden: die Frames bleiben, wie sie sind.\n"}));
        notes.wait(Severity::warning);
    }
}

}  // namespace zemora
