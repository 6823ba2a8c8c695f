#pragma once
/// The objects of a run: each a left and a right file or one stereo file.

#include <array>
#include <string>
#include <vector>

#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

/// One object; absolute paths.
struct ImageObject {
    std::string left;    ///< Two files.
    std::string right;
    std::string stereo;  ///< Stereo input.
    std::array<double, 35> stored{};  ///< Its row of stored values, when a list gave them.
    bool has_stored = false;
};

struct ImageList {
    bool two_files = true;
    std::vector<ImageObject> objects;
    [[nodiscard]] int count() const { return static_cast<int>(objects.size()); }
};

/// Collects the objects of the run from `ParameterSet`. The named pair or stereo file of
/// `InputMode` 0 is the one source so far; the other modes give an empty list.
[[nodiscard]] ImageList build_image_list(const ParameterSet& parameters, const Voice& voice);

}  // namespace zemora
