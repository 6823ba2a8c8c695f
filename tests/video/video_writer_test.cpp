#include "video/video_writer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>

#include "tests/support/test_folder.h"
#include "tests/video/written_film.h"

namespace zemora {
namespace {

using test::picture_of;
using test::plain_options;
using test::probe;
using test::TestFolder;
using test::write_film;

TEST(VideoWriter, HasTheSizeRateAndTagsOfTheOptions) {
    const TestFolder folder;
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.rate = {30000, 1001};
    options.sound.source = SoundWish::Source::silence;
    ASSERT_EQ(write_film(options, 31, {4}), "");
    EXPECT_EQ(folder.files(), std::set<std::string>{"out.mp4"});
    auto video = probe(folder / "out.mp4", "-count_frames -select_streams v:0 -show_streams");
    const std::map<std::string, std::string> wanted = {{"codec_name", "h264"},
                                                       {"nb_read_frames", "31"},
                                                       {"width", "64"},
                                                       {"height", "48"},
                                                       {"avg_frame_rate", "30000/1001"},
                                                       {"pix_fmt", "yuv420p"},
                                                       {"color_range", "tv"},
                                                       {"color_space", "smpte170m"},
                                                       {"color_transfer", "smpte170m"},
                                                       {"color_primaries", "smpte170m"},
                                                       {"chroma_location", "left"},
                                                       {"start_time", "0.000000"}};
    for (const auto& [key, value] : wanted) {
        EXPECT_EQ(video[key], value) << key;
    }
    EXPECT_EQ(test::events_of(test::brightness_of(folder / "out.mp4"), 1.0).at(0).start, 4.0);
    // The index stands in front of the pictures.
    const std::string bytes = test::read_text(folder / "out.mp4");
    EXPECT_LT(bytes.find("moov"), bytes.find("mdat"));
    for (const float sample : test::sound_of(folder / "out.mp4")) {
        ASSERT_EQ(sample, 0.0F);
    }
}

TEST(VideoWriter, KeepsKnownTagsOfTheInput) {
    const TestFolder folder;
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.colours = {9, 16, 9, true};
    ASSERT_EQ(write_film(options, 3, {}), "");
    auto video = probe(folder / "out.mp4", "-select_streams v:0 -show_streams");
    EXPECT_EQ(video["color_primaries"], "bt2020");
    EXPECT_EQ(video["color_transfer"], "smpte2084");
    EXPECT_EQ(video["color_space"], "bt2020nc");
    EXPECT_EQ(video["color_range"], "tv");
}

TEST(VideoWriter, ColoursComeBackWithinALevel) {
    const TestFolder folder;
    constexpr PictureSize kChart{1280, 720};
    for (const int height : {720, 480}) {
        const PictureSize size{kChart.width, height};
        Bitmap chart = picture_of({0, 0, 0}, size);
        std::vector<Colour> colours;
        for (int i = 0; i < 16; ++i) {
            const auto part = [i](int bit) {
                return static_cast<std::uint8_t>((i & bit) != 0 ? 230 - i * 4 : 20 + i * 3);
            };
            colours.push_back({part(1), part(2), part(4)});
            fill(chart.picture().part(i * 80, 0, 80, height), colours.back());
        }
        VideoWriterOptions options = plain_options(folder / "out.mp4");
        options.size = size;
        options.quality = 4;
        test::Speech speech;
        auto writer = *VideoWriter::open(options, speech.voice);
        for (int i = 0; i < 5; ++i) {
            ASSERT_TRUE(writer->add(chart.picture(), nullptr));
        }
        ASSERT_TRUE(writer->close());
        const std::string scale = "scale=in_color_matrix=" + std::string(height >= 720 ? "bt709" : "bt601") +
                                  ":flags=accurate_rnd+full_chroma_int+full_chroma_inp";
        const std::string bytes =
            test::output_of("ffmpeg -v error -i '" + (folder / "out.mp4") + "' -vf \"select=eq(n\\,2)," +
                            scale + ",format=bgr24\" -frames:v 1 -f rawvideo -");
        ASSERT_EQ(bytes.size(), static_cast<std::size_t>(kPixelBytes * size.width * size.height));
        for (int i = 0; i < 16; ++i) {
            std::array<double, 3> sums{};
            for (int y = 20; y < 100; ++y) {
                for (int x = i * 80 + 10; x < i * 80 + 70; ++x) {
                    for (int c = 0; c < kPixelBytes; ++c) {
                        sums[c] += static_cast<std::uint8_t>(bytes[(y * size.width + x) * kPixelBytes + c]);
                    }
                }
            }
            EXPECT_NEAR(sums[0] / 4800, colours[i].blue, 1.0) << i;
            EXPECT_NEAR(sums[1] / 4800, colours[i].green, 1.0) << i;
            EXPECT_NEAR(sums[2] / 4800, colours[i].red, 1.0) << i;
        }
    }
}

TEST(VideoWriter, TellsTwoStreamsApart) {
    const TestFolder folder;
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.has_two_streams = true;
    test::Speech speech;
    auto writer = *VideoWriter::open(options, speech.voice);
    const Bitmap black = picture_of({0, 0, 0});
    const Bitmap white = picture_of({255, 255, 255});
    for (int i = 0; i < 6; ++i) {
        const ConstPicture second = i == 4 ? white.picture() : black.picture();
        ASSERT_TRUE(writer->add(i == 2 ? white.picture() : black.picture(), &second));
    }
    ASSERT_TRUE(writer->close());
    for (const auto& [stream, flash, is_default, title] :
         {std::tuple{"0", 2.0, "1", "left"}, std::tuple{"1", 4.0, "0", "right"}}) {
        const std::string name = stream;
        auto about = probe(folder / "out.mp4", "-select_streams v:" + name + " -show_streams");
        EXPECT_EQ(about["DISPOSITION:default"], is_default) << name;
        EXPECT_EQ(about["TAG:handler_name"], title) << name;
        EXPECT_EQ(test::events_of(test::brightness_of(folder / "out.mp4", "0:v:" + name), 1.0).at(0).start,
                  flash);
    }
}

TEST(VideoWriter, TellsTheLeftViewFirstAndNothingElse) {
    const TestFolder folder;
    for (const auto& [flag, in_file, in_picture] :
         {std::tuple{StereoFlag{StereoPacking::side_by_side, false}, "side by side", "left_right"},
          std::tuple{StereoFlag{StereoPacking::above_below, false}, "top and bottom", "top_bottom"},
          std::tuple{StereoFlag{StereoPacking::rows, false}, "", "row_interleaved_lr"},
          std::tuple{StereoFlag{StereoPacking::side_by_side, true}, "", ""},
          std::tuple{StereoFlag{}, "", ""}}) {
        VideoWriterOptions options = plain_options(folder / "out.mp4");
        options.stereo = flag;
        ASSERT_EQ(write_film(options, 3, {}), "");
        auto stream = probe(folder / "out.mp4", "-select_streams v:0 -show_entries stream_side_data=type");
        auto picture = probe(folder / "out.mp4", "-select_streams v:0 -read_intervals %+#1 -show_frames");
        // The stream's flag is handed on to the frames: the bytes of the box tell where it comes from.
        const bool has_box = test::read_text(folder / "out.mp4").find("st3d") != std::string::npos;
        EXPECT_EQ(has_box, std::string(in_file) != "");
        EXPECT_EQ(stream["type"], in_file);
        EXPECT_EQ(picture["TAG:stereo_mode"], in_picture);
    }
}

TEST(VideoWriter, LeavesNothingUnlessItIsClosed) {
    const TestFolder folder;
    test::write_text(folder / "out.mp4", "older");
    test::Speech speech;
    {
        auto writer = *VideoWriter::open(plain_options(folder / "out.mp4"), speech.voice);
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(writer->add(picture_of({1, 2, 3}).picture(), nullptr));
        }
    }
    EXPECT_EQ(test::read_text(folder / "out.mp4"), "older");
    EXPECT_EQ(folder.files(), std::set<std::string>{"out.mp4"});
}

TEST(VideoWriter, RefusesWithOneClearFailureAndNoFile) {
    const TestFolder folder;
    std::filesystem::create_directory(folder / "taken.mp4");
    for (const auto& [name, size, preset, words] :
         {std::tuple{"a.mp4", PictureSize{1922, 1080}, "slow", "divisible at least by 4"},
          std::tuple{"a.mp4", PictureSize{64, 50}, "slow", "divisible at least by 4"},
          std::tuple{"a.mp4", PictureSize{64, 48}, "sloww", "a.mp4"},
          std::tuple{"none/a.mp4", PictureSize{64, 48}, "slow", "none/a.mp4"},
          std::tuple{"taken.mp4", PictureSize{64, 48}, "slow", "taken.mp4"}}) {
        VideoWriterOptions options = plain_options(folder / name);
        options.size = size;
        options.preset = preset;
        EXPECT_NE(write_film(options, 1, {}).find(words), std::string::npos) << words;
    }
    EXPECT_EQ(folder.files(), std::set<std::string>());
}

/// Files cannot grow beyond some size as long as it lives.
class SmallFiles {
public:
    explicit SmallFiles(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallFiles() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;

private:
    void (*handler_)(int);
    rlimit before_{};
};

TEST(VideoWriter, AFullDiskIsOneFailureWithTheName) {
    const TestFolder folder;
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.sound.source = SoundWish::Source::silence;
    ASSERT_EQ(write_film(options, 25, {1, 3, 5}), "");
    const auto whole = std::filesystem::file_size(options.path);
    std::filesystem::remove(options.path);
    for (const rlim_t bytes : {rlim_t{20}, rlim_t{1000}, rlim_t{whole - 1}}) {
        const SmallFiles limit(bytes);
        const std::string told = write_film(options, 25, {1, 3, 5});
        EXPECT_NE(told.find("out.mp4"), std::string::npos) << told;
        EXPECT_NE(told.find("File too large"), std::string::npos) << told;
        EXPECT_EQ(folder.files(), std::set<std::string>());
    }
}

TEST(VideoWriter, AFullDiskStopsALongFilmEarly) {
    const TestFolder folder;
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.size = {640, 480};
    options.quality = 5;
    options.preset = "ultrafast";
    test::Speech speech;
    Bitmap noise = picture_of({0, 0, 0}, options.size);
    unsigned state = 1;
    for (int i = 0; i < 640 * 480 * kPixelBytes; ++i) {
        noise.bits()[i] = static_cast<std::uint8_t>((state = state * 1664525U + 1013904223U) >> 24);
    }
    const SmallFiles limit(3'000'000);
    auto writer = *VideoWriter::open(options, speech.voice);
    int written = 0;
    while (written < 400 && writer->add(noise.picture(), nullptr)) {
        ++written;
    }
    EXPECT_LT(written, 400);
    EXPECT_FALSE(writer->close());
    writer.reset();
    EXPECT_EQ(folder.files(), std::set<std::string>());
}

TEST(VideoWriter, APartPlaysUnderANameOfItsOwn) {
    const TestFolder folder;
    ASSERT_TRUE(test::make_flash_clip(folder / "in.mp4", 75, {3, 40}, "-c:v libx264 -c:a aac"));
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.sound = {SoundWish::Source::file, folder / "in.mp4", {0, 75, 1}, {25, 1}};
    test::Speech speech;
    auto writer = *VideoWriter::open(options, speech.voice);
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(writer->add(picture_of(i == 40 ? Colour{255, 255, 255} : Colour{}).picture(), nullptr));
    }
    const auto name = writer->close_part();
    ASSERT_TRUE(name);
    EXPECT_EQ(*name, folder / "out-part.mp4");
    writer.reset();
    EXPECT_EQ(folder.files(), (std::set<std::string>{"in.mp4", "out-part.mp4"}));
    auto sound = probe(*name, "-select_streams a:0 -show_streams");
    EXPECT_NEAR(std::stod(sound["duration"]), 2.0, 0.02);
    EXPECT_EQ(test::brightness_of(*name).size(), 50U);

