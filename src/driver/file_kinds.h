#pragma once
/// Suffixes of inputs and outputs, and what metadata may pass between them.

#include <string>

#include "config/notes.h"
#include "config/parameter_set.h"
#include "driver/exiftool.h"

namespace zemora {

/// The usual suffix of `name`. Empty, with the
/// message reported, when the name has none or one of a length that is no picture's.
[[nodiscard]] std::string checked_suffix(const std::string& name, Notes& notes);

/// The suffix of the stored pictures for one input, by `OutputFormat`. Tells when ".bmp" stands in.
[[nodiscard]] std::string output_suffix(const ParameterSet& parameters, const std::string& input_suffix,
                                        bool both_multi_picture, Notes& notes);

[[nodiscard]] InputClass input_class_of(const std::string& left_suffix, const std::string& right_suffix);

/// What may be transferred; warns where a setting asks for more.
[[nodiscard]] TagPermissions tag_permissions(const ParameterSet& parameters, const std::string& left_input,
                                             const std::string& right_input, const std::string& left_output,
                                             const std::string& right_output, Notes& notes);

}  // namespace zemora
