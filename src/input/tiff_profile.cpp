#include "input/tiff_profile.h"

#include <cstddef>

namespace zemora {

namespace {

constexpr std::uint64_t kProfileTag = 34675;
constexpr std::uint64_t kUnknownTag = 34674;  // beside it, so that the entries stay in order

/// Numbers of a file in its own byte order; 0 outside the file.
struct TiffBytes {
    std::span<std::uint8_t> file;
    bool high_first;

    [[nodiscard]] bool holds(std::uint64_t place, std::size_t size) const {
        return size <= file.size() && place <= file.size() - size;
    }
    [[nodiscard]] std::uint64_t number(std::uint64_t place, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size && holds(place, size); ++i) {
            value = value << 8U | file[place + (high_first ? i : size - 1 - i)];
        }
        return value;
    }
    void put_short(std::uint64_t place, std::uint64_t value) {
        file[place + (high_first ? 0 : 1)] = static_cast<std::uint8_t>(value >> 8U);
        file[place + (high_first ? 1 : 0)] = static_cast<std::uint8_t>(value);
    }
};

/// Sizes in bytes of the two forms of the file.
struct Form {
    std::uint64_t version;
    std::uint64_t first_directory_place;
    std::size_t offset_size;
    std::size_t count_size;
    std::size_t entry_size;
};
constexpr Form kForms[] = {{42, 4, 4, 2, 12}, {43, 8, 8, 8, 20}};

}  // namespace

void hide_tiff_profile(std::span<std::uint8_t> file) {
    if (file.size() < 8 || file[0] != file[1] || (file[0] != 'I' && file[0] != 'M')) {
        return;
    }
    TiffBytes bytes{file, file[0] == 'M'};
    for (const Form& form : kForms) {
        if (bytes.number(2, 2) != form.version) {
            continue;
        }
        const std::uint64_t directory = bytes.number(form.first_directory_place, form.offset_size);
        const std::uint64_t count = bytes.number(directory, form.count_size);
        std::uint64_t entry = directory + form.count_size;
        for (std::uint64_t i = 0; i < count && bytes.holds(entry, form.entry_size);
             ++i, entry += form.entry_size) {
            if (bytes.number(entry, 2) == kProfileTag) {
                bytes.put_short(entry, kUnknownTag);
            }
        }
    }
}

}  // namespace zemora
