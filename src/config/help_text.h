#pragma once
/// Texts for reading that are made from the table of parameters.

#include <string>

#include "config/messages.h"

namespace zemora {

/// What `--version` prints.
[[nodiscard]] std::string version_text();

/// What `--help` and `/h` print: the forms of the call and every option.
[[nodiscard]] std::string help_text(Language language);

/// The manual page zemora(1) in roff.
[[nodiscard]] std::string manual_page(Language language);

/// A parameter file with all keys at their defaults and their meanings as comments.
[[nodiscard]] std::string sample_parameter_file(Language language);

}  // namespace zemora
