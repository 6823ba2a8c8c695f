#include "driver/warp_output.h"

#include <algorithm>

#include "analysis/colormap.h"
#include "config/setting_values.h"
#include "driver/viewer_exchange.h"
#include "numerics/rounding.h"
#include "render/crop.h"
#include "render/fit_to_size.h"

namespace zemora {

namespace {

/// The output of one pair on its way.
class OutputWarp {
public:
    OutputWarp(const InputViews& views, const LocatedPair& located, const PairWish& wish,
               const MountSettings& settings, Workbench& bench, Notes& notes);
    [[nodiscard]] Result<SettledOutput> run();

private:
    [[nodiscard]] Result<void> warp_first();
    [[nodiscard]] Result<void> force_size(const WarpPlan& plan, bool colour_round);
    [[nodiscard]] Result<int> frame_automatically(CropPlan& crop);
    [[nodiscard]] Result<float> far_point_for_frame();
    [[nodiscard]] Result<float> measured_far_point();
    [[nodiscard]] const ColourChange* colours() const {
        return settings_.colours ? &*settings_.colours : nullptr;
    }
    /// Of the warped pair before the final warp when the pair was measured, else of its result.
    void adapt_tone() {
        colormap_adapt(bench_.analysis, bench_.warped.pair(), nullptr, settings_.render.auto_output_contrast);
    }

