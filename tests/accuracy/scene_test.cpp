#include "scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace zemora::test {
namespace {

/// Green of a picture between its pixels.
double level_at(const Picture& picture, double column, double row) {
    const int left = static_cast<int>(std::floor(column));
    const int bottom = static_cast<int>(std::floor(row));
    const double fx = column - left;
    const double fy = row - bottom;
    double level = 0.0;
    for (int j = 0; j < 2; ++j) {
        for (int i = 0; i < 2; ++i) {
            const double weight = (i == 0 ? 1.0 - fx : fx) * (j == 0 ? 1.0 - fy : fy);
            level += weight * picture.pixel(left + i, bottom + j)[1];
        }
    }
    return level;
}

/// How the right view agrees with the left one where the scene says that both show the same.
struct Agreement {
    int places = 0;
    int seen = 0;
    double seen_difference = 0.0;    ///< Mean, levels, over the seen places.
    double hidden_difference = 0.0;  ///< The same over those that are hidden but inside.
    double aside_difference = 0.0;   ///< As the first, three rows off.
};

Agreement compare(const Scene& scene) {
    constexpr int kStep = 7;
    constexpr int kMargin = 8;
    const Bitmap left = scene.render_left();
    const Bitmap right = scene.render_right();
    const double half_w = scene.width() / 2.0;
    const double half_h = scene.height() / 2.0;
    Agreement sum;
    int hidden = 0;
    for (int row = kMargin; row < scene.height() - kMargin; row += kStep) {
        for (int column = kMargin; column < scene.width() - kMargin; column += kStep) {
            const ScenePoint place{column - half_w, row - half_h};
            const ScenePoint match = scene.right_of_left(place);
            ++sum.places;
            if (std::fabs(match.x) > half_w - kMargin || std::fabs(match.y) > half_h - kMargin) {
                continue;
            }
            const double here = left.picture().pixel(column, row)[1];
            const auto difference = [&](double rows_off) {
                return std::fabs(here -
                                 level_at(right.picture(), match.x + half_w, match.y + half_h + rows_off));
            };
            if (scene.right_sees(place)) {
                ++sum.seen;
                sum.seen_difference += difference(0.0);
                sum.aside_difference += difference(3.0);
            } else {
                ++hidden;
                sum.hidden_difference += difference(0.0);
            }
        }
    }
    sum.seen_difference /= std::max(sum.seen, 1);
    sum.aside_difference /= std::max(sum.seen, 1);
    sum.hidden_difference /= std::max(hidden, 1);
    return sum;
}

SceneOptions plain() {
    SceneOptions options;
    options.width = 800;
    options.height = 600;
    options.seed = 8;
    return options;
}

SceneErrors all_errors() {
    constexpr double kDegree = 3.14159265358979323846 / 180.0;
    SceneErrors errors;
    errors.height_px = 6.0;
    errors.size = 0.01;
    errors.rotation_rad = kDegree;
    errors.vergence_v_rad = 0.5 * kDegree;
    errors.vergence_h_rad = 0.5 * kDegree;
    return errors;
}

struct TruthCase {
    const char* name;
    void (*change)(SceneOptions& options);
    double most_difference;  ///< Levels between two samplings of the same surface.
};

class SceneTruth : public testing::TestWithParam<TruthCase> {};

TEST_P(SceneTruth, PointsToTheSameSurfaceInBothViews) {
    SceneOptions options = plain();
    GetParam().change(options);
    const Agreement agreement = compare(Scene(options, all_errors()));
    std::printf("%-9s %5d places, %5d seen, difference %.2f, hidden %.2f, three rows off %.2f\n",
                GetParam().name, agreement.places, agreement.seen, agreement.seen_difference,
                agreement.hidden_difference, agreement.aside_difference);
    EXPECT_GT(agreement.seen, agreement.places / 2);
    EXPECT_LT(agreement.seen_difference, GetParam().most_difference);
    EXPECT_GT(agreement.aside_difference, 2.0 * agreement.seen_difference);
    EXPECT_GT(agreement.hidden_difference, 4.0 * agreement.seen_difference);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Table, SceneTruth, testing::Values(
    TruthCase{"plain",    [](SceneOptions&) {}, 2.0},
    TruthCase{"deep",     [](SceneOptions& o) { o.near_disparity = -0.16; o.far_disparity = 0.0; }, 2.0},
    TruthCase{"chequers", [](SceneOptions& o) { o.pattern = SurfacePattern::chequers; }, 2.0},
    TruthCase{"bricks",   [](SceneOptions& o) { o.pattern = SurfacePattern::bricks; }, 4.0},
    TruthCase{"barrel",   [](SceneOptions& o) { o.barrel = 0.05; }, 2.0},
    TruthCase{"cushion",  [](SceneOptions& o) { o.barrel = -0.1; o.near_disparity = -0.1; }, 2.0}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

TEST(SceneDepth, DeepScenesHaveAShareThatOneViewAloneShows) {
    SceneOptions options = plain();
    const auto seen_share = [&](double near_disparity) {
        options.near_disparity = near_disparity;
        const Agreement agreement = compare(Scene(options, {}));
        return static_cast<double>(agreement.seen) / agreement.places;
    };
    const double shallow = seen_share(-0.012);
    const double deep = seen_share(-0.16);
    EXPECT_GT(shallow, 0.95);
    EXPECT_LT(deep, 0.9);
    EXPECT_GT(deep, 0.6);
}

TEST(SceneTexture, FadesWithItsStrength) {
    const auto spread = [](double texture) {
        SceneOptions options = plain();
        options.objects = 0;
        options.texture = texture;
        const Bitmap bitmap = Scene(options, {}).render_left();
        double sum = 0.0;
        double squares = 0.0;
        for (int column = 0; column < options.width; ++column) {
            const double level = bitmap.picture().pixel(column, options.height - 50)[1];
            sum += level;
            squares += level * level;
        }
        const double mean = sum / options.width;
        return std::sqrt(squares / options.width - mean * mean);
    };
    const double full = spread(1.0);
    EXPECT_GT(full, 5.0);
    EXPECT_NEAR(spread(0.2), 0.2 * full, 0.05 * full);
    EXPECT_EQ(spread(0.0), 0.0);
}

TEST(SceneBarrel, DrawsCornersInByItsShare) {
    SceneOptions options = plain();
    options.objects = 0;
    options.near_disparity = options.far_disparity = 0.0;
    options.barrel = 0.05;
    const Bitmap bent = Scene(options, {}).render_left();
    options.barrel = 0.0;
    const Bitmap straight = Scene(options, {}).render_left();
    double drawn_in = 0.0;
    double as_it_was = 0.0;
    for (double share = -0.95; share < 1.0; share += 0.01) {  // along the diagonal, of half of it
        const double shown = share * (1.0 - 0.05 * share * share);
        const double here = level_at(bent.picture(), 400.0 + 400.0 * shown, 300.0 + 300.0 * shown);
        drawn_in +=
            std::fabs(here - level_at(straight.picture(), 400.0 + 400.0 * share, 300.0 + 300.0 * share));
        as_it_was +=
            std::fabs(here - level_at(straight.picture(), 400.0 + 400.0 * shown, 300.0 + 300.0 * shown));
    }
    EXPECT_LT(drawn_in, 190 * 2.0);
    EXPECT_GT(as_it_was, 3.0 * drawn_in);
}

}  // namespace
}  // namespace zemora::test
