#include "input/tiff_profile.h"

#include "input/tiff_directory.h"

namespace zemora {

namespace {

constexpr std::uint64_t kProfileTag = 34675;
constexpr std::uint64_t kUnknownTag = 34674;  // beside it, so that the entries stay in order

}  // namespace

void hide_tiff_profile(std::span<std::uint8_t> file) {
    for_each_tiff_entry(file, [file](const TiffNumbers& bytes, const TiffEntryPlace& entry) {
        if (entry.tag == kProfileTag) {
            constexpr auto kHigh = static_cast<std::uint8_t>(kUnknownTag >> 8U);
            constexpr auto kLow = static_cast<std::uint8_t>(kUnknownTag);
            file[entry.place + (bytes.high_first ? 0 : 1)] = kHigh;
            file[entry.place + (bytes.high_first ? 1 : 0)] = kLow;
        }
    });
}

}  // namespace zemora
