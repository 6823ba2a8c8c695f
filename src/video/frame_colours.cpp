#include "video/frame_colours.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "platform/cpu.h"
#include "video/frame_colours_kernels.h"

namespace zemora {

namespace {

using colour_kernels::BgrFactors;
using colour_kernels::ChromaPlace;
using colour_kernels::YuvRow;

constexpr int kUnspecified = 2;
constexpr int kBt709 = 1;
constexpr int kBt601 = 6;            // also 5, by its other name
constexpr int kFirstHdHeight = 720;  // rows

/// Shares of red and blue in luma, by the number of a matrix.
struct LumaShares {
    double red;
    double blue;
};

LumaShares shares_of(int matrix) {
    switch (matrix) {
        case kBt709: return {0.2126, 0.0722};
        case 4: return {0.30, 0.11};    // FCC
        case 7: return {0.212, 0.087};  // SMPTE 240M
        case 9:
        case 10: return {0.2627, 0.0593};  // BT.2020
        default: return {0.299, 0.114};    // BT.601
    }
}

BgrFactors bgr_factors(const ColourTags& tags) {
    const LumaShares shares = shares_of(tags.matrix);
    const double green = 1.0 - shares.red - shares.blue;
    const double luma = tags.full_range ? 1.0 : 255.0 / 219.0;
    const double chroma = tags.full_range ? 1.0 : 255.0 / 224.0;
    const double red_v = 2.0 * (1.0 - shares.red) * chroma;
    const double blue_u = 2.0 * (1.0 - shares.blue) * chroma;
    constexpr double kOne = 32768.0;
    const auto quarter = [](double factor) {
        return static_cast<std::int16_t>(std::lround(factor * kOne / 4));
    };
    BgrFactors factors{};
    factors.luma_offset = static_cast<std::int16_t>(tags.full_range ? 0 : 16 * 128);
    factors.luma = static_cast<std::int16_t>(std::lround(luma * kOne / 2));
    factors.red_v = quarter(red_v);
    factors.green_u = quarter(blue_u * shares.blue / green);
    factors.green_v = quarter(red_v * shares.red / green);
    factors.blue_u = quarter(blue_u);
    return factors;
}

[[nodiscard]] inline int product(int a, int b) {
    return (a * b + (1 << 14)) >> 15;
}

[[nodiscard]] inline int held(int sum) {
    return std::clamp(sum, -32768, 32767);
}

[[nodiscard]] inline std::uint8_t level(int value) {
    constexpr int kBits = 6;
    return static_cast<std::uint8_t>(std::clamp(value >> kBits, 0, 255));
}

/// Sixteen times a chroma sample at pixel `x`.
[[nodiscard]] inline int chroma_at(const std::uint16_t* samples, int x, ChromaPlace place) {
    const int i = x >> 1;
    const bool is_odd = (x & 1) != 0;
    switch (place) {
        case ChromaPlace::at_each_pixel: return 4 * samples[x];
        case ChromaPlace::at_even_pixels: return is_odd ? 2 * (samples[i] + samples[i + 1]) : 4 * samples[i];
        case ChromaPlace::between_pixels: return 3 * samples[i] + samples[is_odd ? i + 1 : i - 1];
    }
    return 0;
}

void bgr_row_plain(const YuvRow& row, const BgrFactors& factors, int first, std::uint8_t* bgr) {
    constexpr int kRounding = 32;
    const bool deep = row.deep != 0;
    std::uint8_t* out = bgr + static_cast<std::ptrdiff_t>(first) * kPixelBytes;
    for (int x = first; x < row.width; ++x, out += kPixelBytes) {
        int luma = 128 * row.luma[x];
        if (deep) {
            std::uint16_t sample = 0;
            std::memcpy(&sample, row.luma + 2 * static_cast<std::ptrdiff_t>(x), sizeof sample);
            luma = 32 * std::min<int>(sample, 1023);
        }
        const int scale = deep ? 4 : 16;
        const int u = scale * chroma_at(row.u, x, row.place) - 32768;
        const int v = scale * chroma_at(row.v, x, row.place) - 32768;
        const int y = product(luma - factors.luma_offset, factors.luma) + kRounding;
        out[0] = level(held(y + product(u, factors.blue_u)));
        out[1] = level(held(held(y - product(u, factors.green_u)) - product(v, factors.green_v)));
        out[2] = level(held(y + product(v, factors.red_v)));
    }
}

/// The chroma of one row of pixels, four times, with one more sample at both ends.
class ChromaRow {
public:
    explicit ChromaRow(int samples) : samples_(samples), values_(static_cast<std::size_t>(samples) + 2) {}
    [[nodiscard]] const std::uint16_t* first() const { return values_.data() + 1; }

