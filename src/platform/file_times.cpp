#include "platform/file_times.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <ctime>

namespace zemora {

namespace {
constexpr int kFirstYear = 1900;  // of the system's year count
}

LocalTime local_time_of(std::int64_t calendar_seconds) {
    const std::time_t seconds = calendar_seconds;
    std::tm parts = {};
    localtime_r(&seconds, &parts);
    return {parts.tm_year + kFirstYear,
            parts.tm_mon + 1,
            parts.tm_mday,
            parts.tm_hour,
            parts.tm_min,
            parts.tm_sec};
}

bool calendar_seconds_of(const LocalTime& time, std::int64_t& calendar_seconds) {
    std::tm parts = {};
    parts.tm_year = time.year - kFirstYear;
    parts.tm_mon = time.month - 1;
    parts.tm_mday = time.day;
    parts.tm_hour = time.hour;
    parts.tm_min = time.minute;
    parts.tm_sec = time.second;
    parts.tm_isdst = -1;
    const std::tm wanted = parts;
    const std::time_t seconds = std::mktime(&parts);
    const bool in_day = time.hour >= 0 && time.hour < 24 && time.minute >= 0 && time.minute < 60 &&
                        time.second >= 0 && time.second < 60;
    // A day that does not exist comes back as another one.
    if (!in_day || seconds == -1 || parts.tm_mon != wanted.tm_mon || parts.tm_mday != wanted.tm_mday) {
        return false;
    }
    calendar_seconds = seconds;
    return true;
}

bool set_file_times(const std::string& path, std::int64_t calendar_seconds) {
    std::array<timespec, 2> times{};
    times[0].tv_sec = calendar_seconds;
    times[1].tv_sec = calendar_seconds;
    return utimensat(AT_FDCWD, path.c_str(), times.data(), 0) == 0;
}

bool is_file_older_than(const std::string& path, std::int64_t calendar_seconds) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_mtime < calendar_seconds;
}

}  // namespace zemora
