// Writes a generated stereo pair: zemora_scene LEFT RIGHT WIDTH HEIGHT [name=value ...]
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "render/save_picture.h"
#include "scene.h"

namespace {

int usage() {
    std::puts(
        "zemora_scene LEFT RIGHT WIDTH HEIGHT [height=PX] [size=PERCENT] [rotation=DEG] [vergence_v=DEG]\n"
        "             [vergence_h=DEG] [brightness=FACTOR] [noise=LEVELS] [seed=N] [near=PERMILLE] "
        "[far=PERMILLE]\n"
        "             [objects=N] [share=-1|0|1] [flat=1] [quality=1..100]\n"
        "Renders a textured stereo pair whose views are misaligned by the given amounts.");
    return EXIT_FAILURE;
}

}  // namespace

int main(int count, char** values) {
    constexpr int kPositional = 5;
    if (count < kPositional) {
        return usage();
    }
    std::map<std::string, double> settings{{"brightness", 1.0}, {"seed", 1.0},     {"near", -12.0},
                                           {"far", 8.0},        {"objects", 14.0}, {"quality", 95.0}};
    for (int i = kPositional; i < count; ++i) {
        const std::string argument = values[i];
        const std::size_t equals = argument.find('=');
        if (equals == std::string::npos) {
            return usage();
        }
        settings[argument.substr(0, equals)] = std::atof(argument.c_str() + equals + 1);
    }
    constexpr double kRadians = 3.14159265358979323846 / 180.0;
    zemora::SceneErrors errors;
    errors.height_px = settings["height"];
    errors.size = settings["size"] / 100.0;
    errors.rotation_rad = settings["rotation"] * kRadians;
    errors.vergence_v_rad = settings["vergence_v"] * kRadians;
    errors.vergence_h_rad = settings["vergence_h"] * kRadians;
    errors.share = static_cast<int>(settings["share"]);
    errors.brightness = settings["brightness"];
    errors.noise = settings["noise"];
    zemora::SceneOptions options;
    options.width = std::atoi(values[3]);
    options.height = std::atoi(values[4]);
    options.seed = static_cast<std::uint32_t>(settings["seed"]);
    options.objects = static_cast<int>(settings["objects"]);
    options.near_disparity = settings["near"] / 1000.0;
    options.far_disparity = settings["far"] / 1000.0;
    options.flat = settings["flat"] != 0.0;
    if (options.width <= 0 || options.height <= 0) {
        return usage();
    }
    zemora::ParameterSet parameters;
    parameters.jpg_quality = static_cast<int>(settings["quality"]);
    const zemora::SaveOptions save(parameters);
    const zemora::Scene scene(options, errors);
    const auto write = [&](const char* name, const zemora::Bitmap& bitmap) {
        const std::string reason = zemora::save_picture(bitmap, name, save);
        if (!reason.empty()) {
            std::printf("%s: %s\n", name, reason.c_str());
        }
        return reason.empty();
    };
    return write(values[1], scene.render_left()) && write(values[2], scene.render_right()) ? EXIT_SUCCESS
                                                                                           : EXIT_FAILURE;
}
