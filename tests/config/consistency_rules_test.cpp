#include "config/consistency_rules.h"

#include <gmock/gmock.h>

#include <climits>

#include "config/video_suffixes.h"
#include "tests/config/rule_rig.h"

namespace zemora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::RuleRig;
using testing::take_video;
using P = ParameterSet;

/// Settings whose text is another one after the pass.
struct Changed {
    Parameter parameter;
    const char* value;
};

constexpr int kNoWait = 3;  // even the highest `StopAtError` does not wait

/// Settings that break one rule and no other.
struct RuleCase {
    int number;
    void (*set)(P& p);
    int waits_above;  ///< `StopAtError` up to which there is no wait.
    std::string told;
    std::vector<Changed> changed;
    void (*arrange)(RuleSurroundings& s) = [](RuleSurroundings&) {};
};

template <class Row>
std::string rule_name(const ::testing::TestParamInfo<Row>& info) {
    return "rule_" + std::to_string(info.param.number) + "_" + std::to_string(info.index);
}

class Corrections : public ::testing::TestWithParam<RuleCase> {};

TEST_P(Corrections, AreToldAndChangeNothingElse) {
    RuleRig rig;
    GetParam().set(rig.parameters);
    GetParam().arrange(rig.around);
    const P before = rig.parameters;
    EXPECT_EQ(rig.told(), GetParam().told);
    for (const ParameterRow& row : kParameterRows) {
        std::string expected = value_text(row, before);
        for (const Changed& changed : GetParam().changed) {
            expected = &row_of(changed.parameter) == &row ? changed.value : expected;
        }
        if (&row != &row_of(Parameter::video_mode)) {
            EXPECT_EQ(value_text(row, rig.parameters), expected) << row.key;
        }
    }
}

TEST_P(Corrections, WaitForEnterByStopAtError) {
    (void)!std::freopen("/dev/null", "r", stdin);
    for (int level = -1; level <= 3; ++level) {
        RuleRig rig;
        GetParam().set(rig.parameters);
        GetParam().arrange(rig.around);
        rig.parameters.stop_at_error = level;
        EXPECT_EQ(testing::count_of(rig.told(), std::string(kWaitingLine)),
                  level > GetParam().waits_above ? 1 : 0)
            << "StopAtError " << level;
    }
}

