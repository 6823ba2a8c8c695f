#include "platform/memory_use.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>
#include <string_view>

namespace zemora {

namespace {

constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

/// The first number in a file of the system; `otherwise` where there is none ("max").
std::int64_t number_in(const char* path, std::int64_t otherwise) {
    std::ifstream file(path);
    std::int64_t number = 0;
    return file >> number ? number : otherwise;
}

/// The number behind the label that a line of the file begins with; `otherwise` where there is none.
std::int64_t number_behind(const char* path, std::string_view label, std::int64_t otherwise) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(label)) {
            return std::strtoll(line.c_str() + label.size(), nullptr, 10);
        }
    }
    return otherwise;
}

std::int64_t available_in_machine() {
    constexpr std::int64_t kKilobyte = 1024;
    const std::int64_t kilobytes = number_behind("/proc/meminfo", "MemAvailable:", -1);
    return kilobytes < 0 ? kNoLimit : kKilobyte * kilobytes;
}

/// Of the group of processes that a container or a service is. What it holds of files can be had again.
std::int64_t available_in_group() {
    const std::int64_t limit = number_in("/sys/fs/cgroup/memory.max", kNoLimit);
    return limit == kNoLimit ? kNoLimit
                             : limit - number_in("/sys/fs/cgroup/memory.current", 0) +
                                   number_behind("/sys/fs/cgroup/memory.stat", "file ", 0);
}

std::int64_t available_in_process(std::int64_t mapped) {
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return kNoLimit;
    }
    return static_cast<std::int64_t>(limit.rlim_cur) - mapped;
}

}  // namespace

MemoryUse memory_use() {
    const std::int64_t page = sysconf(_SC_PAGESIZE);
    std::int64_t mapped_pages = 0;
    std::int64_t resident_pages = 0;
    std::ifstream("/proc/self/statm") >> mapped_pages >> resident_pages;
    const std::int64_t left =
        std::min({available_in_machine(), available_in_group(), available_in_process(mapped_pages * page)});
    return {resident_pages * page, std::max<std::int64_t>(left, 0)};
}

}  // namespace zemora
