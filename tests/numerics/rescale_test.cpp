#include "numerics/rescale.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "platform/cpu.h"

namespace zemora {
namespace {

Bitmap noise(int width, int height, unsigned seed) {
    Bitmap bitmap = Bitmap::create(width, height);
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y) {
        std::generate_n(bitmap.picture().row(y), width * kPixelBytes,
                        [&] { return static_cast<std::uint8_t>(random()); });
    }
    return bitmap;
}

std::vector<int> values(ConstPicture picture) {
    std::vector<int> all;
    for (int y = 0; y < picture.height; ++y) {
        for (int k = 0; k < picture.width * kPixelBytes; ++k) {
            all.push_back(picture.row(y)[k]);
        }
    }
    return all;
}

// --- Plain twins, sample by sample -----------------------------------------------------------------

using Fetch = std::function<int(int x, int y)>;

int plain_interpolate(const Fetch& p, int in_w, int in_h, float sx, float sy, int c, int r) {
    const float u = static_cast<float>(c) / sx;
    const float t = static_cast<float>(r) / sy;
    const float fx = u - std::trunc(u);
    const float fy = t - std::trunc(t);
    const auto limited = [](float v, int n) { return std::clamp(static_cast<int>(std::floor(v)), 0, n - 1); };
    const int x0 = limited(u + 0.5F, in_w);
    const int x1 = limited(u + 1.0F / sx + 0.5F, in_w);
    const int y0 = limited(t + 0.5F, in_h);
    const int y1 = limited(t + 1.0F / sy + 0.5F, in_h);
    const float value = (1.0F - fx) * (1.0F - fy) * static_cast<float>(p(x0, y0)) +
                        fx * (1.0F - fy) * static_cast<float>(p(x1, y0)) +
                        (1.0F - fx) * fy * static_cast<float>(p(x0, y1)) +
                        fx * fy * static_cast<float>(p(x1, y1));
    return static_cast<int>(value);
}

/// One value of the triangular prefilter.
int plain_prefilter(const Fetch& p, int in_w, int in_h, int n, int i, int j) {
    int total = n * n;
    int shift = 0;
    if (total > 255) {
        shift = static_cast<int>(std::log10(total / 256.0) / 0.3010299956639812 + 1.0);
        total >>= shift;
    }
    const auto row_sum = [&](int y) {
        unsigned sum = 0;
        for (int k = -(n - 1); k < n; ++k) {
            sum += static_cast<unsigned>((n - std::abs(k)) * p(std::clamp(i * n + k, 0, in_w - 1), y));
        }
        return sum >> shift;
    };
    unsigned sum = 0;
    for (int k = -(n - 1); k < n; ++k) {
        sum += static_cast<unsigned>(n - std::abs(k)) * row_sum(std::clamp(j * n + k, 0, in_h - 1));
    }
    return static_cast<int>((sum >> shift) / static_cast<unsigned>(total) / static_cast<unsigned>(total));
}

std::vector<int> plain_bilinear(ConstPicture in, int out_w, int out_h) {
    const float sx = static_cast<float>(out_w - 1) / static_cast<float>(in.width - 1);
    const float sy = static_cast<float>(out_h - 1) / static_cast<float>(in.height - 1);
    std::vector<int> all;
    const int n = in.height / out_h;
    for (int r = 0; r < out_h; ++r) {
        for (int c = 0; c < out_w; ++c) {
            for (int channel = 0; channel < kPixelBytes; ++channel) {
                const Fetch source = [&](int x, int y) { return in.pixel(x, y)[channel]; };
                if (sx >= 1.0F || sy >= 1.0F) {
                    all.push_back(plain_interpolate(source, in.width, in.height, sx, sy, c, r));
                    continue;
                }
                const int w = in.width / n;
                const int h = in.height / n;
                const Fetch reduced = [&](int x, int y) {
                    return plain_prefilter(source, in.width, in.height, n, x, y);
                };
                all.push_back(plain_interpolate(reduced, w, h,
                                                static_cast<float>(out_w) / static_cast<float>(w),
                                                static_cast<float>(out_h) / static_cast<float>(h), c, r));
            }
        }
    }
    return all;
}

int kernel(int u) {
    return u <= 128 ? ((u - 256) * u * u + 2105344) >> 14 : (((640 - u) * u - 131072) * u + 8396800) >> 14;
}

/// (sample, weight) of one result sample along an axis.
std::vector<std::pair<int, int>> plain_taps(int in, int out, bool wide, int i) {
    std::vector<std::pair<int, int>> taps;
    const int a = in - 1;
    const int b = out - 1;
    if (!wide) {
        const float t = static_cast<float>(i) / (static_cast<float>(b) / static_cast<float>(a));
        const int p = static_cast<int>(t);
        const int f = static_cast<int>(t * 128.0F) - 128 * p;
        return {{p - 1, kernel(128 + f)}, {p, kernel(f)}, {p + 1, kernel(128 - f)}, {p + 2, kernel(256 - f)}};
    }
    const int p = i * a / b;
    const int m = i * a % b;
    const auto side = [&](int distance, int first, int step) {
        for (int j = 0; j < 100; ++j) {
            const int u = ((distance + j * b) * 128 + a / 2) / a;
            if (u > 256) {
                break;
            }
            taps.emplace_back(first + step * j, (kernel(u) * b + a / 2) / a);
        }
    };
    side(b - m, p + 1, 1);
    const std::size_t left = taps.size();
    side(m, p, -1);
    const auto sum = [&] {
        int total = 0;
        for (const auto& tap : taps) {
            total += tap.second;
        }
        return total;
    };
    const int each = (128 - sum()) / static_cast<int>(taps.size());
    for (auto& tap : taps) {
        tap.second += each;
    }
    const int rest = 128 - sum();
    if (left > 0) {
        taps[0].second += rest >> 1;
    }
    if (left < taps.size()) {
        taps[left].second += rest - (rest >> 1);
    }
    return taps;
}

std::vector<int> plain_bicubic(ConstPicture in, int out_w, int out_h) {
    const bool wide = out_w < in.width && out_h < in.height;
    std::vector<int> between(static_cast<std::size_t>(in.height * out_w * kPixelBytes));
    for (int y = 0; y < in.height; ++y) {
        for (int k = 0; k < out_w * kPixelBytes; ++k) {
            int sum = 0;
            for (const auto& [x, weight] : plain_taps(in.width, out_w, wide, k / kPixelBytes)) {
                sum += weight * in.pixel(std::clamp(x, 0, in.width - 1), y)[k % kPixelBytes];
            }
            between[static_cast<std::size_t>(y * out_w * kPixelBytes + k)] = std::clamp(sum, 0, 65535);
        }
    }
    std::vector<int> all;
    for (int r = 0; r < out_h; ++r) {
        for (int k = 0; k < out_w * kPixelBytes; ++k) {
            int sum = 8192;
            for (const auto& [y, weight] : plain_taps(in.height, out_h, wide, r)) {
                sum += weight * between[static_cast<std::size_t>(
                                    std::clamp(y, 0, in.height - 1) * out_w * kPixelBytes + k)];
            }
            all.push_back(std::clamp(sum >> 14, 0, 255));
        }
    }
    return all;
}

struct Sizes {
    int in_w, in_h, out_w, out_h;
};
void PrintTo(const Sizes& s, std::ostream* out) {
    *out << s.in_w << "x" << s.in_h << "_to_" << s.out_w << "x" << s.out_h;
}

class RescaleTwin : public ::testing::TestWithParam<Sizes> {};

TEST_P(RescaleTwin, EqualsTheDefinitionForAllThreadCounts) {
    const Sizes& s = GetParam();
    const Bitmap source = noise(s.in_w, s.in_h, 3);
    const Bitmap target = Bitmap::create(s.out_w + 5, s.out_h + 2);
    const Picture area = target.picture(s.out_w, s.out_h);
    const std::vector<int> bilinear = plain_bilinear(source.picture(), s.out_w, s.out_h);
    const std::vector<int> bicubic = plain_bicubic(source.picture(), s.out_w, s.out_h);
    const int threads = omp_get_max_threads();
    RescaleScratch scratch;
    for (const int count : {1, 2, 8}) {
        omp_set_num_threads(count);
        limit_instruction_set(count == 2 ? InstructionSet::portable : InstructionSet::avx512);
        EXPECT_EQ(rescale(source.picture(), area, scratch, RescaleFilter::bilinear, RescaleFit::stretch),
                  (PictureSize{s.out_w, s.out_h}));
        EXPECT_EQ(values(area), bilinear);
        rescale(source.picture(), area, scratch, RescaleFilter::bicubic, RescaleFit::stretch);
        EXPECT_EQ(values(area), bicubic);
    }
    omp_set_num_threads(threads);
    limit_instruction_set(InstructionSet::avx512);
    EXPECT_EQ(target.picture().pixel(s.out_w, 0)[0], 0) << "nothing beside the area is touched";
}

// Magnification, mixed, reduction by less than 2, by 2, 3 and, with a shift in the weights, by 16.
INSTANTIATE_TEST_SUITE_P(Sizes, RescaleTwin,
                         ::testing::Values(Sizes{31, 23, 31, 23}, Sizes{20, 14, 61, 40},
                                           Sizes{40, 30, 55, 12}, Sizes{53, 41, 37, 29},
                                           Sizes{80, 61, 40, 30}, Sizes{101, 77, 33, 25},
                                           Sizes{130, 66, 40, 4}, Sizes{170, 163, 10, 10},
                                           Sizes{90, 40, 2, 2}),
                         ::testing::PrintToStringParamName());

// --- The vector form of the bilinear filter against its plain form ---------------------------------

/// Noise with areas of white and of black. The rows are an odd number of bytes apart, and nothing stands
/// behind the last pixel, so that a sanitizer sees what is read there.
struct TightPicture {
    TightPicture(int width, int height, unsigned seed)
        : pitch(width * kPixelBytes + 7), bytes(static_cast<std::size_t>(pitch * height - 7)) {
        std::mt19937 random(seed);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const std::size_t area = i / 41 % 4;
            bytes[i] = static_cast<std::uint8_t>(area == 0 ? 255 : area == 1 ? 0 : random());
        }
        view = {bytes.data(), pitch, width, height};
    }
    int pitch;
    std::vector<std::uint8_t> bytes;
    ConstPicture view;
};

