#pragma once
/// A stereo film with known truth: scenes with cuts between them, whose views are misaligned by amounts that
/// change from frame to frame, whose depth moves and whose camera may shake.

#include <string>
#include <vector>

#include "scene.h"

namespace zemora {

struct FilmOptions {
    SceneOptions scene;  ///< Of the first scene; each further one has another seed.
    SceneErrors errors;  ///< In the first frame.
    int frames = 100;
    std::vector<int> cuts;  ///< First frames of the scenes behind the first one, ascending.

    // What changes evenly from the first to the last frame, by so much in all.
    double height_drift_px = 0.0;
    double rotation_drift_rad = 0.0;
    double depth_drift = 0.0;  ///< Added to near and far disparity, as a fraction of the width.

    // What each scene has beyond the one before it.
    double height_step_px = 0.0;
    double depth_step = 0.0;  ///< As `depth_drift`.

    // Motion of the camera.
    double pan_px = 0.0;          ///< To the right, a frame; each scene starts anew.
    double shake_px = 0.0;        ///< Largest deviation from that in each axis, about.
    double shake_turn_rad = 0.0;  ///< Largest turn.
};

/// The truth of one frame.
struct FilmMoment {
    int scene = 0;
    SceneOptions options;
    SceneErrors errors;
};

class Film {
public:
    explicit Film(FilmOptions options) : options_(std::move(options)) {}

    [[nodiscard]] int frames() const { return options_.frames; }
    [[nodiscard]] int width() const { return options_.scene.width; }
    [[nodiscard]] int height() const { return options_.scene.height; }
    [[nodiscard]] FilmMoment moment(int frame) const;

    struct Views {
        Bitmap left;
        Bitmap right;
    };
    /// Fastest in ascending order: the surfaces of the latest scene are kept.
    [[nodiscard]] Views render(int frame);

    /// A head and a line for each frame: its number and scene, the errors, near and far disparity and the
    /// place of the camera; lengths in pixels, angles in radians.
    [[nodiscard]] std::string truth() const;

private:
    [[nodiscard]] int scene_of(int frame) const;
    [[nodiscard]] CameraPlace camera_at(int frame) const;

    FilmOptions options_;
    int painted_scene_ = -1;
    SurfacePictures pictures_;
};

}  // namespace zemora