    void mix(const std::uint8_t* near, const std::uint8_t* far, bool deep) {
        std::uint16_t* mixed = values_.data() + 1;
        const auto sample = [deep](const std::uint8_t* row, int i) -> int {
            if (!deep) {
                return row[i];
            }
            std::uint16_t value = 0;
            std::memcpy(&value, row + 2 * static_cast<std::ptrdiff_t>(i), sizeof value);
            return std::min<int>(value, 1023);
        };
        for (int i = 0; i < samples_; ++i) {
            mixed[i] = static_cast<std::uint16_t>(3 * sample(near, i) + sample(far, i));
        }
        mixed[-1] = mixed[0];
        mixed[samples_] = mixed[samples_ - 1];
    }

private:
    int samples_;
    std::vector<std::uint16_t> values_;
};

/// The row of chroma that is nearest to a row of luma, and the one beyond.
struct ChromaRows {
    int near;
    int far;
};

ChromaRows chroma_rows(const YuvPicture& yuv, int y) {
    if (yuv.chroma_shift_y == 0) {
        return {y, y};
    }
    const int rows = (yuv.height + 1) / 2;
    const int near = y / 2;
    return {near, std::clamp(y % 2 == 0 ? near - 1 : near + 1, 0, rows - 1)};
}

void convert_rows(const YuvPicture& yuv, const BgrFactors& factors, int first, int end, Picture into) {
    const int samples = yuv.chroma_shift_x == 0 ? yuv.width : (yuv.width + 1) / 2;
    const bool deep = yuv.bits > 8;
    ChromaRow u(samples);
    ChromaRow v(samples);
    const ChromaPlace place = yuv.chroma_shift_x == 0 ? ChromaPlace::at_each_pixel
                                                      : (yuv.chroma_is_centred ? ChromaPlace::between_pixels
                                                                               : ChromaPlace::at_even_pixels);
    const auto row_of = [&](std::size_t plane, int y) {
        return yuv.planes[plane].bits + y * yuv.planes[plane].pitch;
    };
    for (int y = first; y < end; ++y) {
        const ChromaRows rows = chroma_rows(yuv, y);
        u.mix(row_of(1, rows.near), row_of(1, rows.far), deep);
        v.mix(row_of(2, rows.near), row_of(2, rows.far), deep);
        const YuvRow row{row_of(0, y), u.first(), v.first(), yuv.width, deep ? 1 : 0, place};
        bgr_row_plain(row, factors, 0, into.row(yuv.height - 1 - y));
    }
}

}  // namespace

ColourTags settled_tags(ColourTags tags, int height) {
    constexpr int kRgb = 0;
    if (tags.matrix == kUnspecified || tags.matrix == kRgb || tags.matrix == 3) {
        tags.matrix = height >= kFirstHdHeight ? kBt709 : kBt601;
    }
    return tags;
}

void bgr_from_yuv(const YuvPicture& yuv, Picture into) {
    constexpr int kBand = 32;  // rows
    const BgrFactors factors = bgr_factors(yuv.colours);
    const int bands = (yuv.height + kBand - 1) / kBand;
#pragma omp parallel for schedule(static)
    for (int band = 0; band < bands; ++band) {
        convert_rows(yuv, factors, band * kBand, std::min((band + 1) * kBand, yuv.height), into);
    }
}

}  // namespace zemora
