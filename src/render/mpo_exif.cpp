#include "render/mpo_exif.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string_view>

#include "platform/safe_file.h"

namespace zemora {

namespace {

constexpr std::string_view kMaker = "Zemora";
constexpr std::string_view kExifName("Exif\0\0", 6);
constexpr std::string_view kLittleEndian("II*\0", 4);
constexpr std::size_t kLengthSize = 2;
constexpr std::size_t kTiffStart = 8;  ///< Behind the length and the name.
constexpr std::size_t kLargestSegment = 65535;
constexpr std::size_t kCopyrightSize = 20;  ///< Bytes.

enum ExifTag : std::uint16_t {
    kTagMake = 0x010F,
    kTagOrientation = 0x0112,
    kTagCopyright = 0x8298,
    kTagExposureTime = 0x829A,
    kTagFNumber = 0x829D,
    kTagExifDirectory = 0x8769,
    kTagGpsDirectory = 0x8825,
    kTagTimeOfTaking = 0x9003,
    kTagWidth = 0xA002,
    kTagHeight = 0xA003,
    kTagInteropDirectory = 0xA005,
};

/// The fraction in numbers of 16 bits; `standard` where there is none that is close.
ExifFraction short_fraction(const std::optional<ExifFraction>& fraction, const ExifFraction& standard) {
    constexpr std::uint32_t kLargest = 0xFFFF;
    if (!fraction || fraction->numerator == 0 || fraction->denominator == 0) {
        return standard;
    }
    if (std::max(fraction->numerator, fraction->denominator) <= kLargest) {
        return *fraction;
    }
    const std::uint32_t common = std::gcd(fraction->numerator, fraction->denominator);
    const ExifFraction lowest{fraction->numerator / common, fraction->denominator / common};
    const std::uint32_t divisor = (std::max(lowest.numerator, lowest.denominator) - 1) / kLargest + 1;
    const ExifFraction cut{lowest.numerator / divisor, lowest.denominator / divisor};
    return cut.numerator == 0 || cut.denominator == 0 ? standard : cut;
}

void add_fraction(TiffBytes& bytes, const ExifFraction& fraction) {
    bytes.number32(fraction.numerator);
    bytes.number32(fraction.denominator);
}

FileBytes built_in_segment(const MpoMetadata& metadata) {
    constexpr std::uint32_t kSize = 190;
    constexpr std::size_t kMakerSize = 10;
    constexpr std::size_t kTimeSize = 20;
    constexpr ExifFraction kStandardExposure{1000, 1000};
    constexpr ExifFraction kStandardFNumber{100, 100};
    const std::array<TiffEntry, 5> picture = {
        TiffEntry{kTagMake, TiffType::text, 9, 0x4A},
        TiffEntry{kTagCopyright, TiffType::text, kCopyrightSize, 0x54},
        TiffEntry{kTagWidth, TiffType::number32, 1, static_cast<std::uint32_t>(metadata.width)},
        TiffEntry{kTagHeight, TiffType::number32, 1, static_cast<std::uint32_t>(metadata.height)},
        TiffEntry{kTagExifDirectory, TiffType::number32, 1, 0x68}};
    static constexpr std::array<TiffEntry, 3> kTaking = {
        TiffEntry{kTagExposureTime, TiffType::fraction, 1, 0x92},
        TiffEntry{kTagFNumber, TiffType::fraction, 1, 0x9A},
        TiffEntry{kTagTimeOfTaking, TiffType::text, kTimeSize, 0xA2}};
    TiffBytes bytes;
    bytes.number16_high_first(kSize);
    bytes.text(kExifName, kExifName.size());
    bytes.header();
    bytes.directory(picture, 0);
    bytes.text(kMaker, kMakerSize);
    bytes.text(metadata.copyright, kCopyrightSize);
    bytes.directory(kTaking, 0);
    add_fraction(bytes, short_fraction(metadata.exposure_time, kStandardExposure));
    add_fraction(bytes, short_fraction(metadata.f_number, kStandardFNumber));
    bytes.text(metadata.capture_time.empty() ? "1970:01:01 00:00:00" : metadata.capture_time, kTimeSize - 1);
    bytes.zeros(1);
    return bytes.take();
}

/// The segment behind the first APP1 marker of a JPEG file; nothing without one.
std::optional<FileBytes> first_app1(const FileBytes& file) {
    constexpr std::uint8_t kStartOfImage = 0xD8;
    constexpr std::uint8_t kFirstWithLength = 0xC0;
    constexpr std::uint8_t kStartOfScan = 0xDA;
    constexpr std::uint8_t kApplication1 = 0xE1;
    constexpr std::size_t kMarkerSize = 2;
    if (file.size() < kMarkerSize || file[0] != 0xFF || file[1] != kStartOfImage) {
        return std::nullopt;
    }
    for (std::size_t at = kMarkerSize; at + kMarkerSize + kLengthSize <= file.size() && file[at] == 0xFF;) {
        const std::uint8_t code = file[at + 1];
        if (code == 0xFF) {
            ++at;  // a fill byte
            continue;
        }
        const std::size_t start = at + kMarkerSize;
        const std::size_t size = std::size_t{file[start]} << 8 | file[start + 1];
        if (code < kFirstWithLength || code == kStartOfScan || size < kLengthSize ||
            size > file.size() - start) {
            break;
        }
        if (code == kApplication1) {
            const auto first = file.begin() + static_cast<std::ptrdiff_t>(start);
            return FileBytes(first, first + static_cast<std::ptrdiff_t>(size));
        }
        at = start + size;
    }
    return std::nullopt;
}

/// Bytes of one value of a TIFF type; 0 for a type that nobody knows.
std::size_t value_size(std::uint32_t type) {
    static constexpr std::array<std::uint8_t, 14> kSizes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < kSizes.size() ? kSizes[type] : 0;
}

/// A TIFF block, low byte first. Reads 0 and writes nothing outside of it.
class TiffEditor {
public:
    explicit TiffEditor(FileBytes block) : block_(std::move(block)) {}

