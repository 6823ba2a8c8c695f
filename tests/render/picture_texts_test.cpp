#include "render/picture_texts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <string>

#include "input/picture_file.h"
#include "render/canvas.h"
#include "render/font_search.h"
#include "render/letter_mask.h"
#include "render/output_writer.h"
#include "render/text_drawing.h"
#include "render/warp.h"
#include "tests/render/render_scene.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using testing::colour_at;
using testing::count_differences;
using testing::noisy;
using testing::Rig;

std::string console_text(const std::function<void()>& action) {
    ::testing::internal::CaptureStdout();
    action();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

struct FieldCase {
    const char* name;
    const char* setting;
    const char* text;
    float size;
    int style;
    const char* font;  ///< Null for the default font.
};

class TextSettings : public ::testing::TestWithParam<FieldCase> {};

TEST_P(TextSettings, AreTakenApart) {
    const FieldCase& c = GetParam();
    Rig rig;
    const TextSource source{"/photos/17/l/boat_l.jpg", "A boat", " 2024-05-06", 4};
    const test::TestFolder windows;
    std::filesystem::create_directories(windows / "fonts");
    test::write_text(windows / "fonts/arial.ttf", "");
    setenv("windir", windows.path().c_str(), 1);
    const TextSpec spec = resolve_text(c.setting, source, rig.voice);
    unsetenv("windir");
    EXPECT_EQ(spec.text, c.text);
    EXPECT_FLOAT_EQ(spec.size, c.size);
    EXPECT_EQ(spec.style, c.style);
    EXPECT_EQ(spec.font_path, c.font == nullptr ? default_font() : windows / c.font);
}

constexpr const char* kArial = "fonts/arial.ttf";

INSTANTIATE_TEST_SUITE_P(
    Cases, TextSettings,
    ::testing::Values(FieldCase{"plain", "By the sea", "By the sea", 25.0F, 0, nullptr},
                      FieldCase{"two_minus", "--small", "small", 50.0F, 0, nullptr},
                      FieldCase{"four_minus", "----x", "-x", 87.6F, 0, nullptr},
                      FieldCase{"three_plus", "+++large", "large", 8.85F, 0, nullptr},
                      FieldCase{"latin", "caf\xE9", "caf\u00e9", 25.0F, 0, nullptr},
                      FieldCase{"fields", "Sea__arial__20__11", "Sea", -20.0F, 11, kArial},
                      FieldCase{"fields_closed", "+Sea__arial__20.5__1__", "Sea", -20.5F, 1, kArial},
                      FieldCase{"field_missing", "a__arial__20", "a__arial__20", 25.0F, 0, nullptr},
                      FieldCase{"no_numbers", "my__long__file__name", "my__long__file__name", 25.0F, 0,
                                nullptr},
                      FieldCase{"file", "-__FILENAME__arial__20__10", "boat_l.jpg", -20.0F, 10, kArial},
                      FieldCase{"file_alone", "-__FILENAME__", "boat_l.jpg", 35.3F, 0, nullptr},
                      FieldCase{"keyword_is_no_head", "__FILENAME__20__10", "boat_l.jpg", 25.0F, 0, nullptr},
                      FieldCase{"directory", "__DIRECTORY__", "17", 25.0F, 0, nullptr},
                      FieldCase{"date", "__DATE__arial__9__0__", "2024-05-06", -9.0F, 0, kArial},
                      FieldCase{"award", "__AWARD__", "21", 25.0F, 0, nullptr},
                      FieldCase{"headline", "--__IPTC__", "A boat", 50.0F, 0, nullptr},
                      FieldCase{"headline_first", "__DATE____IPTC__", "A boat", 25.0F, 0, nullptr}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(TextSetting, AFolderThatIsNoNumberIsToldAndAFontThatIsNotThereToo) {
    Rig rig;
    const std::string award = console_text([&] {
        EXPECT_EQ(resolve_text("__AWARD__", {"/a/b/c.jpg", "", "", 3}, rig.voice).text, "3");
    });
    EXPECT_NE(award.find("only consist on digits:\n'a'\n"), std::string::npos) << award;
    const std::string font = console_text([&] {
        const TextSpec spec = resolve_text("x__Nobody's Font, 7:3__20__0", {}, rig.voice);
        EXPECT_EQ(spec.font_path, default_font());
        EXPECT_FLOAT_EQ(spec.size, -20.0F);
    });
    EXPECT_NE(font.find("Nobody's Font, 7:3"), std::string::npos) << font;
}

TEST(TextSetting, AFontIsFoundByItsFamily) {
    Rig rig;
    const TextSpec spec = resolve_text("x__DejaVu Sans Mono__20__0", {}, rig.voice);
    if (spec.font_path == default_font()) {
        GTEST_SKIP() << "no DejaVu Sans Mono here";
    }
    EXPECT_NE(spec.font_path.find("Mono"), std::string::npos);
}

TEST(TextSetting, BoldAndItalicAreFontsOfTheirOwnWhereThereAre) {
    Rig rig;
    const ChosenFont plain = choose_font("DejaVu Sans Mono", 0, rig.voice);
    for (const auto& [style, word] : {std::pair{10, "Bold"}, {1, "Oblique"}, {11, "BoldOblique"}}) {
        const ChosenFont font = choose_font("DejaVu Sans Mono", style, rig.voice);
        if (font.file == plain.file || font.file == default_font()) {
            GTEST_SKIP() << "no DejaVu Sans Mono in all styles here";
        }
        EXPECT_NE(font.file.find(word), std::string::npos) << font.file;
        EXPECT_EQ(font.style, 0) << "no second time by the font library";
    }
    EXPECT_EQ(choose_font(default_font(), 10, rig.voice).style, 10)
        << "of a file only the library can make it";
}

/// Sum of the cover of columns from `first` on.
long ink(const LetterMask& mask, int first) {
    long sum = 0;
    for (int y = 0; y < mask.height; ++y) {
        sum = std::accumulate(mask.row(y) + first, mask.row(y) + mask.width, sum);
    }
    return sum;
}

TEST(LetterMasks, LettersThatAFontLacksComeFromAnotherOrAreTold) {
    Rig rig;
    const std::string narrow = choose_font("DejaVu Sans Mono", 0, rig.voice).file;
    const std::string wide = choose_font("DejaVu Sans", 0, rig.voice).file;
    if (narrow == wide || narrow == default_font()) {
        GTEST_SKIP() << "no DejaVu fonts here";
    }
    const std::string alef = "\u05d0";  // only the second one has it
    LetterFont font({narrow, 40, 0});
    const LetterMask latin = font.mask("Ab", 4000);
    const LetterMask mixed = font.mask("Ab" + alef, 4000);
    EXPECT_EQ(font.missing(), "");
    EXPECT_EQ(mixed.height, latin.height);
    EXPECT_GT(mixed.width, latin.width);
    EXPECT_EQ(ink(mixed, 0) - ink(mixed, latin.width), ink(latin, 0)) << "the other letters stay";
    EXPECT_NEAR(static_cast<double>(ink(mixed, latin.width)),
                static_cast<double>(ink(LetterFont({wide, 40, 0}).mask(alef, 4000), 0)), 2000.0);
    const std::string nowhere = "\U0010FFFD";
    EXPECT_GT(font.mask("A" + nowhere, 4000).width, 0);
    EXPECT_EQ(font.missing(), nowhere);
    const std::string told = console_text([&] {
        for (int i = 0; i < 2; ++i) {
            (void)told_mask("A" + nowhere, {narrow, 40, 0}, 4000, rig.voice);
        }
    });
    EXPECT_EQ(told.find("No font here"), told.rfind("No font here"));
    EXPECT_NE(told.find("No font here"), std::string::npos) << told;
}

TEST(TextSetting, OnlyTheHeadlineKeywordWantsTheHeadline) {
    EXPECT_TRUE(wants_headline("-__IPTC__arial__20__0"));
    EXPECT_FALSE(wants_headline("IPTC"));
    EXPECT_FALSE(wants_headline("__DATE__"));
}

TEST(FontSize, IsAShareOfTheHeightOrAbsoluteAndNeverAbsurd) {
    struct Row {
        float size;
        int height, pixels;
    };
    for (const Row& row :
         {Row{25.0F, 1080, 43}, Row{50.0F, 1080, 21}, Row{-20.0F, 1080, 20}, Row{-19.5F, 9, 19},
          Row{25.0F, 10, 1}, Row{0.0F, 1080, 1}, Row{1e-6F, 1080, 4000}, Row{-1e6F, 9, 4000}}) {
        TextSpec spec;
        spec.size = row.size;
        EXPECT_EQ(spec.font_pixels(row.height), row.pixels) << row.size;
    }
}

LetterMask mask_of(const std::string& text, int pixels, int style = 0, int widest = 10000) {
    LetterFont font({default_font(), pixels, style});
    EXPECT_EQ(font.fault(), TextFault::none) << font.reason();
    return font.mask(text, widest);
}

TEST(LetterMasks, StandUprightWithTheFirstLetterAtTheLeft) {
    const LetterMask mask = mask_of("L.", 60);
    const auto ink = [&](int x0, int x1, int y0, int y1) {
        int sum = 0;
        for (int y = y0; y < y1; ++y) {
            sum += std::accumulate(mask.row(y) + x0, mask.row(y) + x1, 0);
        }
        return sum;
    };
    const int w = mask.width;
    const int h = mask.height;
    EXPECT_GT(ink(0, w / 4, h / 2, h), 0) << "the stem of the L";
    EXPECT_EQ(ink(3 * w / 4, w, h / 2, h), 0) << "nothing above the full stop";
    EXPECT_GT(ink(3 * w / 4, w, 0, h / 2), 0) << "the full stop";
}

TEST(LetterMasks, HugeTextsAreCutAtTheRightEdge) {
    const std::string text(100000, 'W');
    const LetterMask mask = mask_of(text, 4000, 1, 5000);
    EXPECT_GE(mask.width, 5000);
    EXPECT_LT(mask.width, 5000 + 2 * 4500);
    EXPECT_GT(mask.text_width, 1000000);
    EXPECT_EQ(mask_of("\u00c4\u00c4\u00c4\u00c4\u00c4", 20, 0, 30).cover,
              mask_of("\u00c4\u00c4\u00c4", 20).cover)
        << "no letter is cut";
    EXPECT_EQ(mask_of("", 20).width, 0);
    EXPECT_EQ(mask_of("a\nb", 20).cover, mask_of("a b", 20).cover);
}

/// Blending as it is defined, each pixel for itself.
Bitmap plain_draw(ConstPicture before, const LetterMask& mask, int x0, int y0, Colour colour, bool mirrored) {
    Bitmap result = Bitmap::create(before.width, before.height);
    copy(before, result.picture());
    const std::array<int, 3> colours = {colour.blue, colour.green, colour.red};
    const int width = std::min(mask.width, before.width - x0);
    for (int y = 0; y < std::min(mask.height, before.height - y0); ++y) {
        for (int x = 0; x < width; ++x) {
            const int a = mask.row(y)[mirrored ? width - 1 - x : x];
            std::uint8_t* pixel = result.picture().pixel(x0 + x, y0 + y);
            for (int c = 0; c < 3; ++c) {
                pixel[c] = static_cast<std::uint8_t>(
                    (pixel[c] * (255 - a) + a * colours[static_cast<std::size_t>(c)]) >> 8);
            }
        }
    }
    return result;
}

struct DrawCase {
    const char* name;
    TextPlace place;
    int row;  ///< Where it is expected.
    const char* told;
};

class DrawnTexts : public ::testing::TestWithParam<DrawCase> {};

TEST_P(DrawnTexts, AreBlendedWhereTheyBelongAndToldWhenCut) {
    const DrawCase& c = GetParam();
    Rig rig;
    const Bitmap before = noisy(160, 60, 3);
    const Bitmap picture = before.clone();
    const TextFont font{default_font(), 20, 10};
    const LetterMask mask = mask_of("Ag\u00df 1", 20, 10);
    ASSERT_LT(mask.width, 80);
    constexpr Colour kInk{10, 200, 90};
    const std::string told = console_text(
        [&] { EXPECT_TRUE(draw_text(picture.picture(), "Ag\u00df 1", font, c.place, kInk, rig.voice)); });
    const int in_front = c.place.align == TextAlign::centre  ? mask.width / 2
                         : c.place.align == TextAlign::right ? mask.width
                                                             : 0;
    const Bitmap expected = plain_draw(before.picture(), mask, std::max(0, c.place.column - in_front), c.row,
                                       kInk, c.place.is_mirrored);
    EXPECT_EQ(count_differences(picture.picture(), expected.picture()), 0);
    EXPECT_EQ(told.find(c.told) != std::string::npos, *c.told != '\0' || told.empty()) << told;
}

INSTANTIATE_TEST_SUITE_P(
    Places, DrawnTexts,
    ::testing::Values(DrawCase{"left", {7, 30, TextAlign::left, false}, 7, ""},
                      DrawCase{"centre", {7, 81, TextAlign::centre, false}, 7, ""},
                      DrawCase{"right", {7, 150, TextAlign::right, false}, 7, ""},
                      DrawCase{"mirrored", {7, 81, TextAlign::centre, true}, 7, ""},
                      DrawCase{"beyond_the_right", {7, 130, TextAlign::left, false}, 7, "too long"},
                      DrawCase{"beyond_the_left", {7, 20, TextAlign::right, false}, 7, "too long"},
                      DrawCase{"beyond_the_top", {50, 30, TextAlign::left, false}, 50, "too narrow"},
                      DrawCase{"below", {-9, 30, TextAlign::left, false}, 0, "too narrow"},
                      DrawCase{"mirrored_and_cut", {7, 130, TextAlign::left, true}, 7, "too long"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(DrawnText, AFontThatCannotBeOpenedIsToldAndCostsOnlyTheText) {
    Rig rig;
    const Bitmap picture = noisy(50, 50, 3);
    const Bitmap before = picture.clone();
    const std::string told = console_text([&] {
        EXPECT_FALSE(draw_text(picture.picture(), "x", {"/nowhere.ttf", 12, 0}, {}, {}, rig.voice));
    });
    EXPECT_NE(told.find("12 pt ttf-font from /nowhere.ttf"), std::string::npos) << told;
    EXPECT_EQ(count_differences(picture.picture(), before.picture()), 0);
}

/// A pair in a frame with texts in the default font.
struct TextRig : Rig {
    TextRig(const FrameSettings& settings, const ParameterSet& set = {}) : Rig(set) {
        warp->left = noisy(303, 202, 1);
        warp->right = noisy(303, 202, 2);
        warp->width = 300;
        warp->height = 200;
        frame = settings;
        done.texts.caption = {"Below", 10.0F, default_font(), 0};  // 20 pixels
        done.texts.copyright = {"Above", 10.0F, default_font(), 0};
    }
};

FrameSettings frame_of(int top, int bottom, Colour colour) {
    FrameSettings frame;
    frame.top = top;
    frame.bottom = bottom;
    frame.left_right = 40;
    frame.floating = 12;
    frame.colour = colour;
    return frame;
}

struct FrameCase {
    const char* name;
    int top, bottom;
    float size;
    int copyright_px, copyright_row;  ///< 0 pixels for no text.
    int caption_px, caption_row;
    Colour frame, ink;
};

class FrameTexts : public ::testing::TestWithParam<FrameCase> {};

TEST_P(FrameTexts, StandInTheirFramesInAShadeOfTheFrame) {
    const FrameCase& c = GetParam();
    TextRig rig(frame_of(c.top, c.bottom, c.frame));
    rig.done.right.is_mirrored = true;
    rig.done.texts.caption.size = rig.done.texts.copyright.size = c.size;
    const CanvasLayout layout = side_by_side_layout(rig.finished(), rig.frame);
    const Bitmap canvas = compose_side_by_side(rig.finished(), layout, rig.voice);
    const Bitmap expected = Bitmap::create(layout.width, layout.height);
    fill(expected.picture(), c.frame);
    const auto draw = [&](const char* text, int font_px, const TextPlace& place) {
        if (font_px > 0) {
            draw_text(expected.picture(), text, {default_font(), font_px, 0}, place, c.ink, rig.voice);
        }
    };
    const int right_half = 40 + 300 + 40;
    draw("Below", c.caption_px, {c.caption_row, 40 + 150, TextAlign::centre, false});
    draw("Below", c.caption_px, {c.caption_row, right_half + 40 + 150, TextAlign::centre, true});
    draw("Above", c.copyright_px, {c.copyright_row, layout.width - 50, TextAlign::right, false});
    draw("Zemora", c.copyright_px, {c.copyright_row, 50, TextAlign::left, false});
    copy_clipped(rig.warp->pair().left, expected.picture(), 40 - 6, c.bottom);
    copy_clipped(rig.warp->pair().right, expected.picture(), right_half + 40 + 6, c.bottom);
    EXPECT_EQ(count_differences(canvas.picture(), expected.picture()), 0);
}

constexpr Colour kDark{9, 9, 9};

INSTANTIATE_TEST_SUITE_P(
    Rows, FrameTexts,
    ::testing::Values(FrameCase{"high", 70, 71, 10, 20, 341 - 70, 20, 25, {128, 128, 128}, {255, 255, 255}},
                      FrameCase{"medium", 69, 69, 10, 20, 338 - 57, 20, 32, {0, 60, 255}, {128, 188, 255}},
                      FrameCase{"just_enough", 30, 30, 10, 20, 260 - 25, 20, 6, {200, 129, 127}, {72, 1, 0}},
                      FrameCase{"large_font_shrinks", 40, 32, -90, 26, 272 - 33, 21, 7, {}, {128, 128, 128}},
                      FrameCase{"too_thin", 29, 29, 10, 0, 0, 0, 0, kDark, {}},
                      FrameCase{"none", 0, 0, 10, 0, 0, 0, 0, kDark, {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(FrameText, ACaptionIsMirroredBelowTheViewThatWasAndBelowNoOther) {
    ParameterSet set;
    set.rot_mir_output_right = 4;
    TextRig rig(frame_of(0, 60, kDark), set);
    const auto is_mirrored = [&](View view) {
        return caption_place(rig.finished(), rig.frame, 40, view).is_mirrored;
    };
    EXPECT_FALSE(is_mirrored(View::left) || is_mirrored(View::right)) << "not turned yet";
    rig.arrange();
    EXPECT_TRUE(!is_mirrored(View::left) && is_mirrored(View::right));
    exchange_outputs(rig.done);
    EXPECT_TRUE(is_mirrored(View::left) && !is_mirrored(View::right)) << "views exchanged";
}

TEST(FrameText, BothViewsThatAreStoredAtTheSameTimeHaveTheirs) {
    TextRig rig(frame_of(60, 60, kDark));
    const test::TestFolder folder;
    ASSERT_EQ(rig.write_left_right(folder / "l.png", folder / "r.png", {}).code, 0);
    for (const View view : {View::left, View::right}) {
        const Bitmap stored = load_picture(folder / (view == View::left ? "l.png" : "r.png")).bitmap;
        const Bitmap canvas = compose_view(
            rig.finished(), single_view_layout(rig.finished(), rig.frame, view), view, rig.voice);
        EXPECT_EQ(count_differences(stored.picture(), canvas.picture()), 0);
    }
}

/// The text in the picture as it is defined, in real numbers.
Bitmap plain_image_text(ConstPicture before, const LetterMask& mask, int x0, int y0, bool white,
                        bool tinted) {
    Bitmap result = Bitmap::create(before.width, before.height);
    for (int y = 0; y < before.height; ++y) {
        for (int x = 0; x < before.width; ++x) {
            const int dx = std::max({0, x0 - x, x - (x0 + mask.width - 1)});
            const int dy = std::max({0, y0 - y, y - (y0 + mask.height - 1)});
            const bool inside = dx == 0 && dy == 0;
            const double distance = std::floor(std::sqrt(dx * dx + dy * dy) + 0.5);
            const double f = !tinted ? 0.0 : inside ? 0.4 : distance < 9 ? 0.05 * (9 - distance) : 0.0;
            for (int c = 0; c < 3; ++c) {
                int level = before.pixel(x, y)[c];
                level = static_cast<int>(std::floor(level * (1 - f) + (white ? 0 : f * 255) + 0.5 + 1e-9));
                if (inside) {
                    const int cover = mask.row(y - y0)[x - x0];
                    level = white ? ((cover * 255) >> 8) + ((level * (255 - cover)) >> 8)
                                  : (level * (255 - cover)) >> 8;
                }
                result.picture().pixel(x, y)[c] = static_cast<std::uint8_t>(level);
            }
        }
    }
    return result;
}

TEST(ImageText, IsWhiteOnADarkenedBoxOrBlackOnALightenedOneInBothViewsAlike) {
    for (const bool white : {true, false}) {
        for (const int tinted : {1, 0}) {
            ParameterSet set;
            set.smart_text_back_gr = tinted;
            TextRig rig({}, set);
            const std::uint8_t grey = white ? 191 : 192;
            fill(rig.warp->left.picture().part(0, 0, 300, 90), {grey, grey, grey});
            rig.done.texts.image_text = {"On top", -30.0F, default_font(), 1};
            const LetterMask mask = mask_of("On top", 30, 1);
            const std::array<Bitmap, 2> before = {rig.warp->left.clone(), rig.warp->right.clone()};
            draw_image_text(rig.warp->views(), rig.done.texts.image_text, 3, -11, tinted == 1, rig.voice);
            const int x0 = 300 - 11 - mask.width - mask.height;
            for (std::size_t i = 0; i < 2; ++i) {
                const Bitmap& view = i == 0 ? rig.warp->left : rig.warp->right;
                const Bitmap expected = plain_image_text(before[i].picture(300, 200), mask, x0,
                                                         3 + mask.height, white, tinted == 1);
                EXPECT_EQ(count_differences(view.picture(300, 200), expected.picture()), 0)
                    << white << tinted << i;
            }
        }
    }
}

TEST(ImageText, ThatIsFarTooLargeIsToldAndStaysInThePicture) {
    for (const float size : {-4000.0F, -70.0F}) {
        TextRig rig(FrameSettings{});
        rig.done.texts.image_text = {std::string(100000, 'M'), size, default_font(), 0};
        const Bitmap before = rig.warp->left.clone();
        const std::string told = console_text([&] {
            draw_image_text(rig.warp->views(), rig.done.texts.image_text, -500, -100000, false, rig.voice);
        });
        EXPECT_NE(told.find("too long"), std::string::npos) << told.substr(0, 200);
        EXPECT_EQ(count_differences(rig.warp->left.picture().part(300, 0, 3, 202),
                                    before.picture().part(300, 0, 3, 202)),
                  0);
        EXPECT_EQ(count_differences(rig.warp->left.picture().part(0, 200, 303, 2),
                                    before.picture().part(0, 200, 303, 2)),
                  0);
    }
}

}  // namespace
}  // namespace zemora
