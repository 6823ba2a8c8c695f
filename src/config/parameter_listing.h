#pragma once
/// The list of all settings that a run will use, for the console and for the text report.

#include <string>

#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

/// The two differ in the order of two settings and in where the last text begins.
enum class ListingForm { console, report };

[[nodiscard]] std::string parameter_listing(const ParameterSet& parameters, const MessageCatalogue& messages,
                                            ListingForm form);

/// On the console, followed by a wait; nothing unless `VerboseMode` is above 1.
void list_parameters(const ParameterSet& parameters, Voice& voice);
/// Into the text report, likewise without the wait.
void report_parameters(const ParameterSet& parameters, Voice& voice);

}  // namespace zemora
