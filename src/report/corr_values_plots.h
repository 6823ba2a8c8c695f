#pragma once
/// The commands that let gnuplot show the corrections of a film.

#include <string>

#include "config/messages.h"
#include "numerics/result.h"

namespace zemora {

/// Writes CorrValues_Geo.gpl and CorrValues_Window.gpl beside CorrValues.dat and, with a file of raw values,
/// CorrValues_Raw.gpl, which compares both. Fails for the run, with the name and the reason.
[[nodiscard]] Result<void> write_corr_values_plots(const std::string& folder, bool with_raw,
                                                   const MessageCatalogue& messages);

}  // namespace zemora
