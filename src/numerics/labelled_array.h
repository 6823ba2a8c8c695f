#pragma once
/// Labelled work arrays: they are delivered whole or end the run with their label in the message.

#include <cstddef>
#include <memory>
#include <type_traits>

#include "platform/process_end.h"

namespace zemora {

/// A block for `rows` x `columns` elements of `element_bytes`, or null when a size is negative, the
/// product overflows or the memory is not there. 64-byte aligned; release with `release_block`.
[[nodiscard]] void* allocate_block(std::ptrdiff_t rows, std::ptrdiff_t columns, std::size_t element_bytes);
void release_block(void* block);

/// Vector of n elements with undefined contents.
template <class T>
class LabelledVector {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    LabelledVector(std::ptrdiff_t size, const char* label)
        : block_(static_cast<T*>(allocate_block(1, size, sizeof(T)))), size_(size) {
        if (!block_) {
            end_without_memory(label);
        }
    }
    [[nodiscard]] T& operator[](std::ptrdiff_t i) { return block_.get()[i]; }
    [[nodiscard]] const T& operator[](std::ptrdiff_t i) const { return block_.get()[i]; }
    [[nodiscard]] T* data() { return block_.get(); }
    [[nodiscard]] const T* data() const { return block_.get(); }
    [[nodiscard]] std::ptrdiff_t size() const { return size_; }
    [[nodiscard]] T* begin() { return data(); }
    [[nodiscard]] T* end() { return data() + size_; }
    void fill(T value) {
        for (T& element : *this) {
            element = value;
        }
    }

private:
    struct Release {
        void operator()(T* block) const { release_block(block); }
    };
    std::unique_ptr<T, Release> block_;
    std::ptrdiff_t size_;
};

/// Matrix m[i][j] of `rows` by `columns` elements in one block, with undefined contents.
template <class T>
class LabelledMatrix {
public:
    LabelledMatrix(std::ptrdiff_t rows, std::ptrdiff_t columns, const char* label)
        : elements_(checked_size(rows, columns, label), label), rows_(rows), columns_(columns) {}
    [[nodiscard]] T* operator[](std::ptrdiff_t i) { return elements_.data() + i * columns_; }
    [[nodiscard]] const T* operator[](std::ptrdiff_t i) const { return elements_.data() + i * columns_; }
    [[nodiscard]] std::ptrdiff_t rows() const { return rows_; }
    [[nodiscard]] std::ptrdiff_t columns() const { return columns_; }
    void fill(T value) { elements_.fill(value); }

private:
    static std::ptrdiff_t checked_size(std::ptrdiff_t rows, std::ptrdiff_t columns, const char* label) {
        std::ptrdiff_t product = 0;
        if (rows < 0 || columns < 0 || __builtin_mul_overflow(rows, columns, &product)) {
            end_without_memory(label);
        }
        return product;
    }
    LabelledVector<T> elements_;
    std::ptrdiff_t rows_;
    std::ptrdiff_t columns_;
};

}  // namespace zemora
