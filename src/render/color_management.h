#pragma once
/// The file of external colour management (`ECM_FileName`): a matrix for each view between two curves.

#include <array>
#include <string>
#include <vector>

#include "config/notes.h"

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

/// What the file holds behind the matrices.
enum class ColourCurves { exponents, tables };

/// The file that the settings name.
struct ColourFile {
    std::string path;
    std::string name;  ///< As the user gave it.
    ColourCurves curves = ColourCurves::exponents;
};

/// Reads the file. One that is missing, or a faulty value in it, ends the run.
[[nodiscard]] Result<ColorManagement> read_colour_file(const ColourFile& file,
                                                       const MessageCatalogue& messages);

}  // namespace zemora
