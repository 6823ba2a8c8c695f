#pragma once
/// What the process holds of the memory of the machine, and what is left.

#include <cstdint>

namespace zemora {

struct MemoryUse {
    std::int64_t resident = 0;   ///< Bytes that the process holds in memory.
    std::int64_t available = 0;  ///< Bytes that it may still get without swapping, within its limits.
};

/// As the system knows it now. What cannot be found out counts as nothing held or as no limit.
[[nodiscard]] MemoryUse memory_use();

}  // namespace zemora
