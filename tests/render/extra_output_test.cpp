#include "render/extra_output.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>

#include "codec/bitmap_forms.h"
#include "codec/library.h"
#include "input/picture_file.h"
#include "platform/paths.h"
#include "render/rgb16.h"
#include "render/squeeze.h"
#include "tests/render/render_scene.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using testing::colour_at;
using testing::count_differences;
using testing::noisy;
using testing::Rig;

constexpr Colour kFrame{120, 180, 200};

/// A rig with a working pair of noise.
struct PairRig : Rig {
    PairRig(const FrameSettings& settings, int width, int height, const ParameterSet& set = {}) : Rig(set) {
        warped.left = noisy(width + 3, height + 2, 1);
        warped.right = noisy(width + 3, height + 2, 2);
        warped.width = width;
        warped.height = height;
        frame = settings;
        frame.colour = kFrame;
    }
};

FrameSettings free_frame() {
    FrameSettings frame;
    frame.top = 3;
    frame.bottom = 5;
    frame.left_right = 8;
    frame.central = 4;
    frame.floating = 6;
    frame.thin_line = 2;
    return frame;
}

/// 61 by 43 pixels in a cell of 81 by 55.
PairRig free_rig() {
    return {free_frame(), 61, 43};
}

/// 60 by 40 pixels in a cell of 101 by 71: margins 19, 20, 14 above, 15 below; drawn together by 4.
PairRig filled_rig() {
    FrameSettings frame;
    frame.fill_width = 101;
    frame.fill_height = 71;
    frame.central = -100;
    frame.floating = -4;
    frame.thin_line = 1;
    return {frame, 60, 40};
}

PairRig bare_rig() {
    return {FrameSettings(), 7, 5};
}

struct Place {
    char view;
    int column;
    int row;
};

struct CanvasCase {
    const char* name;
    std::function<PairRig()> make_rig;
    ExtraFormat format;
    Squeeze squeeze;
    int width;  ///< Before the squeeze.
    int height;
    std::vector<Place> places;
};

/// Frame colour, black lines, pictures: one pixel after the other.
Bitmap plain_canvas(const PairRig& rig, const CanvasCase& wanted) {
    Bitmap canvas = Bitmap::create(wanted.width, wanted.height);
    const int line = rig.frame.thin_line;
    const StereoPicture pair = rig.warped.pair();
    for (int y = 0; y < wanted.height; ++y) {
        for (int x = 0; x < wanted.width; ++x) {
            Colour colour = kFrame;
            for (const Place& place : wanted.places) {
                const int column = x - place.column;
                const int row = y - place.row;
                const ConstPicture& view = place.view == 'l' ? pair.left : pair.right;
                if (column >= 0 && row >= 0 && column < view.width && row < view.height) {
                    colour = colour_at(view, column, row);
                } else if (column >= -line && row >= -line && column < view.width + line &&
                           row < view.height + line) {
                    colour = {};
                }
            }
            fill(canvas.picture().part(x, y, 1, 1), colour);
        }
    }
    return canvas;
}

std::uint8_t lower_mean(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a + b) / 2);
}

Colour lower_mean(Colour a, Colour b) {
    return {lower_mean(a.blue, b.blue), lower_mean(a.green, b.green), lower_mean(a.red, b.red)};
}

Bitmap plain_squeeze(Bitmap canvas, Squeeze squeeze) {
    const int across = squeeze == Squeeze::columns ? 1 : 0;
    const int up = squeeze == Squeeze::rows ? 1 : 0;
    if (across + up == 0) {
        return canvas;
    }
    const ConstPicture source = canvas.picture();
    Bitmap half = Bitmap::create(source.width >> across, source.height >> up);
    for (int y = 0; y < half.height(); ++y) {
        for (int x = 0; x < half.width(); ++x) {
            const int column = x << across;
            const int row = y << up;
            fill(half.picture().part(x, y, 1, 1),
                 lower_mean(colour_at(source, column, row), colour_at(source, column + across, row + up)));
        }
    }
    return half;
}

class ExtraCanvas : public ::testing::TestWithParam<CanvasCase> {};

TEST_P(ExtraCanvas, HoldsEveryPictureAtItsPlace) {
    const CanvasCase& wanted = GetParam();
    PairRig rig = wanted.make_rig();
    const Bitmap canvas = rig.compose_extra(wanted.format);
    const Bitmap plain = plain_squeeze(plain_canvas(rig, wanted), wanted.squeeze);
    ASSERT_EQ(canvas.width(), plain.width());
    ASSERT_EQ(canvas.height(), plain.height());
    EXPECT_EQ(count_differences(canvas.picture(), plain.picture()), 0);
}

