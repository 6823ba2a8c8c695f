#pragma once
/// Multi-picture files of two views (CIPA DC-007): two JPEG pictures with the index that 3D displays read.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "config/voice.h"

namespace zemora {

using FileBytes = std::vector<std::uint8_t>;

/// What goes into the Exif segment of both pictures.
struct MpoMetadata {
    int width = 0;  ///< Of a picture, pixels.
    int height = 0;
    std::string copyright;  ///< Cut at 20 bytes; empty leaves the source's.
    /// The source picture, whose Exif segment is taken over; empty for the built-in one.
    std::string source;
    std::string capture_time;  ///< "YYYY:MM:DD hh:mm:ss" for the built-in segment; empty for its default.
};

/// Puts two JPEG files together; nothing when one of them is no JPEG with tables and an end.
[[nodiscard]] std::optional<FileBytes> join_as_mpo(std::span<const std::uint8_t> left_jpeg,
                                                   std::span<const std::uint8_t> right_jpeg,
                                                   const MpoMetadata& metadata, const Voice& voice);

}  // namespace zemora
