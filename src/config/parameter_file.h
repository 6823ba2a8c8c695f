#pragma once
/// The reader of the parameter file.

#include <string>

#include "config/options.h"
#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

struct ParameterFileResult {
    bool found = false;         ///< The file could be read.
    bool default_used = false;  ///< The file lacks a key, which a note reported.
};

/// Sets all defaults and then what the file says. Each key is searched from the file's beginning and
/// the first line that holds it counts. `Language` switches the catalogue as soon as it is read; the
/// early settings of the command line take precedence for all that is reported meanwhile. Fails for the run
/// at a line that is too long, at a number without value or outside its limits, for a file of another
/// version, and for one that is there but cannot be read. A file that cannot be opened leaves the defaults.
[[nodiscard]] Result<ParameterFileResult> read_parameter_file(const std::string& path,
                                                              ParameterSet& parameters, Voice& voice,
                                                              const EarlySettings& early = {});

}  // namespace zemora
