#include "tests/accuracy/mounted_scene.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

#include "config/parameter_set.h"
#include "driver/mount.h"
#include "driver/settings_analysis.h"
#include "driver/settings_input.h"
#include "driver/settings_mount.h"
#include "render/warp_plan.h"
#include "tests/accuracy/best_terms.h"

namespace zemora::test {

namespace {

struct RealPosition {
    double x;
    double y;
};

/// Centred source position of a real output position (columns and rows of the whole frame), between
/// the mapped pixels round it.
RealPosition source_of(const ViewTransform& transform, double column, double row, int source_width,
                       int source_height) {
    const int left = static_cast<int>(std::floor(column));
    const int bottom = static_cast<int>(std::floor(row));
    const double fx = column - left;
    const double fy = row - bottom;
    double x = 0.0;
    double y = 0.0;
    for (int j = 0; j < 2; ++j) {
        for (int i = 0; i < 2; ++i) {
            const Position p = transform.map(left + i, bottom + j);
            const double weight = (i == 0 ? 1.0 - fx : fx) * (j == 0 ? 1.0 - fy : fy);
            x += weight * static_cast<double>(p.x) / kPositionUnit;
            y += weight * static_cast<double>(p.y) / kPositionUnit;
        }
    }
    return {x - source_width / 2.0, y - source_height / 2.0};
}

/// Output position whose source position is `wanted`, by fixed-point iteration.
RealPosition output_of(const ViewTransform& transform, RealPosition wanted, RealPosition start,
                       const Scene& scene) {
    constexpr int kRounds = 12;
    RealPosition output = start;
    for (int i = 0; i < kRounds; ++i) {
        const RealPosition there = source_of(transform, output.x, output.y, scene.width(), scene.height());
        output.x += (wanted.x - there.x) * transform.total_scale;
        output.y += (wanted.y - there.y) * transform.total_scale;
    }
    return output;
}

/// A place of the left output view and how much higher the right one has it.
struct Place {
    HeightError error;
    bool seen = false;  ///< The right view shows it.
};

std::vector<Place> lattice_of(const WarpedPair& warp, const Scene& scene) {
    constexpr int kSteps = 40;
    const PairTransform transforms = make_transforms(warp.plan, warp.correction);
    std::vector<Place> places;
    for (int j = 1; j < kSteps; ++j) {
        for (int i = 1; i < kSteps; ++i) {
            const double column = warp.kept.left + warp.width * static_cast<double>(i) / kSteps;
            const double row = warp.kept.bottom + warp.height * static_cast<double>(j) / kSteps;
            const RealPosition left = source_of(transforms[0], column, row, scene.width(), scene.height());
            const ScenePoint right = scene.right_of_left({left.x, left.y});
            const RealPosition there = output_of(transforms[1], {right.x, right.y}, {column, row}, scene);
            const HeightError error{2.0 * i / kSteps - 1.0, 2.0 * j / kSteps - 1.0, there.y - row};
            places.push_back({error, scene.right_sees({left.x, left.y})});
        }
    }
    return places;
}

struct Spread {
    double mean = 0.0;
    double median = 0.0;
    double p95 = 0.0;
};

Spread spread_of(std::vector<double> values) {
    if (values.empty()) {
        return {};
    }
    std::sort(values.begin(), values.end());
    const double sum = std::accumulate(values.begin(), values.end(), 0.0);
    return {sum / static_cast<double>(values.size()), values[values.size() / 2],
            values[values.size() * 95 / 100]};
}

std::vector<double> magnitudes(const std::vector<HeightError>& errors) {
    std::vector<double> values;
    values.reserve(errors.size());
    for (const HeightError& error : errors) {
        values.push_back(std::fabs(error.dy));
    }
    return values;
}

/// Fills in what is left of the misalignment.
void judge(const WarpedPair& warp, const Scene& scene, MountedScene& result) {
    std::vector<HeightError> all;
    std::vector<HeightError> seen;
    for (const Place& place : lattice_of(warp, scene)) {
        all.push_back(place.error);
        if (place.seen) {
            seen.push_back(place.error);
        }
    }
    const Spread of_all = spread_of(magnitudes(all));
    const Spread of_seen = spread_of(magnitudes(seen));
    const Spread floor = spread_of(left_by_best_terms(seen));
    result.seen_places = static_cast<int>(seen.size());
    result.median_dy_px = of_all.median;
    result.p95_dy_px = of_all.p95;
    result.mean_dy_px = of_seen.mean;
    result.seen_median_px = of_seen.median;
    result.seen_p95_px = of_seen.p95;
    result.floor_mean_px = floor.mean;
    result.floor_median_px = floor.median;
    result.floor_p95_px = floor.p95;
}

Bitmap right_view(const Scene& scene, SceneOptions options, const MountOptions& mount) {
    if (mount.seed_of_right == 0) {
        return scene.render_right();
    }
    options.seed = mount.seed_of_right;
    return Scene(options, scene.errors()).render_right();
}

/// The equal views as a run has them before it measures.
InputViews prepared_views(const Scene& scene, const SceneOptions& options, const MountOptions& mount,
                          const ParameterSet& parameters, Notes& notes) {
    RawViews raw;
    raw.left.take(scene.render_left());
    raw.right.take(right_view(scene, options, mount));
    ViewPreparer preparer(prepare_options(parameters));
    Result<InputViews> views = preparer.prepare(std::move(raw), {}, notes);
    return *std::move(views);
}

}  // namespace

std::vector<double> heights_left(const WarpPlan& plan, const PixelRectangle& kept, const Scene& scene) {
    WarpedPair warp;
    warp.plan = plan;
    warp.correction = fixed_correction(plan);
    warp.kept = kept;
    warp.width = kept.width();
    warp.height = kept.height();
    std::vector<double> heights;
    for (const Place& place : lattice_of(warp, scene)) {
        heights.push_back(place.error.dy);
    }
    return heights;
}

MountedScene mount_scene(const SceneOptions& options, const SceneErrors& errors,
                         const MountOptions& mount_options) {
    const Scene scene(options, errors);
    ParameterSet parameters;
    parameters.verbose_mode = 0;
    parameters.apply_left_right = mount_options.apply_left_right;
    parameters.iterative_min = mount_options.iterative_min;
    parameters.robust_estimation = mount_options.robust;
    const MessageCatalogue messages(Language::english);
    KeptNotes notes(messages, parameters.verbose_mode);
    const InputViews views = prepared_views(scene, options, mount_options, parameters, notes);

    const MountSettings settings = mount_settings(parameters);
    PairWish wish;
    wish.target = find_target_size(views.height(), views.width(), parameters.output_height,
                                   parameters.output_width, parameters.cropp_output);
    wish.size =
        *wish_for_size(wish.target, {views.width(), views.height()}, parameters.cropp_output, messages);
    GeometryWish geometry;
    geometry.working = wish.size.scaled;
    Workbench bench(analysis_options(parameters));
    const LocatedPair located = *find_geometry(views, geometry, settings, bench, notes);
    MountedScene result;
    result.iterations = located.geometry.rounds - 1;
    result.correction = located.geometry.correction;
    result.residual_rms_px = static_cast<float>(located.geometry.residual_rms_px);
    result.status = located.geometry.status;
    if (!is_written(located.geometry.status)) {
        return result;
    }
    const Result<MountedPair> pair = mount(views, located, wish, settings, bench, notes);
    result.mounted = pair.has_value();
    if (result.mounted && mount_options.seed_of_right == 0) {
        judge(bench.warped, scene, result);
    }
    if (result.mounted && is_written(pair->status)) {
        result.status = pair->status;
        result.told = pair->heights ? judge_heights(*pair->heights, pair->deviation).verdict : result.told;
    }
    return result;
}

}  // namespace zemora::test
