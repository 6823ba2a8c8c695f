#include "render/colour_change.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "codec/bitmap_forms.h"
#include "codec/library.h"
#include "render/rgb16.h"
#include "tests/render/render_scene.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using testing::colour_at;
using testing::noisy;
using testing::Rig;
using Values = std::array<std::uint16_t, kPixelBytes>;

ColorManagement exponents() {
    ColorManagement colours;
    colours.left = {{{0.9F, 0.2F, -0.1F}, {0.05F, 0.8F, 0.1F}, {-0.5F, 0.3F, 1.1F}}};
    colours.right = {{{0.7F, 0.1F, 0.2F}, {0.4F, 0.5F, 0.0F}, {0.0F, -0.2F, 0.6F}}};
    colours.gamma_in = {2.2F, 2.0F, 1.7F};
    colours.gamma_out = {0.45F, 0.5F, 0.6F};
    return colours;
}

ColorManagement tables() {
    ColorManagement colours = exponents();
    std::mt19937 random(3);
    for (auto* field : {&colours.field_in, &colours.field_out}) {
        for (auto& column : *field) {
            column.resize(ColorManagement::kFieldLevels);
            for (int& level : column) {
                level = static_cast<int>(random() % ColorManagement::kFieldLevels);
            }
        }
    }
    return colours;
}

/// Red, green, blue after the exponents, as the formula has them.
std::array<int, 3> plain_by_exponents(const ColorManagement& c, const ColorManagement::Matrix& m,
                                      const std::array<int, 3>& rgb) {
    std::array<double, 3> light;
    std::array<int, 3> result;
    for (std::size_t k = 0; k < 3; ++k) {
        light[k] = std::pow(rgb[k] * 1.52587890625e-05, static_cast<double>(c.gamma_in[k]));
    }
    for (std::size_t k = 0; k < 3; ++k) {
        const double sum = m[k][0] * light[0] + m[k][1] * light[1] + m[k][2] * light[2];
        const double value = sum > 0.0 ? std::pow(sum, static_cast<double>(c.gamma_out[k])) : 0.0;
        result[k] = std::clamp(static_cast<int>(std::floor(value * 65536.0 + 0.5)), 0, 65535);
    }
    return result;
}

std::array<int, 3> plain_by_tables(const ColorManagement& c, const ColorManagement::Matrix& m,
                                   const std::array<int, 3>& rgb) {
    std::array<float, 3> light;
    std::array<int, 3> result;
    for (std::size_t k = 0; k < 3; ++k) {
        light[k] =
            static_cast<float>(c.field_in[k][static_cast<std::size_t>(std::min((rgb[k] + 8) / 16, 4095))]);
    }
    for (std::size_t k = 0; k < 3; ++k) {
        const float sum = m[k][0] * light[0] + m[k][1] * light[1] + m[k][2] * light[2];
        const double index = std::clamp(std::floor(sum + 0.5), 0.0, 4095.0);
        result[k] = 16 * c.field_out[2 - k][static_cast<std::size_t>(index)];
    }
    return result;
}

TEST(ColourChange, GivesWhatTheFormulaGives) {
    const ColorManagement by_exponents = exponents();
    const ColorManagement by_tables = tables();
    const ColourChange changes[] = {ColourChange(by_exponents), ColourChange(by_tables)};
    std::mt19937 random(1);
    for (int i = 0; i < 30000; ++i) {
        std::array<int, 3> rgb;
        for (int& value : rgb) {
            value = static_cast<int>(i < 20000 ? random() % 65536 : 65535 * (random() % 2));
        }
        const bool is_left = i % 2 == 0;
        const auto& matrix = is_left ? by_exponents.left : by_exponents.right;
        const std::array<int, 3> wanted[] = {plain_by_exponents(by_exponents, matrix, rgb),
                                             plain_by_tables(by_tables, matrix, rgb)};
        for (int form = 0; form < 2; ++form) {
            Values values = {static_cast<std::uint16_t>(rgb[2]), static_cast<std::uint16_t>(rgb[1]),
                             static_cast<std::uint16_t>(rgb[0])};
            changes[form].change(is_left, values);
            const std::array<int, 3> found = {values[2], values[1], values[0]};
            ASSERT_EQ(found, wanted[form]) << form << ": " << rgb[0] << ' ' << rgb[1] << ' ' << rgb[2];
        }
    }
}

