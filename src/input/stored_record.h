#pragma once
/// The stored form of a pair's corrections: 35 values in a fixed order.

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "config/setting_values.h"

namespace zemora {

/// Places of the values, the same in the text of an image and in a list.
enum RecordField : std::size_t {
    kRecordRotationLeft,
    kRecordRotationRight,
    kRecordPreVergence,
    kRecordLeftX,
    kRecordLeftY,
    kRecordLeftWidth,
    kRecordLeftHeight,
    kRecordRightX,
    kRecordRightY,
    kRecordRightWidth,
    kRecordRightHeight,
    kRecordHeight,
    kRecordSize,
    kRecordRotation,
    kRecordVergenceV,
    kRecordVergenceH,
    kRecordRatio,
    kRecordPureShift,
    kRecordDeviation,
    kRecordNearPoint,
    kRecordWindowShift,
    kRecordSelectionShift,
    kRecordSelectionLeft,
    kRecordSelectionRight,
    kRecordSelectionTop,
    kRecordSelectionBottom,
    kRecordBandLeft,
    kRecordBandRight,
    kRecordPhantogram,
    kRecordEdgeWarp,
    kRecordVerticalAx,
    kRecordCommonTrapez,
    kRecordSymTrapez,
    kRecordTrapezScale,
    kRecordCroppOutput,
    kRecordFields
};

/// Height and shifts in input pixels, size in percent, angles in degrees, the rest as the table in
/// stored_record.cpp says.
using StoredCorrectionRecord = std::array<double, kRecordFields>;

/// A record without corrections.
[[nodiscard]] StoredCorrectionRecord empty_record();

/// The record that the same views have when they face each other the other way round, but for the window: its
/// near point and its shifts are those of the mirrored disparities.
[[nodiscard]] StoredCorrectionRecord with_views_exchanged(const StoredCorrectionRecord& record);

/// The shape of the pictures that a run makes.
struct WantedShape {
    int cropp_output = setting::cropp_output::whole;
    int height = 0;  ///< Pixels.
    int width = 0;
};

/// Takes a selection out that was made for another `CroppOutput`, unless the wanted size has the shape of the
/// stored picture. Whether there was one.
[[nodiscard]] bool drop_foreign_selection(StoredCorrectionRecord& record, const WantedShape& wanted);

/// "Zemora_OK_V1.0" and the values; below 256 characters.
[[nodiscard]] std::string record_text(const StoredCorrectionRecord& record);

/// The values of a line that is exactly a record; nothing for anything else.
[[nodiscard]] std::optional<StoredCorrectionRecord> parse_record(std::string_view line);

}  // namespace zemora
