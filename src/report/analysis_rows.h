#pragma once
/// The rows of measured or used values, of a pair and of a whole sequence.

#include <array>
#include <vector>

#include "analysis/stereo_analyse.h"
#include "config/messages.h"
#include "report/value_rows.h"

namespace zemora {

/// The values whose sign is put into words.
enum class Remark {
#define REMARK(name, ...) name,
#include "report/value_remarks.inc"
#undef REMARK
};

/// What the sign of `value` means; empty when it is no finite number.
[[nodiscard]] std::string remark_on(Remark remark, double value, const MessageCatalogue& messages);

/// Whether `EstimateGeometry` measures: its values count as errors, otherwise as settings that were used.
[[nodiscard]] bool counts_as_measured(int estimate_geometry);

/// Labels of height, size, rotation, vergence_v and vergence_h, and their units.
struct CorrectionWords {
    std::array<Msg, 5> labels;
    Msg pixel;
    Msg percent;
    Msg degree;
};

/// Five rows: height in pixels, size in percent, angles in degrees.
[[nodiscard]] std::vector<ValueRow> correction_rows(const Correction& values, const CorrectionWords& words,
                                                    bool with_remarks, const MessageCatalogue& messages);

}  // namespace zemora
