#include "film.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zemora {

namespace {

constexpr std::uint32_t kSeedStep = 101;  // between the scenes

/// -1 to 1 without a period that a film would show: two waves of unlike length, in frames.
double wave(int frame, double slow, double fast) {
    constexpr double kTurn = 2.0 * 3.14159265358979323846;
    return 0.6 * std::sin(kTurn * frame / slow) + 0.4 * std::sin(kTurn * frame / fast);
}

}  // namespace

int Film::scene_of(int frame) const {
    return static_cast<int>(std::upper_bound(options_.cuts.begin(), options_.cuts.end(), frame) -
                            options_.cuts.begin());
}

CameraPlace Film::camera_at(int frame) const {
    const int scene = scene_of(frame);
    const int first = scene == 0 ? 0 : options_.cuts[static_cast<std::size_t>(scene - 1)];
    return {options_.pan_px * (frame - first) + options_.shake_px * wave(frame, 31.7, 7.9),
            options_.shake_px * wave(frame, 23.3, 9.1), options_.shake_turn_rad * wave(frame, 41.9, 11.3)};
}

FilmMoment Film::moment(int frame) const {
    FilmMoment moment{scene_of(frame), options_.scene, options_.errors};
    const double share = options_.frames > 1 ? frame / (options_.frames - 1.0) : 0.0;
    const double depth = options_.depth_drift * share + options_.depth_step * moment.scene;
    moment.options.near_disparity += depth;
    moment.options.far_disparity += depth;
    moment.options.seed += kSeedStep * static_cast<std::uint32_t>(moment.scene);
    moment.options.camera = camera_at(frame);
    moment.errors.height_px += options_.height_drift_px * share + options_.height_step_px * moment.scene;
    moment.errors.rotation_rad += options_.rotation_drift_rad * share;
    return moment;
}

Film::Views Film::render(int frame) {
    const FilmMoment now = moment(frame);
    const Scene scene(now.options, now.errors);
    if (now.scene != painted_scene_) {
        const double pan = std::fabs(options_.pan_px) * options_.frames;
        const double reach = 0.08 * options_.scene.width + options_.shake_px + pan +
                             options_.shake_turn_rad * options_.scene.width;
        pictures_ = scene.paint_surfaces(static_cast<int>(std::ceil(reach)));
        painted_scene_ = now.scene;
    }
    const auto grain = static_cast<std::uint32_t>(frame);
    return {scene.render_from(pictures_, -1, grain), scene.render_from(pictures_, +1, grain)};
}

std::string Film::truth() const {
    std::string text =
        "# frame scene height size rotation vergence_v vergence_h near far camera_x camera_y camera_turn\n";
    for (int frame = 0; frame < options_.frames; ++frame) {
        const FilmMoment now = moment(frame);
        char line[256];
        std::snprintf(line, sizeof line, "%d %d %.5f %.7f %.7f %.7f %.7f %.4f %.4f %.4f %.4f %.7f\n", frame,
                      now.scene, now.errors.height_px, now.errors.size, now.errors.rotation_rad,
                      now.errors.vergence_v_rad, now.errors.vergence_h_rad,
                      now.options.near_disparity * now.options.width,
                      now.options.far_disparity * now.options.width, now.options.camera.x_px,
                      now.options.camera.y_px, now.options.camera.turn_rad);
        text += line;
    }
    return text;
}

}  // namespace zemora