using enum Parameter;
const std::string kNotBy4 =
    "Caution: You will get output images with sizes not dividable by 4!\nSome video codecs my refuse these "
    "images.\n";

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rules, Corrections, ::testing::Values(
    RuleCase{4,  [](P& p) { take_video(p); p.output_height = 1080; p.output_width = 1920; p.frame_top = 1; p.frame_bottom = 2; }, 0, kNotBy4 + "Then please try to set other values for OutputHeight // OutputWidth.\n", {}},
    RuleCase{4,  [](P& p) { take_video(p); p.frame_left_right = 4; p.frame_central = -2; }, 0, kNotBy4 + "Then please try to set other values for OutputHeight // OutputWidth.\n", {}},
    RuleCase{5,  [](P& p) { take_video(p); p.fill_height = 1080; p.fill_width = 1922; p.frame_top = 1; }, 0, kNotBy4 + "Then please try to set other values for FillHeight // FillWidth.\n", {}},
    RuleCase{6,  [](P& p) { take_video(p); p.first_frame_index = 7; p.start_for_analyse = 6; }, 1, "StartforAnalyse has been set to 7!\n", {{start_for_analyse, "7"}}},
    RuleCase{7,  [](P& p) { take_video(p); p.last_frame_index = 70; p.end_for_analyse = 71; }, 1, "EndforAnalyse has been set to: 70!\n", {{end_for_analyse, "70"}}},
    RuleCase{8,  [](P& p) { take_video(p); p.pre_viewer_active = 2; }, 0, "Warning: Within the VideoMode, a manual rotation is not possible.\nPreViewerActive has been set = 0.\n", {{pre_viewer_active, "0"}}},
    RuleCase{9,  [](P& p) { take_video(p); p.post_viewer_active = 1; }, 0, "Warning: Within the VideoMode, a manual image selection and the setting of the stereo window is not possible.\nPostViewerActive has been set = 0.\n", {{post_viewer_active, "0"}}},
    RuleCase{11, [](P& p) { take_video(p); p.first_frame_index = 3; p.start_for_analyse = 3; p.frame_offset = -4; }, kNoWait, "", {{first_frame_index, "4"}}},
    RuleCase{12, [](P& p) { take_video(p); p.passepartout = 2; p.passe_color_red = 9; }, 0, "Unerlaubter Passepartoutwert im Videomode (wurde = 0 gesetzt).\nNot allowed Passepartout value in video mode (has been set to 0).\n", {{passepartout, "0"}}},
    RuleCase{13, [](P& p) { p.input_mode = 3; p.deshake_method = 4; p.interlaced_mode = 1; p.frame_increment = 2; }, 0, "Kein Deshaken bei InputMode = 3, bitte den ImageReader von AviSynth benutzen.\nNo deshaking support for InputMode = 3, please use AviSynth ImagerReader.\n", {{deshake_method, "0"}}},
    RuleCase{14, [](P& p) { take_video(p); p.deshake_method = 2; p.cropp_output = 3; p.fill_width = p.fill_height = 64; }, kNoWait, "", {{cropp_output, "1"}}},
    RuleCase{15, [](P& p) { take_video(p); p.image_text = "at __IPTC__"; }, 0, "Im VideoMode koennen keine Texte aus dem IPTC-Bereich gelesen werden.\nThere is no IPTC area in VideoMode.\n", {{image_text, ""}}},
    RuleCase{16, [](P& p) { take_video(p); p.deshake_method = 4; p.frame_increment = -1; p.cropp_output = 1; }, 0, "Bei DeshakeMethod = 4 muss FrameIncrement = +1 sein, daher wird FrameIncrement = 1 gesetzt!\nFor DeshakeMethod = 4, it must be set FrameIncrement = +1, therefore it is set FrameIncrement = 1!\n", {{frame_increment, "1"}}},
    RuleCase{18, [](P& p) { p.input_mode = 3; p.video_output = 2; p.video_framerate = 0.09; }, kNoWait, "Achtung: VideoFramerate wurde = 25 Frames pro Sekunde gesetzt!\nAttention: VideoFramerate has been set to 25 frames/sec!\n", {{video_framerate, "25"}}},
    RuleCase{20, [](P& p) { p.frame_offset = -3; }, kNoWait, "Kein VideoModemode: FrameOffset wurde gleich null gesetzt\nNo VideoMode: FrameOffset has been set to zero\n", {{frame_offset, "0"}}},
    RuleCase{20, [](P& p) { p.auto_frame_offset = 1; }, kNoWait, "Kein VideoModemode: AutoFrameOffset wurde gleich null gesetzt\nNo VideoMode: AutoFrameOffset has been set to zero\n", {{auto_frame_offset, "0"}}},
    RuleCase{21, [](P& p) { p.pre_viewer_active = 1; }, 0, "Attention: zemora_image_preview.exe missing, PreViewerActive has been set ZERO!\n", {{pre_viewer_active, "0"}}, [](RuleSurroundings& s) { s.program_folder += "/32"; }},
    RuleCase{22, [](P& p) { p.post_viewer_active = 1; }, 0, "Attention: zemora_image_postview.exe missing, PostViewerActive has been set ZERO!\n", {{post_viewer_active, "0"}}, [](RuleSurroundings& s) { s.program_folder += "/32"; }},
    RuleCase{26, [](P& p) { p.cropp_output = 3; p.output_height = 900; }, 1, "CroppOutput has been reset to '2' by the program, because OutputWidth or OutputHeight = 0!\n", {{cropp_output, "2"}}},
    RuleCase{35, [](P& p) { p.rename_orphans = 4; }, 1, "RenameOrphans has been set = 0, because pairing control is deactivated (ExifTimeTolerance = 0).\n", {{rename_orphans, "0"}}},
    RuleCase{36, [](P& p) { p.image_type = "JPG;Tif"; }, kNoWait, "", {{image_type, "jpg;tif"}}},
    RuleCase{37, [](P& p) { p.passepartout = 4; p.passe_color_red = p.passe_color_green = p.passe_color_blue = 8; }, kNoWait, "", {{passe_color_red, "0"}, {passe_color_blue, "0"}}},
    RuleCase{38, [](P& p) { p.left_right_output = p.stereo_output = p.anaglyph_output = p.html_images = 0; }, 1, "Attention, no output will be generated. All outputs are deactivated!\n", {}},
    RuleCase{39, [](P& p) { p.ident_output_dir = "a/b"; }, 0, "Attention: IdentOutputDir cannot used for a complete path, the string given here will only be used to append it to 'cl', 'cr', 'cs' etc!\n", {}},
    RuleCase{39, [](P& p) { p.ident_output_dir = "\\b"; }, 0, "Attention: IdentOutputDir cannot used for a complete path, the string given here will only be used to append it to 'cl', 'cr', 'cs' etc!\n", {}},
    RuleCase{40, [](P& p) { p.left_right_output = 0; }, 1, "HtmlImages has been set: 2\n", {{html_images, "2"}}},
    RuleCase{41, [](P& p) { p.html_images = 2; p.stereo_output = 0; }, 1, "HtmlImages has been set: 3\n", {{html_images, "3"}}},
    RuleCase{42, [](P& p) { p.html_images = 3; p.anaglyph_output = 0; }, 1, "HtmlImages has been set: 4\n", {{html_images, "4"}}},
    RuleCase{43, [](P& p) { p.output_format = 5; }, 1, "HtmlImages has been set: 4\n", {{html_images, "4"}}},
    RuleCase{43, [](P& p) { p.output_format = 4; }, kNoWait, "", {}},
    RuleCase{44, [](P& p) { p.input_mode = 2; }, 1, "IncludeSubdirs wurde auf 1 gesetzt\nIncludeSubdirs has been set to 1\n", {{include_subdirs, "1"}}},
    RuleCase{45, [](P& p) { p.auto_frame_floating = 1; p.frame_floating = -2; p.frame_left_right = 1; }, 1, "Due to activated automatic, it is set FrameFloating = 0.\n", {{frame_floating, "0"}}},
    RuleCase{46, [](P& p) { p.auto_frame_floating = 2; p.estimate_window = 5; }, 1, "Far point framing has been choosen. So AutoFrameFloating = 1/2 makes no sense and was deactivated.\n", {{auto_frame_floating, "0"}}},
    RuleCase{47, [](P& p) { p.auto_frame_floating = 3; p.estimate_window = 2; }, 1, "Near point framing has been choosen. So AutoFrameFloating = 3-6 makes no sense and was deactivated.\n", {{auto_frame_floating, "0"}}},
    RuleCase{48, [](P& p) { p.frame_floating = -21; p.frame_left_right = 10; }, 1, "Attention: FrameFloating cannot be larger than FrameLeftRight/2 and has been reduced to -20 pixels!\n", {{frame_floating, "-20"}}},
    RuleCase{48, [](P& p) { p.frame_floating = 20; p.frame_left_right = 10; }, kNoWait, "", {}},
    RuleCase{49, [](P& p) { p.projection_ratio = 1; p.win_off_reference = 2; }, 1, "Warning: The projection aspect ratio at ProjectionRatio and WindowOffset doesn't match!\n", {}},
    RuleCase{49, [](P& p) { p.projection_ratio = 3; p.win_off_reference = 4; }, 1, "Warning: The projection aspect ratio at ProjectionRatio and WindowOffset doesn't match!\n", {}},
    RuleCase{50, [](P& p) { p.pre_viewer_active = 1; p.estimate_geometry = 4; }, 1, "Attention: Already existing correction values are used, the previewer doesn't make sense and has been deactivated!\n", {{pre_viewer_active, "0"}}},
    RuleCase{51, [](P& p) { p.pre_settings = 1; p.estimate_geometry = 5; p.input_mode = 10; }, kNoWait, "Achtung: Da schon vorhandene Korrekturwerte verwendet werden, wurde PreSettings = 0 gesetzt!\nAttention: Since already existing correction values are used, PreSettings has been set to 0!\n", {{pre_settings, "0"}}},
    RuleCase{52, [](P& p) { take_video(p); p.video_output = 10; p.deshake_method = 1; p.cropp_output = 1; p.smooth_window_corr = 0; }, kNoWait, "Fuer Panorama muss das DeshakeZoomMax ausgeschaltet sein: DeshakeZoomMax = 0!\nFor a panorama, DeshakeZoomMax must be off: DeshakeZoomMax = 0!\nFuer Panorama sollte die geometrische Korrektur konstant bleiben: SmoothGeometryCorr = 0!\nFor a panorama, the geometric correction should stay constant: SmoothGeometryCorr = 0!\n", {{deshake_zoom_max, "0"}, {smooth_geometry_corr, "0"}}},
    RuleCase{53, [](P& p) { take_video(p); p.make_av = 4; }, kNoWait, "Attention: To create a video (image show) all images must have the same resolution.\nThis is not the case with the current settings. Please adjust the parameters OutputWidth/OutputHeight and or FillWidth/FillHeight!\n", {{make_av, "0"}}},
    RuleCase{54, [](P& p) { p.make_av = 4; p.output_height = 900; p.fill_height = 900; }, kNoWait, "Attention: To create an image show, both OutputWidth and OutputHeight must be given!\n", {{make_av, "0"}}},
    RuleCase{54, [](P& p) { p.make_av = 4; p.cropp_output = 1; p.output_height = p.output_width = p.fill_width = 900; }, kNoWait, "Attention: To create an image show, both OutputWidth and OutputHeight must be given!\n", {{make_av, "0"}}},
    RuleCase{54, [](P& p) { p.make_av = 4; p.output_height = 900; p.fill_width = 900; p.video_framerate = 0.5; }, kNoWait, "", {}},
    RuleCase{55, [](P& p) { p.make_av = 12; p.fill_width = p.fill_height = 8; p.video_framerate = 0.5; p.left_right_output = p.html_images = 0; }, kNoWait, "Attention: A left-right image show can only be created, when LeftRightOutput has been set!\n", {{make_av, "4"}}},
    RuleCase{56, [](P& p) { p.make_av = 12; p.fill_width = p.fill_height = 8; p.video_framerate = 0.5; p.stereo_output = 0; }, kNoWait, "Attention: A stereo image show can only be created, when StereoOutput has been set!\n", {{make_av, "8"}}},
    RuleCase{57, [](P& p) { p.make_av = 6; p.fill_width = p.fill_height = 8; p.video_framerate = 0.5; p.anaglyph_output = 0; }, kNoWait, "Attention: An anaglyph image show can only be created, when AnaglyphOutput has been set!\n", {{make_av, "4"}}},
    RuleCase{58, [](P& p) { p.make_av = 5; p.fill_width = p.fill_height = 8; p.video_framerate = 0.5; }, kNoWait, "Attention: An extra image show can only be created, when ExtraOutput has been set!\n", {{make_av, "4"}}},
    RuleCase{59, [](P& p) { p.make_av = 5; p.fill_width = p.fill_height = 8; p.video_framerate = 0.5; p.extra_output = 4; }, kNoWait, "Attention: An extra image show can only be created for ExtraOutput = 1/2/3!\n", {{make_av, "4"}}},
    RuleCase{60, [](P& p) { p.make_av = 4; p.fill_width = p.fill_height = 8; p.video_framerate = 0.01; }, kNoWait, "Attention: For image shows, the time to show every image should not be larger than 100 seconds!\n", {{video_framerate, "0.2"}}},
    RuleCase{61, [](P& p) { p.make_av = 4; p.fill_width = p.fill_height = 8; p.video_framerate = 1.0; }, kNoWait, "Attention: For image shows, the time to show every image should not be lower than 1 seconds!\n", {{video_framerate, "0.2"}}},
    RuleCase{62, [](P& p) { p.stereo_image_input = 7; }, kNoWait, "Attention: No geometric correction when using depth masks!\n", {{estimate_geometry, "0"}}},
    RuleCase{63, [](P& p) { p.stereo_image_input = 5; p.estimate_geometry = 0; p.pre_viewer_active = 1; }, kNoWait, "Attention: When processing depth masks, the Image PreViewer must be switched off!\n", {{pre_viewer_active, "0"}}}), rule_name<RuleCase>);
