#include "driver/picture_times.h"

#include <cstdio>

#include "input/picture_file.h"
#include "platform/console.h"
#include "platform/file_times.h"

namespace zemora {

bool copy_capture_time(const std::string& image_path, const std::string& other_path, Notes& notes) {
    const std::string shown = printable(image_path);
    LocalTime taken;
    const std::string text = capture_time_text(image_path);
    if (std::sscanf(text.c_str(), "%4d:%2d:%2d %2d:%2d:%2d", &taken.year, &taken.month, &taken.day,
                    &taken.hour, &taken.minute, &taken.second) != 6 ||
        taken.year == 0) {
        notes.print(format_text("nb746: Terminal failure: Unable to read from %s.\n", shown.c_str()));
        return false;
    }
    std::int64_t seconds = 0;
    if (!calendar_seconds_of(taken, seconds)) {
        notes.print("nb804: Terminal failure: Unable to read system time\n");
        return false;
    }
    if (!set_file_times(other_path, seconds)) {
        notes.print(format_text("nb776: Terminal failure: Unable to finish SetFileTime for \"%s\".\n",
                                printable(other_path).c_str()));
        return false;
    }
    return true;
}

}  // namespace zemora
