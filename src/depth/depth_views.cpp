#include "depth/depth_views.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <vector>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kGreys = 256;
constexpr int kSamples = 16;      // of an output pixel, side by side
constexpr int kLeastSamples = 2;  // that make a pixel of the picture
constexpr int kShortGap = 3;      // columns from edge to edge that are interpolated
constexpr std::uint32_t kAllSamples = (1U << kSamples) - 1U;

// The colour of what nothing was written to; a pixel of the picture of this colour counts as such.
constexpr std::uint8_t kHoleBlue = 255;
constexpr std::uint8_t kHoleGreen = 255;
constexpr std::uint8_t kHoleRed = 0;

constexpr std::uint8_t kHole = 0;  // marks
constexpr std::uint8_t kPictured = 1;

bool is_hole(const std::uint8_t* pixel) {
    return pixel[0] == kHoleBlue && pixel[1] == kHoleGreen && pixel[2] == kHoleRed;
}

/// Where the pixels of a grey go.
struct GreyShift {
    std::array<double, kGreys> pixels{};
    std::array<int, kGreys> samples{};
};

GreyShift grey_shift(const DepthSettings& settings, int width, DepthView view) {
    constexpr double kPerMille = 1000.0;
    constexpr double kEachView = 0.5;
    const double parallax_px = settings.deviation_target / kPerMille * width;
    const ShiftTable table = grey_to_shift(settings);
    const int offset = shift_offset(settings);
    GreyShift shift;
    for (std::size_t g = 0; g < kGreys; ++g) {
        const double units = (table[g] + offset) * (view == DepthView::left ? -1.0 : 1.0);
        shift.pixels[g] = units * parallax_px / kGreys * kEachView;
        shift.samples[g] = round_half_up(units * parallax_px / kSamples * kEachView);
    }
    return shift;
}

/// What an output pixel has got so far, nearest pixels first: later ones only reach samples left over.
struct Gathered {
    std::uint16_t covered = 0;  ///< One bit a sample.
    std::uint16_t count = 0;    ///< Samples with a colour of the picture.
    std::array<std::uint16_t, kPixelBytes> sums{};
};

/// Renders one row at a time; each thread has one.
class RowRenderer {
public:
    RowRenderer(const GreyShift& shift, int width)
        : shift_(shift), width_(width), order_(size()), gathered_(size()) {}

