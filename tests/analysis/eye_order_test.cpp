#include "analysis/eye_order.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>

#include "tests/analysis/texture_pair.h"

namespace zemora {
namespace {

using testing::analysis_options;
using testing::Displacement;
using testing::TexturePair;

constexpr int kWidth = 1024;
constexpr int kHeight = 768;
constexpr int kPeriod = 190;  // pixels from one object to the next
constexpr int kObject = 100;  // pixels a side

/// Whether there is something in front of, or a hole in the wall at, (x, y).
bool in_square(double x, double y) {
    const auto within = [](double t) { return t - std::floor(t / kPeriod) * kPeriod < kObject; };
    return within(x) && within(y + 40.0);
}

/// A wall and squares, each a surface with a texture and a brightness of its own. The one with the smaller
/// disparity (right minus left, pixels) hides the other; both are seen from both eyes.
struct Squares {
    Squares(double wall_px, double square_px)
        : pair(kWidth, kHeight, [](double, double) { return Displacement{}; }) {
        draw(pair.left.picture(), -0.5, wall_px, square_px);
        draw(pair.right.picture(), 0.5, wall_px, square_px);
    }
    static void draw(const Picture& view, double eye, double wall_px, double square_px) {
        for (int y = 0; y < view.height; ++y) {
            for (int x = 0; x < view.width; ++x) {
                // The outline belongs to the nearer surface: to the squares, or to the wall with its holes.
                const double outline_px = std::min(wall_px, square_px);
                const bool square = in_square(x - eye * outline_px, y);
                const double at = x - eye * (square ? square_px : wall_px);
                for (int c = 0; c < kPixelBytes; ++c) {
                    const double shade = testing::texture(at + (square ? 5000.0 : 0.0), y, c);
                    view.pixel(x, y)[c] =
                        static_cast<std::uint8_t>(std::lround((square ? 20.0 : 110.0) + 120.0 * shade));
                }
            }
        }
    }
    TexturePair pair;
};

EyeOrder measured(const StereoPicture& pair) {
    AnalysisState state(analysis_options());
    EXPECT_EQ(analyse_phase(state, pair, {AnalysePhase::disparity, 1, false, false}, {}),
              AnalyseStatus::done);
    return measure_eye_order(state, pair);
}

struct Depths {
    const char* name;
    double wall_px;
    double square_px;
};

class KnownContours : public ::testing::TestWithParam<Depths> {};

TEST_P(KnownContours, BelongToTheNearerSurfaceAndTellWhenTheViewsAreExchanged) {
    const Squares squares(GetParam().wall_px, GetParam().square_px);
    const EyeOrder in_order = measured(squares.pair.pictures());
    EXPECT_GT(in_order.contours.in_order, 60);
    EXPECT_LT(in_order.contours.exchanged * 20, in_order.contours.in_order);
    EXPECT_FALSE(in_order.looks_exchanged());
    const EyeOrder turned = measured(squares.pair.exchanged());
    EXPECT_GT(turned.contours.exchanged, 60);
    EXPECT_LT(turned.contours.in_order * 20, turned.contours.exchanged);
    EXPECT_TRUE(turned.looks_exchanged());
}

INSTANTIATE_TEST_SUITE_P(Scenes, KnownContours,
                         ::testing::Values(Depths{"objects", 6.0, -6.0}, Depths{"holes", -6.0, 6.0},
                                           Depths{"shallow", 2.0, -2.0}, Depths{"deep", 60.0, 0.0},
                                           Depths{"aside", -40.0, -52.0}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(EyeOrder, ACeilingIsNoReasonForAWarning) {
    const TexturePair ceiling(kWidth, kHeight, [](double, double y) {
        return Displacement{-20.0 * y / kHeight, 0.0};
    });
    const EyeOrder order = measured(ceiling.pictures());
    EXPECT_LT(order.rows, -0.9);
    EXPECT_FALSE(order.looks_exchanged());
    EXPECT_GT(measured(ceiling.exchanged()).rows, 0.9) << "a ground";
}

TEST(EyeOrder, ContoursDecideAndRowsOnlyHelp) {
    struct Case {
        ContourVotes contours;
        double rows;
        bool looks_exchanged;
    };
    for (const Case& c : {Case{{9, 33}, 0.0, true}, Case{{9, 33}, 0.2, false}, Case{{2, 8}, -1.0, true},
                          Case{{2, 8}, -0.7, false}, Case{{0, 0}, -1.0, false}, Case{{2, 7}, -1.0, false},
                          Case{{0, 40}, 1.0, true}, Case{{33, 9}, -1.0, false}}) {
        EXPECT_EQ((EyeOrder{c.contours, c.rows}.looks_exchanged()), c.looks_exchanged)
            << c.contours.in_order << ":" << c.contours.exchanged << " rows " << c.rows;
    }
}

TEST(EyeOrder, KnowsNothingWithoutCopiesOrWithARangeThatIsTooWide) {
    const Squares squares(6.0, -6.0);
    const StereoPicture pair = squares.pair.pictures();
    AnalysisState state(analysis_options());
    EXPECT_EQ(measure_eye_order(state, pair).value(), 0.0) << "no copies";
    const MeasuredPair whole(state, pair);
    EXPECT_GT(vote_on_contours(whole, {-80, 79}).in_order, 60);
    EXPECT_EQ(vote_on_contours(whole, {-80, 80}).in_order, 0);
    const ContourVotes none = vote_on_contours(
        MeasuredPair(state, {pair.left.part(0, 0, 12, 4), pair.right.part(0, 0, 12, 4)}), {-30, 30});
    EXPECT_EQ(none.in_order + none.exchanged, 0) << "smaller than the range and than a line";
}

TEST(EyeOrder, GivesTheSameForEveryNumberOfThreadsAndInstructionSet) {
    const Squares squares(3.0, -8.0);
    const EyeOrder first = measured(squares.pair.pictures());
    const int threads = omp_get_max_threads();
    for (const int count : {1, 3}) {
        omp_set_num_threads(count);
        testing::for_each_instruction_set([&] {
            const EyeOrder again = measured(squares.pair.pictures());
            EXPECT_EQ(again.contours.in_order, first.contours.in_order);
            EXPECT_EQ(again.contours.exchanged, first.contours.exchanged);
            EXPECT_EQ(again.rows, first.rows);
        });
    }
    omp_set_num_threads(threads);
}

}  // namespace
}  // namespace zemora