// clang-format on

struct StopCase {
    int number;
    void (*set)(P& p);
    std::string told;
    std::string keys;
    void (*arrange)(RuleSurroundings& s) = [](RuleSurroundings&) {};
};

class Stops : public ::testing::TestWithParam<StopCase> {};

TEST_P(Stops, NameTheirSettingsAndEndAtOnce) {
    RuleRig rig;
    GetParam().set(rig.parameters);
    GetParam().arrange(rig.around);
    rig.parameters.stop_at_error = 3;
    EXPECT_THAT(rig.told(), AllOf(HasSubstr(GetParam().told + "Please check " + GetParam().keys + ".\n"),
                                  Not(HasSubstr(std::string(kWaitingLine)))));
    EXPECT_TRUE(rig.stopped);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rules, Stops, ::testing::Values(
    StopCase{1,  [](P& p) { take_video(p); p.output_width = 1920; }, "For VideoMode, always height AND width must be given.\n", "OutputWidth and OutputHeight"},
    StopCase{2,  [](P& p) { take_video(p); p.cropp_output = 5; }, "For VideoMode, CroppOutput cannot be set equal 4/5.\n", "CroppOutput"},
    StopCase{3,  [](P& p) { take_video(p); p.video_output = 1; p.first_frame_index = p.last_frame_index = 4; }, "Zemora cannot create 1-image-videos. Please proof FirstFrame/LastFrameIndex.\n", "FirstFrameIndex and LastFrameIndex"},
    StopCase{10, [](P& p) { take_video(p); p.cropp_output = 3; p.fill_width = 1920; p.deshake_method = 1; }, "muss mit FillWidth und FillHeight eine feste Videogroesse vorgegeben werden!\nIf you want to create a video with CroppOutput = 3 (fit in a box),\nyou have to set a fixed video size using the parameters FillWidth and FillHeight!\n", "FillWidth and FillHeight"},
    StopCase{17, [](P& p) { p.left_file_name = p.right_file_name = "a\n.jpg"; }, "Fehler: Die linke und rechte Bilddatei duerfen nicht identisch sein!\nAttention: The left und right image file must be different!\nLeftFileName = RightFileName = a?.jpg\n", "LeftFileName and RightFileName"},
    StopCase{19, [](P& p) { p.interlaced_mode = 4; }, "InterlacedMode = 4/5/6 can be set only if InputMode = 0/3 (VideoMode)!\n", "InterlacedMode and InputMode"},
    StopCase{23, [](P& p) { p.cropp_output = 4; p.output_height = 3; }, "Please set image ratio, e.g.: OutputHeight=3 and OutputWidth=4\n", "OutputHeight and OutputWidth"},
    StopCase{24, [](P& p) { p.stereo_image_input = 3; p.interlaced_mode = 2; }, "StereoImageInput == 1 AND InterlacedMode == 2,3,5,6,7 not supported!\nAlready mounted stereoimages cannot be timeshifted afterwards.\nTry InterlacedMode == 0 for progressive images\nor InterlacedMode == 1 for interlaced images.\n\n", "StereoImageInput and InterlacedMode"},
    StopCase{25, [](P& p) { p.interlaced_mode = 1; p.deshake_method = 1; }, "Unfortunately it is not possible to combine Deshaken with the internal DeInterlacer.\n Please set either InterlaceMode = 0 or DeshakeMethod = 0.\n", "InterlacedMode and DeshakeMethod"},
    StopCase{27, [](P& p) { p.input_mode = 5; p.stereo_image_input = 1; }, "InputMode = 5-8 can be combined only with separated image files (StereoImageInput = 2)!\n", "InputMode and StereoImageInput"},
    StopCase{28, [](P& p) { p.input_mode = 8; p.left_right_output = 3; }, "InputMode = 3-9 can be combined only with storing the images in subdirectories!\nPlease set LeftRightOutput/StereoOutput/AnaglyphOutput = 2!\n", "LeftRightOutput, StereoOutput and AnaglyphOutput"},
    StopCase{29, [](P& p) { p.estimate_geometry = -5; }, "The database ListofImages is supported only with InputMode = 10!\nPlease set either InputMode = 10\nor avoid setting EstimateGeometry = 2/5!\n", "InputMode and EstimateGeometry"},
    StopCase{30, [](P& p) { p.rot_mir_output_left = 3; p.rot_mir_output_right = 4; }, "Parameter error:\nRotMirOutputLeft and RotMirOutputRight must be both even or both odd!\n", "RotMirOutputLeft and RotMirOutputRight"},
    StopCase{31, [](P& p) { p.stereo_image_input = 4; p.rot_mir_input_left = -1; }, "Parameter error:\nFor StereoImageInput = 1: RotMirInputLeft and RotMirInputRight must be both even or both odd!\n", "RotMirInputLeft and RotMirInputRight"},
    StopCase{32, [](P& p) { take_video(p); p.rot_mir_input_left = 7; }, "Achtung, der VideoMode unterstuetzt RotMirInputLeft = 5/7 nicht!\nAttention, the VideoMode doesn't support RotMirInputLeft = 5/7!\n", "RotMirInputLeft"},
    StopCase{33, [](P& p) { take_video(p); p.rot_mir_input_right = 5; }, "Achtung, der VideoMode unterstuetzt RotMirInputRight = 5/7 nicht!\nAttention, the VideoMode doesn't support RotMirInputRight = 5/7!\n", "RotMirInputRight"},
    StopCase{34, [](P& p) { p.path_of_images = "a/b"; }, "The parameter PathofImages contents a forbidden character: \"/\"!\n", "PathofImages", [](RuleSurroundings& s) { s.separator = '\\'; }},
    StopCase{64, [](P& p) { take_video(p); p.video_preset = "snail"; }, "slow, slower, veryslow.\n", "VideoPreset"},
    StopCase{28, [](P& p) { p.input_mode = 3; p.stereo_output = 1; }, "= 2!\n", "LeftRightOutput, StereoOutput and AnaglyphOutput", [](RuleSurroundings& s) { s.parameter_file = "/no/such.ini"; }}), rule_name<StopCase>);
