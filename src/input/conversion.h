#pragma once
/// Pictures that are not read here go through the outside converter.

#include <string>

#include "config/notes.h"

namespace zemora {

enum class Conversion {
    done,
    no_converter,  ///< None is there, or the shipped wrapper finds no program behind it.
    failed,
};

/// Runs `<converter> <source> /convert=<target>` and waits for the target to appear (61 tries, one a
/// second). A target that never came is seen at loading.
/// Where the converter setting names no file, the shipped wrapper resource/convert is taken.
[[nodiscard]] Conversion convert_picture(const std::string& converter, const std::string& source,
                                         const std::string& target, Notes& notes);

}  // namespace zemora