/// The result inside a larger picture of which every byte is compared.
std::vector<std::uint8_t> bilinear_with(InstructionSet set, ConstPicture source, const Sizes& s) {
    limit_instruction_set(set);
    const std::ptrdiff_t pitch = s.out_w * kPixelBytes + 5;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(pitch * (s.out_h + 1)), 0x55);
    RescaleScratch scratch;
    rescale(source, {bytes.data(), pitch, s.out_w, s.out_h}, scratch, RescaleFilter::bilinear,
            RescaleFit::stretch);
    limit_instruction_set(InstructionSet::avx512);
    return bytes;
}

void expect_equal_forms(const Sizes& s) {
    const TightPicture source(s.in_w, s.in_h, static_cast<unsigned>(s.in_w + s.out_h));
    EXPECT_EQ(bilinear_with(InstructionSet::avx2, source.view, s),
              bilinear_with(InstructionSet::portable, source.view, s))
        << ::testing::PrintToString(s);
}

TEST(RescaleVectors, EqualThePlainCodeAtEveryReduction) {
    for (int n = 1; n <= 17; ++n) {
        for (const int width : {1, 4, 7, 33}) {
            for (const int more : {0, 1, 2, n / 2, n - 1}) {
                expect_equal_forms({width * n + more + 1, 6 * n + more % n + 1, width, 6});
                expect_equal_forms({width + 9, 6 * n + 1, width + 3, 6});  // of another aspect
            }
        }
    }
}

