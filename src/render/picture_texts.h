#pragma once
/// The three texts of an output: in the picture, below it, above it.

#include <span>
#include <string>

#include "config/notes.h"
#include "numerics/bitmap.h"
#include "render/frame_settings.h"

namespace zemora {

/// A text with its font; nothing is drawn when it is empty.
struct TextSpec {
    std::string text;    ///< UTF-8.
    float size = 25.0F;  ///< Positive: picture height / size is the font size in pixels; negative: its
                         ///< magnitude is.
    std::string font_path;
    int style = 0;  ///< 0 plain, 1 italic, 10 bold, 11 bold italic.
    [[nodiscard]] explicit operator bool() const { return !text.empty(); }
    /// Font size in pixels for a picture of that height, 1 to 4000.
    [[nodiscard]] int font_pixels(int picture_height) const;
};

/// The texts of the pair at work, settled before its pictures are written.
struct PictureTexts {
    TextSpec image_text;
    TextSpec caption;
    TextSpec copyright;
};

/// What the fields of a text stand for.
struct TextSource {
    std::string file;       ///< The picture that the text is about; absolute.
    std::string headline;   ///< Its IPTC headline; empty without one.
    std::string date_text;  ///< The time stamp, with the character in front of it.
    int index = 0;          ///< Of the pair.
};

/// The setting (`ImageText`, `CaptionText` or `ExifCopyright`) with its prefix, fields and font settled.
[[nodiscard]] TextSpec resolve_text(const std::string& setting, const TextSource& source, Notes& notes);

/// Whether a text asks for the IPTC headline, which has to be fetched first.
[[nodiscard]] bool wants_headline(const std::string& setting);

/// One picture of a canvas cell, for its caption.
struct CaptionPlace {
    int middle_column = 0;  ///< Of the picture's place without `FrameFloating`, in the cell: a caption lies
                            ///< in the plane of the frame.
    bool is_mirrored = false;
};

/// Draws caption and copyright into a cell of a canvas: a picture, or a row of pictures of `picture_height`
/// rows, with the frame round it. Called between the frame and the pictures.
void draw_cell_texts(const PictureTexts& texts, const FrameSettings& frame, int picture_height, Picture cell,
                     std::span<const CaptionPlace> captions, Notes& notes);

/// Draws the text into both views, in the screen plane, over a darker or lighter ground where it
/// `has_ground`. The shifts move its place up and to the right.
void draw_image_text(const WorkingViews& views, const TextSpec& spec, int row_shift, int column_shift,
                     bool has_ground, Notes& notes);

}  // namespace zemora
