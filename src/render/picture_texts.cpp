#include "render/picture_texts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "numerics/rounding.h"
#include "render/text_drawing.h"

namespace zemora {

namespace {

constexpr double kLargestFont = 4000.0;  // pixels
constexpr int kRoomyFrame = 50;  // pixels; room beside a text in a high frame, and at the canvas' sides
constexpr int kThinFrame = 32;   // pixels; a frame below it has no room for a smaller text
constexpr const char* kProgramName = "Zemora";

/// Where a text stands in a frame, with the font that fits there.
struct FramePlace {
    int row = 0;
    int font_px = 0;
};

std::optional<FramePlace> caption_row(int frame_bottom, int font_px) {
    if (frame_bottom >= font_px + kRoomyFrame) {
        return FramePlace{(frame_bottom - font_px) / 2, font_px};
    }
    if (2 * frame_bottom < 3 * font_px) {
        if (frame_bottom < kThinFrame) {
            return std::nullopt;
        }
        font_px = 2 * frame_bottom / 3;
    }
    return FramePlace{2 * (frame_bottom - font_px) / 3, font_px};
}

std::optional<FramePlace> copyright_row(int frame_top, int canvas_height, int font_px) {
    if (frame_top >= font_px + kRoomyFrame) {
        return FramePlace{canvas_height - font_px - kRoomyFrame, font_px};
    }
    if (2 * frame_top < 3 * font_px) {
        if (frame_top < kThinFrame) {
            return std::nullopt;
        }
        font_px = 2 * frame_top / 3;
    }
    return FramePlace{canvas_height - 5 * frame_top / 6, font_px};
}

/// Brightness in thousandths.
int brightness(Colour colour) {
    return 299 * colour.red + 587 * colour.green + 114 * colour.blue;
}

/// A shade of the frame colour that is far enough from it.
Colour text_colour(Colour frame) {
    const bool is_light = brightness(frame) > 128 * 1000;
    const auto channel = [is_light](int level) {
        return static_cast<std::uint8_t>(is_light ? std::max(level, 128) - 128 : std::min(level, 127) + 128);
    };
    return {channel(frame.blue), channel(frame.green), channel(frame.red)};
}

/// A cell of a canvas and what decides the size of its texts.
struct TextCell {
    Picture picture;
    const FrameSettings& frame;
    int picture_height;
    Colour colour;  ///< Of the letters.
};

void draw_captions(const TextCell& cell, const TextSpec& caption, std::span<const CaptionPlace> captions,
                   Notes& notes) {
    const auto place = caption_row(cell.frame.bottom, caption.font_pixels(cell.picture_height));
    if (!caption || !place) {
        return;
    }
    const TextFont font{caption.font_path, place->font_px, caption.style};
    for (const CaptionPlace& at : captions) {
        if (!draw_text(cell.picture, caption.text, font,
                       {place->row, at.middle_column, TextAlign::centre, at.is_mirrored}, cell.colour,
                       notes)) {
            return;
        }
    }
}

void draw_copyright(const TextCell& cell, const TextSpec& copyright, Notes& notes) {
    const Picture& picture = cell.picture;
    const auto place =
        copyright_row(cell.frame.top, picture.height, copyright.font_pixels(cell.picture_height));
    if (!copyright || !place) {
        return;
    }
    const TextFont font{copyright.font_path, place->font_px, copyright.style};
    if (draw_text(picture, copyright.text, font, {place->row, picture.width - kRoomyFrame, TextAlign::right},
                  cell.colour, notes)) {
        draw_text(picture, kProgramName, font, {place->row, kRoomyFrame, TextAlign::left}, cell.colour,
                  notes);
    }
}

/// Strengths of the tint are counted in twentieths: 8 in the box, 8 to 1 in the fringe outwards.
constexpr int kTintSteps = 20;
constexpr int kFringe = 8;  // pixels
using TintTable = std::array<std::uint8_t, 256>;
using TintTables = std::array<TintTable, kFringe + 1>;  ///< By strength.

/// Levels moved towards black below white letters, towards white below black ones.
TintTables tint_tables(bool has_white_letters) {
    TintTables tables;
    for (int strength = 0; strength <= kFringe; ++strength) {
        const int added = has_white_letters ? 0 : 255 * strength;
        for (int level = 0; level < 256; ++level) {
            const int twentieths = level * (kTintSteps - strength) + added;
            tables[static_cast<std::size_t>(strength)][static_cast<std::size_t>(level)] =
                static_cast<std::uint8_t>((2 * twentieths + kTintSteps) / (2 * kTintSteps));
        }
    }
    return tables;
}

/// A box in a picture: first column and row, size.
struct TextBox {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// Pixels from `at` to the nearest of `extent` pixels from `first` on; 0 inside.
int distance_to(int at, int first, int extent) {
    return std::max({0, first - at, at - (first + extent - 1)});
}

int tint_strength(const TextBox& box, int x, int y) {
    const int dx = distance_to(x, box.x, box.width);
    const int dy = distance_to(y, box.y, box.height);
    if (dx == 0 && dy == 0) {
        return kFringe;
    }
    return std::max(0, kFringe + 1 - round_half_up(std::hypot(dx, dy)));
}

void tint(Picture picture, const TextBox& box, const TintTables& tables) {
    const int top = std::min(picture.height, box.y + box.height + kFringe);
    const int right = std::min(picture.width, box.x + box.width + kFringe);
    for (int y = std::max(0, box.y - kFringe); y < top; ++y) {
        for (int x = std::max(0, box.x - kFringe); x < right; ++x) {
            const TintTable& table = tables[static_cast<std::size_t>(tint_strength(box, x, y))];
            std::uint8_t* const pixel = picture.pixel(x, y);
            for (int c = 0; c < kPixelBytes; ++c) {
                pixel[c] = table[pixel[c]];
            }
        }
    }
}

/// Whether the corners of the box are dark enough for white letters.
bool takes_white_letters(ConstPicture view, const TextBox& box) {
    constexpr int kLight = 192;
    constexpr int kCorners = 4;
    int sum = 0;
    for (const int x : {box.x, box.x + box.width - 1}) {
        for (const int y : {box.y, box.y + box.height - 1}) {
            const std::uint8_t* const pixel = view.pixel(x, y);
            sum += brightness({pixel[0], pixel[1], pixel[2]});
        }
    }
    return sum < kLight * 1000 * kCorners;
}

void draw_letters(Picture ground, const LetterMask& mask, bool is_white) {
    for (int y = 0; y < ground.height; ++y) {
        for (int x = 0; x < ground.width; ++x) {
            const int cover = mask.row(y)[x];
            std::uint8_t* const pixel = ground.pixel(x, y);
            for (int c = 0; c < kPixelBytes; ++c) {
                const int level = is_white ? ((cover * 255) >> 8) + ((pixel[c] * (255 - cover)) >> 8)
                                           : (pixel[c] * (255 - cover)) >> 8;
                pixel[c] = static_cast<std::uint8_t>(level);
            }
        }
    }
}

}  // namespace

int TextSpec::font_pixels(int picture_height) const {
    const double pixels = size > 0.0F ? static_cast<double>(picture_height) / size
                                      : -std::floor(static_cast<double>(size) + 0.5);
    return pixels >= 1.0 ? static_cast<int>(std::min(pixels, kLargestFont)) : 1;
}

void draw_cell_texts(const PictureTexts& texts, const FrameSettings& frame, int picture_height, Picture cell,
                     std::span<const CaptionPlace> captions, Notes& notes) {
    const TextCell place{cell, frame, picture_height, text_colour(frame.colour)};
    draw_captions(place, texts.caption, captions, notes);
    draw_copyright(place, texts.copyright, notes);
}

void draw_image_text(const WorkingViews& views, const TextSpec& spec, int row_shift, int column_shift,
                     bool has_ground, Notes& notes) {
    const Picture& left = views.left;
    if (!spec || left.width <= 0 || left.height <= 0) {
        return;
    }
    const TextFont font{spec.font_path, spec.font_pixels(left.height), spec.style};
    const std::optional<LetterMask> mask = told_mask(spec.text, font, left.width, notes);
    if (!mask || mask->width == 0) {
        return;
    }
    constexpr int kLeastMargin = 8;  // pixels
    const int margin = std::max(mask->height, kLeastMargin);
    const int column = column_shift + left.width - mask->text_width - margin;
    const Picture ground = text_ground(left, *mask, row_shift + margin, column, spec.text, notes);
    if (ground.width <= 0 || ground.height <= 0) {
        return;
    }
    const TextBox box{std::max(0, column), std::max(0, row_shift + margin), ground.width, ground.height};
    const bool is_white = takes_white_letters(left, box);
    const TintTables tables = tint_tables(is_white);
    for (const Picture& view : {left, views.right}) {
        if (has_ground) {
            tint(view, box, tables);
        }
        draw_letters(view.part(box.x, box.y, box.width, box.height), *mask, is_white);
    }
}

}  // namespace zemora
