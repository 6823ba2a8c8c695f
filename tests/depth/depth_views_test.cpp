#include "depth/depth_views.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "depth/colour_depth.h"

namespace zemora::test {

namespace {

using Pixel = std::array<std::uint8_t, 3>;
constexpr Pixel kHoleColour{255, 255, 0};

Pixel get(ConstPicture picture, int x, int y) {
    const std::uint8_t* p = picture.row(y) + kPixelBytes * x;
    return {p[0], p[1], p[2]};
}
void put(Picture picture, int x, int y, const Pixel& colour) {
    std::copy(colour.begin(), colour.end(), picture.row(y) + kPixelBytes * x);
}

/// Rows painted sample by sample, far before near, and holes filled in the order of reading.
class PlainView {
public:
    PlainView(const DepthSettings& p, ConstPicture colour, ConstPicture depth, DepthView view)
        : width_(colour.width),
          height_(colour.height),
          sign_(view == DepthView::left ? -1.0 : 1.0),
          parallax_(p.deviation_target / 1000.0 * width_),
          table_(grey_to_shift(p)),
          offset_(shift_offset(p)),
          result_(Bitmap::create(width_, height_)) {
        marks_.assign(static_cast<std::size_t>(width_ * height_), 0);
        for (int y = 0; y < height_; ++y) {
            paint(colour, depth, y);
            fill(depth, y);
        }
        for (int y = 1; y + 1 < height_; ++y) {
            for (int x = 1; x + 1 < width_; ++x) {
                if (mark(x, y) == 0) {
                    blend(x, y);
                }
            }
        }
    }
    [[nodiscard]] ConstPicture picture() const { return result_.picture(); }

private:
    std::uint8_t& mark(int x, int y) { return marks_[static_cast<std::size_t>(y * width_ + x)]; }
    [[nodiscard]] double units(int g) const {
        return sign_ * (table_[static_cast<std::size_t>(g)] + offset_);
    }

    void paint(ConstPicture colour, ConstPicture depth, int y) {
        std::vector<Pixel> samples(static_cast<std::size_t>(16 * width_), kHoleColour);
        position_.assign(static_cast<std::size_t>(width_), 0.0);
        for (int g = 0; g < 256; ++g) {
            for (int x = 0; x < width_; ++x) {
                if (get(depth, x, y)[0] != g) {
                    continue;
                }
                position_[static_cast<std::size_t>(x)] = x + units(g) * parallax_ / 256 * 0.5;
                const int k = 16 * x + static_cast<int>(std::floor(units(g) * parallax_ / 16 * 0.5 + 0.5));
                for (int s = k; k >= 0 && k + 16 <= 16 * width_ && s < k + 16; ++s) {
                    samples[static_cast<std::size_t>(s)] = get(colour, x, y);
                }
            }
        }
        for (int x = 0; x < width_; ++x) {
            std::array<double, 3> sum{};
            int count = 0;
            for (int s = 16 * x; s < 16 * x + 16; ++s) {
                const Pixel& sample = samples[static_cast<std::size_t>(s)];
                if (sample != kHoleColour) {
                    ++count;
                    for (std::size_t c = 0; c < 3; ++c) {
                        sum[c] += sample[c];
                    }
                }
            }
            Pixel mean = kHoleColour;
            for (std::size_t c = 0; count >= 2 && c < 3; ++c) {
                mean[c] = static_cast<std::uint8_t>(std::floor(sum[c] / count + 0.5));
            }
            mark(x, y) = count >= 2 ? 1 : 0;
            put(result_.picture(), x, y, mean);
        }
    }

    void fill(ConstPicture depth, int y) {
        for (int x = 0; x < width_; ++x) {
            if (mark(x, y) != 0) {
                continue;
            }
            const int left = x - 1;
            int right = x + 1;
            while (right < width_ && get(result_.picture(), right, y) == kHoleColour) {
                ++right;
            }
            for (int i = x; i < right; ++i) {
                put(result_.picture(), i, y, filling(depth, y, left, right, i));
            }
        }
    }

