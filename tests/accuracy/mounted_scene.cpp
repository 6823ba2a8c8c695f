#include "tests/accuracy/mounted_scene.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <vector>

#include "driver/pipeline.h"
#include "platform/temp_folder.h"
#include "render/save_picture.h"
#include "render/warp_plan.h"

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

/// |dy| of matching points over the picture, sorted.
std::vector<double> remaining_errors(const WarpState& warp, const Scene& scene) {
    constexpr int kSteps = 40;
    const PairTransform transforms =
        make_transforms(warp, warp.latest_correction, warp.frame_height, warp.frame_width);
    std::vector<double> errors;
    for (int j = 1; j < kSteps; ++j) {
        for (int i = 1; i < kSteps; ++i) {
            const double column = warp.left_record.kept_x + warp.width * static_cast<double>(i) / kSteps;
            const double row = warp.left_record.kept_y + warp.height * static_cast<double>(j) / kSteps;
            const RealPosition left = source_of(transforms[0], column, row, scene.width(), scene.height());
            const ScenePoint right = scene.right_of_left({left.x, left.y});
            const RealPosition there = output_of(transforms[1], {right.x, right.y}, {column, row}, scene);
            errors.push_back(std::fabs(there.y - row));
        }
    }
    std::sort(errors.begin(), errors.end());
    return errors;
}

void save(const Bitmap& bitmap, const std::string& path) {
    const std::string reason = save_picture(bitmap, path, SaveOptions(ParameterSet()));
    if (!reason.empty()) {
        std::printf("%s: %s\n", path.c_str(), reason.c_str());
    }
}

}  // namespace

MountedScene mount_scene(const SceneOptions& options, const SceneErrors& errors, const MountOptions& mount) {
    const Scene scene(options, errors);
    const std::string left = temporary_folder() + "/scene_l.bmp";
    const std::string right = temporary_folder() + "/scene_r.bmp";
    save(scene.render_left(), left);
    save(scene.render_right(), right);

    ParameterSet parameters;
    parameters.input_mode = 0;
    parameters.verbose_mode = 0;
    parameters.stop_at_error = 0;
    parameters.meta_transfer = 0;
    parameters.path_of_images = temporary_folder();
    parameters.apply_left_right = mount.apply_left_right;
    parameters.iterative_min = mount.iterative_min;
    Console console;
    MessageCatalogue messages(Language::english);
    const Voice voice(console, messages, parameters);
    RunContext context;
    ImageList list;
    list.add_object(list.add_name(left), list.add_name(right));
    ExifTool exiftool(parameters, voice);
    Pipeline pipeline(parameters, context, list, exiftool, voice);
    PairRun pair;
    MountedScene result;
    result.mounted = prepare_pair(pipeline, pair) && measure_first(pipeline, pair) &&
                     iterate_geometry(pipeline, pair) && is_written(pair.status);
    if (result.mounted) {
        place_stereo_window(pipeline, pair);
        result.mounted = warp_final(pipeline, pair);
    }
    std::filesystem::remove(left);
    std::filesystem::remove(right);
    result.iterations = pair.iteration - 1;
    result.correction = pair.correction;
    result.residual_rms_px = pair.residual_rms;
    if (result.mounted) {
        const std::vector<double> remaining = remaining_errors(pipeline.warp, scene);
        result.median_dy_px = remaining[remaining.size() / 2];
        result.p95_dy_px = remaining[remaining.size() * 95 / 100];
    }
    return result;
}

}  // namespace zemora::test
