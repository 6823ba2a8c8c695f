#include "input/stored_record.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "config/messages.h"

namespace zemora {

namespace {

constexpr std::string_view kRecordWord = "Zemora_OK_V1.0";
constexpr std::size_t kRecordLimit = 255;  // characters that older readers take

/// Width and decimals of a field.
struct FieldFormat {
    int width;
    int decimals;
};

// clang-format off
constexpr std::array<FieldFormat, kRecordFields> kFormats{{
    {5, 1}, {5, 1}, {5, 1},                                          // pre-rotations, pre-vergence, degrees
    {5, 1}, {5, 1}, {5, 1}, {5, 1}, {5, 1}, {5, 1}, {5, 1}, {5, 1},  // pre-selection, percent
    {7, 2}, {6, 2}, {6, 2}, {6, 2}, {6, 2},  // height px, size percent, rotation and vergences degrees
    {5, 2}, {7, 2}, {6, 4}, {7, 2}, {7, 2},  // ratio, pure shift px, deviation, near point px, window shift px
    {7, 4}, {6, 4}, {6, 4}, {6, 4}, {6, 4},  // selection shift, left, right, top, bottom, fractions
    {6, 4}, {6, 4},                          // floating bands
    {5, 2}, {5, 2}, {5, 2}, {5, 2}, {5, 2}, {5, 2},  // perspective terms
    {1, 0},                                          // CroppOutput
}};
// clang-format on

std::string text_of(const StoredCorrectionRecord& record, bool padded) {
    std::string text(kRecordWord);
    for (std::size_t i = 0; i < kRecordFields; ++i) {
        const double value = std::isfinite(record[i]) ? record[i] : 0.0;
        text += format_text(" %*.*f", padded ? kFormats[i].width : 0, kFormats[i].decimals, value);
    }
    return text;
}

void skip_blanks(std::string_view& line) {
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t' || line.front() == '\r')) {
        line.remove_prefix(1);
    }
}

}  // namespace

StoredCorrectionRecord empty_record() {
    StoredCorrectionRecord record{};
    record[kRecordRatio] = 1.0;
    record[kRecordTrapezScale] = 1.0;
    return record;
}

StoredCorrectionRecord with_views_exchanged(const StoredCorrectionRecord& record) {
    StoredCorrectionRecord other = record;
    std::swap(other[kRecordRotationLeft], other[kRecordRotationRight]);
    for (std::size_t i = kRecordLeftX; i <= kRecordLeftHeight; ++i) {
        std::swap(other[i], other[i + kRecordRightX - kRecordLeftX]);
    }
    // What one view takes with the sign that the other has not.
    for (const RecordField field :
         {kRecordPreVergence, kRecordHeight, kRecordSize, kRecordRotation, kRecordVergenceV, kRecordVergenceH,
          kRecordPureShift, kRecordNearPoint, kRecordWindowShift, kRecordSelectionShift, kRecordPhantogram,
          kRecordEdgeWarp, kRecordVerticalAx}) {
        other[field] = other[field] == 0.0 ? 0.0 : -other[field];
    }
    return other;
}

bool drop_foreign_selection(StoredCorrectionRecord& record, const WantedShape& wanted) {
    constexpr double kLeastSelection = 0.001;  // fraction of the width
    constexpr double kSameRatio = 0.01;
    const double crop_output = std::floor(record[kRecordCroppOutput] + 0.5);
    if (crop_output < 0.0 || crop_output == wanted.cropp_output ||
        record[kRecordSelectionRight] - record[kRecordSelectionLeft] <= kLeastSelection) {
        return false;
    }
    const double wanted_height = wanted.height;
    const double wanted_width = wanted.width;
    if (std::fabs(wanted_height * record[kRecordRatio] - wanted_width) <= kSameRatio * wanted_width) {
        return false;
    }
    for (const RecordField field : {kRecordSelectionShift, kRecordSelectionLeft, kRecordSelectionRight,
                                    kRecordSelectionTop, kRecordSelectionBottom}) {
        record[field] = 0.0;
    }
    return true;
}

std::string record_text(const StoredCorrectionRecord& record) {
    std::string text = text_of(record, true);
    return text.size() <= kRecordLimit ? text : text_of(record, false);
}

std::optional<StoredCorrectionRecord> parse_record(std::string_view line) {
    skip_blanks(line);
    if (line.substr(0, kRecordWord.size()) != kRecordWord) {
        return std::nullopt;
    }
    line.remove_prefix(kRecordWord.size());
    StoredCorrectionRecord record{};
    for (double& value : record) {
        if (line.empty() || (line.front() != ' ' && line.front() != '\t')) {
            return std::nullopt;
        }
        skip_blanks(line);
        const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), value);
        if (error != std::errc() || !std::isfinite(value)) {
            return std::nullopt;
        }
        line.remove_prefix(static_cast<std::size_t>(end - line.data()));
    }
    if (record[kRecordTrapezScale] == 0.0) {
        record[kRecordTrapezScale] = 1.0;
    }
    return record;
}

}  // namespace zemora
