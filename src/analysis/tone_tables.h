#pragma once
/// Tone tables of a view: four planes of 256 entries in 8.8 fixed point.

#include <array>
#include <cstdint>

namespace zemora {

/// Plane 0 is the grey table for all channels; planes 1, 2, 3 belong to blue, green, red.
struct ToneTables {
    static constexpr int kPlanes = 4;
    static constexpr int kLevels = 256;
    std::array<std::array<std::uint16_t, kLevels>, kPlanes> plane{};

    /// Entry i is i x 256 in all planes.
    [[nodiscard]] static ToneTables identity() {
        ToneTables tables;
        for (auto& levels : tables.plane) {
            for (int i = 0; i < kLevels; ++i) {
                levels[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(i * kLevels);
            }
        }
        return tables;
    }
};

}  // namespace zemora