    const InputViews& views_;
    LocatedPair located_;
    const PairWish& wish_;
    const MountSettings& settings_;
    Workbench& bench_;
    Notes& notes_;
    Sizing sizing_;
    SettledOutput settled_;
};

OutputWarp::OutputWarp(const InputViews& views, const LocatedPair& located, const PairWish& wish,
                       const MountSettings& settings, Workbench& bench, Notes& notes)
    : views_(views), located_(located), wish_(wish), settings_(settings), bench_(bench), notes_(notes) {
    located_.selection.mode = has_selected_window(located_.selection) ? 1 : 0;
    sizing_.correction = located_.geometry.correction;
    sizing_.correction.shift_px = located_.geometry.window.pure_shift_input_px;
    sizing_.window_offset = located_.selection.window_offset;
    sizing_.interpolation_mode = settings_.render.interpolation_mode;
    settled_.target = wish_.target;
    settled_.frame = settings_.frame;
}

/// Of an output without measurement.
Result<float> OutputWarp::measured_far_point() {
    AnalysisState& analysis = bench_.analysis;
    const ToneTables left_tone = analysis.tone_left;
    const ToneTables right_tone = analysis.tone_right;
    colormap_adapt(analysis, bench_.warped.pair(), nullptr, kColormapForDisparity);
    const AnalyseStatus status =
        analyse_phase(analysis, bench_.warped.pair(), {AnalysePhase::disparity, 1, false, false}, {});
    if (status == AnalyseStatus::no_memory) {
        return no_memory_for_correlation(analysis);
    }
    analysis.tone_left = left_tone;
    analysis.tone_right = right_tone;
    return status == AnalyseStatus::done ? analysis.disparity.far_point : 0.0F;
}

/// The far point that the automatic frame looks at, in output pixels.
Result<float> OutputWarp::far_point_for_frame() {
    const WarpedPair& warp = bench_.warped;
    const double scale = warp.plan.scale;
    const double selection_shift_px =
        located_.selection.window_offset * static_cast<double>(warp.plan.frame.width);
    const PairGeometry& geometry = located_.geometry;
    switch (located_.source) {
        case GeometrySource::pictures: {
            const auto far_px = static_cast<float>(
                scale * (geometry.disparities.far_px + geometry.window.window_shift_input_px));
            return static_cast<float>(far_px + selection_shift_px);
        }
        case GeometrySource::record: {
            const double near_px =
                scale * (located_.near_input_px - geometry.window.pure_shift_input_px) + selection_shift_px;
            return static_cast<float>(near_px + located_.deviation * warp.width);
        }
        default: return measured_far_point();
    }
}

/// The width that the views have to get for it, which a forced width becomes; 0 when they keep theirs.
Result<int> OutputWarp::frame_automatically(CropPlan& crop) {
    const FinishSettings& finish = settings_.finish;
    if (finish.auto_frame_floating != setting::auto_frame_floating::frame &&
        finish.auto_frame_floating != setting::auto_frame_floating::frame_narrowed) {
        return 0;
    }
    const Result<float> far_point = far_point_for_frame();
    if (!far_point) {
        return far_point.failure();
    }
    const WarpedPair& warp = bench_.warped;
    AutomaticFrameRequest request;
    request.mode = finish.auto_frame_floating;
    request.floating_target = finish.floating_target;
    request.win_off_reference = finish.win_off_reference;
    request.output_width = settings_.output_width;
    request.far_point_px = *far_point;
    request.width = warp.width;
    request.height = warp.height;
    request.forced_width = crop.is_sized && crop.wish.forces_width() ? crop.wish.width : 0;
    request.reduction = final_reduction(settled_.target);
    const AutomaticFrame automatic = automatic_frame(settled_.frame, request, notes_);
    settled_.frame = automatic.frame;
    const int width = automatic.narrowed_width;
    if (width > 0 && request.forced_width > 0) {
        crop.wish.width = width;
    }
    if (width > 0 && settled_.target.final_rescale == FinalRescale::by_width) {
        settled_.target.final_width = std::max(round_half_up(width * request.reduction), 1);
    }
    return width;
}

Result<void> OutputWarp::warp_first() {
    const bool measured = located_.source == GeometrySource::pictures;
    const MeasuredFrame frame{located_.working, located_.common_area, located_.scale,
                              measured ? located_.geometry.correction.shift_px : 0.0};
    WarpPlan plan = output_plan(located_, wish_, settings_.render, bench_.analysis);
    plan.frame = frame.frame;
    plan.scale = static_cast<float>(located_.scale);
    const SizeRepeat first = first_size(frame, sizing_, plan.crop);
    plan.crop.wish.force = force_inside_target(plan.crop, first);
    const char* step =
        notes_.messages().either({"Zemora::equalize: phase 4: final correction            ",
                                  "Zemora::Entzerrung: Phase 4: Letzte Korrektur            "});
    notes_.progress(step, 0.0);
    if (Result<void> done =
            warp_pair(views_.full(), next_plan(plan, sizing_, first), colours(), bench_.warped, notes_);
        !done) {
        return done;
    }
    notes_.progress(step, 100.0);
    return {};
}

/// Repeats the final warp until the size is the wanted one. `colour_round` asks for one more warp, with the
/// tone of the first result.
Result<void> OutputWarp::force_size(const WarpPlan& plan, bool colour_round) {
    const Result<bool> reached =
        fit_to_size(views_.full(), plan, colour_round, sizing_, colours(), bench_.warped, notes_);
    if (!reached) {
        return reached.failure();
    }
    if (!*reached) {
        notes_.tell_everywhere(notes_.messages().text<Msg::main_no_convergence_with_crop_1>());
        notes_.wait(Severity::warning);
        settled_.status = StatusCode::usable;
    }
    return {};
}

Result<SettledOutput> OutputWarp::run() {
    // Without measurement, or after a viewer, only the result shows what the picture holds.
    const bool tone_first = located_.source == GeometrySource::pictures && !settings_.render.is_shown_first;
    const bool tone_of_result = !tone_first && settings_.render.auto_output_contrast != 0;
    if (tone_first) {
        adapt_tone();
    } else {
        colormap_identity(bench_.analysis);
    }
    if (const Result<void> first = warp_first(); !first) {
        return first.failure();
    }
    if (tone_of_result) {
        adapt_tone();
    }
    WarpPlan plan = bench_.warped.plan;
    plan.tone = output_plan(located_, wish_, settings_.render, bench_.analysis).tone;
    const Result<int> narrowed_width = frame_automatically(plan.crop);
    if (!narrowed_width) {
        return narrowed_width.failure();
    }
    if (const Result<void> forced = force_size(plan, tone_of_result); !forced) {
        return forced.failure();
    }
    if (*narrowed_width > 0) {
        narrow_views(bench_.warped, *narrowed_width);  // where no forced width has brought them to it
    }
    return settled_;
}

}  // namespace

WarpPlan output_plan(const LocatedPair& located, const PairWish& wish, const RenderSettings& settings,
                     const AnalysisState& analysis) {
    WarpPlan plan;
    plan.preset = located.geometry.preset;
    plan.shape = located.geometry.shape;
    plan.applied_view = settings.applied_view;
    plan.gamma = settings.gamma;
    plan.background = settings.background;
    plan.tone = {true, analysis.tone_left, analysis.tone_right,
                 settings.adapted_view <= 0 ? settings.auto_output_contrast : 0,
                 settings.adapted_view >= 0 ? settings.auto_output_contrast : 0};
    plan.crop = {false,
                 settings.cropp_output,
                 settings.is_shown_first,
                 wish.target.size_flag != 0,
                 wish.size,
                 located.selection,
                 {}};
    return plan;
}

Result<SettledOutput> warp_output(const InputViews& views, const LocatedPair& located, const PairWish& wish,
                                  const MountSettings& settings, Workbench& bench, Notes& notes) {
    return OutputWarp(views, located, wish, settings, bench, notes).run();
}

}  // namespace zemora
