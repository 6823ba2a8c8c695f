#pragma once
/// When a picture was taken, from exiv2 where it is installed, else from the picture library.

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/voice.h"

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

/// "YYYY:MM:DD hh:mm:ss". Nothing for blanks, zeros and values out of range.
[[nodiscard]] std::optional<CaptureTime> parse_capture_time(std::string_view text);

/// Left minus right in seconds. The year takes no part: December is before January, February has 29
/// days.
[[nodiscard]] int difference_seconds(const CaptureTime& left, const CaptureTime& right);

/// Reads capture times and remembers those of the latest files.
class CaptureClock {
public:
    explicit CaptureClock(const Voice& voice);

    /// Files that will be asked for soon, so that one call of the outside program reads many.
    void expect(const std::vector<std::string>& files);
    /// Nothing for an empty name and a file without a time.
    [[nodiscard]] std::optional<CaptureTime> time_of(const std::string& file);
    /// Whether exiv2 answers, and not the picture library.
    [[nodiscard]] bool uses_exiv2() const { return !program_.empty(); }

private:
    const Voice& voice_;
    std::string program_;  ///< exiv2; empty without it.
    std::map<std::string, std::optional<CaptureTime>> known_;
};

}  // namespace zemora
