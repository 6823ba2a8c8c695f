#pragma once
/// Numbers that look random and come out alike on every machine.

#include <cstdint>

namespace zemora {

/// Spreads the bits of a number: neighbours give unrelated results.
[[nodiscard]] constexpr std::uint32_t mix_bits(std::uint32_t value) {
    value ^= value >> 16;
    value *= 0x7FEB352DU;
    value ^= value >> 15;
    value *= 0x846CA68BU;
    return value ^ (value >> 16);
}

/// A reproducible stream of numbers in 0 to 1.
class SceneRandom {
public:
    explicit SceneRandom(std::uint32_t seed) : state_(mix_bits(seed + 0x9E3779B9U)) {}
    double next() {
        state_ = mix_bits(state_ + 0x9E3779B9U);
        return state_ / 4294967296.0;
    }
    double between(double low, double high) { return low + (high - low) * next(); }

private:
    std::uint32_t state_;
};

}  // namespace zemora
