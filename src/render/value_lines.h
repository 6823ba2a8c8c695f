#pragma once
/// Numbers of the calibration and colour files, some on each line with blanks between them.

#include <span>
#include <string_view>

namespace zemora {

/// Reads the numbers at the beginning of `line` into `values`, in the "C" locale, and returns how many
/// there were. A word that is not wholly a number of the type ("0,5", "nan", "1e99") ends the reading; the
/// values from it on stay as they are.
int read_values(std::string_view line, std::span<float> values);
int read_values(std::string_view line, std::span<int> values);

}  // namespace zemora