    Pixel filling(ConstPicture depth, int y, int left, int right, int i) {
        if (left < 0 || right >= width_) {
            return {};
        }
        const Pixel a = get(result_.picture(), left, y);
        const Pixel b = get(result_.picture(), right, y);
        if (right > left + 3) {
            int from = left;
            while (from > 0 && position_[static_cast<std::size_t>(from)] > left) {
                --from;
            }
            while (from + 1 < width_ && position_[static_cast<std::size_t>(from) + 1] <= left) {
                ++from;
            }
            int to = std::min(from + 1, width_ - 1);
            while (to + 1 < width_ && position_[static_cast<std::size_t>(to)] < right) {
                ++to;
            }
            return get(depth, from, y)[0] >= get(depth, to, y)[0] ? b : a;
        }
        Pixel mean{};
        for (std::size_t c = 0; c < 3; ++c) {
            mean[c] = static_cast<std::uint8_t>(
                std::floor(a[c] + static_cast<double>(b[c] - a[c]) * (i - left) / (right - left) + 0.5));
        }
        return mean;
    }

    void blend(int x, int y) {
        const Pixel a = get(result_.picture(), x - 1, y - 1);
        const Pixel b = get(result_.picture(), x + 1, y + 1);
        Pixel c = get(result_.picture(), x, y);
        for (std::size_t k = 0; k < 3; ++k) {
            c[k] = static_cast<std::uint8_t>((3 * a[k] + 10 * c[k] + 3 * b[k]) >> 4);
        }
        put(result_.picture(), x, y, c);
    }

    int width_;
    int height_;
    double sign_;
    double parallax_;
    ShiftTable table_;
    int offset_;
    Bitmap result_;
    std::vector<std::uint8_t> marks_;
    std::vector<double> position_;
};

struct Scene {
    Bitmap colour;
    Bitmap depth;
};

/// A noisy photo, some of it in the colour of holes; a mask of slopes, steps and speckles.
Scene noisy_scene(int width, int height) {
    Scene scene{Bitmap::create(width, height), Bitmap::create(width, height)};
    std::mt19937 random(7);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto any = [&] { return static_cast<std::uint8_t>(random() % 256); };
            put(scene.colour.picture(), x, y, random() % 50 == 0 ? kHoleColour : Pixel{any(), any(), any()});
            const int slope = (x / 16 % 5) * 50 + y % 40;
            const auto g = random() % 30 == 0 ? any() : static_cast<std::uint8_t>(std::min(slope, 255));
            put(scene.depth.picture(), x, y, {g, g, g});
        }
    }
    return scene;
}

/// A white square in front of a black wall, each of its own colours.
Scene square_scene() {
    constexpr int kSide = 256;
    Scene scene{Bitmap::create(kSide, kSide), Bitmap::create(kSide, kSide)};
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const bool near = x >= 96 && x < 160 && y >= 64 && y < 192;
            const auto ramp = static_cast<std::uint8_t>(x / 2);
            put(scene.colour.picture(), x, y, near ? Pixel{10, 200, ramp} : Pixel{200, ramp, 10});
            const std::uint8_t g = near ? 255 : 0;
            put(scene.depth.picture(), x, y, {g, g, g});
        }
    }
    return scene;
}

int differing_pixels(ConstPicture a, ConstPicture b) {
    int count = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            count += get(a, x, y) != get(b, x, y) ? 1 : 0;
        }
    }
    return count;
}

}  // namespace

TEST(DepthViews, EqualThePlainPainter) {
    const Scene scene = noisy_scene(203, 40);
    for (const DepthSettings& p :
         {DepthSettings{30, 0, 0, 0}, DepthSettings{60, -20, 3, 0}, DepthSettings{90, 15, -4, 0},
          DepthSettings{50, 5, 9, 1}, DepthSettings{-40, 0, 0, 0}, DepthSettings{0, 30, 0, 0}}) {
        DepthState state(p);
        for (const DepthView view : {DepthView::right, DepthView::left}) {
            ASSERT_TRUE(state.render_view_from_depth(scene.colour.picture(), scene.depth.picture(), view));
            const PlainView plain(p, scene.colour.picture(), scene.depth.picture(), view);
            const Bitmap& made = view == DepthView::left ? state.view_a : state.view_b;
            EXPECT_EQ(differing_pixels(made.picture(), plain.picture()), 0)
                << p.deviation_target << ' ' << static_cast<int>(view);
        }
    }
}

