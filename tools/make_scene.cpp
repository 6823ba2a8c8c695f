// Writes a generated stereo pair, zemora_scene LEFT RIGHT WIDTH HEIGHT [name=value ...], or the frames of a
// generated stereo film, zemora_scene --film WIDTH HEIGHT FRAMES [name=value ...].
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "film.h"
#include "render/save_picture.h"
#include "scene.h"
#include "scene_settings.h"

namespace {

using namespace zemora;

int usage() {
    std::puts(
        "zemora_scene LEFT RIGHT WIDTH HEIGHT [height=PX] [size=PERCENT] [rotation=DEG] [vergence_v=DEG]\n"
        "             [vergence_h=DEG] [brightness=FACTOR] [noise=LEVELS] [seed=N] [near=PERMILLE] "
        "[far=PERMILLE]\n"
        "             [objects=N] [share=-1|0|1] [flat=1] [texture=0..100] [pattern=0..3] [barrel=PERCENT]\n"
        "             [quality=1..100] [swap=1]\n"
        "Renders a textured stereo pair whose views are misaligned by the given amounts.\n"
        "pattern: 1 chequers, 2 bars, 3 bricks. barrel: below 14. swap: writes the views exchanged.\n"
        "\n"
        "zemora_scene --film WIDTH HEIGHT FRAMES [the same] [height_drift=PX] [rotation_drift=DEG]\n"
        "             [depth_drift=PERMILLE] [cuts=FRAME,...] [height_step=PX] [depth_step=PERMILLE] "
        "[pan=PX]\n"
        "             [shake=PX] [shake_turn=DEG] [truth=FILE] [to=FOLDER]\n"
        "Renders a film. drift: in all, evenly. step: for each cut. pan: a frame. Each frame goes to the "
        "output as\n"
        "blue, green, red from the top row on, the left view above the right one; or into the folder as\n"
        "film_00000_l.bmp and film_00000_r.bmp. truth: a table of what was done to each frame.");
    return EXIT_FAILURE;
}

bool write(const std::string& name, const Bitmap& bitmap, int quality) {
    SaveOptions options;
    options.jpeg_quality = quality;
    const std::string reason = save_picture(bitmap, name, options);
    if (!reason.empty()) {
        std::fprintf(stderr, "%s: %s\n", name.c_str(), reason.c_str());
    }
    return reason.empty();
}

int write_pair(int count, char** values) {
    constexpr int kPositional = 5;
    SceneSettings settings = scene_settings();
    for (int i = kPositional; i < count; ++i) {
        if (!read_setting(values[i], settings)) {
            return usage();
        }
    }
    const SceneOptions options = options_of(std::atoi(values[3]), std::atoi(values[4]), settings);
    if (!is_possible(options)) {
        return usage();
    }
    const Scene scene(options, errors_of(settings));
    const bool exchanged = settings["swap"] != 0.0;
    const int quality = static_cast<int>(settings["quality"]);
    const bool written = write(values[exchanged ? 2 : 1], scene.render_left(), quality) &&
                         write(values[exchanged ? 1 : 2], scene.render_right(), quality);
    return written ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// Where a film goes.
struct FilmTarget {
    std::string folder;
    std::string truth;
    std::vector<int> cuts;
};

/// Takes a word that is no number of the scene.
bool read_target(const std::string& word, FilmTarget& target) {
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : word.substr(equals + 1);
    if (name == "cuts") {
        std::istringstream list(value);
        for (std::string cut; std::getline(list, cut, ',');) {
            target.cuts.push_back(std::atoi(cut.c_str()));
        }
        return true;
    }
    std::string* text = name == "to" ? &target.folder : name == "truth" ? &target.truth : nullptr;
    if (text != nullptr) {
        *text = value;
    }
    return text != nullptr;
}

bool write_rows(const Bitmap& bitmap) {
    const ConstPicture picture = bitmap.picture();
    const auto bytes = static_cast<std::size_t>(picture.width) * kPixelBytes;
    bool well = true;
    for (int row = picture.height - 1; row >= 0 && well; --row) {
        well = std::fwrite(picture.row(row), 1, bytes, stdout) == bytes;
    }
    return well;
}

bool write_frame(Film& film, int frame, const std::string& folder) {
    constexpr int kQuality = 95;
    const Film::Views views = film.render(frame);
    if (folder.empty()) {
        return write_rows(views.left) && write_rows(views.right);
    }
    char name[32];
    std::snprintf(name, sizeof name, "/film_%05d", frame);
    return write(folder + name + "_l.bmp", views.left, kQuality) &&
           write(folder + name + "_r.bmp", views.right, kQuality);
}

bool write_truth(const Film& film, const std::string& path) {
    std::FILE* file = path.empty() ? nullptr : std::fopen(path.c_str(), "w");
    const bool written = file != nullptr && std::fputs(film.truth().c_str(), file) >= 0;
    const bool closed = file == nullptr || std::fclose(file) == 0;
    return path.empty() || (written && closed);
}

int write_film(int count, char** values) {
    constexpr int kPositional = 5;
    SceneSettings settings = film_settings();
    FilmTarget target;
    for (int i = kPositional; i < count; ++i) {
        if (!read_setting(values[i], settings) && !read_target(values[i], target)) {
            return usage();
        }
    }
    const SceneOptions scene = options_of(std::atoi(values[2]), std::atoi(values[3]), settings);
    if (!is_possible(scene)) {
        return usage();
    }
    Film film(film_of(scene, std::atoi(values[4]), target.cuts, settings));
    bool well = write_truth(film, target.truth);
    for (int frame = 0; frame < film.frames() && well; ++frame) {
        well = write_frame(film, frame, target.folder);
    }
    return well && std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int count, char** values) {
    constexpr int kFewest = 5;
    if (count < kFewest) {
        return usage();
    }
    return std::string(values[1]) == "--film" ? write_film(count, values) : write_pair(count, values);
}
