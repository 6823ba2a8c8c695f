// Generated films with known errors, mounted, and judged by the truth of every frame.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "driver/exiftool.h"
#include "driver/settings_mount.h"
#include "driver/video_run.h"
#include "tests/accuracy/mounted_scene.h"
#include "tests/support/film_files.h"
#include "tests/support/test_folder.h"

namespace zemora::test {
namespace {

/// A film in a folder of its own and the run that mounts it, in memory.
struct FilmRig {
    explicit FilmRig(const FilmOptions& options) : film(options) {
        parameters.verbose_mode = 0;
        parameters.stop_at_error = -1;
        parameters.path_of_images = folder.path();
        parameters.video_mode = setting::video_mode::video;
        parameters.left_right_output = parameters.stereo_output = parameters.anaglyph_output = 0;
        parameters.video_output = setting::video_output::side_by_side;
        parameters.video_preset = "ultrafast";
        list.add_object(list.add_name(folder / "film_l.mkv"), list.add_name(folder / "film_r.mkv"));
    }
    [[nodiscard]] bool write() { return write_film(film, folder / "film_l.mkv", folder / "film_r.mkv"); }

    TestFolder folder;
    Film film;
    Console console;
    MessageCatalogue messages{Language::english};
    ParameterSet parameters;
    Voice voice{console, messages, parameters};
    RunContext context;
    ImageList list;
    ExifTool exiftool{parameters};
};

double median_magnitude(std::vector<double> values) {
    for (double& value : values) {
        value = std::fabs(value);
    }
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

/// Median over the picture of how much the heights have changed from one frame to the next.
double median_jump(const std::vector<double>& before, const std::vector<double>& now) {
    std::vector<double> changes;
    for (std::size_t i = 0; i < now.size(); ++i) {
        changes.push_back(now[i] - before[i]);
    }
    return median_magnitude(std::move(changes));
}

struct FilmCase {
    const char* name;
    int increment;  ///< `AnalyseIncrement`.
    double drift;   ///< Of height in pixels, over the film.
};

class MountedFilm : public ::testing::TestWithParam<FilmCase> {};

TEST_P(MountedFilm, IsAlignedInEveryFrameAndCalmWithinEveryScene) {
    constexpr double kMostLeft_px = 0.3;
    constexpr double kMostJump_px = 0.1;
    FilmOptions options;
#ifdef ZEMORA_SMALL_PICTURES
    options.scene.width = 800;
    options.scene.height = 600;
#else
    options.scene.width = 1632;
    options.scene.height = 1224;
#endif
    options.scene.seed = 5;
    options.frames = 48;
    options.cuts = {17, 33};
    options.errors.height_px = 5.0;
    options.errors.size = 0.006;
    options.errors.rotation_rad = 0.005;
    options.errors.vergence_v_rad = 0.004;
    options.height_drift_px = GetParam().drift;
    options.rotation_drift_rad = 0.001 * GetParam().drift;
    options.depth_drift = 0.006;
    options.height_step_px = -2.0;
    options.depth_step = 0.003;
    options.shake_px = 5.0;
    options.shake_turn_rad = 0.004;
    FilmRig rig(options);
    ASSERT_TRUE(rig.write());
    rig.parameters.analyse_increment = GetParam().increment;

    Pipeline pipeline(rig.parameters, rig.context, rig.list, rig.exiftool, rig.voice);
    VideoRun run(pipeline);
    set_up_video(run);
    ASSERT_EQ(run.frames, options.frames);
    analyse_video(run);
    EXPECT_EQ(run.series.scene_starts, options.cuts);
    settle_series(run);
    plan_video(run);
    std::vector<double> before;
    for (int frame = 0; frame < run.frames; ++frame) {
        const FilmMoment moment = rig.film.moment(frame);
        const WarpPlan plan = film_plan(
            run.base_plan, correction_of(run.series.values[static_cast<std::size_t>(frame)]), run.frame);
        const std::vector<double> left =
            heights_left(plan, run.frame.kept, Scene(moment.options, moment.errors));
        EXPECT_LT(median_magnitude(left), kMostLeft_px) << "frame " << frame;
        const bool starts_scene =
            std::find(options.cuts.begin(), options.cuts.end(), frame) != options.cuts.end();
        if (frame > 0 && !starts_scene) {
            EXPECT_LT(median_jump(before, left), kMostJump_px) << "frame " << frame;
        }
        before = left;
    }
}

INSTANTIATE_TEST_SUITE_P(Table, MountedFilm,
                         ::testing::Values(FilmCase{"every_frame", 1, 3.0}, FilmCase{"every_fifth", 5, 1.0}),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace zemora::test
