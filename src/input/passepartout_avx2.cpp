#include <immintrin.h>

#include <array>
#include <cstdint>
#include <iterator>

#include "input/passepartout.h"

namespace zemora::passepartout_kernels {

namespace {

constexpr int kVectorBytes = 32;
constexpr int kVectors = 3;  // 96 bytes hold whole pixels
constexpr int kBlockPixels = 32;
constexpr int kBytesRead = kVectors * kVectorBytes + 2;  // the last pixel is looked at from three bytes

/// The colour from each of its bytes on, over and over, and where the blue bytes of a block lie.
struct Patterns {
    __m256i colour[kVectors + 2];
    __m256i blue[kVectors];
};

Patterns make_patterns(const std::uint8_t* colour) {
    alignas(kVectorBytes) std::array<std::uint8_t, kVectors * kVectorBytes + kVectorBytes> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = colour[i % 3];
    }
    alignas(kVectorBytes) std::array<std::uint8_t, static_cast<std::size_t>(kVectors) * kVectorBytes> blue{};
    for (std::size_t i = 0; i < blue.size(); i += 3) {
        blue[i] = 0xFF;
    }
    const auto load = [](const std::uint8_t* from) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    };
    Patterns patterns;
    // Vector v starts at byte 32 v of a block, its pixel phase is 2 v modulo 3.
    for (std::size_t phase = 0; phase < std::size(patterns.colour); ++phase) {
        patterns.colour[phase] = load(bytes.data() + phase);
    }
    for (std::size_t v = 0; v < std::size(patterns.blue); ++v) {
        patterns.blue[v] = load(blue.data() + v * kVectorBytes);
    }
    return patterns;
}

}  // namespace

int protect_row_avx2(std::uint8_t* pixels, int count, const std::uint8_t* colour) {
    const Patterns patterns = make_patterns(colour);
    const __m256i change = _mm256_set1_epi8(colour[0] < kBlueFallsFrom ? 1 : -1);
    int x = 0;
    for (std::uint8_t* from = pixels; (count - x) * 3 >= kBytesRead;
         x += kBlockPixels, from += kVectors * kVectorBytes) {
        __m256i hits[kVectors];
        for (std::size_t v = 0; v < std::size(hits); ++v) {
            const auto* at = from + v * kVectorBytes;
            const auto same = [&](std::size_t k) {
                return _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at + k)),
                                         patterns.colour[(2 * v) % 3 + k]);
            };
            hits[v] = _mm256_and_si256(_mm256_and_si256(same(0), same(1)),
                                       _mm256_and_si256(same(2), patterns.blue[v]));
        }
        const __m256i any = _mm256_or_si256(_mm256_or_si256(hits[0], hits[1]), hits[2]);
        if (_mm256_testz_si256(any, any) != 0) {
            continue;
        }
        for (std::size_t v = 0; v < std::size(hits); ++v) {
            auto* at = reinterpret_cast<__m256i*>(from + v * kVectorBytes);
            const __m256i changed =
                _mm256_add_epi8(_mm256_loadu_si256(at), _mm256_and_si256(hits[v], change));
            _mm256_storeu_si256(at, changed);
        }
    }
    return x;
}

}  // namespace zemora::passepartout_kernels
