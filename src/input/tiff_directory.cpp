#include "input/tiff_directory.h"

#include <algorithm>
#include <array>
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
constexpr std::uint64_t kBits = 258;
constexpr std::uint64_t kDeepBits = 16;
constexpr std::uint64_t kPhotometric = 262;
constexpr std::uint64_t kWhiteIsZero = 0;
constexpr std::uint64_t kBlackIsZero = 1;
constexpr std::uint64_t kInks = 5;
constexpr std::uint64_t kChannels = 277;
constexpr std::uint64_t kPlanarConfiguration = 284;
constexpr std::uint64_t kPlanesApart = 2;
constexpr std::uint64_t kTileWidth = 322;
constexpr std::uint64_t kSampleFormat = 339;
constexpr std::uint64_t kPlainNumbers = 1;  // without sign

constexpr std::uint64_t kShort = 3;  // type of a number of 16 bits

/// The first of an entry's numbers of 16 bits: in the entry where all fit into it, else where it leads.
std::uint64_t first_short(const TiffNumbers& bytes, const TiffEntryPlace& entry) {
    const std::size_t offset_size =
        bytes.number(2, 2) == kForms[0].version ? kForms[0].offset_size : kForms[1].offset_size;
    const std::uint64_t count_place = entry.place + 4;
    const bool fits = bytes.number(count_place, offset_size) <= offset_size / 2;
    return fits ? entry.value : bytes.number(bytes.number(count_place + offset_size, offset_size), 2);
}

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
    std::uint64_t channels = 1;
    std::uint64_t photometric = kInks + 1;  // unknown
    std::uint64_t format = kPlainNumbers;
    for_each_tiff_entry(file, [&](const TiffNumbers& bytes, const TiffEntryPlace& entry) {
        switch (entry.tag) {
            case kBits: layout.bits = first_short(bytes, entry); break;
            case kPhotometric: photometric = entry.value; break;
            case kChannels: channels = entry.value; break;
            case kPlanarConfiguration: layout.planes_apart = entry.value == kPlanesApart; break;
            case kTileWidth: layout.tiled = true; break;
            case kSampleFormat: format = first_short(bytes, entry); break;
            default: break;
        }
    });
    layout.inks = photometric == kInks;
    layout.white_is_zero = photometric == kWhiteIsZero;
    layout.deep_grey_alpha = photometric <= kBlackIsZero && layout.bits == kDeepBits && channels == 2;
    constexpr std::uint64_t kMostChannels = 4;
    constexpr std::array<std::uint64_t, 4> kUsualBits{1, 4, 8, kDeepBits};
    layout.usual = format == kPlainNumbers && channels <= kMostChannels &&
                   std::find(kUsualBits.begin(), kUsualBits.end(), layout.bits) != kUsualBits.end() &&
                   !(layout.tiled && (layout.planes_apart || layout.inks));
    return layout;
}

}  // namespace zemora