    [[nodiscard]] std::size_t size() const { return block_.size(); }
    [[nodiscard]] std::uint32_t number16(std::size_t at) const { return number(at, 2); }
    [[nodiscard]] std::uint32_t number32(std::size_t at) const { return number(at, 4); }
    void put16(std::size_t at, std::uint32_t value) { put(at, 2, value); }
    void put32(std::size_t at, std::uint32_t value) { put(at, 4, value); }
    /// The text and zeros behind it, together `size` bytes.
    void put_text(std::size_t at, std::string_view text, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            put(at + i, 1, i < text.size() ? static_cast<std::uint8_t>(text[i]) : 0U);
        }
    }
    void resize(std::size_t size) { block_.resize(size); }
    [[nodiscard]] FileBytes take() { return std::move(block_); }

    [[nodiscard]] std::size_t first_directory() const { return number32(4); }
    /// Where the number of the following directory stands.
    [[nodiscard]] std::size_t next_directory_place(std::size_t directory) const {
        return directory + 2 + kEntrySize * number16(directory);
    }
    /// Position of the entry with the tag; nothing without one.
    [[nodiscard]] std::optional<std::size_t> find(std::size_t directory, ExifTag tag) const {
        for (std::size_t at = directory + 2; at < next_directory_place(directory); at += kEntrySize) {
            if (number16(at) == tag) {
                return at;
            }
        }
        return std::nullopt;
    }
    /// The directory that the entry with the tag points to.
    [[nodiscard]] std::optional<std::size_t> find_directory(std::size_t directory, ExifTag tag) const {
        const auto entry = find(directory, tag);
        return entry ? std::optional<std::size_t>(number32(*entry + kValuePlace)) : std::nullopt;
    }
    void set_value(std::size_t entry, TiffType type, std::uint32_t count, std::uint32_t value) {
        put16(entry + kTypePlace, static_cast<std::uint32_t>(type));
        put32(entry + kCountPlace, count);
        put32(entry + kValuePlace, value);
    }
    /// Whether the directory and all of its values lie below `limit`.
    [[nodiscard]] bool lies_below(std::size_t directory, std::size_t limit) const {
        const std::size_t end = next_directory_place(directory);
        if (directory < TiffBytes::kHeaderSize || end > limit) {
            return false;
        }
        for (std::size_t at = directory + 2; at < end; at += kEntrySize) {
            const std::size_t bytes =
                value_size(number16(at + kTypePlace)) * number32(at + kCountPlace);  // 64 bits hold it
            if (bytes > kInlineSize && number32(at + kValuePlace) + bytes > limit) {
                return false;
            }
        }
        return true;
    }

