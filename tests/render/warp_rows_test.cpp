#include "render/warp_rows.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/cpu.h"
#include "tests/render/render_scene.h"

namespace zemora {
namespace {

using testing::noisy;
using testing::Rig;
using testing::textured;

/// The plain twin of a finished pixel: one position, one sample, one rounding at a time.
Colour plain_pixel(const ViewTransform& transform, const Sampler& sampler, const ConstPicture& source,
                   int column, int row) {
    const Position p = transform.map(column, row);
    const auto x = static_cast<int>(p.x);
    const auto y = static_cast<int>(p.y);
    const Sample sample = sample_pixel(sampler, source, x, y);
    const int nearest_column = (x + 64) >> 7;
    const int nearest_row = (y + 64) >> 7;
    if (sample.empty != 0 || nearest_column < 0 || nearest_row < 0 || nearest_column >= source.width ||
        nearest_row >= source.height) {
        return sampler.background;
    }
    const auto byte = [&sample](std::size_t c) {
        return static_cast<std::uint8_t>(std::min((sample.value[c] + 128) / 256, 255));
    };
    Colour pixel{byte(0), byte(1), byte(2)};
    if (pixel == Colour{}) {
        pixel.blue = 1;
    }
    if (pixel == sampler.background) {
        pixel.blue = static_cast<std::uint8_t>(pixel.blue < 128 ? pixel.blue + 1 : pixel.blue - 1);
    }
    return pixel;
}

/// `dark` holds no background but samples that look like it; `strewn` holds background pixels.
enum class Source { plain, strewn, dark };

/// Greens of 0 and blues and reds next to it: the overshoot of the kernel reaches black.
Bitmap dark_picture(int width, int height) {
    Bitmap bitmap = Bitmap::create(width, height);
    std::mt19937 random(3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned draw = random();
            fill(bitmap.picture().part(x, y, 1, 1), Colour{static_cast<std::uint8_t>(draw & 1U), 0,
                                                           static_cast<std::uint8_t>(1U + (draw >> 1 & 2U))});
        }
    }
    return bitmap;
}

Bitmap picture_of(Source source, int width, int height) {
    switch (source) {
        case Source::strewn: return noisy(width, height, 5);
        case Source::dark: return dark_picture(width, height);
        default: return textured(width, height, 5);
    }
}

struct RowCase {
    const char* name;
    int width, height, kernel;
    float scale;
    Source source;
    bool shaped;  ///< Trapezoids and shears of the row.
    bool wide;    ///< A shape that the 32-bit chain does not have.
};

class WarpRows : public ::testing::TestWithParam<RowCase> {
protected:
    void TearDown() override { limit_instruction_set(InstructionSet::avx512); }
};

void set_shapes(ViewShape& shape, const RowCase& c) {
    shape.phantogram = c.shaped ? 0.3 : 0.0;
    shape.common_trapez = c.shaped ? 0.4 : 0.0;
    shape.sym_trapez = c.shaped ? 0.1 : 0.0;
    shape.edge_warp = c.wide ? 0.2 : 0.0;
    shape.vertical_ax = c.wide ? 0.1 : 0.0;
}

/// Number of pixels in which some rows of a view differ from the plain twin.
int count_wrong(const ViewRows& view, int width, int height) {
    int wrong = 0;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * kPixelBytes);
    for (int row = 0; row < height; row += 1 + height / 13) {
        warp_row(view, row, 0, width, bytes.data());
        for (int x = 0; x < width; ++x) {
            const std::uint8_t* pixel = &bytes[static_cast<std::size_t>(x) * kPixelBytes];
            const Colour wanted = plain_pixel(view.transform, view.sampler, view.source, x, row);
            wrong += Colour{pixel[0], pixel[1], pixel[2]} == wanted ? 0 : 1;
        }
    }
    return wrong;
}

