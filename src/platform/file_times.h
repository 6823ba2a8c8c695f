#pragma once
/// Access and modification times of files.

#include <cstdint>
#include <string>

namespace zemora {

/// A date and time of day in the local time of the machine.
struct LocalTime {
    int year = 0;
    int month = 0;  ///< 1 to 12.
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// The local time of a moment; `calendar_seconds` counts from the beginning of 1970 in UTC, here and below.
[[nodiscard]] LocalTime local_time_of(std::int64_t calendar_seconds);
/// False when the date does not exist.
[[nodiscard]] bool calendar_seconds_of(const LocalTime& time, std::int64_t& calendar_seconds);

/// Sets both times of `path`, to the second. False when the system refuses.
[[nodiscard]] bool set_file_times(const std::string& path, std::int64_t calendar_seconds);

/// Whether `path` is a plain file, and no link to one, that was last changed before that time.
[[nodiscard]] bool is_file_older_than(const std::string& path, std::int64_t calendar_seconds);

}  // namespace zemora
