#pragma once
/// Multi-picture files of two views (CIPA DC-007): two JPEG pictures with the index that 3D displays read.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "config/voice.h"
#include "render/mpo_exif.h"

namespace zemora {

/// Puts two JPEG files together; nothing when one of them is no JPEG with tables and an end.
[[nodiscard]] std::optional<FileBytes> join_as_mpo(std::span<const std::uint8_t> left_jpeg,
                                                   std::span<const std::uint8_t> right_jpeg,
                                                   const MpoMetadata& metadata, const Voice& voice);

/// Makes the index of a file of ours right again after its first picture was edited: editors move the second
/// one and leave the size of the first. Empty, or the reason of a failure; the file is left as it is when its
/// index does not lead to the second picture.
[[nodiscard]] std::string settle_first_size(const std::string& path);

}  // namespace zemora
