// Corrections that are not measured: from the Use keys, from a stored record, or none.

#include "analysis/colormap.h"
#include "driver/measuring.h"

namespace zemora {

namespace {

void take_keys(const Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    pair.geometry.correction = {p.use_height,
                                0.0,
                                p.use_size / 100.0,
                                p.use_rotation * kRadiansPerDegree,
                                p.use_vergence_v * kRadiansPerDegree,
                                p.use_vergence_h * kRadiansPerDegree};
    pair.geometry.window.output_window_px =
        pixels_from_reference(p.window_offset, p.win_off_reference, pair.working_height, pair.working_width);
    pair.geometry.window.window_shift_px = pair.geometry.window.output_window_px / pair.scale;
    pair.geometry.window.pure_shift_px = -pair.geometry.window.window_shift_px;
}

void take_record(PairRun& pair) {
    const StoredCorrectionRecord& r = pair.stored;
    take_geometry(r, pair);
    pair.deviation = r[kRecordDeviation];
    pair.original_near_px = r[kRecordNearPoint];
    take_selection_and_shape(r, pair);
}

}  // namespace

void take_geometry(const StoredCorrectionRecord& r, PairRun& pair) {
    pair.geometry.window.pure_shift_px = r[kRecordPureShift];
    pair.geometry.window.window_shift_px = r[kRecordWindowShift];
    pair.geometry.window.output_window_px = pair.scale * pair.geometry.window.window_shift_px;
    pair.geometry.correction = {r[kRecordHeight],
                                r[kRecordPureShift] + r[kRecordWindowShift],
                                r[kRecordSize] / 100.0,
                                r[kRecordRotation] * kRadiansPerDegree,
                                r[kRecordVergenceV] * kRadiansPerDegree,
                                r[kRecordVergenceH] * kRadiansPerDegree};
}

void take_selection_and_shape(const StoredCorrectionRecord& r, PairRun& pair) {
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

void load_unmeasured_geometry(Pipeline& pipeline, PairRun& pair) {
    Voice& voice = pipeline.voice;
    const PictureSize& scaled = pair.wish.scaled;
    voice.progress(voice.messages().either(
                       {"Zemora: reading and preparing image", "Zemora: Bild lesen und vorbereiten"}),
                   100.0);
    colormap_identity(pipeline.analysis);
    pair.scale = static_cast<double>(scaled.height) / pipeline.input.height();
    pair.working_height = scaled.height;
    pair.working_width = scaled.width;
    pair.common_area = {0, scaled.width - 1, 0, scaled.height - 1};
    pair.geometry.preset = pair.orders.has_pre_selection ? pair.orders.pre_selection : PreSelection();
    if (pair.mode == 0) {
        take_keys(pipeline, pair);
    } else if (pair.has_stored) {
        take_record(pair);
    }
    pair.geometry.measured = false;
    pair.status = StatusCode::success;
}

}  // namespace zemora
