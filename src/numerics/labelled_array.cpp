#include "numerics/labelled_array.h"

#include <cstdlib>

namespace zemora {

namespace {
constexpr std::size_t kAlignment = 64;  // bytes; one cache line and one vector register
}

void* allocate_block(std::ptrdiff_t rows, std::ptrdiff_t columns, std::size_t element_bytes) {
    std::size_t bytes = 0;
    if (rows < 0 || columns < 0 ||
        __builtin_mul_overflow(static_cast<std::size_t>(rows), static_cast<std::size_t>(columns), &bytes) ||
        __builtin_mul_overflow(bytes, element_bytes, &bytes) || bytes > PTRDIFF_MAX - kAlignment) {
        return nullptr;
    }
    const std::size_t rounded = (bytes + kAlignment) / kAlignment * kAlignment;  // never 0
    return std::aligned_alloc(kAlignment, rounded);
}

void release_block(void* block) {
    std::free(block);
}

}  // namespace zemora