    auto empty = *VideoWriter::open(plain_options(folder / "b.mp4"), speech.voice);
    const auto none = empty->close_part();
    ASSERT_TRUE(none);
    EXPECT_EQ(*none, "");
}

TEST(VideoWriter, KeepsTimePlaceTitleTimeCodeAndChapters) {
    const TestFolder folder;
    test::write_text(folder / "chapters.txt",
                     ";FFMETADATA1\ntitle=A walk\nlocation=+48.1000+011.5000/\n"
                     "creation_time=2021-02-03T04:05:06.000000Z\n"
                     "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1000\ntitle=One\n"
                     "[CHAPTER]\nTIMEBASE=1/1000\nSTART=1000\nEND=3000\ntitle=Two\n");
    ASSERT_TRUE(test::run_ffmpeg("-f lavfi -i color=black:s=64x48:r=25:d=3 -i '" + (folder / "chapters.txt") +
                                 "' -map_metadata 1 -timecode 10:00:59:20 -c:v libx264 '" +
                                 (folder / "in.mp4") + "'"));
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.metadata_source = folder / "in.mp4";
    options.metadata_walk = {10, 60, 1};
    ASSERT_EQ(write_film(options, 50, {}), "");
    auto film = probe(folder / "out.mp4", "-show_format");
    EXPECT_EQ(film["TAG:title"], "A walk");
    EXPECT_EQ(film["TAG:location"], "+48.1000+011.5000/");
    EXPECT_EQ(film["TAG:creation_time"], "2021-02-03T04:05:06.000000Z");
    auto video = probe(folder / "out.mp4", "-select_streams v:0 -show_streams");
    EXPECT_EQ(video["TAG:timecode"], "10:01:00:05");
    const std::string chapters = test::output_of(
        "ffprobe -v error -show_chapters -show_entries chapter=start_time,end_time:chapter_tags=title -of "
        "csv=p=0 '" +
        (folder / "out.mp4") + "'");
    EXPECT_EQ(chapters, "0.000000,0.600000,One\n0.600000,2.000000,Two\n");

    options.path = folder / "back.mp4";
    options.metadata_walk = {0, 50, -1};
    ASSERT_EQ(write_film(options, 50, {}), "");
    video = probe(folder / "back.mp4", "-select_streams v:0 -show_streams");
    EXPECT_EQ(video.count("TAG:timecode"), 0U) << "time codes only run forward";
}

TEST(VideoWriter, GoesOnWithoutASoundThatCannotBeRead) {
    const TestFolder folder;
    test::write_text(folder / "in.mp4", "no film");
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.sound = {SoundWish::Source::file, folder / "in.mp4", {0, 75, 1}, {25, 1}};
    testing::internal::CaptureStdout();
    EXPECT_EQ(write_film(options, 3, {}), "");
    EXPECT_NE(testing::internal::GetCapturedStdout().find("in.mp4"), std::string::npos);
    EXPECT_EQ(test::brightness_of(folder / "out.mp4").size(), 3U);
}

}  // namespace
}  // namespace zemora