TEST(DepthViews, TheWallMovesByHalfTheParallaxAndShowsBesideTheSquare) {
    const Scene scene = square_scene();
    const DepthSettings p{125, 0, 0, 0};  // 32 pixels: 16 a view for black
    DepthState state(p);
    ASSERT_TRUE(
        state.render_view_from_depth(scene.colour.picture(), scene.depth.picture(), DepthView::right));
    ASSERT_TRUE(state.render_view_from_depth(scene.colour.picture(), scene.depth.picture(), DepthView::left));
    constexpr int kRow = 128;
    const ConstPicture right = state.view_b.picture();
    const ConstPicture left = state.view_a.picture();
    EXPECT_EQ(get(right, 130, kRow), get(scene.colour.picture(), 130, kRow)) << "white stays in the window";
    EXPECT_NEAR(get(right, 60, kRow)[1], get(scene.colour.picture(), 60 - 16, kRow)[1], 1);
    EXPECT_NEAR(get(left, 60, kRow)[1], get(scene.colour.picture(), 60 + 16, kRow)[1], 1);
    for (int x = 162; x < 174; ++x) {
        EXPECT_NEAR(get(right, x, kRow)[0], 200, 2) << "the strip beside the square is wall, column " << x;
    }
    for (int x = 82; x < 94; ++x) {
        EXPECT_NEAR(get(left, x, kRow)[0], 200, 2) << "column " << x;
    }
    EXPECT_EQ(get(right, 3, 10), Pixel{}) << "nothing comes in from beyond the picture";
    EXPECT_EQ(get(left, 252, 10), Pixel{});
}

TEST(DepthViews, WithoutParallaxBothViewsAreThePhoto) {
    const Scene scene = square_scene();
    const Bitmap white = Bitmap::create(256, 256);
    fill(white.picture(), {255, 255, 255});
    for (const auto& [target, mask] : {std::pair{0, &scene.depth}, std::pair{80, &white}}) {
        DepthState state(DepthSettings{target, 0, 0, 0});
        for (const DepthView view : {DepthView::right, DepthView::left}) {
            ASSERT_TRUE(state.render_view_from_depth(scene.colour.picture(), mask->picture(), view));
        }
        EXPECT_EQ(differing_pixels(state.view_a.picture(), scene.colour.picture()), 0);
        EXPECT_EQ(differing_pixels(state.view_b.picture(), scene.colour.picture()), 0);
    }
}

TEST(ColourDepth, HueIsDepthAndBrightnessIsThePhoto) {
    const Bitmap colour = Bitmap::create(3, 1);
    const Bitmap depth = Bitmap::create(3, 1);
    const Bitmap made = Bitmap::create(3, 1);
    fill(colour.picture(), {255, 255, 255});
    const std::array<std::uint8_t, 3> greys{255, 128, 0};
    for (int x = 0; x < 3; ++x) {
        const std::uint8_t g = greys[static_cast<std::size_t>(x)];
        put(depth.picture(), x, 0, {g, g, g});
    }
    colour_depth(colour.picture(), depth.picture(), made.picture());
    EXPECT_EQ(get(made.picture(), 0, 0), (Pixel{0, 0, 255})) << "near is red";
    EXPECT_EQ(get(made.picture(), 1, 0), (Pixel{0, 223, 2})) << "the middle is green";
    EXPECT_EQ(get(made.picture(), 2, 0), (Pixel{191, 0, 0})) << "far is blue, and darker";
}

TEST(ColourDepth, NamesGoBelowCdAndEndInCd) {
    EXPECT_EQ(colour_depth_name("/a_d.b/x_d.png"), "/a_d.b/cd/x_cd.jpg");
    EXPECT_EQ(colour_depth_name("/a/x_R.JPG"), "/a/cd/x_CD.jpg");
    EXPECT_EQ(colour_depth_name("/a/x_rgbd.tif"), "/a/cd/x_cd.jpg");
    EXPECT_EQ(colour_depth_name("/a/x.y.jpg"), "/a/cd/x.y_cd.jpg");
}

}  // namespace zemora::test