    void render(const std::uint8_t* colour, const std::uint8_t* depth, std::uint8_t* target,
                std::uint8_t* marks) {
        sort_by_grey(depth);
        gather(colour, depth);
        write_means(target, marks);
        fill_holes(depth, target, marks);
    }

private:
    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(width_); }
    [[nodiscard]] static int grey(const std::uint8_t* depth, int x) { return depth[kPixelBytes * x]; }

    /// Columns from dark to bright, from left to right within a grey.
    void sort_by_grey(const std::uint8_t* depth) {
        std::array<std::uint32_t, kGreys + 1> starts{};
        for (int x = 0; x < width_; ++x) {
            ++starts[static_cast<std::size_t>(grey(depth, x)) + 1];
        }
        for (std::size_t g = 1; g <= kGreys; ++g) {
            starts[g] += starts[g - 1];
        }
        for (int x = 0; x < width_; ++x) {
            order_[starts[static_cast<std::size_t>(grey(depth, x))]++] = x;
        }
    }

    void add(int column, std::uint32_t samples, const std::uint8_t* pixel, bool counts) {
        Gathered& there = gathered_[static_cast<std::size_t>(column)];
        const std::uint32_t fresh = samples & ~static_cast<std::uint32_t>(there.covered);
        if (fresh == 0) {
            return;
        }
        there.covered = static_cast<std::uint16_t>(there.covered | fresh);
        if (!counts) {
            return;
        }
        const int number = std::popcount(fresh);
        there.count = static_cast<std::uint16_t>(there.count + number);
        for (std::size_t c = 0; c < kPixelBytes; ++c) {
            there.sums[c] = static_cast<std::uint16_t>(there.sums[c] + number * pixel[c]);
        }
    }

    /// Each pixel covers as many samples as a pixel has; the nearest wins, of equals the rightmost.
    void gather(const std::uint8_t* colour, const std::uint8_t* depth) {
        std::fill(gathered_.begin(), gathered_.end(), Gathered{});
        const std::int64_t last_start = static_cast<std::int64_t>(kSamples) * (width_ - 1);
        for (auto x = order_.rbegin(); x != order_.rend(); ++x) {
            const std::int64_t start = static_cast<std::int64_t>(kSamples) * *x +
                                       shift_.samples[static_cast<std::size_t>(grey(depth, *x))];
            if (start < 0 || start > last_start) {
                continue;
            }
            const auto column = static_cast<int>(start / kSamples);
            const auto inside = static_cast<unsigned>(start % kSamples);
            const std::uint8_t* pixel = colour + kPixelBytes * *x;
            const bool counts = !is_hole(pixel);
            add(column, (kAllSamples << inside) & kAllSamples, pixel, counts);
            if (inside != 0) {
                add(column + 1, kAllSamples >> (kSamples - inside), pixel, counts);
            }
        }
    }

    void write_means(std::uint8_t* target, std::uint8_t* marks) const {
        for (const Gathered& pixel : gathered_) {
            const int count = pixel.count;
            if (count < kLeastSamples) {
                target[0] = kHoleBlue;
                target[1] = kHoleGreen;
                target[2] = kHoleRed;
                *marks = kHole;
            } else {
                for (std::size_t c = 0; c < kPixelBytes; ++c) {
                    target[c] = static_cast<std::uint8_t>((2 * pixel.sums[c] + count) / (2 * count));
                }
                *marks = kPictured;
            }
            target += kPixelBytes;
            ++marks;
        }
    }

    void fill_holes(const std::uint8_t* depth, std::uint8_t* target, const std::uint8_t* marks) const {
        for (int x = 0; x < width_; ++x) {
            const void* next = std::memchr(marks + x, kHole, size() - static_cast<std::size_t>(x));
            if (next == nullptr) {
                return;
            }
            x = static_cast<int>(static_cast<const std::uint8_t*>(next) - marks);
            fill_hole(x, depth, target);
        }
    }

    /// The hole that begins at column x. Pixels that are filled are looked at once more with what now
    /// stands beside them, which softens the last one.
    void fill_hole(int x, const std::uint8_t* depth, std::uint8_t* target) const {
        const int left = x - 1;
        int right = x + 1;
        while (right < width_ && is_hole(target + kPixelBytes * right)) {
            ++right;
        }
        std::uint8_t* first = target + kPixelBytes * x;
        if (left < 0 || right >= width_) {
            std::fill(first, target + kPixelBytes * right, std::uint8_t{0});
        } else if (right <= left + kShortGap) {
            interpolate(target, left, right);
        } else {
            const std::uint8_t* far_side =
                target + kPixelBytes * (is_left_nearer(left, right, depth) ? right : left);
            for (; first < target + kPixelBytes * right; first += kPixelBytes) {
                std::memcpy(first, far_side, kPixelBytes);
            }
        }
    }

    static void interpolate(std::uint8_t* target, int left, int right) {
        const std::uint8_t* a = target + kPixelBytes * left;
        const std::uint8_t* b = target + kPixelBytes * right;
        for (int i = left + 1; i < right; ++i) {
            for (int c = 0; c < kPixelBytes; ++c) {
                const double share = static_cast<double>((b[c] - a[c]) * (i - left)) / (right - left);
                target[kPixelBytes * i + c] = static_cast<std::uint8_t>(round_half_up(a[c] + share));
            }
        }
    }

    /// Whether the pixel that went to `left` is at least as near as the one that went to `right`.
    [[nodiscard]] bool is_left_nearer(int left, int right, const std::uint8_t* depth) const {
        const auto place = [&](int x) { return x + shift_.pixels[static_cast<std::size_t>(grey(depth, x))]; };
        int from_left = left;
        if (place(from_left) <= left) {
            while (from_left + 1 < width_ && place(from_left + 1) <= left) {
                ++from_left;
            }
        } else {
            while (from_left > 0 && place(from_left) > left) {
                --from_left;
            }
        }
        int from_right = std::min(from_left + 1, width_ - 1);
        while (from_right + 1 < width_ && place(from_right) < right) {
            ++from_right;
        }
        return grey(depth, from_left) >= grey(depth, from_right);
    }

    const GreyShift& shift_;
    int width_;
    std::vector<int> order_;
    std::vector<Gathered> gathered_;
};

