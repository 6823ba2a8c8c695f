#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <random>

#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

using Names = std::set<std::string>;

/// What stands in the place of a left view.
struct BadView {
    const char* name;
    bool is_file;  ///< Otherwise it is no object of the run at all.
    void (*make)(const Workshop& workshop, const std::string& name);
};

std::string bytes_of_pair_file(const Workshop& workshop) {
    return read_text(workshop.path("foo_r.jpg"));
}

// clang-format off
constexpr BadView kBadViews[] = {
    {"missing",   false, [](const Workshop&, const std::string&) {}},
    {"empty",     true, [](const Workshop& w, const std::string& n) { w.write(n, ""); }},
    {"text",      true, [](const Workshop& w, const std::string& n) { w.write(n, "not a picture\n"); }},
    {"cut_off",   true, [](const Workshop& w, const std::string& n) { const auto b = bytes_of_pair_file(w); w.write(n, b.substr(0, b.size() / 2)); }},
    {"header",    true, [](const Workshop& w, const std::string& n) { w.write(n, bytes_of_pair_file(w).substr(0, 30)); }},
    {"folder",    false, [](const Workshop& w, const std::string& n) { std::filesystem::create_directory(w.path(n)); }},
    {"dead_link", false, [](const Workshop& w, const std::string& n) { std::filesystem::create_symlink("nowhere", w.path(n)); }},
};
// clang-format on

class UnreadableView : public testing::TestWithParam<BadView> {};