    static constexpr std::size_t kEntrySize = 12;
    static constexpr std::size_t kTypePlace = 2;  ///< In an entry.
    static constexpr std::size_t kCountPlace = 4;
    static constexpr std::size_t kValuePlace = 8;
    static constexpr std::size_t kInlineSize = 4;  ///< Values up to it stand in the entry.

private:
    [[nodiscard]] bool holds(std::size_t at, std::size_t count) const {
        return at <= block_.size() && count <= block_.size() - at;
    }
    [[nodiscard]] std::uint32_t number(std::size_t at, std::size_t count) const {
        std::uint32_t value = 0;
        for (std::size_t i = count; i-- > 0 && holds(at, count);) {
            value = value << 8 | block_[at + i];
        }
        return value;
    }
    void put(std::size_t at, std::size_t count, std::uint32_t value) {
        for (std::size_t i = 0; i < count && holds(at, count); ++i, value >>= 8) {
            block_[at + i] = static_cast<std::uint8_t>(value);
        }
    }

    FileBytes block_;
};

/// Whether everything that is kept of the block lies below `limit`.
bool is_sound(const TiffEditor& block, std::size_t limit) {
    const std::size_t first = block.first_directory();
    const auto sound = [&](std::optional<std::size_t> directory) {
        return !directory || block.lies_below(*directory, limit);
    };
    if (!block.lies_below(first, limit) || block.next_directory_place(first) + 4 > limit) {
        return false;
    }
    const auto exif = block.find_directory(first, kTagExifDirectory);
    return sound(exif) && sound(block.find_directory(first, kTagGpsDirectory)) &&
           (!exif || sound(block.find_directory(*exif, kTagInteropDirectory)));
}

void set_size(TiffEditor& block, const MpoMetadata& metadata, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    const auto exif = block.find_directory(block.first_directory(), kTagExifDirectory);
    if (!exif) {
        notes.print(messages.either(
            {"w7573: Error: no Exif pointer found\n", "w7573: Error: Kein Exif-Pointer gefunden\n"}));
        return;
    }
    const auto set = [&](ExifTag tag, int value, const char* missing) {
        if (const auto entry = block.find(*exif, tag)) {
            block.set_value(*entry, TiffType::number32, 1, static_cast<std::uint32_t>(value));
        } else {
            notes.print(missing);
        }
    };
    set(kTagWidth, metadata.width,
        messages.either(
            {"w7554: Error: no ExifImageWidth found\n", "w7554: Error: Kein ExifImageWidth gefunden\n"}));
    set(kTagHeight, metadata.height,
        messages.either(
            {"w7570: Error: no ExifImageHeight found\n", "w7570: Error: Kein ExifImageHeight gefunden\n"}));
}

/// Where the thumbnail began there is room for a copyright; without a thumbnail it is made at the end.
void cut_thumbnail(TiffEditor& block, const MpoMetadata& metadata) {
    const std::size_t first = block.first_directory();
    const std::size_t next = block.next_directory_place(first);
    const bool has_thumbnail = block.number32(next) != 0;
    const auto copyright = metadata.copyright.empty() ? std::nullopt : block.find(first, kTagCopyright);
    if (!has_thumbnail && !copyright) {
        return;
    }
    const std::size_t room = has_thumbnail ? block.number32(next) : block.size() + block.size() % 2;
    block.put32(next, 0);
    block.resize(room);
    block.resize(room + kCopyrightSize);
    if (copyright) {
        block.set_value(*copyright, TiffType::text, kCopyrightSize, static_cast<std::uint32_t>(room));
        block.put_text(room, metadata.copyright, kCopyrightSize);
    }
}

void set_maker(TiffEditor& block) {
    const auto entry = block.find(block.first_directory(), kTagMake);
    if (!entry || block.number16(*entry + TiffEditor::kTypePlace) != static_cast<unsigned>(TiffType::text)) {
        return;
    }
    const std::size_t count = block.number32(*entry + TiffEditor::kCountPlace);
    if (count > kMaker.size() && count <= block.size()) {
        block.put_text(block.number32(*entry + TiffEditor::kValuePlace), kMaker, count);
    }
}

bool begins_with(const FileBytes& bytes, std::size_t at, std::string_view text) {
    return bytes.size() >= at + text.size() &&
           std::equal(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

/// The changed segment of the source; nothing, with a report, when there is none that can be used.
std::optional<FileBytes> source_segment(const MpoMetadata& metadata, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    std::string reason;
    const auto file = read_file_whole(metadata.source, reason);
    auto segment = file ? first_app1(*file) : std::nullopt;
    if (!segment) {
        notes.print(messages.either({"w7458: cannot read FFE1 from original file\n",
                                     "w7458: FFE1 der Originaldatei kann nicht gelesen werden\n"}));
        return std::nullopt;
    }
    auto changed = changed_exif_segment(std::move(*segment), metadata, notes);
    if (!changed) {
        notes.print(messages.either({"w7499: cannot read FFE1 from original file\n",
                                     "w7499: FFE1 der Originaldatei kann nicht gelesen werden\n"}));
    }
    return changed;
}

}  // namespace

std::optional<FileBytes> changed_exif_segment(FileBytes segment, const MpoMetadata& metadata, Notes& notes) {
    if (!begins_with(segment, kLengthSize, kExifName) || !begins_with(segment, kTiffStart, kLittleEndian)) {
        return std::nullopt;
    }
    TiffEditor block({segment.begin() + kTiffStart, segment.end()});
    const std::size_t first = block.first_directory();
    const std::size_t thumbnail = block.number32(block.next_directory_place(first));
    if (thumbnail > block.size() || !is_sound(block, thumbnail != 0 ? thumbnail : block.size())) {
        return std::nullopt;
    }
    set_size(block, metadata, notes);
    const auto orientation = block.find(first, kTagOrientation);
    if (orientation && !metadata.keeps_orientation) {
        block.set_value(*orientation, TiffType::number16, 1, 1);
    }
    cut_thumbnail(block, metadata);
    set_maker(block);
    const FileBytes changed = block.take();
    const std::size_t size = kTiffStart + changed.size();
    if (size > kLargestSegment) {
        return std::nullopt;
    }
    segment.resize(kTiffStart);
    segment[0] = static_cast<std::uint8_t>(size >> 8);
    segment[1] = static_cast<std::uint8_t>(size);
    segment.insert(segment.end(), changed.begin(), changed.end());
    return segment;
}

FileBytes mpo_exif_segment(const MpoMetadata& metadata, Notes& notes) {
    if (!metadata.source.empty()) {
        if (auto segment = source_segment(metadata, notes)) {
            return std::move(*segment);
        }
    }
    return built_in_segment(metadata);
}

}  // namespace zemora