TEST(RescaleVectors, EqualThePlainCodeBetweenWholeReductionsAndAtMagnification) {
    for (int out = 1; out < 130; out += 1 + out / 12) {
        for (const int in : {1, 2, 5, 53, 101}) {
            expect_equal_forms({in, 31, out, 20});
            expect_equal_forms({in, 31, out, 45});
        }
    }
    expect_equal_forms({401, 303, 257, 199});  // rows shared out to the threads
    expect_equal_forms({701, 303, 257, 77});
}

TEST(Rescale, SameSizeIsACopy) {
    const Bitmap source = noise(37, 29, 1);
    const Bitmap target = Bitmap::create(37, 29);
    RescaleScratch scratch;
    for (const RescaleFilter filter : {RescaleFilter::bilinear, RescaleFilter::bicubic}) {
        rescale(source.picture(), target.picture(), scratch, filter, RescaleFit::stretch);
        EXPECT_EQ(values(target.picture()), values(source.picture()));
    }
}

TEST(Rescale, FlatPicturesStayFlatAtEveryFactor) {
    const Bitmap source = Bitmap::create(640, 480);
    fill(source.picture(), {200, 100, 7});
    RescaleScratch scratch;
    for (const auto& [w, h] : {std::pair(639, 479),
                               {320, 240},
                               {123, 77},
                               {40, 30},
                               {9, 7},
                               {2, 2},
                               {1, 30},
                               {30, 2},
                               {900, 700}}) {
        const Bitmap target = Bitmap::create(w, h);
        for (const RescaleFilter filter : {RescaleFilter::bilinear, RescaleFilter::bicubic}) {
            rescale(source.picture(), target.picture(), scratch, filter, RescaleFit::stretch);
            for (int x = 0; x < w; x += std::max(w / 3, 1)) {
                EXPECT_NEAR(target.picture().pixel(x, h - 1)[0], 200, 1) << w << "x" << h;
                EXPECT_NEAR(target.picture().pixel(x, 0)[2], 7, 1) << w << "x" << h;
            }
        }
    }
}

