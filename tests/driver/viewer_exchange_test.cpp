#include "driver/viewer_exchange.h"

#include <gtest/gtest.h>

#include <string>

namespace zemora {
namespace {

PreSelection some_selection() {
    return {1.5F, -2.0F, 0.3F, 1.0F, 2.0F, 90.0F, 80.0F, 3.0F, 4.0F, 70.0F, 60.0F};
}

TEST(PreviewerWords, PackTheKeysOrTheNeutralValues) {
    ParameterSet p;
    p.language = 1;
    p.inverse_input = 1;
    p.cropp_input = 2;
    p.stereo_image_input = 4;
    p.passepartout = 3;
    p.passe_color_blue = 255;
    p.passe_color_green = 2;
    p.passe_color_red = 3;
    p.passe_tolerance = 4;
    p.pre_settings = 0;
    const std::uint32_t colours = 0xFF020304U;
    const std::uint32_t flags = 1 + 2 * 7 + 16 * 5 + 128 + 512 + 4096 + 3 * 8192;
    EXPECT_EQ(previewer_words(p, some_selection(), 5, 7),
              (PreviewerWords{209920075, 1000, 1000, 1000, 1000, colours, flags}));
    p.pre_settings = 1;
    EXPECT_EQ(previewer_words(p, some_selection(), 5, 7),
              (PreviewerWords{65U * 4194304 + 30 * 4096 + 78, 10U * 65536 + 900, 20U * 65536 + 800,
                              30U * 65536 + 700, 40U * 65536 + 600, colours, flags}));
}

/// The words of `text` with the one at `place` put in the place of another.
std::string with_word(std::string text, int place, const std::string& word) {
    std::size_t start = 0;
    for (int i = 0; i < place; ++i) {
        start = text.find(' ', start) + 1;
    }
    return text.replace(start, std::min(text.find(' ', start), text.size()) - start, word);
}

struct WordCase {
    int place;
    const char* word;
};

constexpr const char* kPreviewer = "name 7 1 1.5 -2.25 0.5 0.9 1 90 2 80 3 70 4 60 5\n";

TEST(PreviewerResult, HoldsEveryField) {
    const auto answer = parse_previewer_answer(kPreviewer);
    ASSERT_TRUE(answer);
    EXPECT_TRUE(answer->swaps_views);
    EXPECT_FLOAT_EQ(answer->scale, 0.9F);
    const PreSelection& s = answer->selection;
    const float values[] = {s.rotation_left, s.rotation_right, s.vergence_v,  s.left_start_x,
                            s.left_width,    s.left_start_y,   s.left_height, s.right_start_x,
                            s.right_width,   s.right_start_y,  s.right_height};
    const float expected[] = {1.5F, -2.25F, 0.5F, 1, 90, 2, 80, 3, 70, 4, 60};
    EXPECT_TRUE(std::equal(std::begin(values), std::end(values), std::begin(expected)));
    EXPECT_FALSE(parse_previewer_answer(with_word(kPreviewer, 2, "2"))->swaps_views);
}

TEST(PreviewerResult, WithSenselessNumbersIsNone) {
    // clang-format off
    const WordCase cases[] = {{1, "1.5"}, {2, "yes"}, {3, "nan"}, {4, "1e400"}, {5, "0,5"}, {5, "91"}, {6, "0"},
                              {6, "101"}, {7, "-1"}, {8, "0.5"}, {10, "100.5"}, {15, ""}, {15, "x"}};
    // clang-format on
    for (const WordCase& c : cases) {
        EXPECT_FALSE(parse_previewer_answer(with_word(kPreviewer, c.place, c.word)))
            << c.place << ' ' << c.word;
    }
    EXPECT_FALSE(parse_previewer_answer(""));
    EXPECT_FALSE(parse_previewer_answer(std::string("\0\xFF\xFE", 3)));
}

TEST(SwappedPreSelection, TakesThePartsOfAStereoFileAlong) {
    const PreSelection stereo = with_views_swapped(some_selection(), true);
    EXPECT_FLOAT_EQ(stereo.rotation_left, -2.0F);
    EXPECT_FLOAT_EQ(stereo.vergence_v, -0.3F);
    EXPECT_FLOAT_EQ(stereo.left_width, 70.0F);
    EXPECT_FLOAT_EQ(stereo.right_start_y, 2.0F);
    const PreSelection two = with_views_swapped(some_selection(), false);
    EXPECT_FLOAT_EQ(two.rotation_right, 1.5F);
    EXPECT_FLOAT_EQ(two.left_width, 90.0F);
}

constexpr const char* kPostViewer = "1 -0.05 0.1 0.2 0.5 0.4 0.01 0.02 0.3 -0.4 0.5 -0.6 0.7 1.1 1 -3 0";

TEST(PostViewerResult, HoldsEveryField) {
    const auto a = parse_post_viewer_answer(kPostViewer);
    ASSERT_TRUE(a);
    EXPECT_TRUE(a->has_selection);
    const double values[] = {a->window_shift,  a->box.left,   a->box.bottom,  a->box.width, a->box.height,
                             a->band_left,     a->band_right, a->phantogram,  a->edge_warp, a->vertical_ax,
                             a->common_trapez, a->sym_trapez, a->trapez_scale};
    const double expected[] = {-0.05, 0.1, 0.2, 0.5, 0.4, 0.01, 0.02, 0.3, -0.4, 0.5, -0.6, 0.7, 1.1};
    for (std::size_t i = 0; i < std::size(values); ++i) {
        EXPECT_NEAR(values[i], expected[i], 1e-12) << i;
    }
    EXPECT_TRUE(a->swaps_output);
    EXPECT_EQ(a->ratio_code, -3);
    EXPECT_EQ(a->language, 0U);
}

TEST(PostViewerResult, WithSenselessNumbersIsNone) {
    // clang-format off
    const WordCase cases[] = {{0, "x"}, {1, "inf"}, {1, "1.5"}, {2, "-0.2"}, {4, "0"}, {4, "0.95"}, {5, "0.9"},
                              {6, "-0.1"}, {7, "2"}, {8, "nan"}, {9, "11"}, {13, "0"}, {14, "1.0"}, {15, "--3"},
                              {16, "-1"}, {16, ""}};
    // clang-format on
    for (const WordCase& c : cases) {
        EXPECT_FALSE(parse_post_viewer_answer(with_word(kPostViewer, c.place, c.word)))
            << c.place << ' ' << c.word;
    }
    const auto unselected = parse_post_viewer_answer(with_word(with_word(kPostViewer, 0, "0"), 4, "0"));
    EXPECT_TRUE(unselected && !unselected->has_selection) << "the rectangle means nothing then";
    EXPECT_TRUE(parse_post_viewer_answer(with_word(kPostViewer, 2, "-0.001"))) << "the viewer's rounding";
}

TEST(Selection, ComesBackFromTheViewerAsItWent) {
    SelectionBox s;
    s.result_left = 0.1F;
    s.result_right = 0.9F;
    s.result_bottom = 0.2F;
    s.result_top = 0.7F;
    EXPECT_FALSE(box_of_selection(s));
    PostViewerAnswer answer;
    answer.has_selection = true;
    answer.window_shift = -0.05;
    answer.box = {0.25, 0.1, 0.5, 0.6};
    take_selection(answer, s);
    EXPECT_FLOAT_EQ(s.left, 0.3F);
    EXPECT_FLOAT_EQ(s.right, 0.7F);
    EXPECT_FLOAT_EQ(s.top, 0.65F) << "y of the viewer counts from the top";
    EXPECT_FLOAT_EQ(s.bottom, 0.35F);
    EXPECT_FLOAT_EQ(s.window_offset, -0.04F);
    const auto box = box_of_selection(s);
    ASSERT_TRUE(box);
    EXPECT_NEAR(box->left, 0.25, 1e-6);
    EXPECT_NEAR(box->bottom, 0.1, 1e-6);
    EXPECT_NEAR(box->width, 0.5, 1e-6);
    EXPECT_NEAR(box->height, 0.6, 1e-6);
}

TEST(PreviewSize, FitsTheViewerAndTheScreen) {
    struct Row {
        int height, width, most, screen_height, screen_width, wanted_height, wanted_width;
    };
    // clang-format off
    const Row rows[] = {{3000, 4000, 800, 1080, 1920, 600, 800}, {4000, 3000, 800, 1080, 1920, 800, 600},
                        {3000, 4000, 9999, 1080, 1920, 1009, 1345}, {1000, 4000, 9999, 1080, 1920, 384, 1536},
                        {300, 400, 800, 1080, 1920, 600, 800}};
    // clang-format on
    for (const Row& r : rows) {
        const PreviewSize size = preview_size(r.height, r.width, r.most, r.screen_height, r.screen_width);
        EXPECT_EQ(size.height, r.wanted_height);
        EXPECT_EQ(size.width, r.wanted_width);
        EXPECT_NEAR(size.scale, static_cast<double>(size.width) / r.width, 0.001);
    }
}

struct FrameCase {
    const char* name;
    int cropp_output;
    int wanted_width, wanted_height;
    std::optional<ViewerBox> box;
    int ratio_width, ratio_height;
    ViewerBox wanted;
};

class Frame : public testing::TestWithParam<FrameCase> {};

TEST_P(Frame, GivesRatioAndRectangle) {
    const FrameCase& c = GetParam();
    const ViewerFrame frame =
        viewer_frame(c.cropp_output, {c.wanted_height, c.wanted_width}, {500, 1000, 0.25}, c.box);
    EXPECT_EQ(frame.ratio_width, c.ratio_width);
    EXPECT_EQ(frame.ratio_height, c.ratio_height);
    constexpr double kPixel = 0.0021;
    EXPECT_NEAR(frame.box.left, c.wanted.left, kPixel);
    EXPECT_NEAR(frame.box.bottom, c.wanted.bottom, kPixel);
    EXPECT_NEAR(frame.box.width, c.wanted.width, kPixel);
    EXPECT_NEAR(frame.box.height, c.wanted.height, kPixel);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Cases, Frame, testing::Values(
    FrameCase{"free", 2, 0, 0, {}, 0, 0, {0, 0, 1, 1}},
    FrameCase{"free_selected", 2, 0, 0, ViewerBox{0.1, 0.2, 0.3, 0.4}, 0, 0, {0.1, 0.2, 0.3, 0.4}},
    FrameCase{"one_side", 2, 0, 500, ViewerBox{0.1, 0.2, 0.3, 0.4}, 0, 500, {0.1, 0.2, 0.3, 0.4}},
    FrameCase{"narrow", 2, 300, 300, {}, 300, 300, {0.25, 0, 0.5, 1}},
    FrameCase{"wide", 4, 400, 100, {}, 400, 100, {0, 0.25, 1, 0.5}},
    FrameCase{"cut_to_target", 3, 300, 300, {}, 300, 300, {0, 0, 1, 1}},
    FrameCase{"turned", 5, 300, 400, {}, 400, 300, {0.1667, 0, 0.6667, 1}},
    FrameCase{"narrower_selection", 2, 300, 300, ViewerBox{0.2, 0.2, 0.6, 0.4}, 300, 300, {0.4, 0.2, 0.2, 0.4}},
    FrameCase{"wider_selection", 3, 400, 100, ViewerBox{0.2, 0.2, 0.4, 0.6}, 400, 100, {0.2, 0.4, 0.4, 0.2}}),
    [](const auto& test) { return std::string(test.param.name); });
// clang-format on

TEST(PostViewerNumbers, StandInTheOrderOfTheViewer) {
    ParameterSet p;
    p.cropp_output = 4;
    p.language = 0;
    SelectionBox s;
    s.result_right = s.result_top = 1.0F;
    s.window_offset = 0.125F;
    s.band_left = 0.5F;
    const ViewShape shape{.phantogram = 0.5, .vertical_ax = -0.25};
    const ViewerFrame frame{4, 3, {0.1, 0.2, 0.3, 0.4}};
    const std::vector<std::string> expected{"4",         "4",        "3",         "4.000000", "0.250000",
                                            "0.100000",  "0.200000", "0.300000",  "0.400000", "0.000000",
                                            "0.500000",  "0.000000", "32.031000", "0.500000", "0.000000",
                                            "-0.250000", "0.000000", "0.000000",  "1.000000", "0"};
    EXPECT_EQ(post_viewer_numbers(p, frame, {500, 1000, 0.25}, 4.0, s, 0.031, shape), expected);
    s.right = 0.5F;
    EXPECT_EQ(post_viewer_numbers(p, frame, {500, 1000, 0.25}, 4.0, s, 0.031, shape)[9], "0.125000")
        << "the shift goes with a selection";
}

TEST(RatioCode, NamesHeightAndWidth) {
    const PreviewSize preview{501, 1001, 0.25};
    const ViewerBox box{0.0, 0.0, 0.5, 0.3};
    struct Row {
        int code, height, width;
    };
    // clang-format off
    const Row rows[] = {{1, 1, 1}, {-1, 1, 1}, {2, 4, 5}, {3, 3, 4}, {4, 2, 3}, {5, 9, 16}, {6, 1, 2}, {-2, 5, 4},
                        {-3, 4, 3}, {-4, 3, 2}, {-5, 16, 9}, {-6, 2, 1}, {99, 150, 500}};
    // clang-format on
    for (const Row& r : rows) {
        const auto ratio = ratio_of_code(r.code, preview, box);
        ASSERT_TRUE(ratio) << r.code;
        EXPECT_EQ(ratio->height, r.height) << r.code;
        EXPECT_EQ(ratio->width, r.width) << r.code;
    }
    EXPECT_FALSE(ratio_of_code(0, preview, box));
    EXPECT_FALSE(ratio_of_code(7, preview, box));
}

TEST(FittedRatio, StaysInsideTheWantedSides) {
    struct Row {
        RatioSides ratio, wanted, fitted;
    };
    for (const Row& r : {Row{{1, 1}, {480, 640}, {480, 480}},
                         {{9, 16}, {480, 640}, {360, 640}},
                         {{3, 4}, {480, 0}, {480, 640}},
                         {{3, 4}, {0, 640}, {480, 640}}}) {
        const RatioSides fitted = fit_ratio(r.ratio, r.wanted);
        EXPECT_EQ(fitted.height, r.fitted.height);
        EXPECT_EQ(fitted.width, r.fitted.width);
    }
}

}  // namespace
}  // namespace zemora
