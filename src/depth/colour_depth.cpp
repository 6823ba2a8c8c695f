#include "depth/colour_depth.h"

#include <array>
#include <cstdint>
#include <string_view>

#include "codec/encode.h"
#include "numerics/rounding.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr double kWhite = 255.0;

struct Channels {
    int red;
    int green;
    int blue;
};

/// A saturated colour of the hue circle: `hue` 0 to 6 from red through green (2) and blue (4).
Channels saturated(double hue, double value) {
    const int sector = static_cast<int>(hue);
    const double falling = 1.0 - (hue - sector);
    const int v = round_half_up(value * kWhite);
    const int q = round_half_up(falling * value * kWhite);
    const int t = round_half_up((1.0 - falling) * value * kWhite);
    switch (sector) {
        case 0: return {v, t, 0};
        case 1: return {q, v, 0};
        case 2: return {0, v, t};
        case 3: return {0, q, v};
        case 4: return {t, 0, v};
        default: return {v, 0, q};
    }
}

}  // namespace

void colour_depth(ConstPicture colour, ConstPicture depth, Picture target) {
    constexpr double kFarHue = 4.0;
    constexpr double kFarBrightness = 0.75;
#pragma omp parallel for
    for (int y = 0; y < colour.height; ++y) {
        const std::uint8_t* photo = colour.row(y);
        const std::uint8_t* mask = depth.row(y);
        std::uint8_t* out = target.row(y);
        for (int x = 0; x < colour.width; ++x) {
            const double luminance = (0.114 * photo[0] + 0.587 * photo[1] + 0.299 * photo[2]) / kWhite;
            const double near = mask[0] / kWhite;
            const double value = (kFarBrightness + near * (1.0 - kFarBrightness)) * luminance;
            const Channels c = saturated((1.0 - near) * kFarHue, value);
            out[0] = static_cast<std::uint8_t>(c.blue);
            out[1] = static_cast<std::uint8_t>(c.green);
            out[2] = static_cast<std::uint8_t>(c.red);
            photo += kPixelBytes;
            mask += kPixelBytes;
            out += kPixelBytes;
        }
    }
}

std::string colour_depth_name(const std::string& name) {
    struct Ending {
        std::string_view old_ending;
        std::string_view new_ending;
    };
    static constexpr std::array<Ending, 6> kEndings{
        {{"_d", "_cd"}, {"_D", "_CD"}, {"_r", "_cd"}, {"_R", "_CD"}, {"_rgbd", "_cd"}, {"_RGBD", "_CD"}}};
    const std::string bare = bare_name_of(name);
    const std::size_t dot = bare.rfind('.');
    const std::string stem = bare.substr(0, dot);
    std::string renamed = stem + "_cd.jpg";
    for (const Ending& ending : kEndings) {
        if (stem.ends_with(ending.old_ending)) {
            renamed = stem.substr(0, stem.size() - ending.old_ending.size()) +
                      std::string(ending.new_ending) + ".jpg";
            break;
        }
    }
    return join_path(folder_of(name), "cd/" + renamed);
}

std::string write_colour_depth(ConstPicture colour, ConstPicture depth, const std::string& path) {
    const Bitmap picture = Bitmap::create(colour.width, colour.height);
    if (!picture) {
        return "there is no memory for the picture";
    }
    colour_depth(colour, depth, picture.picture());
    std::string reason;
    if (!make_folders(folder_of(path), reason)) {
        return reason;
    }
    return encode_and_write(picture, {.format = PictureFormat::jpeg, .quality = 100, .chroma = Chroma::full},
                            path);
}

}  // namespace zemora
