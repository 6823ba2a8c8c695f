#include "video/frame_colours.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "video/frame_colours_rows.h"

namespace zemora {

namespace {

using colour_kernels::BgrFactors;
using colour_kernels::ChromaPlace;
using colour_kernels::YuvFactors;
using colour_kernels::YuvRow;

// Numbers of matrices in ITU-T H.273.
enum Matrix { kRgb = 0, kBt709 = 1, kUnspecified = 2, kReserved = 3, kFcc = 4, kBt601 = 6, kSmpte240 = 7 };
enum WideMatrix { kBt2020 = 9, kBt2020Constant = 10 };

constexpr int kFirstHdHeight = 720;  // rows
constexpr int kBand = 32;            // rows that a thread takes at a time; even
constexpr double kOne = 32768.0;     // of a factor

/// Shares of red and blue in luma.
struct LumaShares {
    double red;
    double blue;
    [[nodiscard]] double green() const { return 1.0 - red - blue; }
};

LumaShares shares_of(int matrix) {
    switch (matrix) {
        case kBt709: return {0.2126, 0.0722};
        case kFcc: return {0.30, 0.11};
        case kSmpte240: return {0.212, 0.087};
        case kBt2020:
        case kBt2020Constant: return {0.2627, 0.0593};
        default: return {0.299, 0.114};  // BT.601
    }
}

std::int16_t fixed(double factor) {
    return static_cast<std::int16_t>(std::lround(factor * kOne));
}

BgrFactors bgr_factors(const ColourTags& tags) {
    const LumaShares shares = shares_of(tags.matrix);
    const double luma = tags.full_range ? 1.0 : 255.0 / 219.0;
    const double chroma = tags.full_range ? 1.0 : 255.0 / 224.0;
    const double red_v = 2.0 * (1.0 - shares.red) * chroma;
    const double blue_u = 2.0 * (1.0 - shares.blue) * chroma;
    BgrFactors factors{};
    factors.luma_offset = static_cast<std::int16_t>(tags.full_range ? 0 : 16 * 128);
    factors.luma = fixed(luma / 2);
    factors.red_v = fixed(red_v / 4);
    factors.green_u = fixed(blue_u * shares.blue / shares.green() / 4);
    factors.green_v = fixed(red_v * shares.red / shares.green() / 4);
    factors.blue_u = fixed(blue_u / 4);
    return factors;
}

YuvFactors yuv_factors(const ColourTags& tags) {
    constexpr double kLuma = 219.0 / 255.0;
    constexpr double kChroma = 224.0 / 255.0 / 2;
    const LumaShares shares = shares_of(tags.matrix);
    YuvFactors factors{};
    factors.y[0] = fixed(shares.blue * kLuma);
    factors.y[2] = fixed(shares.red * kLuma);
    factors.y[1] = static_cast<std::int16_t>(fixed(kLuma) - factors.y[0] - factors.y[2]);
    factors.u[0] = fixed(kChroma);
    factors.u[2] = fixed(-kChroma * shares.red / (1.0 - shares.blue));
    factors.u[1] = static_cast<std::int16_t>(-factors.u[0] - factors.u[2]);
    factors.v[2] = fixed(kChroma);
    factors.v[0] = fixed(-kChroma * shares.blue / (1.0 - shares.red));
    factors.v[1] = static_cast<std::int16_t>(-factors.v[2] - factors.v[0]);
    return factors;
}

ChromaPlace chroma_place(const YuvPicture& yuv) {
    if (yuv.chroma_shift_x == 0) {
        return ChromaPlace::at_each_pixel;
    }
    return yuv.chroma_is_centred ? ChromaPlace::between_pixels : ChromaPlace::at_even_pixels;
}

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
    std::vector<std::uint16_t> u(static_cast<std::size_t>(samples) + 2);
    std::vector<std::uint16_t> v(static_cast<std::size_t>(samples) + 2);
    const auto row_of = [&](std::size_t plane, int y) {
        return yuv.planes[plane].bits + y * yuv.planes[plane].pitch;
    };
    for (int y = first; y < end; ++y) {
        const ChromaRows rows = chroma_rows(yuv, y);
        colour_kernels::mix_chroma_row(row_of(1, rows.near), row_of(1, rows.far), samples, deep,
                                       u.data() + 1);
        colour_kernels::mix_chroma_row(row_of(2, rows.near), row_of(2, rows.far), samples, deep,
                                       v.data() + 1);
        const YuvRow row{row_of(0, y), u.data() + 1, v.data() + 1,
                         yuv.width,    deep ? 1 : 0, chroma_place(yuv)};
        colour_kernels::bgr_row(row, factors, into.row(yuv.height - 1 - y));
    }
}

}  // namespace

ColourTags settled_tags(ColourTags tags, int height) {
    if (tags.matrix == kUnspecified || tags.matrix == kRgb || tags.matrix == kReserved) {
        tags.matrix = height >= kFirstHdHeight ? kBt709 : kBt601;
    }
    return tags;
}

void bgr_from_yuv(const YuvPicture& yuv, Picture into) {
    const BgrFactors factors = bgr_factors(yuv.colours);
    const int bands = (yuv.height + kBand - 1) / kBand;
#pragma omp parallel for schedule(static)
    for (int band = 0; band < bands; ++band) {
        convert_rows(yuv, factors, band * kBand, std::min((band + 1) * kBand, yuv.height), into);
    }
}

void yuv_from_bgr(ConstPicture picture, const ColourTags& tags, std::array<WritablePlane, 3> into) {
    const YuvFactors factors = yuv_factors(settled_tags(tags, picture.height));
    const int bands = (picture.height + kBand - 1) / kBand;
    const auto row_of = [&](std::size_t plane, int y) { return into[plane].bits + y * into[plane].pitch; };
#pragma omp parallel for schedule(static)
    for (int band = 0; band < bands; ++band) {
        std::vector<std::uint16_t> sums((static_cast<std::size_t>(picture.width) + 2) * kPixelBytes);
        for (int y = band * kBand; y < std::min((band + 1) * kBand, picture.height); y += 2) {
            const std::uint8_t* above = picture.row(picture.height - 1 - y);
            const std::uint8_t* below = picture.row(picture.height - 2 - y);
            colour_kernels::luma_row(above, picture.width, factors, row_of(0, y));
            colour_kernels::luma_row(below, picture.width, factors, row_of(0, y + 1));
            colour_kernels::chroma_row(above, below, picture.width, factors, sums.data(), row_of(1, y / 2),
                                       row_of(2, y / 2));
        }
    }
}

}  // namespace zemora
