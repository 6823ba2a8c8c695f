#pragma once
/// When a picture was taken, from exiv2 where it is installed, else from the picture library.
///
/// Both take DateTimeOriginal of the EXIF directory or, where that has none, of the picture's own directory,
/// and no other time.

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zemora {

struct CaptureTime {
    int year = 0;
    int month = 0;   ///< 1 to 12.
    int day = 0;     ///< 1 to 31.
    int hour = 0;    ///< 0 to 23.
    int minute = 0;  ///< 0 to 59.
    int second = 0;  ///< 0 to 59; 60 at a leap second.
    friend bool operator==(const CaptureTime&, const CaptureTime&) = default;
};

/// "YYYY:MM:DD hh:mm:ss" by its columns. Nothing for blanks, zeros and values out of range.
[[nodiscard]] std::optional<CaptureTime> parse_capture_time(std::string_view text);

/// Left minus right in seconds. The year takes no part: December is before January, February has 29
/// days.
[[nodiscard]] int difference_seconds(const CaptureTime& left, const CaptureTime& right);

/// By file; nothing for a file without a time.
using CaptureTimes = std::unordered_map<std::string, std::optional<CaptureTime>>;

/// Reads capture times and remembers them.
class CaptureClock {
public:
    CaptureClock();
    /// With `exiv2` as the program, or the picture library where it is empty.
    explicit CaptureClock(std::string exiv2) : program_(std::move(exiv2)) {}

    /// Files that will be asked for, in about this order, so that one call of the outside program reads many.
    void expect(const std::vector<std::string>& files);
    /// Nothing for an empty name and a file without a time.
    [[nodiscard]] std::optional<CaptureTime> time_of(const std::string& file);
    /// Whether exiv2 answers, and not the picture library.
    [[nodiscard]] bool uses_exiv2() const { return !program_.empty(); }

private:
    [[nodiscard]] std::vector<std::string> batch_from(const std::string& file) const;
    void ask_exiv2(const std::vector<std::string>& files);

    std::string program_;  ///< exiv2; empty without it.
    std::vector<std::string> expected_;
    std::unordered_map<std::string, std::size_t> place_;  ///< In `expected_`.
    CaptureTimes known_;
};

}  // namespace zemora
