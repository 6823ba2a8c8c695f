// What all frames of a film have in common in the second pass: scale, crop, tone.

#include <cstdlib>
#include <vector>

#include "driver/failure.h"
#include "driver/video_run.h"

namespace zemora {

namespace {

TonePlan mean_tone(const VideoRun& run) {
    const RenderSettings& render = run.pipeline.settings.render;
    TonePlan tone;
    tone.is_applied = true;
    if (run.tones.count() > 0) {
        tone.left = run.tones.mean_left();
        tone.right = run.tones.mean_right();
    }
    tone.mode_left = render.adapted_view <= 0 ? render.auto_output_contrast : 0;
    tone.mode_right = render.adapted_view >= 0 ? render.auto_output_contrast : 0;
    return tone;
}

std::vector<Correction> mounted_corrections(const VideoRun& run) {
    std::vector<Correction> corrections;
    corrections.reserve(static_cast<std::size_t>(run.mounted.count()));
    for (int i = 0; i < run.mounted.count(); ++i) {
        corrections.push_back(correction_of(run.series.values[static_cast<std::size_t>(run.mounted.at(i))]));
    }
    return corrections;
}

}  // namespace

void plan_video(VideoRun& run) {
    const ParameterSet& p = run.pipeline.parameters;
    const RenderSettings& render = run.pipeline.settings.render;
    WarpPlan& base = run.base_plan;
    base.preset = run.orders.pre_selection;
    base.applied_view = render.applied_view;
    base.gamma = render.gamma;
    base.background = render.background;
    base.tone = mean_tone(run);
    base.crop.cropp_output = p.cropp_output;
    constexpr int kCodecMultiple = 4;
    FilmFrameWish wish;
    wish.source = run.view_size;
    wish.width = p.output_width;
    wish.height = p.output_height;
    wish.cropp_output = p.cropp_output;
    wish.multiple = p.video_output != setting::video_output::none ? kCodecMultiple : 1;
    run.frame =
        value_or_end(run.notes, find_film_frame(wish, base, mounted_corrections(run), run.notes.messages()));
    base.interpolation = interpolation_for(render.interpolation_mode, run.frame.scale);
    run.orders.wants_copies = false;
}

}  // namespace zemora
