#include "video/frame_colours.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "platform/cpu.h"

namespace zemora::test {
namespace {

/// Planes of random samples, also such as no film should have.
struct RandomYuv {
    YuvPicture picture;
    std::vector<std::uint8_t> bytes[3];

    RandomYuv(int width, int height, int bits, int shift_x, int shift_y, unsigned seed) {
        std::mt19937 random(seed);
        picture.width = width;
        picture.height = height;
        picture.bits = bits;
        picture.chroma_shift_x = shift_x;
        picture.chroma_shift_y = shift_y;
        for (std::size_t plane = 0; plane < 3; ++plane) {
            const int columns = plane == 0 ? width : (width + shift_x) >> shift_x;
            const int rows = plane == 0 ? height : (height + shift_y) >> shift_y;
            const int sample_bytes = bits > 8 ? 2 : 1;
            bytes[plane].resize(static_cast<std::size_t>(columns) *
                                static_cast<std::size_t>(rows * sample_bytes));
            for (int i = 0; i < columns * rows; ++i) {
                const auto value = static_cast<std::uint16_t>(random() % (1U << bits));
                std::memcpy(bytes[plane].data() + static_cast<std::ptrdiff_t>(i) * sample_bytes, &value,
                            static_cast<std::size_t>(sample_bytes));
            }
            picture.planes[plane] = {bytes[plane].data(), columns * sample_bytes};
        }
    }
    /// A sample in levels of 8 bits, the nearest one outside.
    [[nodiscard]] double at(std::size_t plane, int x, int y) const {
        const int columns =
            plane == 0 ? picture.width : (picture.width + picture.chroma_shift_x) >> picture.chroma_shift_x;
        const int rows =
            plane == 0 ? picture.height : (picture.height + picture.chroma_shift_y) >> picture.chroma_shift_y;
        x = std::clamp(x, 0, columns - 1);
        y = std::clamp(y, 0, rows - 1);
        if (picture.bits == 8) {
            return bytes[plane][static_cast<std::size_t>(y * columns + x)];
        }
        std::uint16_t value = 0;
        std::memcpy(&value, bytes[plane].data() + 2 * static_cast<std::ptrdiff_t>(y * columns + x), 2);
        return value / 4.0;
    }
    /// Chroma where the pixel is, straight between the samples around it.
    [[nodiscard]] double chroma(std::size_t plane, int x, int y) const {
        const double column =
            picture.chroma_shift_x == 0 ? x : (picture.chroma_is_centred ? (x - 0.5) / 2 : x / 2.0);
        const double row = picture.chroma_shift_y == 0 ? y : (y - 0.5) / 2;
        const int i = static_cast<int>(std::floor(column));
        const int j = static_cast<int>(std::floor(row));
        const double a = column - i;
        const double b = row - j;
        return (1 - b) * ((1 - a) * at(plane, i, j) + a * at(plane, i + 1, j)) +
               b * ((1 - a) * at(plane, i, j + 1) + a * at(plane, i + 1, j + 1));
    }
};

/// The formulas of ITU-R BT.601 and BT.709 in real numbers.
std::array<double, 3> bgr_of(double y, double u, double v, double kr, double kb, bool full) {
    const double luma = full ? y : (y - 16) * 255 / 219;
    const double chroma = full ? 1.0 : 255.0 / 224;
    const double kg = 1 - kr - kb;
    const double blue = luma + 2 * (1 - kb) * (u - 128) * chroma;
    const double red = luma + 2 * (1 - kr) * (v - 128) * chroma;
    const double green = luma - (kb * 2 * (1 - kb) * (u - 128) + kr * 2 * (1 - kr) * (v - 128)) * chroma / kg;
    return {std::clamp(blue, 0.0, 255.0), std::clamp(green, 0.0, 255.0), std::clamp(red, 0.0, 255.0)};
}

struct FormCase {
    int bits, shift_x, shift_y;
    bool centred;
};

class FrameColours : public testing::TestWithParam<FormCase> {
protected:
    ~FrameColours() override { limit_instruction_set(InstructionSet::avx512); }
};

TEST_P(FrameColours, FollowTheFormulasWithChromaAtItsPlace) {
    const FormCase& form = GetParam();
    RandomYuv yuv(71, 37, form.bits, form.shift_x, form.shift_y, 3);
    yuv.picture.chroma_is_centred = form.centred;
    for (const bool full : {false, true}) {
        for (const auto& [matrix, kr, kb] : {std::tuple{1, 0.2126, 0.0722}, std::tuple{6, 0.299, 0.114}}) {
            yuv.picture.colours = {2, 2, matrix, full};
            const Bitmap bitmap = Bitmap::create(71, 37);
            bgr_from_yuv(yuv.picture, bitmap.picture());
            double worst = 0;
            for (int y = 0; y < 37; ++y) {
                for (int x = 0; x < 71; ++x) {
                    const auto wanted =
                        bgr_of(yuv.at(0, x, y), yuv.chroma(1, x, y), yuv.chroma(2, x, y), kr, kb, full);
                    for (int c = 0; c < 3; ++c) {
                        worst = std::max(worst, std::abs(bitmap.picture().pixel(x, 36 - y)[c] -
                                                         wanted[static_cast<std::size_t>(c)]));
                    }
                }
            }
            EXPECT_LT(worst, 0.56) << "matrix " << matrix << (full ? ", full range" : "");
        }
    }
}

TEST_P(FrameColours, AreTheSameBytesWithEveryInstructionSetAndNumberOfThreads) {
    const FormCase& form = GetParam();
    for (const auto& [width, height] :
         {std::pair{16, 16}, std::pair{17, 5}, std::pair{97, 33}, std::pair{1, 1}, std::pair{258, 70}}) {
        RandomYuv yuv(width, height, form.bits, form.shift_x, form.shift_y, static_cast<unsigned>(width));
        yuv.picture.chroma_is_centred = form.centred;
        yuv.picture.colours = {2, 2, 1, false};
        const auto made = [&](InstructionSet set) {
            limit_instruction_set(set);
            Bitmap bitmap = Bitmap::create(width, height);
            bgr_from_yuv(yuv.picture, bitmap.picture());
            return bitmap;
        };
        const Bitmap plain = made(InstructionSet::portable);
        for (const InstructionSet set : {InstructionSet::avx2, InstructionSet::avx512}) {
            const Bitmap fast = made(set);
            for (int y = 0; y < height; ++y) {
                ASSERT_EQ(0, std::memcmp(plain.picture().row(y), fast.picture().row(y),
                                         static_cast<std::size_t>(3 * width)))
                    << width << " x " << height << ", row " << y;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, FrameColours,
                         testing::Values(FormCase{8, 1, 1, false}, FormCase{8, 1, 1, true},
                                         FormCase{8, 1, 0, false}, FormCase{8, 0, 0, false},
                                         FormCase{10, 1, 1, false}, FormCase{10, 1, 1, true},
                                         FormCase{10, 1, 0, false}, FormCase{10, 0, 0, false}));

/// Memory for the planes of a picture of 4:2:0.
struct Planes {
    int width, height;
    std::vector<std::uint8_t> y, u, v;
    Planes(int w, int h)
        : width(w),
          height(h),
          y(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)),
          u(y.size() / 4),
          v(u) {}
    std::array<WritablePlane, 3> writable() {
        return {WritablePlane{y.data(), width}, WritablePlane{u.data(), width / 2},
                WritablePlane{v.data(), width / 2}};
    }
    [[nodiscard]] YuvPicture picture(const ColourTags& tags) const {
        YuvPicture yuv;
        yuv.planes = {Plane{y.data(), width}, Plane{u.data(), width / 2}, Plane{v.data(), width / 2}};
        yuv.width = width;
        yuv.height = height;
        yuv.colours = tags;
        return yuv;
    }
};

/// Broad areas of colour with soft changes, as pictures have them, and a little noise.
Bitmap soft_picture(int width, int height) {
    Bitmap bitmap = Bitmap::create(width, height);
    std::mt19937 random(5);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = bitmap.picture().pixel(x, y);
            for (int c = 0; c < 3; ++c) {
                const double wave = 127.5 + 120 * std::sin(0.02 * (c + 1) * x + 0.03 * y * (3 - c) + c);
                pixel[c] = static_cast<std::uint8_t>(
                    std::clamp(wave + static_cast<double>(random() % 3) - 1, 0.0, 255.0));
            }
        }
    }
    return bitmap;
}

TEST(FrameColoursOut, ARoundTripChangesLessThanOneLevelInTheMean) {
    const Bitmap before = soft_picture(322, 180);
    for (const int matrix : {1, 6, 9}) {
        const ColourTags tags{2, 2, matrix, false};
        Planes planes(322, 180);
        yuv_from_bgr(before.picture(), tags, planes.writable());
        const Bitmap after = Bitmap::create(322, 180);
        bgr_from_yuv(planes.picture(tags), after.picture());
        double error = 0;
        double bias = 0;
        for (int y = 0; y < 180; ++y) {
            for (int i = 0; i < 3 * 322; ++i) {
                const int change = after.picture().row(y)[i] - before.picture().row(y)[i];
                error += std::abs(change);
                bias += change;
            }
        }
        const double samples = 3.0 * 322 * 180;
        EXPECT_LT(error / samples, 1.0) << "matrix " << matrix;
        EXPECT_LT(std::abs(bias / samples), 0.05) << "matrix " << matrix;
    }
}

TEST(FrameColoursOut, GreysHaveNoChromaAndBlackAndWhiteAreTheEndsOfTheRange) {
    for (const auto& [level, luma] : {std::pair{0, 16}, std::pair{255, 235}, std::pair{128, 126}}) {
        const Bitmap grey = Bitmap::create(40, 4);
        const auto value = static_cast<std::uint8_t>(level);
        fill(grey.picture(), {value, value, value});
        Planes planes(40, 4);
        yuv_from_bgr(grey.picture(), {}, planes.writable());
        EXPECT_EQ(std::count(planes.y.begin(), planes.y.end(), luma), 160) << level;
        EXPECT_EQ(std::count(planes.u.begin(), planes.u.end(), 128), 40) << level;
        EXPECT_EQ(std::count(planes.v.begin(), planes.v.end(), 128), 40) << level;
    }
}

TEST(FrameColoursOut, AreTheSameBytesWithEveryInstructionSet) {
    for (const auto& [width, height] :
         {std::pair{2, 2}, std::pair{16, 4}, std::pair{38, 6}, std::pair{130, 68}}) {
        const Bitmap picture = Bitmap::create(width, height);
        std::mt19937 random(static_cast<unsigned>(width));
        for (int y = 0; y < height; ++y) {
            std::generate_n(picture.picture().row(y), 3 * width,
                            [&] { return static_cast<std::uint8_t>(random()); });
        }
        const auto made = [&](InstructionSet set) {
            limit_instruction_set(set);
            Planes planes(width, height);
            yuv_from_bgr(picture.picture(), {2, 2, 1, false}, planes.writable());
            return planes;
        };
        const Planes plain = made(InstructionSet::portable);
        for (const InstructionSet set : {InstructionSet::avx2, InstructionSet::avx512}) {
            const Planes fast = made(set);
            EXPECT_EQ(plain.y, fast.y) << width;
            EXPECT_EQ(plain.u, fast.u) << width;
            EXPECT_EQ(plain.v, fast.v) << width;
        }
    }
}

}  // namespace
}  // namespace zemora::test
