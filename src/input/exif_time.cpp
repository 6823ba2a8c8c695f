#include "input/exif_time.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace zemora {

namespace {

/// Bytes of a file by their places.
class FileBytes {
public:
    explicit FileBytes(const std::string& path) : file_(path, std::ios::binary) {}
    /// Fewer bytes than asked for at the end of the file.
    [[nodiscard]] std::string read(std::uint64_t place, std::size_t size) {
        std::string bytes(size, '\0');
        file_.clear();
        file_.seekg(static_cast<std::streamoff>(place));
        file_.read(bytes.data(), static_cast<std::streamsize>(size));
        bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file_.gcount(), 0)));
        return bytes;
    }

private:
    std::ifstream file_;
};

enum class ByteOrder { low_first, high_first };

std::uint32_t number_in(std::string_view bytes, ByteOrder order) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::size_t at = order == ByteOrder::high_first ? i : bytes.size() - 1 - i;
        number = number << 8 | static_cast<unsigned char>(bytes[at]);
    }
    return number;
}

/// An entry of a directory of the TIFF format (TIFF revision 6.0, 1992, section 2).
struct TiffEntry {
    std::uint32_t type = 0;
    std::uint32_t count = 0;
    std::uint32_t value = 0;  ///< Or where it stands.
};

constexpr std::uint32_t kExifDirectory = 0x8769;
constexpr std::uint32_t kDateTimeOriginal = 0x9003;
constexpr std::uint32_t kOrientation = 0x0112;
constexpr std::uint32_t kText = 2;
constexpr std::uint32_t kShortNumber = 3;
constexpr std::uint32_t kFraction = 5;
constexpr std::size_t kTimeSize = 19;  // characters of "YYYY:MM:DD hh:mm:ss"

/// A block of TIFF directories somewhere in a file.
class TiffBlock {
public:
    TiffBlock(FileBytes& file, std::uint64_t start) : file_(file), start_(start) {
        const std::string head = file_.read(start, kHeadSize);
        const std::string_view mark = std::string_view(head).substr(0, 2);
        if (head.size() < kHeadSize || (mark != "II" && mark != "MM")) {
            return;
        }
        order_ = mark == "MM" ? ByteOrder::high_first : ByteOrder::low_first;
        // 42 and what camera makers put in its place: "RO", "RS" and "U".
        constexpr std::array<std::uint32_t, 4> kVersions{42, 0x4F52, 0x5352, 0x55};
        const std::uint32_t version = number_in(std::string_view(head).substr(2, 2), order_);
        is_valid_ = std::find(kVersions.begin(), kVersions.end(), version) != kVersions.end();
        first_directory_ = number_in(std::string_view(head).substr(4), order_);
    }
    [[nodiscard]] bool is_valid() const { return is_valid_; }

    [[nodiscard]] std::string time_text() const {
        if (const auto exif = find(first_directory_, kExifDirectory)) {
            if (const auto time = find(exif->value, kDateTimeOriginal)) {
                return text_of(*time);
            }
        }
        const auto time = find(first_directory_, kDateTimeOriginal);
        return time ? text_of(*time) : std::string();
    }

    [[nodiscard]] int orientation() const {
        constexpr std::uint32_t kLast = 8;
        constexpr std::uint32_t kUpperHalf =
            16;  // bits; a short number stands in the first bytes of its place
        const auto entry = find(first_directory_, kOrientation);
        if (!entry || entry->type != kShortNumber) {
            return 0;
        }
        const std::uint32_t value =
            order_ == ByteOrder::high_first ? entry->value >> kUpperHalf : entry->value & 0xFFFFU;
        return value <= kLast ? static_cast<int>(value) : 0;
    }

    [[nodiscard]] std::optional<ExifFraction> fraction(ExifFractionTag tag) const {
        constexpr std::size_t kSize = 8;
        const auto exif = find(first_directory_, kExifDirectory);
        const auto entry = exif ? find(exif->value, static_cast<std::uint32_t>(tag)) : std::nullopt;
        const std::string bytes =
            entry && entry->type == kFraction ? file_.read(start_ + entry->value, kSize) : std::string();
        if (bytes.size() < kSize) {
            return std::nullopt;
        }
        const std::string_view both = bytes;
        const ExifFraction value{number_in(both.substr(0, 4), order_), number_in(both.substr(4), order_)};
        return value.denominator != 0 ? std::optional(value) : std::nullopt;
    }

private:
    static constexpr std::size_t kHeadSize = 8;
    static constexpr std::size_t kEntrySize = 12;

