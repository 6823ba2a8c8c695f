#pragma once
/// Multi-picture files (CIPA DC-007): finds the two JPEG pictures in them.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "config/notes.h"

namespace zemora {

/// Whether the suffix is ".mpo" in any case.
[[nodiscard]] bool is_mpo_name(const std::string& path);

/// What the index of a multi-picture file says of its first two pictures.
struct MpoIndex {
    bool found = false;       ///< The index is there, as far as it is read.
    std::size_t origin = 0;   ///< Bytes before the byte order mark; all offsets count from here.
    bool known_order = true;  ///< False: neither byte order mark; read as little endian.
    bool big_endian = false;
    std::array<std::uint8_t, 4> order_mark{};
    std::uint32_t first_directory = 8;  ///< Offset of the directory; 8 in a regular file.
    std::uint32_t size1 = 0;            ///< Bytes of the first picture.
    std::size_t size_place = 0;         ///< Of that number in the file; 0 where nothing was read.
    std::uint32_t offset1 = 0;          ///< Of the first picture: always 0 in a sound file.
    std::uint32_t size2 = 0;            ///< Bytes of the second.
    std::uint32_t offset2 = 0;          ///< Of the second picture.
};

/// Reads the index in one pass; never beyond the end of `content`.
[[nodiscard]] MpoIndex read_mpo_index(std::span<const std::uint8_t> content);

/// The two pictures of a file, as parts of its content.
struct MpoPictures {
    std::span<const std::uint8_t> left;
    std::span<const std::uint8_t> right;
};

/// The first two pictures; what is irregular is reported. Nothing, with a message, when the second is not
/// found.
[[nodiscard]] std::optional<MpoPictures> cut_mpo(std::span<const std::uint8_t> content, Notes& notes);

/// The files that the two pictures of `stereo` are cut to: in the folders l and r beside its folder s
/// with `has_view_folders`, else in the folders l and r of its own folder.
struct MpoCutNames {
    std::string left;
    std::string right;
};
[[nodiscard]] MpoCutNames mpo_cut_names(const std::string& stereo, bool has_view_folders);

/// Leaves both pictures as files of those names. A file that is there already and differs stays as it is,
/// and a line says so.
void keep_cut_pictures(const MpoPictures& pictures, const MpoCutNames& names, Notes& notes);

}  // namespace zemora
