// Writes a generated stereo pair: zemora_scene LEFT RIGHT WIDTH HEIGHT [name=value ...]
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "render/save_picture.h"
#include "scene.h"

namespace {

/// All settings and what they are when they are not given.
std::map<std::string, double> default_settings() {
    return {{"height", 0.0},     {"size", 0.0},       {"rotation", 0.0}, {"vergence_v", 0.0},
            {"vergence_h", 0.0}, {"brightness", 1.0}, {"noise", 0.0},    {"seed", 1.0},
            {"near", -12.0},     {"far", 8.0},        {"objects", 14.0}, {"share", 0.0},
            {"flat", 0.0},       {"texture", 100.0},  {"pattern", 0.0},  {"barrel", 0.0},
            {"quality", 95.0},   {"swap", 0.0}};
}

int usage() {
    std::puts(
        "zemora_scene LEFT RIGHT WIDTH HEIGHT [height=PX] [size=PERCENT] [rotation=DEG] [vergence_v=DEG]\n"
        "             [vergence_h=DEG] [brightness=FACTOR] [noise=LEVELS] [seed=N] [near=PERMILLE] "
        "[far=PERMILLE]\n"
        "             [objects=N] [share=-1|0|1] [flat=1] [texture=0..100] [pattern=0..3] [barrel=PERCENT]\n"
        "             [quality=1..100] [swap=1]\n"
        "Renders a textured stereo pair whose views are misaligned by the given amounts.\n"
        "pattern: 1 chequers, 2 bars, 3 bricks. barrel: below 14. swap: writes the views exchanged.");
    return EXIT_FAILURE;
}

/// Overwrites settings by the arguments; false for one that does not exist.
bool read_settings(int count, char** arguments, std::map<std::string, double>& settings) {
    for (int i = 0; i < count; ++i) {
        const std::string argument = arguments[i];
        const std::size_t equals = argument.find('=');
        const auto setting = settings.find(argument.substr(0, equals));
        if (equals == std::string::npos || setting == settings.end()) {
            return false;
        }
        setting->second = std::atof(argument.c_str() + equals + 1);
    }
    return true;
}

zemora::SceneErrors errors_of(const std::map<std::string, double>& settings) {
    constexpr double kRadians = 3.14159265358979323846 / 180.0;
    zemora::SceneErrors errors;
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

zemora::SceneOptions options_of(int width, int height, const std::map<std::string, double>& settings) {
    zemora::SceneOptions options;
    options.width = width;
    options.height = height;
    options.seed = static_cast<std::uint32_t>(settings.at("seed"));
    options.objects = static_cast<int>(settings.at("objects"));
    options.near_disparity = settings.at("near") / 1000.0;
    options.far_disparity = settings.at("far") / 1000.0;
    options.flat = settings.at("flat") != 0.0;
    options.texture = settings.at("texture") / 100.0;
    options.pattern = static_cast<zemora::SurfacePattern>(settings.at("pattern"));
    options.barrel = settings.at("barrel") / 100.0;
    return options;
}

bool is_possible(const zemora::SceneOptions& options) {
    constexpr double kMostBarrel = 0.14;  // beyond it the corners would show nothing
    return options.width > 0 && options.height > 0 && options.texture >= 0.0 && options.texture <= 1.0 &&
           options.pattern >= zemora::SurfacePattern::none &&
           options.pattern <= zemora::SurfacePattern::bricks && options.barrel < kMostBarrel;
}

bool write(const char* name, const zemora::Bitmap& bitmap, int quality) {
    zemora::SaveOptions options;
    options.jpeg_quality = quality;
    const std::string reason = zemora::save_picture(bitmap, name, options);
    if (!reason.empty()) {
        std::printf("%s: %s\n", name, reason.c_str());
    }
    return reason.empty();
}

}  // namespace

int main(int count, char** values) {
    constexpr int kPositional = 5;
    std::map<std::string, double> settings = default_settings();
    if (count < kPositional || !read_settings(count - kPositional, values + kPositional, settings)) {
        return usage();
    }
    const zemora::SceneOptions options = options_of(std::atoi(values[3]), std::atoi(values[4]), settings);
    if (!is_possible(options)) {
        return usage();
    }
    const zemora::Scene scene(options, errors_of(settings));
    const bool exchanged = settings["swap"] != 0.0;
    const int quality = static_cast<int>(settings["quality"]);
    const bool written = write(values[exchanged ? 2 : 1], scene.render_left(), quality) &&
                         write(values[exchanged ? 1 : 2], scene.render_right(), quality);
    return written ? EXIT_SUCCESS : EXIT_FAILURE;
}
