#pragma once
/// Loops over the blocks of a piece of a row; for the files of one instruction set each, `V` holds the
/// kernels of one block.

#include "render/warp_kernels.h"

namespace zemora {
namespace {

template <class V>
std::uint32_t sample(const TapPlan& plan, const std::int32_t* x, const std::int32_t* y, int blocks,
                     std::uint32_t left_out, std::uint16_t* samples) {
    for (int i = 0; i < blocks; ++i, x += kKernelBlock, y += kKernelBlock, samples += 4 * kKernelBlock) {
        if ((left_out >> i & 1U) != 0) {
            continue;
        }
        if (!V::inside(plan, x, y)) {
            left_out |= 1U << i;
            continue;
        }
        V::sample_block(plan, x, y, samples);
        if (plan.keeps_apart != 0) {
            V::keep_apart(samples, plan.background);
        }
    }
    return left_out;
}

template <class V>
std::uint32_t finish(const std::uint16_t* samples, int blocks, KernelColour background,
                     std::uint8_t* target) {
    std::uint32_t left_out = 0;
    for (int i = 0; i < blocks; ++i, samples += 4 * kKernelBlock, target += 3 * kKernelBlock) {
        left_out |= V::finish_block(samples, background, target) ? 0U : 1U << i;
    }
    return left_out;
}

template <class V>
void mark(const std::uint8_t* pixels, int blocks, KernelColour background, std::uint8_t* marks) {
    for (int i = 0; i < blocks; ++i, pixels += 3 * kKernelBlock) {
        marks[i] |= V::holds(pixels, background) ? 1 : 0;
    }
}

}  // namespace
}  // namespace zemora
