#include "input/jpeg_check.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace zemora {

namespace {

constexpr std::uint8_t kMark = 0xFF;
constexpr std::size_t kMarkerSize = 2;
constexpr std::size_t kLengthSize = 2;

// Second bytes of the markers.
enum JpegMarker : std::uint8_t {
    kStuffing = 0x00,
    kAlone = 0x01,  // TEM
    kFirstFrame = 0xC0,
    kHuffmanTables = 0xC4,
    kArithmeticTables = 0xCC,
    kLastFrame = 0xCF,
    kFirstRestart = 0xD0,
    kLastRestart = 0xD7,
    kStart = 0xD8,
    kEnd = 0xD9,
    kScan = 0xDA,
    kJfif = 0xE0,
    kAdobe = 0xEE,
};

bool is_restart(std::uint8_t code) {
    return code >= kFirstRestart && code <= kLastRestart;
}

bool stands_alone(std::uint8_t code) {
    return code == kAlone || code == kStart || is_restart(code);
}

bool is_frame(std::uint8_t code) {
    return code >= kFirstFrame && code <= kLastFrame && code != kHuffmanTables && code != 0xC8 &&
           code != kArithmeticTables;
}

/// The marker that is found at or behind `at`; its place is that of its code's mark. Nothing when the file
/// has ended.
struct Marker {
    std::size_t place;
    std::uint8_t code;
};

std::optional<Marker> marker_from(std::span<const std::uint8_t> file, std::size_t at) {
    while (at + kMarkerSize <= file.size()) {
        const auto* mark = static_cast<const std::uint8_t*>(
            std::memchr(file.data() + at, kMark, file.size() - kMarkerSize + 1 - at));
        if (mark == nullptr) {
            break;
        }
        at = static_cast<std::size_t>(mark - file.data());
        const std::uint8_t code = mark[1];
        if (code != kStuffing && code != kMark) {
            return Marker{at, code};
        }
        at += code == kMark ? 1 : kMarkerSize;
    }
    return std::nullopt;
}

/// The marker behind the coded pixels that begin at `at`.
std::optional<Marker> marker_behind_pixels(std::span<const std::uint8_t> file, std::size_t at) {
    auto marker = marker_from(file, at);
    while (marker && is_restart(marker->code)) {
        marker = marker_from(file, marker->place + kMarkerSize);
    }
    return marker;
}

/// Bytes of the segment of `marker` with the marker itself.
std::size_t segment_size(std::span<const std::uint8_t> file, const Marker& marker) {
    if (stands_alone(marker.code) || marker.place + kMarkerSize + kLengthSize > file.size()) {
        return kMarkerSize;
    }
    const std::size_t length = std::size_t{file[marker.place + 2]} << 8U | file[marker.place + 3];
    return kMarkerSize + std::max(length, kLengthSize);
}

bool is_jpeg(std::span<const std::uint8_t> file) {
    return file.size() >= kMarkerSize && file[0] == kMark && file[1] == kStart;
}

/// What the frame's segment says.
struct Frame {
    bool is_sequential = false;  ///< Every scan brings whole blocks.
    int components = 0;
};

Frame frame_of(std::span<const std::uint8_t> segment, std::uint8_t code) {
    constexpr std::size_t kComponents = 9;  // place of their number
    constexpr std::uint8_t kProgressive = 2;
    constexpr std::uint8_t kKind = 3;  // bits of the code; 3 is lossless
    const std::uint8_t kind = code & kKind;
    return {kind != kProgressive && kind != kKind, segment.size() > kComponents ? segment[kComponents] : 0};
}

void mend_jfif(std::span<std::uint8_t> segment) {
    static constexpr std::array<std::uint8_t, 5> kName{'J', 'F', 'I', 'F', 0};
    constexpr std::size_t kNamePlace = 4;
    constexpr std::size_t kRevision = 9;
    constexpr std::size_t kSize = 18;
    if (segment.size() >= kSize && std::equal(kName.begin(), kName.end(), segment.begin() + kNamePlace)) {
        segment[kRevision] = 1;
    }
}

/// An unknown transform is read as the usual one for that number of components.
void mend_adobe(std::span<std::uint8_t> segment, int components) {
    static constexpr std::array<std::uint8_t, 5> kName{'A', 'd', 'o', 'b', 'e'};
    constexpr std::size_t kNamePlace = 4;
    constexpr std::size_t kTransform = 15;
    constexpr int kInks = 4;
    if (segment.size() > kTransform && segment[kTransform] > 2 &&
        std::equal(kName.begin(), kName.end(), segment.begin() + kNamePlace)) {
        segment[kTransform] = components == kInks ? 2 : 1;
    }
}

/// All coefficients at once, which is what the decoder does whatever stands there.
void mend_scan(std::span<std::uint8_t> segment) {
    static constexpr std::array<std::uint8_t, 3> kWhole{0, 63, 0};
    if (segment.size() >= kMarkerSize + kLengthSize + kWhole.size()) {
        std::copy(kWhole.begin(), kWhole.end(), segment.end() - static_cast<std::ptrdiff_t>(kWhole.size()));
    }
}

}  // namespace

JpegShape jpeg_shape(std::span<const std::uint8_t> file) {
    JpegShape shape;
    auto marker = marker_from(file, std::min(kMarkerSize, file.size()));
    while (marker && marker->code != kEnd) {
        const std::size_t behind = marker->place + segment_size(file, *marker);
        const bool is_scan = marker->code == kScan;
        shape.has_scan = shape.has_scan || is_scan;
        marker = is_scan ? marker_behind_pixels(file, behind) : marker_from(file, behind);
    }
    if (marker) {
        shape.end = marker->place;
    }
    return shape;
}

void mend_jpeg_header(std::span<std::uint8_t> file) {
    if (!is_jpeg(file)) {
        return;
    }
    Frame frame;
    std::span<std::uint8_t> adobe;
    std::size_t at = kMarkerSize;
    while (const auto marker = marker_from(file, at)) {
        // Any number of marks may stand before a code.
        std::fill(file.begin() + static_cast<std::ptrdiff_t>(at),
                  file.begin() + static_cast<std::ptrdiff_t>(marker->place), kMark);
        const std::size_t behind = marker->place + segment_size(file, *marker);
        if (behind > file.size() || marker->code == kEnd) {
            return;
        }
        const std::span<std::uint8_t> segment = file.subspan(marker->place, behind - marker->place);
        if (is_frame(marker->code)) {
            frame = frame_of(segment, marker->code);
        } else if (marker->code == kJfif) {
            mend_jfif(segment);
        } else if (marker->code == kAdobe) {
            adobe = segment;
        } else if (marker->code == kScan) {
            mend_adobe(adobe, frame.components);
            if (frame.is_sequential) {
                mend_scan(segment);
            }
            return;
        }
        at = behind;
    }
}

bool is_jpeg_padding(std::span<const std::uint8_t> file, std::size_t count) {
    constexpr std::size_t kReadAhead = 8;  // bytes that a decoder may hold already
    const auto end = is_jpeg(file) ? jpeg_shape(file).end : std::nullopt;
    if (!end) {
        return false;
    }
    std::size_t zeros = 0;
    while (zeros < *end && file[*end - zeros - 1] == 0) {
        ++zeros;
    }
    return count <= zeros && zeros - count <= kReadAhead;
}

}  // namespace zemora
