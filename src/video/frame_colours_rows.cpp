#include "video/frame_colours_rows.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "platform/cpu.h"

namespace zemora::colour_kernels {

namespace {

constexpr int kPixel = 3;           // bytes
constexpr int kLargestDeep = 1023;  // of 10 bits

/// Null where there is only the plain code.
const ColourKernels* kernels() {
#if defined(__x86_64__)
    switch (usable_instruction_set()) {
        case InstructionSet::avx512: return &kColourKernelsAvx512;
        case InstructionSet::avx2: return &kColourKernelsAvx2;
        case InstructionSet::portable: break;
    }
#endif
    return nullptr;
}

int deep_sample(const std::uint8_t* row, int i) {
    std::uint16_t sample = 0;
    std::memcpy(&sample, row + 2 * static_cast<std::ptrdiff_t>(i), sizeof sample);
    return std::min<int>(sample, kLargestDeep);
}

inline int product(int a, int b) {
    return (a * b + (1 << 14)) >> 15;
}

inline int held(int sum) {
    return std::clamp(sum, -32768, 32767);
}

inline std::uint8_t level(int value) {
    constexpr int kBits = 6;
    return static_cast<std::uint8_t>(std::clamp(value >> kBits, 0, 255));
}

/// Sixteen times a chroma sample at pixel `x`.
inline int chroma_at(const std::uint16_t* samples, int x, ChromaPlace place) {
    const int i = x >> 1;
    const bool is_odd = (x & 1) != 0;
    switch (place) {
        case ChromaPlace::at_each_pixel: return 4 * samples[x];
        case ChromaPlace::at_even_pixels: return is_odd ? 2 * (samples[i] + samples[i + 1]) : 4 * samples[i];
        case ChromaPlace::between_pixels: return 3 * samples[i] + samples[is_odd ? i + 1 : i - 1];
    }
    return 0;
}

/// The pixels from `x` to below `end`, of which there are at most `kPart`.
constexpr int kPart = 64;
void bgr_part(const YuvRow& row, const BgrFactors& factors, int x, int end, std::uint8_t* out) {
    constexpr int kRounding = 32;
    const int scale = row.deep != 0 ? 4 : 16;
    int luma[kPart];
    int u[kPart];
    int v[kPart];
    const int count = end - x;
    for (int i = 0; i < count; ++i) {
        luma[i] = row.deep != 0 ? 32 * deep_sample(row.luma, x + i) : 128 * row.luma[x + i];
        u[i] = scale * chroma_at(row.u, x + i, row.place) - 32768;
        v[i] = scale * chroma_at(row.v, x + i, row.place) - 32768;
    }
    for (int i = 0; i < count; ++i) {
        const int y = product(luma[i] - factors.luma_offset, factors.luma) + kRounding;
        out[kPixel * i] = level(held(y + product(u[i], factors.blue_u)));
        out[kPixel * i + 1] =
            level(held(held(y - product(u[i], factors.green_u)) - product(v[i], factors.green_v)));
        out[kPixel * i + 2] = level(held(y + product(v[i], factors.red_v)));
    }
}

inline int weighted(int blue, int green, int red, const std::int16_t* factors) {
    return blue * factors[0] + green * factors[1] + red * factors[2];
}

}  // namespace

void mix_chroma_row(const std::uint8_t* near, const std::uint8_t* far, int samples, bool deep,
                    std::uint16_t* mixed) {
    const ColourKernels* fast = kernels();
    int i = fast != nullptr ? fast->mix_chroma(near, far, samples, deep ? 1 : 0, mixed) : 0;
    for (; i < samples; ++i) {
        mixed[i] = static_cast<std::uint16_t>(deep ? 3 * deep_sample(near, i) + deep_sample(far, i)
                                                   : 3 * near[i] + far[i]);
    }
    mixed[-1] = mixed[0];
    mixed[samples] = mixed[samples - 1];
}

void bgr_row(const YuvRow& row, const BgrFactors& factors, std::uint8_t* bgr) {
    const ColourKernels* fast = kernels();
    int x = fast != nullptr ? fast->bgr_row(row, factors, bgr) : 0;
    for (; x < row.width; x += kPart) {
        bgr_part(row, factors, x, std::min(x + kPart, row.width),
                 bgr + kPixel * static_cast<std::ptrdiff_t>(x));
    }
}

void luma_row(const std::uint8_t* bgr, int width, const YuvFactors& factors, std::uint8_t* luma) {
    const ColourKernels* fast = kernels();
    int x = fast != nullptr ? fast->luma_row(bgr, width, factors, luma) : 0;
    for (; x < width; ++x) {
        const std::uint8_t* pixel = bgr + kPixel * static_cast<std::ptrdiff_t>(x);
        luma[x] = static_cast<std::uint8_t>(
            (weighted(pixel[0], pixel[1], pixel[2], factors.y) + kLumaStart) >> kLumaBits);
    }
}

void chroma_row(const std::uint8_t* above, const std::uint8_t* below, int width, const YuvFactors& factors,
                std::uint16_t* sums, std::uint8_t* u, std::uint8_t* v) {
    const ColourKernels* fast = kernels();
    const int all = kPixel * width;
    std::uint16_t* const first = sums + kPixel;
    int at = fast != nullptr ? fast->sum_rows(above, below, all, first) : 0;
    for (; at < all; ++at) {
        first[at] = static_cast<std::uint16_t>(above[at] + below[at]);
    }
    std::copy_n(first, kPixel, sums);
    std::copy_n(first + all - kPixel, kPixel, first + all);
    const int samples = width / 2;
    int i = fast != nullptr ? fast->chroma_row(first, samples, factors, u, v) : 0;
    for (; i < samples; ++i) {
        const std::uint16_t* own = first + 2 * kPixel * static_cast<std::ptrdiff_t>(i);
        const auto smooth = [own](int channel) {
            return own[channel - kPixel] + 2 * own[channel] + own[channel + kPixel];
        };
        const int blue = smooth(0);
        const int green = smooth(1);
        const int red = smooth(2);
        u[i] =
            static_cast<std::uint8_t>((weighted(blue, green, red, factors.u) + kChromaStart) >> kChromaBits);
        v[i] =
            static_cast<std::uint8_t>((weighted(blue, green, red, factors.v) + kChromaStart) >> kChromaBits);
    }
}

}  // namespace zemora::colour_kernels
