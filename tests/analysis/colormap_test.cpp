#include "analysis/colormap.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include "analysis/histogram.h"
#include "analysis/tone_matching.h"
#include "tests/analysis/texture_pair.h"

namespace zemora {
namespace {

using testing::Displacement;
using testing::TexturePair;

constexpr int kWidth = 400;
constexpr int kHeight = 300;

/// The texture pair with each level of the left view changed by gain and offset, channel by channel.
TexturePair toned_pair(double gain, double offset, double red_offset = 0.0) {
    TexturePair pair(kWidth, kHeight, [](double, double) { return Displacement{4.0, 0.0}; });
    const Picture left = pair.left.picture();
    for (int y = 0; y < kHeight; ++y) {
        for (int k = 0; k < kWidth * kPixelBytes; ++k) {
            const double value = left.row(y)[k] * gain + offset + (k % 3 == 2 ? red_offset : 0.0);
            left.row(y)[k] = static_cast<std::uint8_t>(std::clamp(std::lround(value), 1L, 255L));
        }
    }
    return pair;
}

AnalysisState state_for(int color_left_right, int gamma = 0) {
    AnalysisOptions options = testing::analysis_options();
    options.color_left_right = color_left_right;
    options.auto_gamma_adjust = gamma;
    return AnalysisState(options);
}

/// Mean of one channel after the tables, or of all channels through plane 0.
double mapped_mean(ConstPicture view, const ToneTables& tables, bool channels, int channel) {
    double sum = 0.0;
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            sum +=
                tables
                    .plane[channels ? static_cast<std::size_t>(channel) + 1 : 0][view.pixel(x, y)[channel]] /
                256.0;
        }
    }
    return sum / (static_cast<double>(view.width) * view.height);
}

bool is_channel_mode(int mode) {
    return mode == 3 || mode == 4 || mode == 7 || mode == 8;
}

class ColormapMode : public ::testing::TestWithParam<int> {};

TEST_P(ColormapMode, BringsADarkViewToTheToneOfTheOther) {
    const int mode = GetParam();
    const TexturePair pair = toned_pair(0.7, -4.0);
    for (const int direction : {-1, 0, 1}) {
        AnalysisState state = state_for(direction);
        colormap_adapt(state, pair.pictures(), nullptr, mode);
        for (int channel = 0; channel < kPixelBytes; ++channel) {
            const double left =
                mapped_mean(pair.left.picture(), state.tone_left, is_channel_mode(mode), channel);
            const double right =
                mapped_mean(pair.right.picture(), state.tone_right, is_channel_mode(mode), channel);
            EXPECT_NEAR(left, right, 4.0) << "ColorLeftRight " << direction << " channel " << channel;
        }
    }
}

