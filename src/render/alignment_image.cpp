#include <algorithm>
#include <cmath>

#include "numerics/rounding.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "render/canvas.h"
#include "render/test_image_parts.h"
#include "render/test_images.h"
#include "render/text_drawing.h"

namespace zemora {

namespace {

constexpr Colour kRed{0, 0, 255};
constexpr int kGhostStep = 3;     ///< Percent of ghosting from band to band.
constexpr int kBandNumbers = 11;  ///< 0 to 10.
constexpr int kNumberFont = 64;
constexpr int kOffsetFont = 32;
constexpr int kOffsetPart = 30;  ///< The views' offset is this part of the width.

/// The two views in one bitmap.
struct Halves {
    Picture left;
    Picture right;
    [[nodiscard]] int width() const { return left.width; }
    [[nodiscard]] int height() const { return left.height; }
    [[nodiscard]] int offset() const { return width() / kOffsetPart; }
};

/// The disc in the middle of each half.
struct Disc {
    double x;
    double y;
    double radius;
    /// Square of the distance from the middle, 1 on the rim.
    [[nodiscard]] double place(int column, int row) const {
        const double dx = column - x;
        const double dy = row - y;
        return (dx * dx + dy * dy) / (radius * radius);
    }
    /// Half the width of the disc that all of these rows have.
    [[nodiscard]] int half_width(int first_row, int last_row) const {
        const double dy = std::max(std::abs(first_row - y), std::abs(last_row - y));
        return static_cast<int>(std::sqrt(std::max(0.0, radius * radius - dy * dy)));
    }
};
constexpr double kRim = 0.004;  ///< The rim's share of `place` on either side.

Disc disc_of(const Halves& halves) {
    constexpr double kRadius = 0.475;
    return {static_cast<double>(halves.width() / 2), static_cast<double>(halves.height() / 2),
            kRadius * std::min(halves.width(), halves.height())};
}

/// Ten bands share the height of the disc without 24 pixels at its top and bottom.
double bands_height(int height) {
    return 0.95 * height - 48.0;
}

/// Number of the band that a row belongs to, 9 and more at the bottom.
int band_of(int row, int height) {
    return round_half_up((0.25 * height + 240.0 - (10.0 * row - 320.0)) / bands_height(height) + 9.0);
}

int ghost_of(int level, int band) {
    return (level * band * kGhostStep + 50) / 100;
}

void frame_in_red(Picture half) {
    fill(half.part(0, 0, half.width, 1), kRed);
    fill(half.part(0, half.height - 1, half.width, 1), kRed);
    fill(half.part(0, 0, 1, half.height), kRed);
    fill(half.part(half.width - 1, 0, 1, half.height), kRed);
}

/// Bands as bright as the ghost of white that they are for, in a white ring.
void draw_disc(Picture half, const Disc& disc) {
    constexpr int kBrightest = 34;  // the first band above white
    for (int y = 0; y < half.height; ++y) {
        const int band = std::clamp(band_of(y, half.height), 0, kBrightest);
        const auto grey = static_cast<std::uint8_t>(std::min(255, ghost_of(255, band)));
        for (int x = 0; x < half.width; ++x) {
            const double place = disc.place(x, y);
            if (std::abs(place - 1.0) <= kRim) {
                fill(half.part(x, y, 1, 1), kWhite);
            } else if (place < 1.0) {
                fill(half.part(x, y, 1, 1), {grey, grey, grey});
            }
        }
    }
}

void draw_white(Picture half, const LetterMask& mask, int x, int y) {
    const LabelPart part = label_part(half, mask, x, y);
    for (int row = 0; row < part.ground.height; ++row) {
        const std::uint8_t* const cover = part.cover(mask, row);
        for (int column = 0; column < part.ground.width; ++column) {
            blend(part.ground.pixel(column, row), cover[column], kWhite);
        }
    }
}

/// The numbers stand at the left side of the disc, apart by the offset: without it they had no ghost. One
/// whose middle lies below the picture is left out.
void draw_numbers(const Halves& halves, const Disc& disc, const std::vector<LetterMask>& numbers) {
    constexpr int kGap = 12;  // pixels
    for (int n = 0; n < kBandNumbers; ++n) {
        const LetterMask& mask = numbers[static_cast<std::size_t>(n)];
        const int row =
            round_half_up((9 - n) * bands_height(halves.height()) / 10.0 + 0.025 * halves.height() + 24.0);
        if (row + mask.height / 2 < 0) {
            continue;
        }
        const int column = static_cast<int>(disc.x) - disc.half_width(row, row + mask.height) + kGap;
        draw_white(halves.left, mask, column, row);
        draw_white(halves.right, mask, column + halves.offset(), row);
    }
}

/// "1/30" over a line, in the right half moved by that part of the width.
void draw_offset(const Halves& halves, const Disc& disc, const LetterMask& label) {
    const int line_width = std::max(1, halves.width() / 640);
    const int bottom = round_half_up(0.2 * halves.height());
    const int top = round_half_up(0.4 * halves.height());
    const int left_column = static_cast<int>(disc.x) - halves.offset() / 2;
    for (const bool is_left : {true, false}) {
        const Picture half = is_left ? halves.left : halves.right;
        const int column = left_column + (is_left ? 0 : halves.offset());
        fill(clipped(half, column - line_width / 2, bottom, line_width, top - bottom), kWhite);
        draw_white(half, label, column - label.width / 2, top);
    }
}

/// Takes out of each view the ghost of the other one that the band stands for.
void reduce_ghosts(const Halves& halves, const Disc& disc) {
    for (int y = 0; y < halves.height(); ++y) {
        const int number = band_of(y, halves.height());
        const int band = number >= 0 && number < 10 ? number : 0;
        for (int x = 0; x < halves.width(); ++x) {
            if (disc.place(x, y) >= 1.0 - kRim) {
                continue;
            }
            for (int c = 0; c < kPixelBytes; ++c) {
                std::uint8_t& left = halves.left.pixel(x, y)[c];
                std::uint8_t& right = halves.right.pixel(x, y)[c];
                const int left_ghost = ghost_of(right, band);
                const int right_ghost = ghost_of(left, band);
                left = static_cast<std::uint8_t>(std::max(0, left - left_ghost));
                right = static_cast<std::uint8_t>(std::max(0, right - right_ghost));
            }
        }
    }
}

/// Level marks at both sides, outside of the disc, for projectors that are turned or of different size.
void draw_ticks(Picture half, const Disc& disc) {
    constexpr int kDistance = 96;  // pixels
    const int edge = round_half_up(0.05 * half.height);
    const int length = 2 * round_half_up(0.04 * half.height);
    const int steps = (half.height / 2 - edge) / kDistance;
    for (int step = -steps; step <= steps; ++step) {
        const int y = half.height / 2 + step * kDistance;
        for (const int first : {edge, half.width - edge - length}) {
            for (int x = std::max(0, first); x < std::min(first + length, half.width); ++x) {
                if (disc.place(x, y) > 1.0 + kRim) {
                    fill(half.part(x, y, 1, 1), kWhite);
                }
            }
        }
    }
}

void mirror(Picture half) {
    for (int y = 0; y < half.height; ++y) {
        for (int x = 0; x < half.width / 2; ++x) {
            std::swap_ranges(half.pixel(x, y), half.pixel(x + 1, y), half.pixel(half.width - 1 - x, y));
        }
    }
}

std::vector<std::string> number_labels() {
    std::vector<std::string> labels;
    for (int n = 0; n < kBandNumbers; ++n) {
        labels.push_back(format_text("%d", n));
    }
    return labels;
}

void draw_alignment(const Halves& halves, const std::vector<LetterMask>& numbers, const LetterMask& offset,
                    bool mirrors_right) {
    const Disc disc = disc_of(halves);
    for (const Picture& half : {halves.left, halves.right}) {
        frame_in_red(half);
        draw_disc(half, disc);
    }
    draw_numbers(halves, disc, numbers);
    draw_offset(halves, disc, offset);
    reduce_ghosts(halves, disc);
    draw_ticks(halves.left, disc);
    draw_ticks(halves.right, disc);
    if (mirrors_right) {
        mirror(halves.right);
    }
}

}  // namespace

Result<void> write_alignment_image(const AlignmentOptions& options, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    const int width = options.width;
    const int height = options.height;
    if (width <= 0 || height <= 0) {
        Failure failure = Failure::of_pair(messages.text<Msg::main_alignment_image_needs_size>());
        failure.note.severity = Severity::warning;
        failure.note.waits = true;
        return failure;
    }
    const std::string file = join_path(options.folder, "zemora_alignment.tif");
    notes.say<Msg::main_alignment_image_will_be_written>(printable(file));
    notes.wait(Severity::information);
    const auto numbers = label_masks(number_labels(), kNumberFont, messages);
    if (!numbers) {
        return numbers.failure();
    }
    const auto offset = label_masks({format_text("1/%d", kOffsetPart)}, kOffsetFont, messages);
    if (!offset) {
        return offset.failure();
    }
    constexpr int kWidest = 1 << 20;  // two of it can be counted
    const auto bitmap = test_bitmap(width <= kWidest ? 2 * width : 0, height,
                                    "14627: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (GHOSTBUST)\n");
    if (!bitmap) {
        return bitmap.failure();
    }
    const Picture both = bitmap->picture();
    draw_alignment({both.part(0, 0, width, height), both.part(width, 0, width, height)}, *numbers,
                   offset->front(), options.mirrors_right);
    return store_test_image(*bitmap, file, messages);
}

}  // namespace zemora
