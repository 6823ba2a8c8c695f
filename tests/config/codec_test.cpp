#include <gmock/gmock.h>

#include "config/codec_choice.h"
#include "config/codec_file.h"
#include "tests/config/rule_rig.h"

namespace zemora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::RuleRig;
using testing::take_video;
using testing::type_in;

std::optional<CodecSettings> read(const std::string& content) {
    const std::vector<std::uint8_t> bytes(content.begin(), content.end());
    return read_codec_file(bytes);
}

std::string word(std::uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i) {
        bytes += static_cast<char>(value >> (8 * i));
    }
    return bytes;
}

/// A file of another system; `state` is the codec's own block.
std::string foreign_file(const std::string& code, std::uint32_t quality, const std::string& state) {
    const std::string options = "vids" + code + word(50) + word(quality) + word(125000);
    return options + std::string(56 - options.size(), '\x7f') + word(3) + "abc" +
           word(static_cast<std::uint32_t>(state.size())) + state;
}

TEST(CodecFile, ReadsBackWhatWasWritten) {
    const CodecSettings settings{"DIB ", 80, 1250000, 25};
    EXPECT_EQ(read(codec_file_text(settings)), settings);
}

TEST(CodecFile, TakesFourValuesOfAForeignFile) {
    EXPECT_EQ(read(foreign_file("XVID", 9500, "xyz")), (CodecSettings{"XVID", 95, 125000, 50}));
    EXPECT_EQ(read(foreign_file("XVID", 0xFFFFFFFF, ""))->quality_percent, 95) << "as the codec likes";
    EXPECT_EQ(read(foreign_file("wmv3", 100, "<-v_keydist=4000 -v_bitrate 800000 -v_quality: 77>")),
              (CodecSettings{"wmv3", 77, 100000, 100}));
    EXPECT_EQ(read(foreign_file("wmv3", 100, "-v_keydist -v_bitrate")),
              (CodecSettings{"wmv3", 1, 125000, 50}));
    EXPECT_EQ(read(foreign_file("XVID", 100, "-v_keydist 4000"))->key_frame_distance, 50);
}

TEST(CodecFile, RefusesWhatIsCutOffOrSomethingElse) {
    const std::string whole = foreign_file("XVID", 9500, "xyz");
    for (const std::size_t size : {0UL, 3UL, 55UL, 58UL, 62UL, whole.size() - 1}) {
        EXPECT_FALSE(read(whole.substr(0, size))) << size;
    }
    std::string endless = whole;
    endless.replace(56, 4, word(0xFFFFFFFF));
    EXPECT_FALSE(read(endless));
    EXPECT_FALSE(read("Zemora codec settings\nquality = 5\n")) << "no code";
    EXPECT_EQ(read("Zemora codec settings\ncode=X\nquality = 500\nrate = -1\nkeys = x\nodd\n"),
              (CodecSettings{"X   ", 100, 0, 100}));
}

TEST(CodecFile, NameNeverHoldsAPath) {
    EXPECT_EQ(codec_file_name("X264"), "zemora_codec_X264.bin");
    EXPECT_EQ(codec_file_name("DIB "), "zemora_codec_DIB_.bin");
    EXPECT_EQ(codec_file_name("../\xe4"), "zemora_codec_____.bin");
}

TEST(VideoCodecs, AreFoundByEachOfTheirNames) {
    EXPECT_STREQ(find_video_codec("h264")->encoder, "libx264");
    EXPECT_STREQ(find_video_codec("DIB")->encoder, "rawvideo");
    EXPECT_STREQ(find_video_codec("MP4V")->encoder, "mpeg4");
    EXPECT_EQ(find_video_codec("264"), nullptr) << "a part of a name is none";
    EXPECT_EQ(find_video_codec("H264 AVC1"), nullptr);
    EXPECT_EQ(find_video_codec("    "), nullptr);
    EXPECT_EQ(codec_code_of("DIB|file"), "DIB ");
    EXPECT_EQ(codec_code_of("XVID95"), "XVID");
}

/// A rig for a video run that asks for the codec.
struct ChoiceRig : RuleRig {
    explicit ChoiceRig(const std::string& codec, const std::string& typed = "") {
        take_video(parameters);
        parameters.video_output = 2;
        parameters.output_width = 1920;
        parameters.output_height = 1080;
        parameters.video_codec = codec;
        around.can_ask = true;
        type_in(folder, typed);
    }
};

TEST(CodecChoice, AsksUntilANumberOfTheListIsGiven) {
    ChoiceRig rig("????|rest", "xvid\n0\n99\n 3\n1\n");
    const std::string told = rig.told();
    EXPECT_EQ(rig.parameters.video_codec, "XVID|file|rest");
    EXPECT_EQ(testing::count_of(told, "Number of the codec: "), 4);
    EXPECT_THAT(told, HasSubstr("\n 3  XVID  MPEG-4"));
    const std::string file = test::read_text(rig.folder / "zemora_codec_XVID.bin");
    EXPECT_EQ(read(file), (CodecSettings{"XVID", 95, 1920L * 1080 * 25 / 3333 * 250, 100}));
    EXPECT_EQ(rig.told(), "") << "the second pass takes the file as it stands";
    EXPECT_EQ(rig.parameters.video_codec, "XVID|file|rest");
}

TEST(CodecChoice, TellsTheValuesToThoseWhoWantToKnow) {
    ChoiceRig rig("?", "9\n");
    rig.parameters.video_output = 1;
    rig.parameters.verbose_mode = 2;
    EXPECT_THAT(rig.told(),
                HasSubstr("FOURCC     = DIB \nQuality    = 95%\nkBitrate   = 15553\nKeyFrames  = 100\n"));
    EXPECT_EQ(rig.parameters.video_codec, "DIB |file");
}

