// The geometry of a pair: measured, from the Use keys, from a stored record, or none; and its window.

#include <utility>

#include "analysis/colormap.h"
#include "driver/mount.h"
#include "input/list_line.h"
#include "render/warp_pair.h"

namespace zemora {

namespace {

/// Warps the pair for its measurement, and keeps scale, size and common area of the latest warp.
class BenchWarp : public MeasuringWarp {
public:
    BenchWarp(const InputViews& views, const GeometryWish& wish, const MountSettings& settings,
              WarpedPair& warped, Notes& notes)
        : views_(views), wish_(wish), settings_(settings), warped_(warped), notes_(notes) {}

    [[nodiscard]] Result<WarpedViews> warp(const Correction& correction, bool reduced) override;

    LocatedPair latest;

private:
    const InputViews& views_;
    const GeometryWish& wish_;
    const MountSettings& settings_;
    WarpedPair& warped_;
    Notes& notes_;
};

Result<WarpedViews> BenchWarp::warp(const Correction& correction, bool reduced) {
    WarpPlan plan;
    double scale = 1.0;
    if (reduced) {
        plan.frame = {views_.reduced_width(), views_.reduced_height()};
        scale = static_cast<double>(views_.reduced_height()) / views_.height();
    } else {
        plan.frame = wish_.working;
        scale = static_cast<double>(plan.frame.height) / views_.height();
        plan.scale = static_cast<float>(scale);
        latest.geometry.preset = wish_.preset;
    }
    plan.correction = correction.scaled(scale);
    plan.preset = latest.geometry.preset;
    plan.applied_view = settings_.render.applied_view;
    plan.background = settings_.render.background;
    const ColourChange* colours = settings_.colours ? &*settings_.colours : nullptr;
    if (Result<void> done =
            warp_pair(reduced ? views_.reduced() : views_.full(), plan, colours, warped_, notes_);
        !done) {
        return done.failure();
    }
    latest.scale = scale;
    latest.working = {warped_.width, warped_.height};
    latest.common_area =
        find_common_area(warped_.pair(), {0, warped_.width - 1, 0, warped_.height - 1}, plan.background);
    return WarpedViews{warped_.pair(), scale};
}

/// The final warp uses what a list keeps of the values, so that a later run that applies them gives the very
/// same picture. Their six digits are finer than any effect in a picture.
void round_as_listed(LocatedPair& pair) {
    StoredCorrectionRecord record{};
    put_geometry(pair.geometry, record);
    take_geometry(as_listed(record), pair);
}

void place_stereo_window(const WindowWish& wish, LocatedPair& pair) {
    const PairDisparities& d = pair.geometry.disparities;
    pair.geometry.window =
        place_window(wish, pair.geometry.correction.shift_px, d.window_px, pair.scale, pair.working);
    round_as_listed(pair);
    pair.deviation = pair.scale * (d.far_px - d.near_px) / pair.working.width;
}

Result<LocatedPair> measure_geometry(const InputViews& views, const GeometryWish& wish,
                                     const MountSettings& settings, Workbench& bench, Notes& notes) {
    BenchWarp warp(views, wish, settings, bench.warped, notes);
    const Result<PairGeometry> measured = measure_pair({views.full(), views.reduced(), wish.before},
                                                       settings.measure, {bench.analysis, warp}, notes);
    if (!measured) {
        return measured.failure();
    }
    LocatedPair pair = warp.latest;
    pair.geometry = *measured;
    pair.geometry.preset = warp.latest.geometry.preset;
    if (is_written(pair.geometry.status)) {
        place_stereo_window(settings.window, pair);
    }
    return pair;
}

void take_keys(const Correction& keys, const WindowWish& wish, LocatedPair& pair) {
    pair.geometry.correction = keys;
    WindowPlacement& window = pair.geometry.window;
    window.window_working_px =
        pixels_from_reference(wish.offset, wish.reference, pair.working.height, pair.working.width);
    window.window_shift_input_px = window.window_working_px / pair.scale;
    window.pure_shift_input_px = -window.window_shift_input_px;
}

void take_record(const StoredCorrectionRecord& record, LocatedPair& pair) {
    take_geometry(record, pair);
    pair.deviation = record[kRecordDeviation];
    pair.near_input_px = record[kRecordNearPoint];
    take_selection_and_shape(record, pair);
}

LocatedPair load_unmeasured_geometry(const InputViews& views, const GeometryWish& wish,
                                     const MountSettings& settings, Workbench& bench, Notes& notes) {
    notes.progress(notes.messages().either(
                       {"Zemora: reading and preparing image", "Zemora: Bild lesen und vorbereiten"}),
                   100.0);
    colormap_identity(bench.analysis);
    LocatedPair pair;
    pair.source = wish.source;
    pair.working = wish.working;
    pair.scale = static_cast<double>(pair.working.height) / views.height();
    pair.common_area = {0, pair.working.width - 1, 0, pair.working.height - 1};
    pair.geometry.preset = wish.preset;
    if (wish.source == GeometrySource::keys) {
        take_keys(wish.keys, settings.window, pair);
    } else if (wish.source == GeometrySource::record) {
        take_record(wish.record, pair);
    }
    pair.geometry.status = StatusCode::success;
    return pair;
}

}  // namespace

void put_geometry(const PairGeometry& geometry, StoredCorrectionRecord& record) {
    const Correction& c = geometry.correction;
    record[kRecordHeight] = c.height_px;
    record[kRecordSize] = 100.0 * c.size;
    record[kRecordRotation] = c.rotation_rad / kRadiansPerDegree;
    record[kRecordVergenceV] = c.vergence_v_rad / kRadiansPerDegree;
    record[kRecordVergenceH] = c.vergence_h_rad / kRadiansPerDegree;
    record[kRecordPureShift] = geometry.window.pure_shift_input_px;
    record[kRecordWindowShift] = geometry.window.window_shift_input_px;
}

void take_geometry(const StoredCorrectionRecord& r, LocatedPair& pair) {
    WindowPlacement& window = pair.geometry.window;
    window.pure_shift_input_px = r[kRecordPureShift];
    window.window_shift_input_px = r[kRecordWindowShift];
    window.window_working_px = pair.scale * window.window_shift_input_px;
    pair.geometry.correction = {r[kRecordHeight],
                                r[kRecordPureShift] + r[kRecordWindowShift],
                                r[kRecordSize] / 100.0,
                                r[kRecordRotation] * kRadiansPerDegree,
                                r[kRecordVergenceV] * kRadiansPerDegree,
                                r[kRecordVergenceH] * kRadiansPerDegree};
}

void take_selection_and_shape(const StoredCorrectionRecord& r, LocatedPair& pair) {
    SelectionBox& selection = pair.selection;
    selection.window_offset = static_cast<float>(r[kRecordSelectionShift]);
    selection.left = static_cast<float>(r[kRecordSelectionLeft]);
    selection.right = static_cast<float>(r[kRecordSelectionRight]);
    selection.top = static_cast<float>(r[kRecordSelectionTop]);
    selection.bottom = static_cast<float>(r[kRecordSelectionBottom]);
    selection.band_left = static_cast<float>(r[kRecordBandLeft]);
    selection.band_right = static_cast<float>(r[kRecordBandRight]);
    const auto value = [&r](RecordField field) { return static_cast<double>(static_cast<float>(r[field])); };
    pair.geometry.shape = {
        value(kRecordPhantogram), value(kRecordEdgeWarp),
        value(kRecordVerticalAx), value(kRecordCommonTrapez),
        value(kRecordSymTrapez),  r[kRecordTrapezScale] != 0.0 ? value(kRecordTrapezScale) : 1.0};
}

Result<LocatedPair> find_geometry(const InputViews& views, const GeometryWish& wish,
                                  const MountSettings& settings, Workbench& bench, Notes& notes) {
    reset_analysis(bench.analysis, false);
    if (wish.source == GeometrySource::pictures) {
        return measure_geometry(views, wish, settings, bench, notes);
    }
    return load_unmeasured_geometry(views, wish, settings, bench, notes);
}

}  // namespace zemora
