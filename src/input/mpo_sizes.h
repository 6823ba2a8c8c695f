#pragma once
/// The index of a multi-picture file after its first picture was edited: editors move the second picture and
/// leave the size of the first one.

#include <cstddef>
#include <optional>
#include <string>

namespace zemora {

/// The first picture as the index of a file describes it.
struct FirstPicture {
    std::size_t size = 0;        ///< Bytes by the index.
    std::size_t next_start = 0;  ///< Where the second picture begins.
    std::size_t size_place = 0;  ///< Of the number in the file.
    bool big_endian = false;
};

/// Nothing for a file without an index, or one whose index does not lead to two pictures.
[[nodiscard]] std::optional<FirstPicture> first_picture_of(const std::string& path);

/// Sets the size of the first picture in an edited file, whose index said `before` at first. Padding before
/// the second picture stays counted or not, as it was. Empty, or the reason of a failure; a file without such
/// an index is left as it is.
[[nodiscard]] std::string settle_first_size(const std::string& path,
                                            const std::optional<FirstPicture>& before);

}  // namespace zemora