/// Filled pixels inside the picture are blended along one diagonal, in place, from the bottom row on.
void soften_filled(Picture view, const std::vector<std::uint8_t>& marks) {
    constexpr int kSide = 3;
    constexpr int kMiddle = 10;
    constexpr int kShift = 4;  // the weights' sum is 16
    const auto width = static_cast<std::size_t>(view.width);
    for (int y = 1; y + 1 < view.height; ++y) {
        const std::uint8_t* row_marks = marks.data() + static_cast<std::size_t>(y) * width;
        for (std::size_t x = 1; x + 1 < width; ++x) {
            const void* next = std::memchr(row_marks + x, kHole, width - 1 - x);
            if (next == nullptr) {
                break;
            }
            x = static_cast<std::size_t>(static_cast<const std::uint8_t*>(next) - row_marks);
            std::uint8_t* pixel = view.row(y) + kPixelBytes * x;
            const std::uint8_t* before = view.row(y - 1) + kPixelBytes * (x - 1);
            const std::uint8_t* behind = view.row(y + 1) + kPixelBytes * (x + 1);
            for (int c = 0; c < kPixelBytes; ++c) {
                pixel[c] = static_cast<std::uint8_t>(
                    (kSide * before[c] + kMiddle * pixel[c] + kSide * behind[c]) >> kShift);
            }
        }
    }
}

}  // namespace

ShiftTable grey_to_shift(const DepthSettings& settings) {
    constexpr double kWhite = 255.0;
    constexpr double kPowerStep = 5.0;
    constexpr double kSineStep = 40.0;
    const double n = settings.depth_mask_nonlin;
    ShiftTable table{};
    for (std::size_t g = 0; g < kGreys; ++g) {
        const double d = kWhite - static_cast<double>(g);
        if (settings.depth_mask_nonlin == 0) {
            table[g] = d;
        } else if (settings.depth_mask_nl_type == setting::depth_mask_nl_type::sine) {
            table[g] = d - n / kSineStep * kWhite * std::sin(d * std::numbers::pi / kWhite);
        } else {
            const double exponent = n < 0 ? 1.0 - n / kPowerStep : 1.0 / (1.0 + n / kPowerStep);
            table[g] = kWhite * std::pow(d / kWhite, exponent);
        }
    }
    return table;
}

int shift_offset(const DepthSettings& settings) {
    if (settings.deviation_target == 0) {
        return 0;
    }
    // Both are per mille, so that the thousandths cancel.
    return static_cast<int>(static_cast<double>(settings.depth_mask_offset) * kGreys /
                            settings.deviation_target);
}

int largest_shift_px(const DepthSettings& settings, ConstPicture depth) {
    std::array<bool, kGreys> occurs{};
    for (int y = 0; y < depth.height; ++y) {
        for (int x = 0; x < depth.width; ++x) {
            occurs[*depth.pixel(x, y)] = true;
        }
    }
    const GreyShift shift = grey_shift(settings, depth.width, DepthView::right);
    double largest_px = 0.0;
    for (std::size_t g = 0; g < kGreys; ++g) {
        largest_px = std::max(largest_px, occurs[g] ? std::fabs(shift.pixels[g]) : 0.0);
    }
    return static_cast<int>(std::ceil(largest_px));
}

Result<void> DepthState::render_view_from_depth(ConstPicture colour, ConstPicture depth, DepthView view) {
    Bitmap& target = view == DepthView::left ? view_a : view_b;
    for (Bitmap* bitmap : {&view_a, &view_b}) {
        if (!*bitmap || bitmap->width() < colour.width || bitmap->height() < colour.height) {
            *bitmap = Bitmap::create(colour.width, colour.height);
        }
    }
    if (!view_a || !view_b) {
        return Failure::out_of_memory("d71: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE\n");
    }
    const GreyShift shift = grey_shift(settings_, colour.width, view);
    const Picture out = target.picture(colour.width, colour.height);
    const auto width = static_cast<std::size_t>(colour.width);
    std::vector<std::uint8_t> marks(width * static_cast<std::size_t>(colour.height));
#pragma omp parallel
    {
        RowRenderer renderer(shift, colour.width);
#pragma omp for schedule(dynamic, 16)
        for (int y = 0; y < colour.height; ++y) {
            renderer.render(colour.row(y), depth.row(y), out.row(y),
                            marks.data() + static_cast<std::size_t>(y) * width);
        }
    }
    soften_filled(out, marks);
    return {};
}

}  // namespace zemora
