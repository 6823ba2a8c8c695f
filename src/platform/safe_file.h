#pragma once
/// Writing files so that nothing half-written ever stands under a final name.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zemora {

/// Writes `bytes` to a nameless or hidden file in the folder of `path`, checks every write, closes
/// and renames to `path`. Returns an empty text, or the system's reason of the failure; then
/// nothing is left behind and an older file of that name is untouched. A replaced file hands its
/// permissions on. The first write into a folder removes the hidden files that killed runs have left there.
[[nodiscard]] std::string write_file_whole(const std::string& path, std::span<const std::uint8_t> bytes);

/// The whole contents of a plain file; nothing with the system's reason in `reason` when it is no
/// plain file or cannot be read.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> read_file_whole(const std::string& path,
                                                                       std::string& reason);

}  // namespace zemora
