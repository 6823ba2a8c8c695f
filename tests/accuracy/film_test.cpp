#include "film.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "tests/support/film_files.h"
#include "tests/support/test_folder.h"

namespace zemora::test {
namespace {

FilmOptions small_film() {
    FilmOptions options;
    options.scene.width = 480;
    options.scene.height = 320;
    options.scene.seed = 3;
    options.frames = 30;
    options.errors.height_px = 2.0;
    options.height_drift_px = 3.0;
    options.rotation_drift_rad = 0.01;
    options.depth_drift = 0.006;
    options.cuts = {10, 20};
    options.height_step_px = -1.0;
    options.depth_step = 0.002;
    options.shake_px = 6.0;
    options.shake_turn_rad = 0.01;
    return options;
}

/// Mean difference of green, in levels.
double difference(const Bitmap& a, const Bitmap& b) {
    double sum = 0.0;
    const ConstPicture first = a.picture();
    for (int row = 0; row < first.height; ++row) {
        for (int column = 0; column < first.width; ++column) {
            sum += std::abs(first.pixel(column, row)[1] - b.picture().pixel(column, row)[1]);
        }
    }
    return sum / (1.0 * first.width * first.height);
}

TEST(Film, FramesAreTheScenesOfTheirMoments) {
    Film film(small_film());
    for (const int frame : {4, 9, 10, 29, 5}) {
        const Film::Views views = film.render(frame);
        const FilmMoment now = film.moment(frame);
        const Scene scene(now.options, now.errors);
        EXPECT_LT(difference(views.left, scene.render_left()), 0.6) << frame;
        EXPECT_LT(difference(views.right, scene.render_right()), 0.6) << frame;
        EXPECT_GT(difference(views.left, film.render(frame - 1).left), 2.0) << "nothing moved, " << frame;
    }
}

TEST(Film, MomentsDriftEvenlyAndStepAtCuts) {
    const Film film(small_film());
    EXPECT_DOUBLE_EQ(film.moment(0).errors.height_px, 2.0);
    EXPECT_NEAR(film.moment(9).errors.height_px, 2.0 + 3.0 * 9 / 29, 1e-9);
    EXPECT_NEAR(film.moment(10).errors.height_px, 1.0 + 3.0 * 10 / 29, 1e-9);
    EXPECT_DOUBLE_EQ(film.moment(29).errors.height_px, 3.0);
    EXPECT_DOUBLE_EQ(film.moment(29).errors.rotation_rad, 0.01);
    EXPECT_NEAR(film.moment(29).options.near_disparity, -0.012 + 0.006 + 0.004, 1e-9);
    EXPECT_EQ(film.moment(19).scene, 1);
    EXPECT_EQ(film.moment(20).scene, 2);
    EXPECT_NE(film.moment(20).options.seed, film.moment(19).options.seed);
    std::istringstream truth(film.truth());
    int lines = 0;
    for (std::string line; std::getline(truth, line);) {
        ++lines;
        EXPECT_EQ(lines != 16 || line.starts_with("14 1 2.44828 0.0000000 0.0048276 "), true) << line;
    }
    EXPECT_EQ(lines, 31);
}

/// Green of a picture between its pixels, from the middle.
double level_at(ConstPicture picture, ScenePoint place) {
    const double column = place.x + picture.width / 2.0;
    const double row = place.y + picture.height / 2.0;
    const int left = static_cast<int>(std::floor(column));
    const int bottom = static_cast<int>(std::floor(row));
    const double u = column - left;
    const double v = row - bottom;
    const auto level = [&](int x, int y) { return 1.0 * picture.pixel(left + x, bottom + y)[1]; };
    return (1.0 - v) * ((1.0 - u) * level(0, 0) + u * level(1, 0)) +
           v * ((1.0 - u) * level(0, 1) + u * level(1, 1));
}

TEST(Film, TheCameraMovesWhatIsSeenTheOtherWay) {
    FilmOptions options = small_film();
    options.scene.objects = 0;
    options.scene.near_disparity = options.scene.far_disparity = 0.0;
    options.depth_drift = options.depth_step = 0.0;
    options.cuts = {};
    options.pan_px = 1.5;
    Film film(options);
    const Bitmap still = film.render(0).left;
    const Bitmap moved = film.render(3).left;
    const CameraPlace camera = film.moment(3).options.camera;
    ASSERT_GT(std::fabs(camera.turn_rad), 0.004);
    ASSERT_GT(std::fabs(camera.y_px), 1.0);
    // The errors of the left view are half of those of the pair, the other way, in both frames.
    const auto shown = [&](ScenePoint ideal, int frame) {
        const SceneErrors errors = film.moment(frame).errors;
        const double y = ideal.y - 0.5 * errors.height_px;
        return ScenePoint{ideal.x + 0.5 * errors.rotation_rad * y, y - 0.5 * errors.rotation_rad * ideal.x};
    };
    double error = 0.0;
    double error_aside = 0.0;
    for (int x = -180; x <= 180; x += 4) {
        const ScenePoint surface{x + 0.0, 0.2 * x - 60.0};  // on the ground
        const double dx = surface.x - camera.x_px;
        const double dy = surface.y - camera.y_px;
        const double sine = std::sin(camera.turn_rad);
        const double cosine = std::cos(camera.turn_rad);
        const ScenePoint there{cosine * dx - sine * dy, sine * dx + cosine * dy};
        const double level = level_at(still.picture(), shown(surface, 0));
        error += std::fabs(level - level_at(moved.picture(), shown(there, 3)));
        error_aside += std::fabs(level - level_at(moved.picture(), shown({there.x + 3.0, there.y}, 3)));
    }
    EXPECT_LT(error, 91 * 1.0);
    EXPECT_GT(error_aside, 4.0 * error);
}

std::string answer_of(const std::string& command) {
    std::string answer;
    std::FILE* pipe = popen(command.c_str(), "r");
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
        answer += static_cast<char>(c);
    }
    pclose(pipe);
    return answer;
}

TEST(Film, BecomesVideosOfAllItsFrames) {
    FilmOptions options = small_film();
    options.frames = 8;
    Film film(options);
    const TestFolder folder;
    const std::string left = folder / "film l.mkv";
    const std::string right = folder / "film r.mkv";
    const std::string both = folder / "film.avi";
    ASSERT_TRUE(write_film(film, left, right));
    ASSERT_TRUE(write_film_side_by_side(film, both, "-c:v mjpeg -q:v 3", "30000/1001"));
    const std::string probe =
        "ffprobe -v error -count_frames -select_streams v -of csv=p=0 -show_entries "
        "stream=width,height,r_frame_rate,nb_read_frames '";
    EXPECT_EQ(answer_of(probe + left + '\''), "480,320,25/1,8\n");
    EXPECT_EQ(answer_of(probe + right + '\''), "480,320,25/1,8\n");
    EXPECT_EQ(answer_of(probe + both + '\''), "960,320,30000/1001,8\n");
}

}  // namespace
}  // namespace zemora::test
