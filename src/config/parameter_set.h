#pragma once
/// The settings of a run: one field for each key of the parameter file, and the derived ones.

#include <set>
#include <string>

#include "config/setting_values.h"

namespace zemora {

/// Set from the defaults, then the parameter file, the options, the form of the call and the
/// consistency rules, in this order. Behind the rules and the start of the run no setting changes.
struct ParameterSet {  // NOLINT(clang-analyzer-optin.performance.Padding): the order of the table
    using text = std::string;
    using path = std::string;
#define ROW(type, field, key, low, high, standard, missing, option, english, german, ...) \
    type field = standard;
#include "config/parameter_table.inc"
#undef ROW
    int encoder_latency = 0;      ///< Frames that the video encoder keeps back.
    std::set<std::string> given;  ///< Keys that the parameter file or an option has set.
};

}  // namespace zemora