using enum ExtraFormat;
INSTANTIATE_TEST_SUITE_P(
    Formats, ExtraCanvas,
    ::testing::Values(
        CanvasCase{
            "lrq", free_rig, squeezed_side_by_side, Squeeze::columns, 166, 55, {{'l', 7, 7}, {'r', 98, 7}}},
        CanvasCase{"ab", free_rig, above_below, Squeeze::nothing, 81, 114, {{'r', 13, 7}, {'l', 7, 66}}},
        CanvasCase{
            "abq", free_rig, squeezed_above_below, Squeeze::rows, 81, 114, {{'r', 13, 7}, {'l', 7, 66}}},
        CanvasCase{"lrl",
                   free_rig,
                   left_right_left,
                   Squeeze::nothing,
                   251,
                   55,
                   {{'l', 7, 7}, {'r', 98, 7}, {'l', 177, 7}}},
        CanvasCase{"lrrl",
                   free_rig,
                   left_right_right_left,
                   Squeeze::nothing,
                   166,
                   105,
                   {{'r', 13, 7}, {'l', 92, 7}, {'l', 7, 57}, {'r', 98, 57}}},
        CanvasCase{"lrq_filled",
                   filled_rig,
                   squeezed_side_by_side,
                   Squeeze::columns,
                   167,
                   71,
                   {{'l', 22, 16}, {'r', 84, 16}}},
        CanvasCase{
            "ab_filled", filled_rig, above_below, Squeeze::nothing, 101, 113, {{'r', 18, 16}, {'l', 22, 58}}},
        CanvasCase{"abq_filled",
                   filled_rig,
                   squeezed_above_below,
                   Squeeze::rows,
                   101,
                   113,
                   {{'r', 18, 16}, {'l', 22, 58}}},
        CanvasCase{"lrl_filled",
                   filled_rig,
                   left_right_left,
                   Squeeze::nothing,
                   233,
                   71,
                   {{'l', 22, 16}, {'r', 84, 16}, {'l', 154, 16}}},
        CanvasCase{"lrrl_filled",
                   filled_rig,
                   left_right_right_left,
                   Squeeze::nothing,
                   167,
                   127,
                   {{'r', 18, 16}, {'l', 88, 16}, {'l', 22, 72}, {'r', 84, 72}}},
        CanvasCase{
            "lrq_bare", bare_rig, squeezed_side_by_side, Squeeze::columns, 14, 5, {{'l', 0, 0}, {'r', 7, 0}}},
        CanvasCase{
            "abq_bare", bare_rig, squeezed_above_below, Squeeze::rows, 7, 10, {{'r', 0, 0}, {'l', 0, 5}}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExtraOutput, TheLimitOfTheCentralFrameBetweenRowsIsForThatCanvasAlone) {
    PairRig rig(FrameSettings(), 60, 40);
    rig.frame.left_right = 9;
    rig.frame.central = -15;
    EXPECT_EQ(rig.compose_extra(above_below).height(), 80);
    EXPECT_EQ(rig.compose_extra(squeezed_side_by_side).width(), (4 * 9 + 120 - 15) / 2);
}

TEST(ExtraOutput, ASqueezedPictureMayBeFilledToHalfOfItsWidth) {
    struct Row {
        ExtraFormat format;
        int fill_width;
        bool told;
    };
    for (const Row& row : {Row{squeezed_side_by_side, 30, false}, Row{squeezed_side_by_side, 29, true},
                           Row{above_below, 60, true}, Row{above_below, 61, false}}) {
        FrameSettings frame;
        frame.fill_width = row.fill_width;
        PairRig rig(frame, 61, 43);
        rig.parameters.verbose_mode = 2;
        ::testing::internal::CaptureStdout();
        const Bitmap canvas = rig.compose_extra(row.format);
        rig.console.flush();
        const std::string told = ::testing::internal::GetCapturedStdout();
        EXPECT_EQ(told.find("FillWidth is too low") != std::string::npos, row.told) << row.fill_width;
        EXPECT_EQ(canvas.width(), 61);
    }
}

/// Every canvas pixel from the two source rows and the column that belong to it.
Bitmap plain_interlaced(const PairRig& rig, int width, int height, int margin, int bottom) {
    Bitmap canvas = Bitmap::create(width, height);
    fill(canvas.picture(), kFrame);
    const StereoPicture pair = rig.warped.pair();
    const int share = rig.frame.floating / 2;
    for (int r = 0; r + 1 < rig.warped.height; r += 2) {
        for (int i = 0; i < 2; ++i) {
            const ConstPicture& view = i == 0 ? pair.left : pair.right;
            for (int c = 0; c < width; ++c) {
                const int u = c - margin + (i == 0 ? share : -share);
                if (u >= 0 && u < view.width) {
                    fill(canvas.picture().part(c, bottom + r + i, 1, 1),
                         lower_mean(colour_at(view, u, r), colour_at(view, u, r + 1)));
                }
            }
        }
    }
    return canvas;
}

TEST(ExtraOutput, InterlacedRowsAlternateLeftAndRightWithoutLineAndTexts) {
    struct Row {
        PairRig rig;
        int width;
        int height;
        int margin;
        int bottom;
    };
    std::array rows = {Row{free_rig(), 77, 51, 8, 5}, Row{filled_rig(), 101, 71, 20, 16},
                       Row{bare_rig(), 7, 5, 0, 0}};
    for (Row& row : rows) {
        row.rig.done.texts.caption.text = "caption";
        const Bitmap canvas = row.rig.compose_extra(interlaced);
        ASSERT_EQ(canvas.width(), row.width);
        ASSERT_EQ(canvas.height(), row.height);
        const Bitmap plain = plain_interlaced(row.rig, row.width, row.height, row.margin, row.bottom);
        EXPECT_EQ(count_differences(canvas.picture(), plain.picture()), 0);
    }
}

/// Number of pixels in these rows that are not of the frame colour.
int count_letters(const Bitmap& canvas, int first_row, int rows) {
    int letters = 0;
    for (int y = first_row; y < first_row + rows; ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            letters += colour_at(canvas.picture(), x, y) == kFrame ? 0 : 1;
        }
    }
    return letters;
}

TEST(ExtraOutput, EachRowOfPicturesHasTheTextsThatItsFrameHolds) {
    struct Row {
        ExtraFormat format;
        std::vector<int> frames;  ///< First rows of frames with a text, all 40 high.
        int height;
    };
    for (const Row& row : {Row{above_below, {0, 140, 180, 320}, 360}, Row{left_right_left, {0, 140}, 180},
                           Row{left_right_right_left, {0, 140, 280}, 320}}) {
        FrameSettings frame;
        frame.top = frame.bottom = 40;
        PairRig rig(frame, 300, 100);
        rig.done.texts.caption = {"ll", -20.0F, find_data_file("resource/zemora.fnt"), 0};
        rig.done.texts.copyright = rig.done.texts.caption;
        const Bitmap canvas = rig.compose_extra(row.format);
        ASSERT_EQ(canvas.height(), row.height);
        for (const int first : row.frames) {
            EXPECT_GT(count_letters(canvas, first, 40), 10) << first;
        }
        EXPECT_EQ(
            count_differences(canvas.picture().part(0, row.height - 140, 300, 100), rig.warped.pair().left),
            0);
    }
}

TEST(ExtraOutput, ValuesWithoutAFormatWriteNothing) {
    const test::TestFolder folder;
    for (const int value : {0, 8, 9}) {
        ParameterSet set;
        set.extra_output = value;
        PairRig rig(FrameSettings(), 20, 10, set);
        EXPECT_EQ(rig.write_extra(folder / "x.png", {}).code, 0);
        EXPECT_FALSE(file_exists(folder / "x.png")) << value;
    }
}

TEST(ExtraOutput, AFolderThatIsNotThereIsToldForEveryFormat) {
    for (int value = 1; value <= 7; ++value) {
        ParameterSet set;
        set.extra_output = value;
        set.meta_transfer = 0;
        PairRig rig(FrameSettings(), 20, 10, set);
        const StoreResult result = rig.write_extra("/nonexistent/x.png", {});
        EXPECT_EQ(result.code, 2) << value;
        EXPECT_NE(result.reason.find("/nonexistent/x.png"), std::string::npos) << result.reason;
    }
}

/// Rows of 16-bit channels in which every pixel is another.
void save_deep_source(const std::string& path, int seed) {
    const Bitmap deep = create_deep(60, 40);
    for (int y = 0; y < 40; ++y) {
        auto* row = reinterpret_cast<FIRGB16*>(deep.bits() + y * deep.pitch());
        for (int x = 0; x < 60; ++x) {
            row[x] = {static_cast<WORD>(9001 + 131 * x + seed), static_cast<WORD>(12007 + 211 * y),
                      static_cast<WORD>(50003 - 197 * x)};
        }
    }
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(deep), path.c_str(), 0));
}

