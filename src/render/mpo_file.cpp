#include "render/mpo_file.h"

#include <algorithm>
#include <array>

#include "platform/safe_file.h"

namespace zemora {

namespace {

using Bytes = std::span<const std::uint8_t>;

// Second bytes of the markers of a JPEG file.
enum JpegMarker : std::uint8_t {
    kStuffing = 0x00,
    kFirstRestart = 0xD0,
    kLastRestart = 0xD7,
    kStartOfImage = 0xD8,
    kEndOfImage = 0xD9,
    kStartOfScan = 0xDA,
    kQuantisation = 0xDB,
    kApplication1 = 0xE1,
    kApplication2 = 0xE2,
};
constexpr std::size_t kMarkerSize = 2;

/// Position of the marker behind the coded data that begin at `at`; the end of the file without one.
std::size_t end_of_scan(Bytes jpeg, std::size_t at) {
    for (; at + kMarkerSize <= jpeg.size(); ++at) {
        const std::uint8_t code = jpeg[at + 1];
        const bool is_data = code == kStuffing || (code >= kFirstRestart && code <= kLastRestart);
        if (jpeg[at] == 0xFF && !is_data && code != 0xFF) {
            return at;
        }
    }
    return jpeg.size();
}

/// From the first quantisation table to the end marker: the picture without what describes it.
std::optional<Bytes> picture_of(Bytes jpeg) {
    if (jpeg.size() < kMarkerSize || jpeg[0] != 0xFF || jpeg[1] != kStartOfImage) {
        return std::nullopt;
    }
    std::optional<std::size_t> start;
    for (std::size_t at = kMarkerSize; at + kMarkerSize <= jpeg.size() && jpeg[at] == 0xFF;) {
        const std::uint8_t code = jpeg[at + 1];
        if (code == kEndOfImage) {
            return start ? std::optional(jpeg.subspan(*start, at + kMarkerSize - *start)) : std::nullopt;
        }
        if (code == kQuantisation && !start) {
            start = at;
        }
        if (at + 2 * kMarkerSize > jpeg.size()) {
            break;
        }
        at += kMarkerSize + (std::size_t{jpeg[at + 2]} << 8 | jpeg[at + 3]);
        if (code == kStartOfScan) {
            at = end_of_scan(jpeg, at);
        }
    }
    return std::nullopt;
}

constexpr std::uint32_t kTypeDisparity = 0x00020002;   ///< A view of several for stereo.
constexpr std::uint32_t kRepresentative = 0x20000000;  ///< The picture to show where only one is shown.
constexpr ExifFraction kConvergenceOfBase{0, 1};       ///< Degrees.
constexpr ExifFraction kConvergence{22, 10};
constexpr ExifFraction kBaseline{77, 1000};     ///< Metres.
constexpr std::uint32_t kVersion = 0x30303130;  ///< "0100".
constexpr std::uint32_t kFirstSize = 190;       ///< Bytes of the segments without their markers.
constexpr std::uint32_t kSecondSize = 126;
constexpr std::size_t kSpareOfFirst = 32;
constexpr std::size_t kSpareOfSecond = 30;
constexpr std::uint32_t kHeadSize = 6;  ///< Length and name, before the TIFF block.

void begin_index(TiffBytes& bytes, std::uint32_t size) {
    bytes.number16_high_first(size);
    bytes.text("MPF", 4);
    bytes.header();
}

void add_fractions(TiffBytes& bytes, const ExifFraction& convergence) {
    for (const ExifFraction& fraction : {convergence, kBaseline}) {
        bytes.number32(fraction.numerator);
        bytes.number32(fraction.denominator);
    }
}

/// Where the pictures lie.
struct MpoPlaces {
    std::uint32_t size1 = 0;
    std::uint32_t size2 = 0;
    std::uint32_t offset2 = 0;  ///< From the TIFF header of the index.
};

FileBytes first_index(const MpoPlaces& places) {
    static constexpr std::array kEntries = {TiffEntry{0xB000, TiffType::bytes, 4, kVersion},
                                            TiffEntry{0xB001, TiffType::number32, 1, 2},
                                            TiffEntry{0xB002, TiffType::bytes, 32, 0x32}};
    static constexpr std::array kAttributes = {TiffEntry{0xB101, TiffType::number32, 1, 1},
                                               TiffEntry{0xB204, TiffType::number32, 1, 1},
                                               TiffEntry{0xB205, TiffType::signed_fraction, 1, 0x88},
                                               TiffEntry{0xB206, TiffType::fraction, 1, 0x90}};
    constexpr std::uint32_t kAttributeDirectory = 0x52;
    TiffBytes bytes;
    begin_index(bytes, kFirstSize);
    bytes.directory(kEntries, kAttributeDirectory);
    for (const std::uint32_t word : {kRepresentative | kTypeDisparity, places.size1, 0U, 0U,  //
                                     kTypeDisparity, places.size2, places.offset2, 0U}) {
        bytes.number32(word);
    }
    bytes.directory(kAttributes, 0);
    add_fractions(bytes, kConvergenceOfBase);
    bytes.zeros(kSpareOfFirst);
    return bytes.take();
}

FileBytes second_index() {
    static constexpr std::array kAttributes = {
        TiffEntry{0xB000, TiffType::bytes, 4, kVersion}, TiffEntry{0xB101, TiffType::number32, 1, 2},
        TiffEntry{0xB204, TiffType::number32, 1, 1}, TiffEntry{0xB205, TiffType::signed_fraction, 1, 0x4A},
        TiffEntry{0xB206, TiffType::fraction, 1, 0x52}};
    TiffBytes bytes;
    begin_index(bytes, kSecondSize);
    bytes.directory(kAttributes, 0);
    add_fractions(bytes, kConvergence);
    bytes.zeros(kSpareOfSecond);
    return bytes.take();
}

void add_picture(TiffBytes& file, const FileBytes& exif, const FileBytes& index, Bytes picture) {
    file.number16_high_first(0xFF00 | kStartOfImage);
    file.number16_high_first(0xFF00 | kApplication1);
    file.raw(exif);
    file.number16_high_first(0xFF00 | kApplication2);
    file.raw(index);
    file.raw(picture);
}

}  // namespace

std::optional<FileBytes> join_as_mpo(Bytes left_jpeg, Bytes right_jpeg, const MpoMetadata& metadata,
                                     Notes& notes) {
    const auto left = picture_of(left_jpeg);
    const auto right = picture_of(right_jpeg);
    if (!left || !right) {
        return std::nullopt;
    }
    constexpr std::size_t kMarkers = 3 * kMarkerSize;
    const FileBytes exif = mpo_exif_segment(metadata, notes);
    const std::size_t size1 = kMarkers + exif.size() + kFirstSize + left->size();
    const std::size_t size2 = kMarkers + exif.size() + kSecondSize + right->size();
    const std::size_t index_start = kMarkers + exif.size() + kHeadSize;
    TiffBytes file;
    add_picture(file, exif,
                first_index({static_cast<std::uint32_t>(size1), static_cast<std::uint32_t>(size2),
                             static_cast<std::uint32_t>(size1 - index_start)}),
                *left);
    add_picture(file, exif, second_index(), *right);
    return file.take();
}

}  // namespace zemora