TEST_P(WarpRows, EqualThePlainTwinInEveryInstructionSet) {
    const RowCase& c = GetParam();
    const Bitmap source = picture_of(c.source, c.width, c.height);
    const auto out_width = static_cast<int>(static_cast<float>(c.width) * c.scale);
    const auto out_height = static_cast<int>(static_cast<float>(c.height) * c.scale);
    std::mt19937 random(11);
    const auto spread = [&random](float largest) {
        return largest * (static_cast<float>(random() % 2001) / 1000.0F - 1.0F);
    };
    for (int round = 0; round < 3; ++round) {
        Rig rig;
        rig.usual.applied_view = round % 3 - 1;
        rig.usual.scale = c.scale;
        set_shapes(rig.usual.shape, c);
        rig.usual.correction = testing::correction(spread(9), spread(0.03F), spread(0.05F), spread(0.05F),
                                                   spread(0.04F), spread(15));
        rig.usual.frame = {out_width, out_height};
        const PairTransform pair = make_transforms(rig.usual, fixed_correction(rig.usual));
        EXPECT_EQ(pair[1].fits_32(), !c.wide);
        const Sampler sampler(kernel_of(c.kernel), 2, 1.0F, Colour{});
        for (const InstructionSet set :
             {InstructionSet::portable, InstructionSet::avx2, InstructionSet::avx512}) {
            limit_instruction_set(set);
            for (const ViewTransform& transform : pair) {
                const ViewRows view(transform, sampler, source.picture(), ToneLookup());
                ASSERT_EQ(count_wrong(view, out_width, out_height), 0)
                    << "round " << round << ", set " << static_cast<int>(set) << ", side " << transform.side;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, WarpRows,
    ::testing::Values(RowCase{"bicubic", 401, 203, 2, 1.0F, Source::plain, false, false},
                      RowCase{"bicubic_background", 333, 77, 2, 1.0F, Source::strewn, false, false},
                      RowCase{"bicubic_dark", 290, 90, 2, 1.0F, Source::dark, false, false},
                      RowCase{"bilinear", 287, 131, 1, 1.0F, Source::plain, false, false},
                      RowCase{"bilinear_background", 290, 64, 1, 0.83F, Source::strewn, false, false},
                      RowCase{"bicubic_scaled", 219, 150, 2, 1.71F, Source::plain, false, false},
                      RowCase{"bicubic_shaped", 300, 200, 2, 0.9F, Source::plain, true, false},
                      RowCase{"bicubic_wide_shapes", 300, 200, 2, 1.0F, Source::plain, true, true},
                      RowCase{"nearest", 190, 60, 0, 1.3F, Source::strewn, false, false},
                      RowCase{"tent", 150, 60, 3, 0.4F, Source::strewn, false, false},
                      RowCase{"tiny", 17, 9, 2, 1.0F, Source::plain, false, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ViewTransform, LargestFramesTakeTheWideChain) {
    Rig rig;
    rig.usual.correction = testing::correction(0, 0.12F, 0.12F, 0.12F, 0.06F, 0);
    rig.usual.frame = {kLargestSide, kLargestSide};
    rig.usual.applied_view = 1;
    const PairTransform pair = make_transforms(rig.usual, fixed_correction(rig.usual));
    EXPECT_FALSE(pair[1].fits_32());
    // 64 bits: at the corner the parabola of vergence H alone is beyond 2^31.
    const Position corner = pair[1].map(kLargestSide - 1, kLargestSide - 1);
    EXPECT_GT(corner.y, std::int64_t{128} * kLargestSide);
    EXPECT_LT(corner.y, std::int64_t{128} * kLargestSide * 3 / 2);
}

TEST(BackgroundMap, FindsSinglePixelsInEveryInstructionSet) {
    const Colour wanted{7, 9, 7};
    for (const InstructionSet set :
         {InstructionSet::portable, InstructionSet::avx2, InstructionSet::avx512}) {
        limit_instruction_set(set);
        for (const int x : {0, 1, 15, 16, 47, 50, 68}) {
            Bitmap bitmap = Bitmap::create(69, 20);
            fill(bitmap.picture(), Colour{9, 7, 9});  // the same bytes one channel later
            fill(bitmap.picture().part(x, 11, 1, 1), wanted);
            const Sampler sampler(Kernel::bicubic, 1, 1.0F, wanted);
            const ViewTransform transform;
            const ViewRows view(transform, sampler, bitmap.picture(), ToneLookup());
            EXPECT_TRUE(view.background.touches(x, 11, x, 11)) << x;
            EXPECT_FALSE(view.background.touches(x, 0, x, 7)) << x;
        }
    }
    limit_instruction_set(InstructionSet::avx512);
}

}  // namespace
}  // namespace zemora
