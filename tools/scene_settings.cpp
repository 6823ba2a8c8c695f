#include "scene_settings.h"

#include <cstdlib>

namespace zemora {

namespace {

constexpr double kRadians = 3.14159265358979323846 / 180.0;
constexpr double kPerMille = 1000.0;

}  // namespace

SceneSettings scene_settings() {
    return {{"height", 0.0},     {"size", 0.0},       {"rotation", 0.0}, {"vergence_v", 0.0},
            {"vergence_h", 0.0}, {"brightness", 1.0}, {"noise", 0.0},    {"seed", 1.0},
            {"near", -12.0},     {"far", 8.0},        {"objects", 14.0}, {"share", 0.0},
            {"flat", 0.0},       {"texture", 100.0},  {"pattern", 0.0},  {"barrel", 0.0},
            {"quality", 95.0},   {"swap", 0.0}};
}

SceneSettings film_settings() {
    SceneSettings settings = scene_settings();
    settings.insert({{"height_drift", 0.0},
                     {"rotation_drift", 0.0},
                     {"depth_drift", 0.0},
                     {"height_step", 0.0},
                     {"depth_step", 0.0},
                     {"pan", 0.0},
                     {"shake", 0.0},
                     {"shake_turn", 0.0}});
    return settings;
}

bool read_setting(const std::string& word, SceneSettings& settings) {
    const std::size_t equals = word.find('=');
    const auto setting = settings.find(word.substr(0, equals));
    if (equals == std::string::npos || setting == settings.end()) {
        return false;
    }
    setting->second = std::atof(word.c_str() + equals + 1);
    return true;
}

SceneErrors errors_of(const SceneSettings& settings) {
    SceneErrors errors;
    errors.height_px = settings.at("height");
    errors.size = settings.at("size") / 100.0;
    errors.rotation_rad = settings.at("rotation") * kRadians;
    errors.vergence_v_rad = settings.at("vergence_v") * kRadians;
    errors.vergence_h_rad = settings.at("vergence_h") * kRadians;
    errors.share = static_cast<int>(settings.at("share"));
    errors.brightness = settings.at("brightness");
    errors.noise = settings.at("noise");
    return errors;
}

SceneOptions options_of(int width, int height, const SceneSettings& settings) {
    SceneOptions options;
    options.width = width;
    options.height = height;
    options.seed = static_cast<std::uint32_t>(settings.at("seed"));
    options.objects = static_cast<int>(settings.at("objects"));
    options.near_disparity = settings.at("near") / kPerMille;
    options.far_disparity = settings.at("far") / kPerMille;
    options.flat = settings.at("flat") != 0.0;
    options.texture = settings.at("texture") / 100.0;
    options.pattern = static_cast<SurfacePattern>(settings.at("pattern"));
    options.barrel = settings.at("barrel") / 100.0;
    return options;
}

FilmOptions film_of(const SceneOptions& scene, int frames, const std::vector<int>& cuts,
                    const SceneSettings& settings) {
    FilmOptions film;
    film.scene = scene;
    film.errors = errors_of(settings);
    film.frames = frames;
    film.cuts = cuts;
    film.height_drift_px = settings.at("height_drift");
    film.rotation_drift_rad = settings.at("rotation_drift") * kRadians;
    film.depth_drift = settings.at("depth_drift") / kPerMille;
    film.height_step_px = settings.at("height_step");
    film.depth_step = settings.at("depth_step") / kPerMille;
    film.pan_px = settings.at("pan");
    film.shake_px = settings.at("shake");
    film.shake_turn_rad = settings.at("shake_turn") * kRadians;
    return film;
}

bool is_possible(const SceneOptions& options) {
    constexpr double kMostBarrel = 0.14;  // beyond it the corners would show nothing
    return options.width > 0 && options.height > 0 && options.texture >= 0.0 && options.texture <= 1.0 &&
           options.pattern >= SurfacePattern::none && options.pattern <= SurfacePattern::bricks &&
           options.barrel < kMostBarrel;
}

}  // namespace zemora