TEST_P(ColormapMode, EqualViewsGetEqualRisingTables) {
    const TexturePair pair = toned_pair(1.0, 0.0);
    const StereoPicture same{pair.right.picture(), pair.right.picture()};
    for (const int direction : {-1, 0, 1}) {
        for (const int gamma : {0, 1, 2, 3}) {
            AnalysisState state = state_for(direction, gamma);
            colormap_adapt(state, same, nullptr, GetParam());
            for (std::size_t p = 0; p < ToneTables::kPlanes; ++p) {
                for (std::size_t i = 11; i < 256; ++i) {  // below, the passepartout colour is avoided
                    EXPECT_NEAR(state.tone_left.plane[p][i], state.tone_right.plane[p][i], 320)
                        << p << " " << i;
                    EXPECT_GE(state.tone_left.plane[p][i], state.tone_left.plane[p][i - 1]) << p << " " << i;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, ColormapMode, ::testing::Values(1, 2, 3, 4, 5, 6, 7, 8, 9, 10));

TEST(Colormap, TheViewThatSetsTheToneKeepsItsTable) {
    const TexturePair pair = toned_pair(0.8, 10.0);
    for (const int mode : {1, 3, 5, 7}) {
        const auto identity = ToneTables::identity().plane;
        AnalysisState to_left = state_for(1);
        colormap_adapt(to_left, pair.pictures(), nullptr, mode);
        AnalysisState to_right = state_for(-1);
        colormap_adapt(to_right, pair.pictures(), nullptr, mode);
        for (std::size_t i = 10; i < 256; ++i) {
            EXPECT_EQ(to_left.tone_left.plane[1][i], identity[1][i]) << mode;
            EXPECT_EQ(to_right.tone_right.plane[1][i], identity[1][i]) << mode;
        }
        EXPECT_NE(to_left.tone_right.plane, identity);
        EXPECT_NE(to_right.tone_left.plane, identity);
    }
}

TEST(MatchLines, MeansOfDifferentlySpreadViewsMeet) {
    // Equal ends, so that the straight lines change nothing and only the bend brings the means together.
    const auto spread_round = [](std::size_t level) {
        Histogram histogram{};
        histogram[5] = histogram[250] = 50;
        histogram[level] = 900;
        return histogram;
    };
    const auto mean = [](const Histogram& histogram, const ToneLevels& levels) {
        double sum = 0.0;
        for (std::size_t i = 0; i < histogram.size(); ++i) {
            sum += histogram[i] * levels[i] / 256.0 / 1000.0;
        }
        return sum;
    };
    const BothViews<Histogram> views{spread_round(100), spread_round(140)};
    for (const auto& [target, common] :
         {std::pair(ToneTarget::left, 102.75), {ToneTarget::mean, 120.75}, {ToneTarget::right, 138.75}}) {
        const BothViews<ToneLevels> tables = match_lines(views, target);
        // The pieces on either side of the mean differ in slope, which costs a few levels.
        EXPECT_NEAR(mean(views.left, tables.left), common, 5.0);
        EXPECT_NEAR(mean(views.right, tables.right), common, 5.0);
    }
}

TEST(Colormap, ChannelsAreBroughtTogetherOneByOne) {
    const TexturePair pair = toned_pair(1.0, 0.0, 30.0);
    AnalysisState state = state_for(1);
    colormap_adapt(state, pair.pictures(), nullptr, 3);
    EXPECT_NEAR(mapped_mean(pair.right.picture(), state.tone_right, true, 2),
                mapped_mean(pair.left.picture(), state.tone_left, true, 2), 2.0);
    EXPECT_GT(state.tone_right.plane[3][100], state.tone_right.plane[1][100] + 20 * 256)
        << "red is raised, blue is not";
}

TEST(Colormap, MeanOfBothModesForMeasuringIsOneHalf) {
    const TexturePair pair = toned_pair(0.5, 0.0);
    for (const int mode : {9, 10}) {
        AnalysisState state = state_for(0);
        colormap_adapt(state, pair.pictures(), nullptr, mode);
        EXPECT_NEAR(mapped_mean(pair.left.picture(), state.tone_left, false, 1), 128.0, 12.0);
        EXPECT_NEAR(mapped_mean(pair.right.picture(), state.tone_right, false, 1), 128.0, 12.0);
    }
}

TEST(Colormap, PassepartoutPixelsAndTheOutsideOfTheRectangleDoNotCount) {
    TexturePair pair = toned_pair(0.7, 0.0);
    const CountRectangle inner{40, 259, 30, 369};
    AnalysisState plain = state_for(0);
    const StereoPicture cut{pair.pictures().left.part(30, 40, 340, 220),
                            pair.pictures().right.part(30, 40, 340, 220)};
    colormap_adapt(plain, cut, nullptr, 5);
    AnalysisState rectangle = state_for(0);
    colormap_adapt(rectangle, pair.pictures(), &inner, 5);
    EXPECT_EQ(rectangle.tone_left.plane, plain.tone_left.plane);
    for (const Bitmap* view : {&pair.left, &pair.right}) {
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                if (x < 30 || x > 369 || y < 40 || y > 259) {
                    std::fill_n(view->picture().pixel(x, y), kPixelBytes, std::uint8_t{0});
                }
            }
        }
    }
    AnalysisState framed = state_for(0);
    colormap_adapt(framed, pair.pictures(), nullptr, 5);
    EXPECT_EQ(framed.tone_left.plane, plain.tone_left.plane);
    EXPECT_EQ(framed.tone_right.plane, plain.tone_right.plane);
}

TEST(Colormap, ModeZeroOnlyKeepsDarkColoursFromThePassepartoutColour) {
    const TexturePair pair = toned_pair(0.7, 0.0);
    AnalysisState state = state_for(0);
    colormap_adapt(state, pair.pictures(), nullptr, 0);
    const ToneTables identity = ToneTables::identity();
    EXPECT_EQ(state.tone_left.plane[0][0], identity.plane[0][0] + 1) << "black is the passepartout colour";
    for (std::size_t i = 1; i < 256; ++i) {
        EXPECT_EQ(state.tone_left.plane[0][i], identity.plane[0][i]);
    }
    EXPECT_EQ(state.tone_right.plane[2], identity.plane[2]);
}

TEST(Colormap, FlatAndEmptyViewsGiveTablesThatMatch) {
    for (const int level : {0, 1, 128, 255}) {
        const Bitmap flat = Bitmap::create(64, 48);
        const auto value = static_cast<std::uint8_t>(level);
        fill(flat.picture(), {value, value, value});
        for (int mode = 1; mode <= 10; ++mode) {
            for (const int direction : {-1, 0, 1}) {
                AnalysisState state = state_for(direction, 3);
                colormap_adapt(state, {flat.picture(), flat.picture()}, nullptr, mode);
                EXPECT_NEAR(state.tone_left.plane[0][value], state.tone_right.plane[0][value], 8 * 256)
                    << level << " mode " << mode << " direction " << direction;
            }
        }
    }
}

TEST(StretchSoft, MeetsTheLineInTheMiddleAndNeverClips) {
    for (const auto& [low, high] : {std::pair(5.0, 240.0), {40.0, 220.0}, {70.0, 180.0}}) {
        const double span = high - low;
        const StretchLine line{244.0 / span, (high - 245.0 * low) / span, true};
        ToneLevels levels = ToneTables::identity().plane[0];
        stretch_soft(levels, line);
        const double centre = (128.0 - line.offset) / line.slope;
        EXPECT_NEAR(levels[static_cast<std::size_t>(std::lround(centre))] / 256.0, 128.0, line.slope);
        for (std::size_t i = 1; i < levels.size(); ++i) {
            EXPECT_GE(levels[i], levels[i - 1]) << low << " " << i;
        }
        EXPECT_LT(levels[255], 65535);
    }
}

TEST(GreyHistogram, EqualsThePlainCountForOddWidthsThreadsAndInstructionSets) {
    std::mt19937 random(5);
    const Colour passe{3, 2, 1};
    const int threads = omp_get_max_threads();
    for (const int width : {1, 7, 8, 9, 10, 31, 4001}) {
        const Bitmap bitmap = Bitmap::create(width, 33);
        const Picture picture = bitmap.picture();
        Histogram expected{};
        for (int y = 0; y < 33; ++y) {
            for (int x = 0; x < width; ++x) {
                const bool excluded = random() % 4 == 0;
                const Colour colour = excluded ? passe
                                               : Colour{static_cast<std::uint8_t>(random() % 256),
                                                        static_cast<std::uint8_t>(random() % 256),
                                                        static_cast<std::uint8_t>(random() % 256)};
                std::uint8_t* pixel = picture.pixel(x, y);
                pixel[0] = colour.blue, pixel[1] = colour.green, pixel[2] = colour.red;
                if (!(colour == passe)) {
                    ++expected[static_cast<std::size_t>(
                        (114 * colour.blue + 587 * colour.green + 299 * colour.red) / 1000)];
                }
            }
        }
        for (const int count : {1, 2, 8}) {
            omp_set_num_threads(count);
            testing::for_each_instruction_set(
                [&] { EXPECT_EQ(grey_histogram(picture, passe), expected) << width; });
        }
    }
    omp_set_num_threads(threads);
}

TEST(GreyHistogram, EveryGreyLevelIsItself) {
    const Bitmap bitmap = Bitmap::create(256, 1);
    for (int x = 0; x < 256; ++x) {
        std::fill_n(bitmap.picture().pixel(x, 0), kPixelBytes, static_cast<std::uint8_t>(x));
    }
    testing::for_each_instruction_set([&] {
        for (const std::uint32_t count : grey_histogram(bitmap.picture(), {1, 2, 3})) {
            EXPECT_EQ(count, 1U);
        }
    });
}

}  // namespace
}  // namespace zemora
