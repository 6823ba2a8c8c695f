#pragma once
/// The Exif segment of the pictures in a multi-picture file: that of the source, changed, or a built-in one.

#include <optional>
#include <string>

#include "config/notes.h"
#include "input/exif_time.h"
#include "render/tiff_bytes.h"

namespace zemora {

/// What goes into the Exif segment of both pictures.
struct MpoMetadata {
    int width = 0;  ///< Of a picture, pixels.
    int height = 0;
    bool keeps_orientation = false;  ///< The pictures lie as the source does; else they are upright.
    std::string copyright;           ///< Cut at 20 bytes; empty leaves the source's.
    /// The source picture, whose Exif segment is taken over; empty for the built-in one.
    std::string source;
    // For the built-in segment; without them it has its defaults.
    std::string capture_time;  ///< "YYYY:MM:DD hh:mm:ss".
    std::optional<ExifFraction> exposure_time;
    std::optional<ExifFraction> f_number;
};

/// The segment without its marker: its length, "Exif" and the TIFF block. A source segment that is not there
/// or cannot be changed is reported, and the built-in one stands for it.
[[nodiscard]] FileBytes mpo_exif_segment(const MpoMetadata& metadata, Notes& notes);

/// A source segment (without its marker) for new pictures: maker, size, orientation and copyright are set, a
/// thumbnail is cut off. Nothing when it is not of that kind or its data do not lie inside of it.
[[nodiscard]] std::optional<FileBytes> changed_exif_segment(FileBytes segment, const MpoMetadata& metadata,
                                                            Notes& notes);

}  // namespace zemora
