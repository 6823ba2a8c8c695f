#pragma once
/// Multi-picture files of two views (CIPA DC-007): two JPEG pictures with the index that 3D displays read.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "config/notes.h"
#include "render/mpo_exif.h"

namespace zemora {

/// Puts two JPEG files together; nothing when one of them is no JPEG with tables and an end.
[[nodiscard]] std::optional<FileBytes> join_as_mpo(std::span<const std::uint8_t> left_jpeg,
                                                   std::span<const std::uint8_t> right_jpeg,
                                                   const MpoMetadata& metadata, Notes& notes);

}  // namespace zemora
