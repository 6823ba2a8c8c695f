#include "report/analysis_rows.h"

#include <cmath>

namespace zemora {

namespace {

struct RemarkRow {
    double limit;
    BothTexts above;
    BothTexts below;
    BothTexts between;
};

constexpr RemarkRow kRemarks[] = {
#define REMARK(name, limit, above_english, above_german, below_english, below_german, between_english, \
               between_german)                                                                         \
    {limit, {above_english, above_german}, {below_english, below_german}, {between_english, between_german}},
#include "report/value_remarks.inc"
#undef REMARK
};

constexpr double kPercent = 100.0;
constexpr double kDegreesPerRadian = 180.0 / 3.14159265358979323846;

/// A value as it is shown and as its remark judges it.
struct CorrectionRow {
    double Correction::*value;
    double shown;   // factor to the unit of the report
    double judged;  // factor to the unit of the remark's limit
    Msg CorrectionWords::*unit;
    Remark remark;
};

constexpr CorrectionRow kCorrections[] = {
    {&Correction::height_px, 1.0, 1.0, &CorrectionWords::pixel, Remark::height},
    {&Correction::size, kPercent, kPercent, &CorrectionWords::percent, Remark::size},
    {&Correction::rotation_rad, kDegreesPerRadian, 1.0, &CorrectionWords::degree, Remark::rotation},
    {&Correction::vergence_v_rad, kDegreesPerRadian, 1.0, &CorrectionWords::degree, Remark::vergence_v},
    {&Correction::vergence_h_rad, kDegreesPerRadian, 1.0, &CorrectionWords::degree, Remark::vergence_h},
};

}  // namespace

std::string remark_on(Remark remark, double value, const MessageCatalogue& messages) {
    if (!std::isfinite(value)) {
        return {};
    }
    const RemarkRow& row = kRemarks[static_cast<int>(remark)];
    const auto& words = value > row.limit ? row.above : value < -row.limit ? row.below : row.between;
    return messages.either(words);
}

bool counts_as_measured(int estimate_geometry) {
    return estimate_geometry == 1 || estimate_geometry == 3 || estimate_geometry == -3;
}

std::vector<ValueRow> correction_rows(const Correction& values, const CorrectionWords& words,
                                      bool with_remarks, const MessageCatalogue& messages) {
    std::vector<ValueRow> rows;
    for (const CorrectionRow& row : kCorrections) {
        const double value = values.*row.value;
        rows.push_back({messages.raw(words.labels[rows.size()]), measured_number(value * row.shown),
                        messages.raw(words.*row.unit),
                        with_remarks ? remark_on(row.remark, value * row.judged, messages) : ""});
    }
    return rows;
}

}  // namespace zemora
