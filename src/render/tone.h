#pragma once
/// Tone tables applied to the 8.8 samples inside the warp.

#include <array>
#include <cstdint>
#include <vector>

#include "analysis/tone_tables.h"
#include "render/sample_pixel.h"

namespace zemora {

/// The table plane of `tables` for a channel under an `AutoOutputContrast` value; null when the
/// value applies no table.
[[nodiscard]] const std::array<std::uint16_t, ToneTables::kLevels>* tone_plane(const ToneTables& tables,
                                                                               int tone_mode, int channel);

/// A value of 256 steps a level through one plane, linear between its entries.
[[nodiscard]] std::uint16_t apply_tone(const std::array<std::uint16_t, ToneTables::kLevels>& plane,
                                       std::uint16_t value);

/// The tables of one view spread out to one entry for each 8.8 value.
class ToneLookup {
public:
    /// Does nothing.
    ToneLookup() = default;
    /// `keeps_apart`: without tables too, samples are kept apart from the background.
    ToneLookup(const ToneTables* tables, int tone_mode, bool keeps_apart = false);

    [[nodiscard]] bool active() const { return !values_[0].empty(); }
    /// Applies the tables and keeps their result apart from `background`. Empty samples stay.
    void apply(Sample* samples, int count, Colour background) const;

private:
    bool keeps_apart_ = false;
    std::array<std::vector<std::uint16_t>, kPixelBytes> values_;
};

}  // namespace zemora
