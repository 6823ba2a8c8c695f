// Films through the real program: what is written, what is refused, what an interruption leaves.

#include "film.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/e2e/workshop.h"
#include "tests/support/film_files.h"
#include "tests/video/film_tools.h"

namespace zemora::test {
namespace {

constexpr int kFrames = 12;

FilmOptions misaligned_film(int width, int height, int frames) {
    FilmOptions options;
    options.scene.width = width;
    options.scene.height = height;
    options.scene.seed = 3;
    options.frames = frames;
    options.errors.height_px = 5.0;
    options.errors.rotation_rad = 0.006;
    options.errors.size = 0.008;
    options.pan_px = 1.0;
    return options;
}

/// A short film as two videos with sound, made once for all tests.
const TestFolder& film_folder() {
    static const TestFolder folder;
    static const bool is_made = [] {
        Film film(misaligned_film(640, 360, kFrames));
        const std::string rate = "25";
        return write_film(film, folder / "silent_l.mkv", folder / "silent_r.mkv", kLosslessVideo, rate) &&
               run_ffmpeg("-i '" + (folder / "silent_l.mkv") +
                          "' -f lavfi -i sine=f=440 -shortest -c:v copy " + "-c:a aac '" +
                          (folder / "film_l.mp4") + "'") &&
               run_ffmpeg("-i '" + (folder / "silent_r.mkv") + "' -c:v copy '" + (folder / "film_r.mp4") +
                          "'");
    }();
    EXPECT_TRUE(is_made);
    return folder;
}

struct FilmShop : Workshop {
    FilmShop() {
        for (const char* name : {"film_l.mp4", "film_r.mp4"}) {
            std::filesystem::copy_file(film_folder() / name, path(name));
        }
        settings.insert(settings.end(), {"--VideoPreset=ultrafast", "--AnalyseIncrement=4"});
    }
    [[nodiscard]] Outcome mount(std::vector<std::string> arguments = {}) const {
        arguments.insert(arguments.begin(), {"film_l.mp4", "film_r.mp4"});
        return run(arguments);
    }
    /// A frame of a video, as a player shows it.
    [[nodiscard]] Bitmap frame_of(const std::string& video, int number) const {
        EXPECT_TRUE(run_ffmpeg("-i '" + path(video) + "' -vf 'select=eq(n\\," + std::to_string(number) +
                               ")' -frames:v 1 '" + path("shown.bmp") + "'"));
        return load("shown.bmp");
    }
};

const char* const kOfVideo =
    "-select_streams v:0 -count_frames -show_entries stream=width,height,nb_read_frames,r_frame_rate";

TEST(Film, TwoVideosBecomeOneSideBySideWithSoundAndWithoutHeightErrors) {
    FilmShop shop;
    shop.settings.push_back("--VerboseMode=1");
    shop.settings.push_back("--HtmlImages=4");
    const Outcome outcome = shop.mount();
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("VideoOutput = 2")) << "nobody has said what to write";
    const std::string video = "cs/film_cs-lr.mp4";
    EXPECT_EQ(shop.files(),
              (std::set<std::string>{"film_l.mp4", "film_r.mp4", video, "ct/film_l.jpg", "ct/film_r.jpg"}));
    auto facts = probe(shop.path(video), kOfVideo);
    EXPECT_EQ(facts["nb_read_frames"], std::to_string(kFrames));
    EXPECT_EQ(facts["r_frame_rate"], "25/1");
    EXPECT_EQ(std::stoi(facts["width"]) % 8, 0);
    EXPECT_EQ(probe(shop.path(video), "-select_streams a:0 -show_entries stream=codec_name")["codec_name"],
              "aac");
    for (const int number : {0, kFrames - 1}) {
        const Bitmap both = shop.frame_of(video, number);
        const ConstPicture picture = both.picture();
        const int width = picture.width / 2;
        EXPECT_LT(median_vertical_error(picture.part(0, 0, width, picture.height),
                                        picture.part(width, 0, width, picture.height), 6),
                  0.5);
    }
}

struct OutputCase {
    int video_output;
    std::vector<std::string> files;
    int width;
    int height;
};

class FilmOutputs : public ::testing::TestWithParam<OutputCase> {};

TEST_P(FilmOutputs, AreWrittenInTheirSizeAndWithAllFrames) {
    const OutputCase& wanted = GetParam();
    const FilmShop shop;
    const Outcome outcome = shop.mount(
        {"--OutputWidth=320", "--OutputHeight=180", "--VideoOutput=" + std::to_string(wanted.video_output)});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    std::set<std::string> files{"film_l.mp4", "film_r.mp4"};
    files.insert(wanted.files.begin(), wanted.files.end());
    EXPECT_EQ(shop.files(), files);
    for (const std::string& file : wanted.files) {
        auto facts = probe(shop.path(file), kOfVideo);
        EXPECT_EQ(facts["width"], std::to_string(wanted.width));
        EXPECT_EQ(facts["height"], std::to_string(wanted.height));
        EXPECT_EQ(facts["nb_read_frames"], std::to_string(kFrames));
        EXPECT_EQ(probe(shop.path(file), "-select_streams a:0 -show_entries stream=codec_name")["codec_name"],
                  "aac");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, FilmOutputs,
    ::testing::Values(OutputCase{1, {"cl/film_cl.mp4", "cr/film_cr.mp4"}, 320, 180},
                      OutputCase{2, {"cs/film_cs-lr.mp4"}, 640, 180},
                      OutputCase{3, {"ca/film_ca.mp4"}, 320, 180},
                      OutputCase{4, {"ce_lrq/film_ce-lrq.mp4"}, 320, 180},
                      OutputCase{5, {"ce_ab/film_ce-ab.mp4"}, 320, 360},
                      OutputCase{6, {"ce_abq/film_ce-abq.mp4"}, 320, 180},
                      OutputCase{7, {"ce_oe/film_ce-oe.mp4"}, 320, 180},
                      OutputCase{8, {"ce_dual/film_ce.mp4"}, 320, 180},
                      OutputCase{9, {"clr/film_cl-l.mp4", "clr/film_cr-r.mp4"}, 320, 180}),
    [](const auto& instance) { return "video_output_" + std::to_string(instance.param.video_output); });

TEST(Film, PicturesOfTheFramesHaveTheirNumbers) {
    const FilmShop shop;
    const Outcome outcome = shop.mount({"--StereoOutput=2", "--LeftRightOutput=1", "--OutputFormat=1",
                                        "--FirstFrameIndex=3", "--LastFrameIndex=7", "--FrameIncrement=-4"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_EQ(shop.files(),
              (std::set<std::string>{"film_l.mp4", "film_r.mp4", "cs/film_0000003.jpg", "cs/film_0000007.jpg",
                                     "film_cl_0000003.jpg", "film_cl_0000007.jpg", "film_cr_0000003.jpg",
                                     "film_cr_0000007.jpg"}));
}

TEST(Film, ValuesOfTheCorrectionsAreWrittenAndReadAgain) {
    const FilmShop shop;
    ASSERT_EQ(shop.mount({"--CorrInputOutput=2"}).exit_code, 0);
    EXPECT_EQ(shop.files(), (std::set<std::string>{"film_l.mp4", "film_r.mp4", "CorrValues.dat",
                                                   "CorrValues_Geo.gpl", "CorrValues_Window.gpl"}));
    const std::string values = read_text(shop.path("CorrValues.dat"));
    EXPECT_EQ(std::count(values.begin(), values.end(), '\n'), 3) << values;

    // A height of 30 pixels moves the views by that much against each other.
    shop.write("CorrValues.dat", "0 30 0 0 0 0 0\n");
    const Outcome outcome = shop.mount({"--CorrInputOutput=3", "--CroppOutput=0"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    const Bitmap both = shop.frame_of("cs/film_cs-lr.mp4", 5);
    const ConstPicture picture = both.picture();
    const auto is_black = [&](int x, int y) { return picture.pixel(x, y)[1] < 40; };
    EXPECT_TRUE(is_black(100, 7) != is_black(100, picture.height - 8)) << "the left view stands 15 rows off";
    EXPECT_TRUE(is_black(900, 7) != is_black(900, picture.height - 8)) << "and the right one";
}

struct RefusedFilm {
    const char* name;
    const char* content;
};

class RefusedFilms : public ::testing::TestWithParam<RefusedFilm> {};

TEST_P(RefusedFilms, AreNamedAndLeaveNothing) {
    const FilmShop shop;
    const std::string file = std::string("odd") + GetParam().name;
    shop.write(file, GetParam().content);
    const std::set<std::string> before = shop.files();
    const Outcome outcome = shop.run({"film_l.mp4", file});
    EXPECT_EQ(outcome.exit_code, 1) << outcome.text;
    EXPECT_TRUE(outcome.tells(file)) << outcome.text;
    EXPECT_EQ(shop.files(), before);
}

INSTANTIATE_TEST_SUITE_P(Table, RefusedFilms,
                         ::testing::Values(RefusedFilm{".mp4", ""}, RefusedFilm{".mkv", "no film at all\n"},
                                           RefusedFilm{".avi", "#EXTM3U\n#EXTINF:9,\nfilm_l.mp4\n"},
                                           RefusedFilm{".mov", "ffconcat version 1.0\nfile film_l.mp4\n"}),
                         [](const auto& instance) { return std::string(instance.param.name + 1); });

TEST(Film, WhatFilmsDoNotHaveIsRefusedByItsName) {
    const FilmShop shop;
    const std::set<std::string> before = shop.files();
    for (const char* wish : {"VideoContainer=1", "InterlacedMode=1", "FlickerFilter=20"}) {
        const Outcome outcome = shop.mount({"--VideoOutput=2", std::string("--") + wish});
        EXPECT_EQ(outcome.exit_code, 1) << outcome.text;
        const std::string setting = wish;
        EXPECT_TRUE(outcome.tells(setting.substr(0, setting.find('=')))) << outcome.text;
        EXPECT_TRUE(outcome.tells("this version does not do that with films")) << outcome.text;
        EXPECT_EQ(shop.files(), before);
    }
}

TEST(Film, AnInterruptionLeavesAPlayablePart) {
    Workshop shop;
    shop.settings.insert(shop.settings.end(), {"--VideoPreset=veryslow", "--AnalyseIncrement=1000"});
    ASSERT_TRUE(run_ffmpeg("-stream_loop 60 -i '" + (film_folder() / "film_l.mp4") + "' -c copy '" +
                           shop.path("long_l.mp4") + "'"));
    ASSERT_TRUE(run_ffmpeg("-stream_loop 60 -i '" + (film_folder() / "film_r.mp4") + "' -c copy '" +
                           shop.path("long_r.mp4") + "'"));
    shop.around =
        "\"$@\" & pid=$!; while [ ! -d cs ]; do sleep 0.1; done; sleep 3; kill -TERM $pid; wait $pid";
    const Outcome outcome = shop.run({"long_l.mp4", "long_r.mp4"});
    EXPECT_EQ(outcome.exit_code, 128 + 15) << outcome.text;
    EXPECT_TRUE(outcome.tells("long_cs-lr-part.mp4")) << outcome.text;
    EXPECT_EQ(shop.files(), (std::set<std::string>{"long_l.mp4", "long_r.mp4", "cs/long_cs-lr-part.mp4"}));
    const int frames = decoded_pictures(shop.path("cs/long_cs-lr-part.mp4"));
    EXPECT_GT(frames, 0);
    EXPECT_LT(frames, 60 * kFrames);
}

}  // namespace
}  // namespace zemora::test