TEST(Rescale, WhiteStaysWhiteAtEveryReduction) {
    const Bitmap source = Bitmap::create(540, 540);
    fill(source.picture(), {255, 255, 255});
    RescaleScratch scratch;
    for (int side = 3; side < 540; side += 1 + side / 30) {
        const Bitmap target = Bitmap::create(side, side);
        rescale(source.picture(), target.picture(), scratch, RescaleFilter::bilinear, RescaleFit::stretch);
        // Cut-off fractions may cost a level or two, never more.
        EXPECT_GE(target.picture().pixel(side / 2, side - 1)[1], 252) << side;
    }
}

TEST(Rescale, KeepsTheAspectInsideTheTarget) {
    const Bitmap source = noise(300, 200, 1);
    RescaleScratch scratch;
    const auto written = [&](int w, int h) {
        const Bitmap target = Bitmap::create(w, h);
        return rescale(source.picture(), target.picture(), scratch, RescaleFilter::bicubic,
                       RescaleFit::keep_aspect);
    };
    EXPECT_EQ(written(150, 150), (PictureSize{150, 100}));
    EXPECT_EQ(written(150, 100), (PictureSize{150, 100}));
    EXPECT_EQ(written(500, 60), (PictureSize{90, 60}));
    EXPECT_EQ(written(3, 500), (PictureSize{3, 2}));
    EXPECT_EQ(written(500, 1), (PictureSize{2, 1}));
}

