#include "input/tiff_directory.h"

#include <cstddef>

namespace zemora {

namespace {

/// Sizes in bytes of the two forms of the file.
struct Form {
    std::uint64_t version;
    std::uint64_t first_directory_place;
    std::size_t offset_size;
    std::size_t count_size;
    std::size_t entry_size;
};
constexpr Form kForms[] = {{42, 4, 4, 2, 12}, {43, 8, 8, 8, 20}};

// Tags and their values.
constexpr std::uint64_t kPhotometric = 262;
constexpr std::uint64_t kInks = 5;
constexpr std::uint64_t kPlanarConfiguration = 284;
constexpr std::uint64_t kPlanesApart = 2;
constexpr std::uint64_t kTileWidth = 322;

constexpr std::uint64_t kShort = 3;  // type of a number of 16 bits

}  // namespace

void for_each_tiff_entry(
    std::span<const std::uint8_t> file,
    const std::function<void(const TiffNumbers& bytes, const TiffEntryPlace& entry)>& look) {
    if (file.size() < 8 || file[0] != file[1] || (file[0] != 'I' && file[0] != 'M')) {
        return;
    }
    const TiffNumbers bytes{file, file[0] == 'M'};
    for (const Form& form : kForms) {
        if (bytes.number(2, 2) != form.version) {
            continue;
        }
        const std::uint64_t directory = bytes.number(form.first_directory_place, form.offset_size);
        const std::uint64_t count = bytes.number(directory, form.count_size);
        std::uint64_t entry = directory + form.count_size;
        for (std::uint64_t i = 0; i < count && bytes.holds(entry, form.entry_size);
             ++i, entry += form.entry_size) {
            const std::size_t size = bytes.number(entry + 2, 2) == kShort ? 2 : 4;
            const std::uint64_t value_place = entry + form.entry_size - form.offset_size;
            look(bytes, {bytes.number(entry, 2), entry, bytes.number(value_place, size)});
        }
    }
}

TiffLayout tiff_layout(std::span<const std::uint8_t> file) {
    TiffLayout layout;
    for_each_tiff_entry(file, [&](const TiffNumbers&, const TiffEntryPlace& entry) {
        layout.tiled = layout.tiled || entry.tag == kTileWidth;
        layout.planes_apart =
            layout.planes_apart || (entry.tag == kPlanarConfiguration && entry.value == kPlanesApart);
        layout.inks = layout.inks || (entry.tag == kPhotometric && entry.value == kInks);
    });
    return layout;
}

}  // namespace zemora