TEST(CodecChoice, MissingFileAsksAgain) {
    ChoiceRig rig("XVID|file", "1\n");
    EXPECT_THAT(rig.told(), HasSubstr("No codec file " + rig.folder.path() + "/zemora_codec_XVID.bin found"));
    EXPECT_EQ(rig.parameters.video_codec, "X264|file");
}

TEST(CodecChoice, ValuesStandInTheTextWhenNoFileCanBeWritten) {
    ChoiceRig rig("????", "1\n");
    rig.around.own_folder = [&rig] { return rig.folder / "none"; };
    EXPECT_THAT(rig.told(), HasSubstr("could not be written"));
    EXPECT_EQ(rig.parameters.video_codec, "X264|95|31106|100");
}

struct RefusedCase {
    const char* name;
    const char* codec;
    bool can_ask;
    const char* told;
    bool waits;
};

class RefusedCodecs : public ::testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedCodecs, EndTheRun) {
    ChoiceRig rig(GetParam().codec, "no number\n");
    rig.around.can_ask = GetParam().can_ask;
    rig.parameters.stop_at_error = 1;
    const auto waiting = HasSubstr(std::string(kWaitingLine));
    const auto told = HasSubstr(GetParam().told);
    const std::string lines = rig.told();
    EXPECT_TRUE(rig.stopped);
    if (GetParam().waits) {
        EXPECT_THAT(lines, AllOf(told, waiting));
    } else {
        EXPECT_THAT(lines, AllOf(told, Not(waiting)));
    }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(CodecChoice, RefusedCodecs, ::testing::Values(
    RefusedCase{"no_terminal", "????", false, "which codec you want to use!\nUnable to open codec dialog\n", true},
    RefusedCase{"end_of_input", "????", true, "codec: \nUnable to open codec dialog\n", true},
    RefusedCase{"two_bars", "XVID|95|100", false, "Case 4: Wrong VideoCodec format: XVID|95|100\nPlease check VideoCodec.\n", false},
    RefusedCase{"one_bar", "DIB|95", false, "Case 5: Wrong VideoCodec format: DIB|95\nPlease check VideoCodec.\n", false}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

struct KeptCase {
    const char* given;
    const char* settled;
    void (*set)(ParameterSet& p) = [](ParameterSet&) {};
};

TEST(CodecChoice, LeavesTextsThatNeedNone) {
    for (const KeptCase& c : {KeptCase{"X264", "X264"},
                              {"RGB|1|2|3", "DIB|1|2|3"},
                              {"rgb", "DIB"},
                              {"Rgb", "Rgb"},
                              {"XVID|1|2|3|4", "XVID|1|2|3|4"},
                              {"????", "????", [](ParameterSet& p) { p.video_output = 0; }},
                              {"????|file", "????|file", [](ParameterSet& p) { p.write_data_base = 1; }},
                              {"XVID|file", "XVID|file", [](ParameterSet& p) { p.write_data_base = 1; }},
                              {"RGB|1", "RGB|1", [](ParameterSet& p) {
                                   p.left_file_name = "a.jpg";
                                   p.right_file_name = "b.jpg";
                               }}}) {
        ChoiceRig rig(c.given);
        c.set(rig.parameters);
        EXPECT_EQ(rig.told(), "") << c.given;
        EXPECT_EQ(rig.parameters.video_codec, c.settled);
    }
}

struct LatencyCase {
    EncoderSettings settings;
    int frames;
};

TEST(EncoderLatency, FollowsPresetAndTuning) {
    constexpr int kThreads = 6;
    for (const LatencyCase& c : {LatencyCase{{"medium", "none", 0, 0}, 40 + 5 + 4},
                                 {{"ultrafast", "none", 0, 0}, 0 + 5 + 1},
                                 {{"superfast", "film", 0, 0}, 3 + 5 + 4},
                                 {{"veryfast", "animation", 0, 0}, 10 + 5 + 6},
                                 {{"placebo", "none", 1, 0}, 16 + 5 + 17},
                                 {{"placebo", "animation", 1, 0}, 18 + 5 + 19},
                                 {{"unheard of", "none", 0, 0}, 0 + 5 + 1},
                                 {{"unheard of", "animation", 0, 0}, 2 + 5 + 3},
                                 {{"slow", "none", 0, 1}, 0}}) {
        EXPECT_EQ(encoder_latency(c.settings, kThreads).frames, c.frames) << c.settings.preset;
    }
    EXPECT_EQ(encoder_threads(3), 4);
    EXPECT_EQ(encoder_threads(0), 1);
}

TEST(EncoderLatency, MovesTheLastFrameOnlyForAnEncoderThatKeepsFramesBack) {
    for (const bool keeps_back : {false, true}) {
        for (const char* codec : {"x264|1|2|3", "XVID"}) {
            ChoiceRig rig(codec);
            rig.parameters.video_container = 1;
            rig.parameters.verbose_mode = 2;
            rig.parameters.last_frame_index = rig.parameters.end_for_analyse = 1000;
            if (keeps_back) {
                rig.around.encoder_settings = EncoderSettings{};
            }
            const std::string told = rig.told();
            const bool is_late = keeps_back && *codec == 'x';
            EXPECT_EQ(rig.parameters.encoder_latency > 50, is_late);
            EXPECT_EQ(rig.parameters.last_frame_index, 1000 + rig.parameters.encoder_latency);
            EXPECT_EQ(testing::count_of(told, "   - rc_lookahead   = 50\n"), is_late ? 1 : 0) << told;
        }
    }
}

}  // namespace
}  // namespace zemora
