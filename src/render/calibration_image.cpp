#include <algorithm>
#include <array>

#include "platform/console.h"
#include "platform/paths.h"
#include "render/canvas.h"
#include "render/test_image_parts.h"
#include "render/test_images.h"

namespace zemora {

namespace {

constexpr int kUnits = 50;      ///< Units in the width of the ramps.
constexpr int kLabelRoom = 48;  ///< Pixels for labels, left of the ramps and above them.
constexpr int kBorder = 2;      ///< Black pixels on each side of the ramps.
constexpr int kFirstColumn = kLabelRoom + kBorder;
constexpr int kSquares = 24;  ///< In a band.
constexpr int kLabelFont = 36;

/// A level along a band: 255 * (base + slope * t), where t runs from about 0 to a half.
struct Ramp {
    double base;
    int slope;
    [[nodiscard]] double level(double t) const { return 255.0 * (base + slope * t); }
};

/// Blue and green (its share of blue) against red, with the colour of the marker squares.
struct Band {
    Ramp cyan;
    Ramp red;
    int square_cyan;
    int square_red;
};

// clang-format off
/// From the bottom.
constexpr std::array<Band, 14> kBands = {{
    {{0.0,   1}, {0.5,   0},   0, 255},
    {{0.0,   1}, {0.0,   0},   0, 255},
    {{0.5,  -1}, {1.0,   0}, 128,   0},
    {{0.75, -1}, {1.0,   0}, 192,   0},
    {{1.0,  -1}, {0.5,   0}, 255,   0},
    {{1.0,  -1}, {0.75,  0}, 255,   0},
    {{1.0,  -1}, {1.0,   0}, 255,   0},
    {{0.5,   0}, {0.0,   1}, 255,   0},
    {{0.0,   0}, {0.0,   1}, 255,   0},
    {{1.0,   0}, {0.5,  -1},   0, 128},
    {{1.0,   0}, {0.75, -1},   0, 192},
    {{0.5,   0}, {1.0,  -1},   0, 255},
    {{0.75,  0}, {1.0,  -1},   0, 255},
    {{1.0,   0}, {1.0,  -1},   0, 255},
}};
// clang-format on

constexpr int kBandUnits = 2;  ///< Height of a band.
constexpr int kHeightUnits = kBandUnits * static_cast<int>(kBands.size());

std::uint8_t channel(double level) {
    return static_cast<std::uint8_t>(std::clamp(level, 0.0, 255.0));
}

/// Colour of that level of cyan, with the user's share of green in it, and of red.
Colour mixed(double cyan, double red, double green_share) {
    return {channel(cyan), channel(cyan * green_share), channel(red)};
}

void draw_ramp(const Band& band, Picture rows, double green_share) {
    for (int x = 0; x < rows.width; ++x) {
        const double t = (x + kUnits) * 0.5 / rows.width;
        fill(rows.part(x, 0, 1, rows.height), mixed(band.cyan.level(t), band.red.level(t), green_share));
    }
}

/// A square in the middle of every second unit of the band's height, `margin` from its edges.
void draw_squares(const Band& band, Picture rows, int unit, int margin, double green_share) {
    const Colour colour = mixed(band.square_cyan, band.square_red, green_share);
    for (int i = 0; i < kSquares; ++i) {
        const int column = 2 * unit - margin + 2 * unit * i;
        fill(clipped(rows, column, margin, unit, unit), colour);
    }
}

void draw_bands(Picture picture, int width, double green_share) {
    const int unit = width / kUnits;
    for (int i = 0; i < static_cast<int>(kBands.size()); ++i) {
        const Band& band = kBands[static_cast<std::size_t>(i)];
        const Picture rows =
            picture.part(kFirstColumn, kBorder + kBandUnits * unit * i, kUnits * unit, kBandUnits * unit);
        draw_ramp(band, rows, green_share);
        draw_squares(band, rows, unit, width / 100, green_share);
    }
}

std::vector<std::string> labels_of(int green_percent) {
    std::vector<std::string> labels = {format_text("%03d%%", green_percent)};
    const int highest = std::max(kSquares, static_cast<int>(kBands.size()));
    for (int i = 1; i <= highest; ++i) {
        labels.push_back(format_text("%d", i));
    }
    return labels;
}

/// Black letters on white round a middle, not beyond the left edge.
void draw_label(Picture picture, const LetterMask& mask, int middle_x, int middle_y) {
    const LabelPart part =
        label_part(picture, mask, std::max(0, middle_x - mask.width / 2), middle_y - mask.height / 2);
    for (int y = 0; y < part.ground.height; ++y) {
        const std::uint8_t* const cover = part.cover(mask, y);
        for (int x = 0; x < part.ground.width; ++x) {
            const auto level = static_cast<std::uint8_t>(255 - cover[x]);
            std::uint8_t* const pixel = part.ground.pixel(x, y);
            std::fill_n(pixel, kPixelBytes, std::min(*pixel, level));
        }
    }
}

/// The share of green and the numbers of the squares above, the numbers of the bands at the left.
void draw_labels(Picture picture, int unit, const std::vector<LetterMask>& masks) {
    const int label_row = picture.height - kLabelRoom;
    fill(picture.part(0, label_row, picture.width, kLabelRoom), kWhite);
    fill(picture.part(0, 0, kLabelRoom, picture.height), kWhite);
    for (int i = 0; i <= kSquares; ++i) {
        draw_label(picture, masks[static_cast<std::size_t>(i)], kFirstColumn + 2 * unit * i,
                   label_row + kLabelRoom / 2);
    }
    for (int band = 0; band < static_cast<int>(kBands.size()); ++band) {
        draw_label(picture, masks[static_cast<std::size_t>(band) + 1], kLabelRoom / 2,
                   kBorder + kBandUnits * unit * band + unit);
    }
}

}  // namespace

Result<void> write_anaglyph_test_image(int width, const std::string& folder, int green_percent, Notes& notes,
                                       const AddProfile& add_profile) {
    const int unit = width / kUnits;
    if (unit < 1) {
        return Failure::of_pair({});
    }
    const MessageCatalogue& messages = notes.messages();
    const std::string file = join_path(folder, format_text("tintrovela_print_%03d.tif", green_percent));
    notes.say<Msg::main_calibration_image_written>(green_percent, printable(file));
    notes.say<Msg::main_calibration_image_print_it>();
    const auto masks = label_masks(labels_of(green_percent), kLabelFont, messages);
    if (!masks) {
        return masks.failure();
    }
    const auto bitmap =
        test_bitmap(kUnits * unit + kFirstColumn + kBorder, kHeightUnits * unit + kFirstColumn + kBorder,
                    "14139: FAILED TO ALLOCATE MEMORY FOR CALIBRATION IMAGE\n");
    if (!bitmap) {
        return bitmap.failure();
    }
    const Picture picture = bitmap->picture();
    draw_bands(picture, width, green_percent / 100.0);
    draw_labels(picture, unit, *masks);
    if (auto stored = store_test_image(*bitmap, file, messages); !stored) {
        return stored;
    }
    add_profile(file);
    return {};
}

}  // namespace zemora