const FIRGB16& deep_at(const Bitmap& picture, int x, int y) {
    return reinterpret_cast<const FIRGB16*>(picture.bits() + y * picture.pitch())[x];
}

/// What a pixel of the file is made of: the view and the pixels whose mean it is.
struct DeepOrigin {
    bool is_left;
    int column;
    int row;
    int next_column;
    int next_row;
};

TEST(ExtraOutput, SixteenBitSourcesGiveSixteenBitCanvases) {
    struct Row {
        ExtraFormat format;
        int width;
        int height;
        std::function<DeepOrigin(int x, int y)> origin;
    };
    const std::array rows = {Row{above_below, 60, 80,
                                 [](int x, int y) {
                                     return DeepOrigin{y >= 40, x, y % 40, x, y % 40};
                                 }},
                             Row{squeezed_above_below, 60, 40,
                                 [](int x, int y) {
                                     return DeepOrigin{y >= 20, x, 2 * y % 40, x, 2 * y % 40 + 1};
                                 }},
                             Row{squeezed_side_by_side, 60, 40, [](int x, int y) {
                                     return DeepOrigin{x < 30, 2 * x % 60, y, 2 * x % 60 + 1, y};
                                 }}};
    const test::TestFolder folder;
    save_deep_source(folder / "l.tif", 0);
    save_deep_source(folder / "r.tif", 77);
    const SourceFiles sources{folder / "l.tif", folder / "r.tif"};
    for (const Row& row : rows) {
        for (const int inverse : {0, 1}) {
            ParameterSet set;
            set.extra_output = static_cast<int>(row.format);
            set.output_format = 7;
            set.stereo_image_input = 2;
            set.inverse_output = inverse;
            Rig rig(set);
            const Bitmap shallow = noisy(60, 40, 1);
            ASSERT_TRUE(rig.run(rig.plan(shallow, shallow)));
            rig.arrange();
            ASSERT_EQ(rig.write_extra(folder / "x.tif", sources).code, 0);
            const Bitmap read = LibraryBitmap::owner(FreeImage_Load(FIF_TIFF, (folder / "x.tif").c_str()));
            ASSERT_EQ(FreeImage_GetImageType(LibraryBitmap::of(read)), FIT_RGB16);
            ASSERT_EQ(read.width(), row.width);
            ASSERT_EQ(read.height(), row.height);
            const DeepPair pair = *make_deep_pair(rig.warped, rig.deep_input(sources));
            int different = 0;
            for (int y = 0; y < row.height; ++y) {
                for (int x = 0; x < row.width; ++x) {
                    const DeepOrigin from = row.origin(x, y);
                    const Bitmap& view = from.is_left != (inverse == 1) ? pair.left : pair.right;
                    const int mean = (deep_at(view, from.column, from.row).red +
                                      deep_at(view, from.next_column, from.next_row).red) /
                                     2;
                    different += deep_at(read, x, y).red == mean ? 0 : 1;
                }
            }
            EXPECT_EQ(different, 0) << set.extra_output << ' ' << inverse;
        }
    }
}

TEST(ExtraOutput, FormatsWithoutADeepFormAreSavedWithEightBits) {
    const test::TestFolder folder;
    save_deep_source(folder / "l.tif", 0);
    const SourceFiles sources{folder / "l.tif", folder / "l.tif"};
    for (const ExtraFormat format : {interlaced, left_right_left, left_right_right_left}) {
        ParameterSet set;
        set.extra_output = static_cast<int>(format);
        set.output_format = 7;
        set.stereo_image_input = 2;
        PairRig rig(FrameSettings(), 60, 40, set);
        ASSERT_EQ(rig.write_extra(folder / "x.tif", sources).code, 0);
        const LoadedPicture read = load_picture(folder / "x.tif", true);
        ASSERT_EQ(read.bitmap.bits_per_pixel(), 24);
        EXPECT_EQ(count_differences(read.bitmap.picture(), rig.compose_extra(format).picture()), 0);
    }
}

}  // namespace
}  // namespace zemora
