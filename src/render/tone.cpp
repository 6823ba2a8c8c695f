#include "render/tone.h"

#include <algorithm>

namespace zemora {

namespace {

constexpr std::size_t kValues = 65536;

}  // namespace

const std::array<std::uint16_t, ToneTables::kLevels>* tone_plane(const ToneTables& tables, int tone_mode,
                                                                 int channel) {
    switch (tone_mode) {
        case 1:
        case 2:
        case 5:
        case 6: return tables.plane.data();
        case 3:
        case 4:
        case 7:
        case 8: return &tables.plane[static_cast<std::size_t>(channel) + 1];
        default: return nullptr;
    }
}

std::uint16_t apply_tone(const std::array<std::uint16_t, ToneTables::kLevels>& plane, std::uint16_t value) {
    const std::size_t level = value >> 8;
    const unsigned fraction = value & 255U;
    const unsigned low = plane[level];
    const unsigned high = plane[std::min<std::size_t>(level + 1, plane.size() - 1)];
    return static_cast<std::uint16_t>((low * (256U - fraction) + high * fraction) >> 8);
}

ToneLookup::ToneLookup(const ToneTables* tables, int tone_mode, bool keeps_apart)
    : keeps_apart_(keeps_apart) {
    for (int channel = 0; channel < kPixelBytes && tables != nullptr; ++channel) {
        const auto* plane = tone_plane(*tables, tone_mode, channel);
        if (plane == nullptr) {
            return;
        }
        auto& values = values_[static_cast<std::size_t>(channel)];
        values.resize(kValues);
        for (std::size_t v = 0; v < kValues; ++v) {
            values[v] = apply_tone(*plane, static_cast<std::uint16_t>(v));
        }
    }
}

void ToneLookup::apply(Sample* samples, int count, Colour background) const {
    if (!active()) {
        for (int i = 0; i < count && keeps_apart_; ++i) {
            if (samples[i].empty == 0) {
                keep_from_background(samples[i].value, background);
            }
        }
        return;
    }
    const std::uint16_t* blue = values_[0].data();
    const std::uint16_t* green = values_[1].data();
    const std::uint16_t* red = values_[2].data();
    for (int i = 0; i < count; ++i) {
        const Sample old = samples[i];
        if (old.empty == 0) {
            Sample changed{{blue[old.value[0]], green[old.value[1]], red[old.value[2]]}, 0};
            keep_from_background(changed.value, background);
            samples[i] = changed;
        }
    }
}

}  // namespace zemora
