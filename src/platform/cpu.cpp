#include "platform/cpu.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>

namespace zemora {

namespace {

InstructionSet detect() {
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vnni")) {
        return InstructionSet::avx512;
    }
    if (__builtin_cpu_supports("avx2")) {
        return InstructionSet::avx2;
    }
#endif
    return InstructionSet::portable;
}

InstructionSet from_environment() {
    const char* value = std::getenv("ZEMORA_ISA");
    const std::string_view wanted = value == nullptr ? "" : value;
    if (wanted == "portable") {
        return InstructionSet::portable;
    }
    return wanted == "avx2" ? InstructionSet::avx2 : InstructionSet::avx512;
}

std::atomic<InstructionSet>& chosen() {
    static std::atomic<InstructionSet> set = std::min(detect(), from_environment());
    return set;
}

}  // namespace

InstructionSet usable_instruction_set() {
    return chosen().load(std::memory_order_relaxed);
}

void limit_instruction_set(InstructionSet limit) {
    chosen().store(std::min(detect(), limit), std::memory_order_relaxed);
}

}  // namespace zemora