// clang-format on

TEST(ConsistencyRules, StopNamesTheParameterFile) {
    RuleRig rig;
    rig.around.parameter_file = rig.folder / "my.ini";
    test::write_text(rig.around.parameter_file, "");
    rig.parameters.estimate_geometry = 2;
    EXPECT_THAT(rig.told(), HasSubstr("Please check InputMode and EstimateGeometry in " +
                                      rig.around.parameter_file + ".\n"));
}

TEST(ConsistencyRules, LeaveTheDefaultsAloneWithoutAWord) {
    RuleRig rig;
    rig.parameters.stop_at_error = 3;
    rig.parameters.verbose_mode = 3;
    EXPECT_EQ(rig.told(Language::german), "");
    for (const ParameterRow& row : kParameterRows) {
        if (&row != &row_of(stop_at_error) && &row != &row_of(verbose_mode)) {
            EXPECT_EQ(value_text(row, rig.parameters), value_text(row, default_parameters())) << row.key;
        }
    }
}

struct ChainCase {
    const char* name;
    void (*set)(P& p);
    std::string told;
    std::vector<Changed> after;
};

class Chains : public ::testing::TestWithParam<ChainCase> {};

TEST_P(Chains, RulesSeeWhatEarlierOnesChanged) {
    RuleRig rig;
    GetParam().set(rig.parameters);
    EXPECT_EQ(rig.told(Language::german), GetParam().told);
    for (const Changed& expected : GetParam().after) {
        EXPECT_EQ(value_text(row_of(expected.parameter), rig.parameters), expected.value)
            << row_of(expected.parameter).key;
    }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rules, Chains, ::testing::Values(
    ChainCase{"pictures_from_1_to_4", [](P& p) { p.left_right_output = p.stereo_output = p.anaglyph_output = 0; p.extra_output = 1; }, "HtmlImages wurde gesetzt: 2\nHtmlImages wurde gesetzt: 3\nHtmlImages wurde gesetzt: 4\n", {{html_images, "4"}}},
    ChainCase{"pictures_of_anaglyphs", [](P& p) { p.left_right_output = p.stereo_output = 0; }, "HtmlImages wurde gesetzt: 2\nHtmlImages wurde gesetzt: 3\n", {{html_images, "3"}}},
    ChainCase{"sequence_without_deshaking_keeps_its_cropping", [](P& p) { p.input_mode = 3; p.deshake_method = 1; p.cropp_output = 0; }, "Kein Deshaken bei InputMode = 3, bitte den ImageReader von AviSynth benutzen.\nNo deshaking support for InputMode = 3, please use AviSynth ImagerReader.\n", {{cropp_output, "0"}}},
    ChainCase{"deshaking_crops_before_the_reset_to_2", [](P& p) { take_video(p); p.deshake_method = 1; p.cropp_output = 3; p.fill_width = p.fill_height = 8; }, "", {{cropp_output, "1"}}},
    ChainCase{"automatic_switched_off_after_it_took_the_shift", [](P& p) { p.auto_frame_floating = 2; p.frame_floating = 50; p.estimate_window = 4; }, "Wegen der aktivierten Automatik wird FrameFloating = 0 gesetzt.\nFernpunktrahmung wurde gewaehlt. Daher ist AutoFrameFloating = 1/2 sinnlos und wurde abgeschaltet.\n", {{auto_frame_floating, "0"}, {frame_floating, "0"}}},
    ChainCase{"no_show_left_no_frame_rate", [](P& p) { p.make_av = 8; p.fill_width = p.fill_height = 8; p.left_right_output = p.html_images = 0; }, "Achtung: Eine Links-Rechts-Bilderschau kann nur erzeugt werden, wenn LeftRightOutput gesetzt ist!\n", {{make_av, "0"}, {video_framerate, "0"}}},
    ChainCase{"first_frame_moves_after_the_analysis", [](P& p) { take_video(p); p.frame_offset = -9; p.first_frame_index = 5; }, "StartforAnalyse wurde auf 5 gesetzt!\n", {{start_for_analyse, "5"}, {first_frame_index, "9"}}}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

TEST(ConsistencyRules, SurviveValuesOutsideAllLimits) {
    RuleRig rig;
    P& p = rig.parameters;
    take_video(p);
    p.frame_offset = p.frame_floating = INT_MIN;
    p.output_height = p.output_width = p.frame_top = p.frame_bottom = p.frame_left_right = INT_MAX;
    p.frame_central = INT_MAX - 2;  // the width is a multiple of 4, the height is not
    p.make_av = -1;
    (void)rig.told();
    EXPECT_EQ(p.first_frame_index, INT_MAX);
    EXPECT_EQ(p.frame_floating, -INT_MAX);
    p.frame_left_right = INT_MIN;
    (void)rig.told();
    EXPECT_EQ(p.frame_floating, 0) << "a negative frame holds no shift";
}

struct VideoModeCase {
    int input_mode;
    int stereo_image_input;
    const char* left;
    const char* stereo;
    int mode;
};

TEST(ConsistencyRules, VideoModeFollowsTheFileThatIsRead) {
    for (const VideoModeCase& c : {VideoModeCase{0, 2, "a.AVI", "s.jpg", 1},
                                   {0, 5, "a.m2ts", "s.jpg", 1},
                                   {0, 1, "a.jpg", "s.Avs", 1},
                                   {0, 1, "a.avi", "s.jpg", 0},
                                   {0, 2, "a.jpg", "s.avi", 0},
                                   {0, 7, "a", "s.webm", 1},
                                   {3, 2, "a.jpg", "", 3},
                                   {9, 2, "a.avi", "", 0}}) {
        RuleRig rig;
        rig.parameters.input_mode = c.input_mode;
        rig.parameters.stereo_image_input = c.stereo_image_input;
        rig.parameters.left_file_name = c.left;
        rig.parameters.stereo_file_name = c.stereo;
        (void)rig.told();
        EXPECT_EQ(rig.parameters.video_mode, c.mode) << c.left << ' ' << c.stereo;
    }
    EXPECT_FALSE(is_video_name("x.avi/a.jpg"));
    EXPECT_FALSE(is_video_name("avi"));
}

}  // namespace
}  // namespace zemora
