#pragma once
/// External colour management inside the warp: into linear light, a matrix for each view, and back.

#include <array>
#include <cstdint>
#include <vector>

#include "numerics/bitmap.h"
#include "render/color_management.h"
#include "render/sample_pixel.h"

namespace zemora {

/// Changes values of 256 steps a level. Light below none, which a matrix may give, counts as none.
class ColourChange {
public:
    /// By exponents, or by tables where the file gave them.
    explicit ColourChange(ColorManagement colours);

    /// Changes blue, green, red of the left or right view.
    void change(bool is_left, std::array<std::uint16_t, kPixelBytes>& values) const;
    /// The same for samples; empty ones stay.
    void apply(bool is_left, Sample* samples, int count) const;

private:
    using Values = std::array<std::uint16_t, kPixelBytes>;
    void change_by_exponents(const ColorManagement::Matrix& matrix, Values& values) const;
    void change_by_tables(const ColorManagement::Matrix& matrix, Values& values) const;

    ColorManagement colours_;
    /// Linear light of all values, for red, green, blue; empty with tables.
    std::array<std::vector<double>, kPixelBytes> light_;
};

}  // namespace zemora