TEST(ColourChange, ValuesOfATableBeyondTheRangeStayInIt) {
    ColorManagement colours = tables();
    for (auto& column : colours.field_out) {
        column.assign(ColorManagement::kFieldLevels, 2'000'000'000);
    }
    Values values = {1, 2, 3};
    ColourChange(colours).change(true, values);
    EXPECT_EQ(values, (Values{65535, 65535, 65535}));
}

TEST(ColourChange, IsReadFromTheFileOfTheSettings) {
    const test::TestFolder folder;
    test::write_text(folder / "c.txt", "0 0 1\n0 1 0\n1 0 0\n1 0 0\n0 1 0\n0 0 1\n1 1 1\n1 1 1\n");
    const MessageCatalogue messages(Language::english);
    ParameterSet set;
    set.path_of_images = folder.path();
    set.ecm_file_name = "c.txt";
    EXPECT_FALSE(*read_colour_change(set, messages));
    set.ext_color_management = 1;
    const auto colours = read_colour_change(set, messages);
    ASSERT_TRUE(colours && *colours);
    Values values = {100, 200, 300};
    (*colours)->change(true, values);
    EXPECT_EQ(values, (Values{300, 200, 100}));
    (*colours)->change(false, values);
    EXPECT_EQ(values, (Values{300, 200, 100}));
}

TEST(ColourChange, FileForAnaglyphsAloneIsCheckedBeforeTheFirstPair) {
    const test::TestFolder folder;
    const MessageCatalogue messages(Language::english);
    ParameterSet set;
    set.path_of_images = folder.path();
    for (const int type : {8, 9}) {
        set.anaglyph_type = type;
        const auto colours = read_colour_change(set, messages);
        EXPECT_TRUE(!colours && colours.failure().ends_run) << type;
    }
    test::write_text(folder / set.ecm_file_name, "1 0 0\n0 1 0\n0 0 1\n1 0 0\n0 1 0\n0 0 1\n1 1 1\n1 1 1\n");
    const auto colours = read_colour_change(set, messages);
    ASSERT_TRUE(colours);
    EXPECT_FALSE(*colours) << "the views keep their colours";
}

TEST(ColourChange, FollowsTheTonesOfTheFinalWarpInEachView) {
    const Bitmap source = noisy(45, 20, 5);
    fill(source.picture().part(3, 3, 6, 6), {});  // no picture
    ToneTables tone = ToneTables::identity();
    for (std::uint16_t& level : tone.plane[0]) {
        level = static_cast<std::uint16_t>(65280 - level);
    }
    const ColorManagement colours = exponents();
    for (const bool is_final : {false, true}) {
        ParameterSet set;
        set.passe_color_red = 255;
        set.passe_color_green = 0;
        set.passe_color_blue = 255;
        Rig rig(set);
        rig.colours.emplace(colours);
        WarpPlan plan = rig.plan(source, source);
        plan.tone.is_applied = is_final;
        plan.tone.left = plan.tone.right = tone;
        plan.tone.mode_left = plan.tone.mode_right = 1;
        ASSERT_TRUE(rig.run(plan));
        for (int x = 0; x < 45; ++x) {
            for (const bool is_left : {true, false}) {
                const Colour from = colour_at(source.picture(), x, 7);
                const Colour found =
                    colour_at(is_left ? rig.warped.pair().left : rig.warped.pair().right, x, 7);
                const auto wanted = plain_by_exponents(
                    colours, is_left ? colours.left : colours.right,
                    {65280 - 256 * from.red, 65280 - 256 * from.green, 65280 - 256 * from.blue});
                EXPECT_EQ(found.red, is_final ? std::min((wanted[0] + 128) >> 8, 255) : from.red) << x;
                EXPECT_EQ(found.green, is_final ? std::min((wanted[1] + 128) >> 8, 255) : from.green) << x;
            }
        }
    }
}

TEST(ColourChange, WorksInTheSixteenBitOutputToo) {
    const test::TestFolder folder;
    const Bitmap deep = create_deep(40, 30);
    const auto pixel = [](const Bitmap& bitmap) {
        return reinterpret_cast<FIRGB16*>(bitmap.bits() + 9 * bitmap.pitch()) + 7;
    };
    for (int y = 0; y < 30; ++y) {
        std::fill_n(reinterpret_cast<FIRGB16*>(deep.bits() + y * deep.pitch()), 40,
                    FIRGB16{50001, 20003, 30007});
    }
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(deep), (folder / "d.tif").c_str(), 0));
    ParameterSet set;
    set.stereo_image_input = 2;
    Rig rig(set);
    const ColorManagement colours = exponents();
    rig.colours.emplace(colours);
    const Bitmap shallow = noisy(40, 30, 1);
    ASSERT_TRUE(rig.run(rig.plan(shallow, shallow)));
    const DeepPair pair = *make_deep_pair(rig.warped, rig.deep_input({folder / "d.tif", folder / "d.tif"}));
    ASSERT_TRUE(pair);
    for (const bool is_left : {true, false}) {
        const FIRGB16 found = *pixel(is_left ? pair.left : pair.right);
        const auto wanted =
            plain_by_exponents(colours, is_left ? colours.left : colours.right, {50001, 20003, 30007});
        EXPECT_EQ((std::array<int, 3>{found.red, found.green, found.blue}), wanted);
    }
}

}  // namespace
}  // namespace zemora