TEST_P(UnreadableView, IsNamedAndSkippedOnEitherSide) {
    Workshop workshop;
    workshop.save("foo_r.jpg", aligned_views().right.picture());
    GetParam().make(workshop, "bad_l.jpg");
    const auto before = workshop.files();
    for (const std::vector<std::string>& call :
         {std::vector<std::string>{"bad_l.jpg", "foo_r.jpg"}, {"foo_r.jpg", "bad_l.jpg"}}) {
        const Outcome outcome = workshop.run(call);
        EXPECT_EQ(outcome.exit_code, GetParam().is_file ? 0 : 1) << outcome.text;
        const bool told_as_no_file = outcome.tells("cannot be read.") ||
                                     outcome.tells("there is no such file") ||
                                     outcome.tells("this is no file");
        EXPECT_TRUE(GetParam().is_file ? outcome.tells("Could not read file") : told_as_no_file)
            << outcome.text;
        EXPECT_TRUE(outcome.tells("bad_l.jpg: ")) << outcome.text;
        EXPECT_EQ(outcome.tells("processed images: 0/1"), GetParam().is_file) << outcome.text;
        EXPECT_EQ(workshop.files(), before);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, UnreadableView, testing::ValuesIn(kBadViews),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(UnreadableView, FileWithoutPermissionIsNamed) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    std::filesystem::permissions(workshop.path("foo_l.bmp"), std::filesystem::perms::none);
    workshop.become_ordinary_user(0777);
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp"});
    if (outcome.exit_code == 126 || outcome.exit_code == 127) {
        GTEST_SKIP() << "the program cannot be started as another user: " << outcome.text;
    }
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_TRUE(outcome.tells("foo_l.bmp: Permission denied")) << outcome.text;
}

Bitmap plain_view(int width, int height, std::uint8_t level) {
    Bitmap bitmap = Bitmap::create(width, height);
    fill(bitmap.picture(), {level, level, level});
    return bitmap;
}

Bitmap noise_view(unsigned seed) {
    Bitmap bitmap = Bitmap::create(500, 400);
    std::mt19937 random(seed);
    for (int y = 0; y < bitmap.height(); ++y) {
        std::generate_n(bitmap.picture().row(y), bitmap.width() * kPixelBytes,
                        [&] { return static_cast<std::uint8_t>(100 + random() % 5); });
    }
    return bitmap;
}

Bitmap other_scene() {
    SceneOptions options;
    options.width = 400;
    options.height = 300;
    options.seed = 91;
    return Scene(options, {}).render_right();
}

struct HopelessPair {
    const char* name;
    Bitmap (*left)();
    Bitmap (*right)();
};

class CannotBeMounted : public testing::TestWithParam<HopelessPair> {};

TEST_P(CannotBeMounted, EndsWithTheMessageAndNoFilesInBoundedTime) {
    Workshop workshop;
    workshop.save("foo_l.bmp", GetParam().left().picture());
    workshop.save("foo_r.bmp", GetParam().right().picture());
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp"});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("cannot be mounted")) << outcome.text;
    EXPECT_TRUE(outcome.tells("processed images: 0/1")) << outcome.text;
    EXPECT_EQ(workshop.files(), (Names{"foo_l.bmp", "foo_r.bmp"}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, CannotBeMounted,
    testing::Values(
        HopelessPair{"one_pixel", [] { return plain_view(1, 1, 90); }, [] { return plain_view(1, 1, 90); }},
        HopelessPair{"one_column", [] { return plain_view(1, 500, 90); },
                     [] { return plain_view(1, 500, 90); }},
        HopelessPair{"three_by_two", [] { return plain_view(3, 2, 90); },
                     [] { return plain_view(3, 2, 95); }},
        HopelessPair{"flat_wall", [] { return plain_view(500, 400, 128); },
                     [] { return plain_view(500, 400, 128); }},
        HopelessPair{"noisy_wall", [] { return noise_view(1); }, [] { return noise_view(2); }},
        HopelessPair{"black_view", [] { return aligned_views().left.clone(); },
                     [] { return plain_view(400, 300, 0); }},
        HopelessPair{"white_view", [] { return plain_view(400, 300, 255); },
                     [] { return aligned_views().left.clone(); }},
        HopelessPair{"two_scenes", [] { return aligned_views().left.clone(); }, [] { return other_scene(); }},
        HopelessPair{"two_pixels_of_size", [] { return plain_view(1, 1, 90); },
                     [] { return aligned_views().left.clone(); }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(UnusualPair, TwentyThousandPixelsOfWidthAreRefusedOrMounted) {
    Workshop workshop;
    workshop.save("foo_l.png", plain_view(20000, 40, 60).picture());
    workshop.save("foo_r.png", plain_view(20000, 40, 60).picture());
    const Outcome outcome = workshop.run({"foo_l.png", "foo_r.png"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("cannot be mounted")) << outcome.text;
    EXPECT_EQ(workshop.files().size(), 2U);
}

TEST(UnusualPair, LikeViewsAreMountedWithoutCorrection) {
    Workshop workshop;
    workshop.save("foo_l.bmp", aligned_views().left.picture());
    workshop.save("foo_r.bmp", aligned_views().left.picture());
    const Outcome outcome =
        workshop.run({"foo_l.bmp", "foo_r.bmp", "--AutoOutputContrast=0", "--WindowOffset=0"});
    EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    const Bitmap left = workshop.load("cl/foo_cl.bmp");
    ASSERT_EQ(left.width(), 400);
    EXPECT_LT(mean_difference(left.picture(), aligned_views().left.picture()), 2.0);
}

class UnequalSizes : public testing::TestWithParam<int> {};

TEST_P(UnequalSizes, AreMadeEqualAndMounted) {
    Workshop workshop;
    const Views& views = misaligned_views();
    workshop.save("foo_l.bmp", views.left.picture());
    workshop.save("foo_r.bmp", views.right.picture().part(20, 10, 850, 680));
    const Outcome outcome = workshop.run(
        {"foo_l.bmp", "foo_r.bmp", "--StereoOutput=0", "--CroppInput=" + std::to_string(GetParam())});
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    EXPECT_LT(median_vertical_error(workshop.load("cl/foo_cl.bmp").picture(),
                                    workshop.load("cr/foo_cr.bmp").picture(), 10),
              0.5);
}

INSTANTIATE_TEST_SUITE_P(CroppInput, UnequalSizes, testing::Values(0, 1, 2));

}  // namespace
}  // namespace zemora::test
