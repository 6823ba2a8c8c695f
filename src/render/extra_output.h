#pragma once
/// The stereo formats beside plain side by side: squeezed, above-below, interlaced, tiled, multi-picture.

#include <string>

#include "render/output_writer.h"

namespace zemora {

/// Values of `ExtraOutput`; videos use the same canvases.
enum class ExtraFormat {
    none = 0,
    squeezed_side_by_side = 1,  ///< lrq
    above_below = 2,            ///< ab
    squeezed_above_below = 3,   ///< abq
    interlaced = 4,             ///< oe
    multi_picture = 5,          ///< .mpo
    left_right_left = 6,        ///< lrl
    left_right_right_left = 7,  ///< lrrl
};

/// Whether products of that format have a form with 16 bits per channel.
[[nodiscard]] bool has_deep_form(ExtraFormat format);

/// The frame behind a product of that format.
[[nodiscard]] FrameSettings frame_behind_extra(const Finished& pair, const FrameSettings& frame,
                                               ExtraFormat format);

/// The finished canvas of a format with one picture, with frames and texts; empty for `none` and
/// `multi_picture`, whose two pictures are those of `compose_view`. Fails without memory.
[[nodiscard]] Result<Bitmap> compose_extra(const Finished& pair, const FrameSettings& frame,
                                           ExtraFormat format, Notes& notes);

/// How the extra format is stored.
struct ExtraOptions {
    ExtraFormat format = ExtraFormat::none;
    SaveOptions save;
    // Of multi-picture files.
    bool hands_exif_on = false;      ///< The Exif segment of a source is taken over.
    bool keeps_orientation = false;  ///< The pictures lie as their sources do.
    std::string copyright;
};

/// Writes the format; one without a product writes nothing and is no failure. Fails without memory.
[[nodiscard]] Result<StoreResult> write_extra(const Finished& pair, const FrameSettings& frame,
                                              const std::string& file, const SourceFiles& sources,
                                              const DeepViews& deep, const ExtraOptions& options,
                                              Notes& notes);

}  // namespace zemora
