#pragma once
/// The corrections of a film as a file that a person may look at, change and hand in again.
///
/// A line holds a frame number, height, size, rotation, vergence V, vergence H, window and the two curtains,
/// in pixels of the input frame, fractions and radians. Lines that begin with # are remarks.

#include <string>
#include <vector>

#include "config/notes.h"
#include "numerics/result.h"
#include "video/correction_series.h"

namespace zemora {

inline constexpr const char* kCorrValuesName = "CorrValues.dat";
inline constexpr const char* kRawCorrValuesName = "CorrValues_Raw.dat";

/// Writes a line for each analysed frame. Fails for the run, with the name and the reason.
[[nodiscard]] Result<void> write_corr_values(const std::string& path, const CorrectionSeries& series,
                                             const MessageCatalogue& messages);

/// The lines of a file for a film of so many frames, ascending; curtains are left out. A line counts that has
/// the six values behind a frame number which is in the film and beyond that of the line before; others are
/// told with their number and left out. Fails for the run when the file cannot be read, is much longer than
/// the film, or has no line that counts.
[[nodiscard]] Result<std::vector<StoredValues>> read_corr_values(const std::string& path, int frames,
                                                                 Notes& notes);

}  // namespace zemora