    [[nodiscard]] std::optional<TiffEntry> find(std::uint64_t directory, std::uint32_t tag) const {
        const std::string count = file_.read(start_ + directory, 2);
        if (directory == 0 || count.size() < 2) {
            return std::nullopt;
        }
        const std::string bytes = file_.read(start_ + directory + 2, kEntrySize * number_in(count, order_));
        for (std::size_t at = 0; at + kEntrySize <= bytes.size(); at += kEntrySize) {
            const std::string_view entry = std::string_view(bytes).substr(at, kEntrySize);
            if (number_in(entry.substr(0, 2), order_) == tag) {
                return TiffEntry{number_in(entry.substr(2, 2), order_), number_in(entry.substr(4, 4), order_),
                                 number_in(entry.substr(8, 4), order_)};
            }
        }
        return std::nullopt;
    }
    [[nodiscard]] std::string text_of(const TiffEntry& entry) const {
        return entry.type == kText && entry.count >= kTimeSize ? file_.read(start_ + entry.value, kTimeSize)
                                                               : std::string();
    }

    FileBytes& file_;
    std::uint64_t start_;
    ByteOrder order_ = ByteOrder::low_first;
    std::uint32_t first_directory_ = 0;
    bool is_valid_ = false;
};

constexpr std::string_view kJpegStart = "\xFF\xD8";
constexpr std::string_view kPngStart = "\x89PNG\r\n\x1A\n";

/// Where the EXIF block of a JPEG file begins; 0 without one.
std::uint64_t exif_block_of_jpeg(FileBytes& file) {
    constexpr std::string_view kExif("Exif\0\0", 6);
    constexpr std::size_t kHead = 4;       // bytes of marker and size
    constexpr int kMostSegments = 10'000;  // fill bytes count as segments
    constexpr int kFill = 0xFF;
    constexpr int kFirstWithSize = 0xC0;
    constexpr int kStartOfScan = 0xDA;
    constexpr int kApplication1 = 0xE1;
    std::uint64_t place = kJpegStart.size();
    for (int segment = 0; segment < kMostSegments; ++segment) {
        const std::string head = file.read(place, kHead + kExif.size());
        const int marker = head.size() < kHead || head[0] != '\xFF' ? 0 : static_cast<unsigned char>(head[1]);
        if (marker < kFirstWithSize || marker == kStartOfScan) {
            return 0;
        }
        if (marker == kApplication1 && std::string_view(head).substr(kHead) == kExif) {
            return place + kHead + kExif.size();
        }
        place +=
            marker == kFill
                ? 1
                : 2 + std::max(number_in(std::string_view(head).substr(2, 2), ByteOrder::high_first), 2U);
    }
    return 0;
}

/// The same of a PNG file.
std::uint64_t exif_block_of_png(FileBytes& file) {
    constexpr std::size_t kHead = 8;   // bytes of size and name
    constexpr std::size_t kCheck = 4;  // bytes of the checksum
    for (std::uint64_t place = kPngStart.size();;) {
        const std::string head = file.read(place, kHead);
        const std::string_view name = std::string_view(head).substr(std::min<std::size_t>(4, head.size()));
        const bool is_name =
            std::all_of(name.begin(), name.end(), [](char c) { return std::isalpha(c & 0xFF); });
        if (head.size() < kHead || name == "IEND" || !is_name) {
            return 0;
        }
        if (name == "eXIf") {
            return place + kHead;
        }
        place += kHead + kCheck + number_in(std::string_view(head).substr(0, 4), ByteOrder::high_first);
    }
}

/// The block of a file's metadata: of a picture with segments or chunks, which may have none, or the file
/// itself. Nothing for files of other kinds.
struct FoundBlock {
    bool is_known_kind = false;
    std::optional<TiffBlock> block;
};

FoundBlock find_block(FileBytes& file) {
    const std::string start = file.read(0, kPngStart.size());
    const bool is_jpeg = start.substr(0, kJpegStart.size()) == kJpegStart;
    const bool is_picture = is_jpeg || start == kPngStart;
    const std::uint64_t place =
        !is_picture ? 0 : (is_jpeg ? exif_block_of_jpeg(file) : exif_block_of_png(file));
    const TiffBlock block(file, place);
    const bool is_there = (place != 0 || !is_picture) && block.is_valid();
    return {is_picture || is_there, is_there ? std::optional(block) : std::nullopt};
}

bool is_plain_file(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

}  // namespace

std::optional<std::string> exif_time_text(const std::string& path) {
    if (!is_plain_file(path)) {
        return std::nullopt;
    }
    FileBytes file(path);
    const FoundBlock found = find_block(file);
    if (!found.is_known_kind) {
        return std::nullopt;
    }
    return found.block ? found.block->time_text() : std::string();
}

int exif_orientation(const std::string& path) {
    if (!is_plain_file(path)) {
        return 0;
    }
    FileBytes file(path);
    const FoundBlock found = find_block(file);
    return found.block ? found.block->orientation() : 0;
}

std::optional<ExifFraction> exif_fraction(const std::string& path, ExifFractionTag tag) {
    if (!is_plain_file(path)) {
        return std::nullopt;
    }
    FileBytes file(path);
    const FoundBlock found = find_block(file);
    return found.block ? found.block->fraction(tag) : std::nullopt;
}

}  // namespace zemora