TEST(Rescale, PicturesOfOnePixelAndEmptyOnesAreNoTrouble) {
    const Bitmap dot = Bitmap::create(1, 1);
    fill(dot.picture(), {9, 8, 7});
    const Bitmap target = Bitmap::create(20, 10);
    RescaleScratch scratch;
    for (const RescaleFilter filter : {RescaleFilter::bilinear, RescaleFilter::bicubic}) {
        rescale(dot.picture(), target.picture(), scratch, filter, RescaleFit::stretch);
        EXPECT_EQ(target.picture().pixel(19, 9)[0], 9);
    }
    EXPECT_EQ(rescale({}, target.picture(), scratch, RescaleFilter::bicubic, RescaleFit::stretch),
              PictureSize{});
}

TEST(Rescale, RefusesAReductionBeyond255) {
    const Bitmap source = Bitmap::create(300, 600);
    const Bitmap target = Bitmap::create(2, 2);
    fill(target.picture(), {7, 7, 7});
    RescaleScratch scratch;
    EXPECT_EQ(
        rescale(source.picture(), target.picture(), scratch, RescaleFilter::bilinear, RescaleFit::stretch),
        PictureSize{});
    EXPECT_EQ(target.picture().pixel(1, 1)[0], 7);
}

// --- Rotated ---------------------------------------------------------------------------------------

TEST(RescaleRotated, UprightCopyAndQuarterTurn) {
    const Bitmap source = noise(40, 40, 2);
    const Bitmap target = Bitmap::create(40, 40);
    const Colour outside{1, 2, 3};
    rescale_rotated(source.picture(), target.picture(), {0.0, 0.0, 1.0, outside});
    EXPECT_EQ(values(target.picture()), values(source.picture()));
    rescale_rotated(source.picture(), target.picture(), {90.0, 0.0, 1.0, outside});
    // A quarter turn maps (dx, dy) to the source's (dy, -dx) from the middle, between four pixels.
    EXPECT_EQ(values(target.picture().part(25, 12, 1, 1)), values(source.picture().part(12, 15, 1, 1)));
    EXPECT_EQ(target.picture().pixel(0, 5)[2], outside.red)
        << "the turn about a pixel corner leaves the source by one";
}

TEST(RescaleRotated, ZoomAndOddSizesKeepTheMiddle) {
    const Bitmap source = noise(81, 61, 2);
    const Bitmap target = Bitmap::create(81, 61);
    rescale_rotated(source.picture(), target.picture(), {0.0, 0.0, 2.0, {}});
    EXPECT_EQ(values(target.picture().part(60, 40, 1, 1)), values(source.picture().part(50, 35, 1, 1)));
    rescale_rotated(source.picture(), target.picture(), {0.0, 0.0, 0.5, {5, 5, 5}});
    EXPECT_EQ(target.picture().pixel(5, 30)[0], 5) << "beside the reduced picture";
}

TEST(RescaleRotated, KeystoneAndTurnFollowTheFormula) {
    const Bitmap source = noise(90, 70, 4);
    const Bitmap target = Bitmap::create(60, 50);
    const RotatedRescale how{7.0, 4.0, 1.1, {11, 12, 13}};
    rescale_rotated(source.picture(), target.picture(), how);
    const double radians = std::acos(-1.0) / 180.0;
    const double k = std::sin(how.vergence_deg * radians);
    const double c = std::cos(how.rotation_deg * radians);
    const double s = std::sin(how.rotation_deg * radians);
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 60; ++x) {
            const double dx = x - 30.0;
            const double dy = y - 25.0;
            const double gx = k * dx * dx / 30.0 + dx;
            const double gy = k * dx * dy / 30.0 + dy;
            const int column = static_cast<int>(std::floor((c * gx + s * gy) / (59.0F / 89.0F * 1.1) + 45.5));
            const int row = static_cast<int>(std::floor((c * gy - s * gx) / (49.0F / 69.0F * 1.1) + 35.5));
            const bool inside = column >= 0 && row >= 0 && column < 90 && row < 70;
            EXPECT_EQ(target.picture().pixel(x, y)[1], inside ? source.picture().pixel(column, row)[1] : 12)
                << x << " " << y;
        }
    }
}

}  // namespace
}  // namespace zemora
