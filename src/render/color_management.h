#pragma once
/// External colour management: matrices and gammas of `ECM_FileName`, and what the warp does with them.

#include <array>
#include <string>
#include <vector>

#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

/// Channels in the order red, green, blue.
struct ColorManagement {
    using Matrix = std::array<std::array<float, 3>, 3>;  ///< Row: output channel, column: input channel.
    static constexpr int kFieldLevels = 4096;
    Matrix left{};
    Matrix right{};
    std::array<float, 3> gamma_in{};   ///< Exponents into linear light.
    std::array<float, 3> gamma_out{};  ///< Exponents back.
    /// Tables in place of the exponents (`ExtColorManagement` 2), one per channel; empty for anaglyphs by
    /// matrices, whose file holds exponents. Entries are at least 0 and not limited above.
    std::array<std::vector<int>, 3> field_in;
    std::array<std::vector<int>, 3> field_out;
};

/// Whether the settings use the file at all: `ExtColorManagement` or `AnaglyphType` 8 and 9.
[[nodiscard]] bool uses_color_management(const ParameterSet& parameters);

/// Reads the file in `PathofImages`. A missing file or a faulty value is told and ends the run with code 1.
[[nodiscard]] ColorManagement read_color_management_file(const ParameterSet& parameters, Voice& voice);

}  // namespace zemora
