#include "render/anaglyph_mix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>

#include "platform/cpu.h"
#include "tests/render/anaglyph_twin.h"
#include "tests/render/render_scene.h"

namespace zemora {
namespace {

using testing::AnaglyphTwin;
using testing::colour_at;
using testing::noisy;
using testing::Rgb;

/// Every pair of greys: the colours in which a rounding is most often a tie.
StereoPicture grey_ramps(Bitmap& left, Bitmap& right) {
    left = Bitmap::create(256, 256);
    right = Bitmap::create(256, 256);
    for (int y = 0; y < 256; ++y) {
        for (int i = 0; i < 256 * kPixelBytes; ++i) {
            left.picture().row(y)[i] = static_cast<std::uint8_t>(i / kPixelBytes);
            right.picture().row(y)[i] = static_cast<std::uint8_t>(y);
        }
    }
    return {left.picture(), right.picture()};
}

Rgb rgb_at(ConstPicture picture, int x, int y) {
    const Colour colour = colour_at(picture, x, y);
    return {static_cast<double>(colour.red), static_cast<double>(colour.green),
            static_cast<double>(colour.blue)};
}

::testing::AssertionResult equals_twin(const AnaglyphSettings& settings, const StereoPicture& views) {
    const AnaglyphTwin twin(settings);
    const Bitmap canvas = Bitmap::create(views.left.width, views.left.height);
    if (!merge_views(*anaglyph_mix_row(settings.type).make(settings), views, canvas.picture(), {})) {
        return ::testing::AssertionFailure() << "unstable";
    }
    for (int y = 0; y < canvas.height(); ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            const auto wanted = twin.mix(rgb_at(views.left, x, y), rgb_at(views.right, x, y));
            const Colour found = colour_at(canvas.picture(), x, y);
            if (!wanted || *wanted != found) {
                return ::testing::AssertionFailure()
                       << x << ", " << y << ": " << +found.red << ' ' << +found.green << ' ' << +found.blue
                       << " instead of "
                       << (wanted ? std::to_string(wanted->red) + ' ' + std::to_string(wanted->green) + ' ' +
                                        std::to_string(wanted->blue)
                                  : "unstable");
            }
        }
    }
    return ::testing::AssertionSuccess();
}

AnaglyphSettings of_type(int type) {
    AnaglyphSettings settings;
    settings.type = type;
    return settings;
}

struct Variant {
    const char* name;
    void (*change)(AnaglyphSettings&);
    friend void PrintTo(const Variant& variant, std::ostream* out) { *out << variant.name; }
};

class EveryMix : public ::testing::TestWithParam<std::pair<int, Variant>> {
protected:
    void TearDown() override { limit_instruction_set(InstructionSet::avx512); }
};

void strange_colours(ColorManagement& colours) {
    colours.left = {{{0.6F, 0.5F, 0.2F}, {-0.1F, 0.1F, -0.05F}, {-0.5F, 0.0F, 0.25F}}};
    colours.right = {{{-0.1F, -0.2F, 0.05F}, {0.4F, 0.8F, 0.0F}, {0.0F, -0.1F, 1.3F}}};
    colours.gamma_in = {2.2F, 1.0F, 2.4F};
    colours.gamma_out = {1.0F / 2.2F, 1.0F, 0.3F};
}

constexpr Variant kPlain = {"Plain", [](AnaglyphSettings&) {}};
constexpr Variant kCurved = {"Curved", [](AnaglyphSettings& s) {
                                 s.gamma_red = 0.8F;
                                 s.gamma_cyan = 1.7F;
                                 s.brightness = 1.3F;
                                 s.density = 1.4F;
                                 s.balance = {0.37F, -0.61F, -0.0F};
                             }};
constexpr Variant kSteep = {"SteepAtBlack", [](AnaglyphSettings& s) {
                                s.gamma_red = 0.05F;
                                s.gamma_cyan = 0.0F;
                                s.density = 2.0F;
                                s.balance = {-0.5F, -1.0F, 0.5F};
                            }};
constexpr Variant kBeyond = {"BeyondLimits", [](AnaglyphSettings& s) {
                                 s.gamma_red = -1.0F;
                                 s.gamma_cyan = 30.0F;
                                 s.brightness = -1e20F;
                                 s.density = -1e30F;
                                 s.balance = {-1e-25F, 1e30F, -7.5F};
                             }};
constexpr Variant kMonitor = {"Measured", [](AnaglyphSettings& s) {
                                  s.monitor = {0.1F, 0.2F, 0.05F, 0.15F};
                              }};
constexpr Variant kMonitorBeyond = {"BeyondLimits", [](AnaglyphSettings& s) {
                                        s.monitor = {0.0F, -7.0F, 3.0F, 1.0F};
                                    }};
constexpr Variant kPrint = {"Measured", [](AnaglyphSettings& s) {
                                s.print = {80,   0.1F, 0.12F, 0.2F, 0.08F, 0.15F, 0.1F, 1.1F,
                                           0.9F, 1.3F, 0.8F,  1.0F, 1.2F,  0.7F,  1.4F};
                            }};
constexpr Variant kPrintGreen = {"GreenBeyond",
                                 [](AnaglyphSettings& s) { s.print.green_percent = 2000000000; }};
constexpr Variant kColours = {"ColourFile", [](AnaglyphSettings& s) { strange_colours(s.colours); }};
constexpr Variant kColoursKinked = {"CurvesThatDoNotMatch", [](AnaglyphSettings& s) {
                                        strange_colours(s.colours);
                                        s.colours.gamma_in = {0.5F, 5.0F, 0.0F};
                                        s.colours.gamma_out = {3.0F, 0.0F, 0.02F};
                                    }};

TEST_P(EveryMix, EqualsItsTwinInEveryByte) {
    AnaglyphSettings settings = of_type(GetParam().first);
    GetParam().second.change(settings);
    Bitmap left;
    Bitmap right;
    const Bitmap noisy_left = noisy(131, 200, 5);
    const Bitmap noisy_right = noisy(131, 200, 6);
    for (const InstructionSet set :
         {InstructionSet::portable, InstructionSet::avx2, InstructionSet::avx512}) {
        limit_instruction_set(set);
        EXPECT_TRUE(equals_twin(settings, grey_ramps(left, right))) << "greys, set " << static_cast<int>(set);
        EXPECT_TRUE(equals_twin(settings, {noisy_left.picture(), noisy_right.picture()}))
            << "colours, set " << static_cast<int>(set);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Mixes, EveryMix,
    ::testing::Values(std::pair{0, kPlain}, std::pair{0, kCurved}, std::pair{0, kSteep},
                      std::pair{0, kBeyond}, std::pair{1, kPlain}, std::pair{1, kCurved},
                      std::pair{1, kSteep}, std::pair{1, kBeyond}, std::pair{2, kPlain}, std::pair{3, kPlain},
                      std::pair{3, kCurved}, std::pair{3, kSteep}, std::pair{3, kBeyond},
                      std::pair{4, kPlain}, std::pair{5, kPlain}, std::pair{6, kPlain}, std::pair{6, kCurved},
                      std::pair{6, kMonitor}, std::pair{6, kMonitorBeyond}, std::pair{7, kPlain},
                      std::pair{7, kPrint}, std::pair{7, kPrintGreen}, std::pair{8, kColours},
                      std::pair{9, kColoursKinked}),
    [](const auto& row) { return "Type" + std::to_string(row.param.first) + row.param.second.name; });

TEST(AnaglyphMix, TypesThatDoNotExistAreTheDefault) {
    for (const int type : {-1, 10, 2147483647}) {
        EXPECT_EQ(anaglyph_mix_row(type).type, 5) << type;
    }
}

TEST(AnaglyphMix, CalibrationWithoutStableResultIsFoundByEveryThread) {
    AnaglyphSettings settings = of_type(7);
    settings.print.white_red = -2.1712F;
    settings.print.black_red = 1.9008F;
    settings.print.shape_red = 3.548F;
    settings.print.white_cyan = 3.0176F;
    settings.print.black_cyan = -1.1368F;
    settings.print.shape_cyan = -2.2744F;
    ASSERT_FALSE(AnaglyphTwin(settings).mix({185, 185, 185}, {35, 35, 35}));
    const auto mixer = anaglyph_mix_row(7).make(settings);
    Bitmap left = Bitmap::create(3, 40);
    Bitmap right = Bitmap::create(3, 40);
    const Bitmap canvas = Bitmap::create(3, 40);
    EXPECT_TRUE(merge_views(*mixer, {left.picture(), right.picture()}, canvas.picture(), {}));
    fill(left.picture().part(1, 37, 1, 1), {185, 185, 185});
    fill(right.picture().part(1, 37, 1, 1), {35, 35, 35});
    EXPECT_FALSE(merge_views(*mixer, {left.picture(), right.picture()}, canvas.picture(), {}));
}

TEST(AnaglyphMix, OddCountsLeaveTheirNeighboursAlone) {
    const Bitmap left = noisy(200, 1, 1);
    const Bitmap right = noisy(200, 1, 2);
    const AnaglyphTwin twin(of_type(5));
    const auto mixer = anaglyph_mix_row(5).make(of_type(5));
    for (const int count : {0, 1, 63, 64, 65, 130}) {
        const Bitmap canvas = Bitmap::create(202, 1);
        fill(canvas.picture(), {7, 8, 9});
        ASSERT_TRUE(mixer->mix(left.bits(), right.bits(), canvas.picture().pixel(1, 0), count));
        EXPECT_EQ(colour_at(canvas.picture(), 0, 0), (Colour{7, 8, 9}));
        EXPECT_EQ(colour_at(canvas.picture(), count + 1, 0), (Colour{7, 8, 9})) << count;
        if (count > 0) {
            EXPECT_EQ(colour_at(canvas.picture(), count, 0),
                      twin.mix(rgb_at(left.picture(), count - 1, 0), rgb_at(right.picture(), count - 1, 0)));
        }
    }
}

TEST(AnaglyphMix, ViewsApartShowBlackForTheMissingOne) {
    struct Row {
        int left_column, right_column, row;
        const char* told;
    };
    const Bitmap left = testing::textured(20, 10, 1);
    const Bitmap right = testing::textured(20, 10, 2);
    const auto mixer = anaglyph_mix_row(2).make(of_type(2));
    for (const Row& row : {Row{5, 5, 2, "together"}, Row{3, 9, 2, "apart"}, Row{9, 3, 2, "crossed"},
                           Row{0, 30, 0, "beside one another"}, Row{-4, 40, -3, "beyond the canvas"}}) {
        const Bitmap canvas = Bitmap::create(52, 13);
        fill(canvas.picture(), {1, 2, 3});
        ASSERT_TRUE(merge_views(*mixer, {left.picture(), right.picture()}, canvas.picture(),
                                {row.row, row.left_column, row.right_column}));
        for (int y = 0; y < 13; ++y) {
            for (int x = 0; x < 52; ++x) {
                const int first = std::min(row.left_column, row.right_column);
                const int last = std::max(row.left_column, row.right_column) + 20;
                const bool in_rows = y >= row.row && y < row.row + 10;
                Colour wanted = in_rows && x >= first && x < last ? Colour{} : Colour{1, 2, 3};
                if (in_rows && x >= row.left_column && x < row.left_column + 20) {
                    wanted.red = colour_at(left.picture(), x - row.left_column, y - row.row).red;
                }
                if (in_rows && x >= row.right_column && x < row.right_column + 20) {
                    const Colour seen = colour_at(right.picture(), x - row.right_column, y - row.row);
                    wanted.green = seen.green;
                    wanted.blue = seen.blue;
                }
                ASSERT_EQ(colour_at(canvas.picture(), x, y), wanted) << row.told << ' ' << x << ", " << y;
            }
        }
    }
}

}  // namespace
}  // namespace zemora
