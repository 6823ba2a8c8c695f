#include "render/warp_kernels.h"

// The intrinsics of this compiler start from undefined registers on purpose.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include "render/warp_blocks_simd.h"
#include "render/warp_map_simd.h"

namespace zemora {

namespace {

struct Lanes {
    using Int = __m512i;
    static constexpr int kLanes = 16;
    static Int all(std::int32_t value) { return _mm512_set1_epi32(value); }
    static Int steps_of_128() {
        return _mm512_setr_epi32(0, 128, 256, 384, 512, 640, 768, 896, 1024, 1152, 1280, 1408, 1536, 1664,
                                 1792, 1920);
    }
    static Int add(Int a, Int b) { return _mm512_add_epi32(a, b); }
    static Int subtract(Int a, Int b) { return _mm512_sub_epi32(a, b); }
    static Int multiply(Int a, Int b) { return _mm512_mullo_epi32(a, b); }
    template <int bits>
    static Int shift_right(Int a) {
        return _mm512_srai_epi32(a, bits);
    }
    template <int bits>
    static Int shift_right_logical(Int a) {
        return _mm512_srli_epi32(a, bits);
    }
    static void store(std::int32_t* target, Int a) { _mm512_storeu_si512(target, a); }
    static Int truncated_quotient(Int a, float divisor) {
        return _mm512_cvttps_epi32(_mm512_div_ps(_mm512_cvtepi32_ps(a), _mm512_set1_ps(divisor)));
    }
    /// floor(a / divisor + 0.5): the half is compared with, since adding it could round.
    static Int rounded_quotient(Int a, float divisor) {
        const __m512 quotient = _mm512_div_ps(_mm512_cvtepi32_ps(a), _mm512_set1_ps(divisor));
        const __m512 whole = _mm512_roundscale_ps(quotient, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC);
        const __mmask16 up =
            _mm512_cmp_ps_mask(_mm512_sub_ps(quotient, whole), _mm512_set1_ps(0.5F), _CMP_GE_OQ);
        const Int floored = _mm512_cvttps_epi32(whole);
        return _mm512_mask_add_epi32(floored, up, floored, _mm512_set1_epi32(1));
    }
    static Int multiply_high(Int a, std::uint32_t factor, int bits) {
        const Int factors = _mm512_set1_epi32(static_cast<std::int32_t>(factor));
        const __m128i shift = _mm_cvtsi32_si128(bits);
        const Int even = _mm512_srl_epi64(_mm512_mul_epu32(a, factors), shift);
        const Int odd = _mm512_srl_epi64(_mm512_mul_epu32(_mm512_srli_epi64(a, 32), factors), shift);
        return _mm512_or_si512(even, _mm512_slli_epi64(odd, 32));
    }
};

inline bool block_inside(const TapPlan& plan, const std::int32_t* x, const std::int32_t* y) {
    const __m512i px = _mm512_loadu_si512(x);
    const __m512i py = _mm512_loadu_si512(y);
    const __m512i lowest = _mm512_set1_epi32(plan.low);
    const __mmask16 outside = _mm512_cmplt_epi32_mask(px, lowest) | _mm512_cmplt_epi32_mask(py, lowest) |
                              _mm512_cmpge_epi32_mask(px, _mm512_set1_epi32(plan.x_end)) |
                              _mm512_cmpge_epi32_mask(py, _mm512_set1_epi32(plan.y_end));
    return outside == 0;
}

void bounds(const std::int32_t* x, const std::int32_t* y, std::int32_t* result) {
    const __m512i px = _mm512_loadu_si512(x);
    const __m512i py = _mm512_loadu_si512(y);
    result[0] = _mm512_reduce_min_epi32(px);
    result[1] = _mm512_reduce_max_epi32(px);
    result[2] = _mm512_reduce_min_epi32(py);
    result[3] = _mm512_reduce_max_epi32(py);
}

/// The 16 bytes from `offset` of four pixels, one a lane.
inline __m512i load_taps(const std::uint8_t* base, const std::int32_t* offset) {
    const auto at = [base, offset](int i) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(base + offset[i]));
    };
    __m512i taps = _mm512_castsi128_si512(at(0));
    taps = _mm512_inserti32x4(taps, at(1), 1);
    taps = _mm512_inserti32x4(taps, at(2), 2);
    return _mm512_inserti32x4(taps, at(3), 3);
}

/// Four pixels: across in 8 by 8 bits, moved by 16384 into 16 bits, then up in 16 by 16 bits.
inline __m512i weigh_four(const TapPlan& plan, const std::int32_t* offset, __m512i across, __m512i up) {
    const __m512i by_channel =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1));
    const __m512i middle = _mm512_set1_epi32(16384);
    __m512i sums[4];
    for (int j = 0; j < 4; ++j) {
        const __m512i taps = load_taps(plan.source + j * plan.pitch, offset);
        sums[j] = _mm512_dpbusd_epi32(middle, _mm512_shuffle_epi8(taps, by_channel), across);
    }
    const __mmask32 high = 0xAAAAAAAAU;
    const __m512i low_pair = _mm512_mask_blend_epi16(high, sums[0], _mm512_slli_epi32(sums[1], 16));
    const __m512i high_pair = _mm512_mask_blend_epi16(high, sums[2], _mm512_slli_epi32(sums[3], 16));
    // Each weight in the high byte of its 16 bits: 256 times the weight.
    const __m512i low_weights =
        _mm512_shuffle_epi8(up, _mm512_set1_epi32(static_cast<std::int32_t>(0x01800080)));
    const __m512i high_weights =
        _mm512_shuffle_epi8(up, _mm512_set1_epi32(static_cast<std::int32_t>(0x03800280)));
    const __m512i back = _mm512_set1_epi16(-16384);
    __m512i sum = _mm512_set1_epi32(plan.rounding);
    sum = _mm512_dpwssd_epi32(sum, low_pair, low_weights);
    sum = _mm512_dpwssd_epi32(sum, high_pair, high_weights);
    __m512i moved = _mm512_dpwssd_epi32(_mm512_setzero_si512(), back, low_weights);
    moved = _mm512_dpwssd_epi32(moved, back, high_weights);
    return _mm512_max_epi32(_mm512_srai_epi32(_mm512_add_epi32(sum, moved), 14), _mm512_setzero_si512());
}

inline void block_samples(const TapPlan& plan, const std::int32_t* x, const std::int32_t* y,
                          std::uint16_t* samples) {
    const __m512i px = _mm512_loadu_si512(x);
    const __m512i py = _mm512_loadu_si512(y);
    const __m512i fraction = _mm512_set1_epi32(127);
    const __m512i one = _mm512_set1_epi32(1);
    const __m512i column = _mm512_sub_epi32(_mm512_srai_epi32(px, 7), one);
    const __m512i row = _mm512_sub_epi32(_mm512_srai_epi32(py, 7), one);
    const __m512i across = _mm512_i32gather_epi32(_mm512_and_si512(px, fraction), plan.weights, 4);
    const __m512i up = _mm512_i32gather_epi32(_mm512_and_si512(py, fraction), plan.weights, 4);
    alignas(64) std::int32_t offset[kKernelBlock];
    const __m512i columns3 = _mm512_add_epi32(column, _mm512_add_epi32(column, column));
    _mm512_store_si512(
        offset,
        _mm512_add_epi32(columns3,
                         _mm512_mullo_epi32(row, _mm512_set1_epi32(static_cast<std::int32_t>(plan.pitch)))));
    __m512i lane = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
    const __m512i next = _mm512_set1_epi32(4);
    for (int i = 0; i < kKernelBlock; i += 4) {
        const __m512i values = weigh_four(plan, offset + i, _mm512_permutexvar_epi32(lane, across),
                                          _mm512_permutexvar_epi32(lane, up));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(samples + 4 * i), _mm512_cvtusepi32_epi16(values));
        lane = _mm512_add_epi32(lane, next);
    }
}

/// One bit for each of the 16 samples whose bytes in `pixels`, four a sample, equal the colour.
inline __mmask16 equal_pixels(__m512i pixels, KernelColour colour) {
    const std::int32_t wanted = colour.channel[0] | colour.channel[1] << 8 | colour.channel[2] << 16;
    return _mm512_cmpeq_epi32_mask(pixels, _mm512_set1_epi32(wanted));
}

/// High or rounded bytes of 16 samples, four bytes a sample.
inline __m512i narrowed(__m512i first, __m512i second) {
    return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(first)),
                              _mm512_cvtepi16_epi8(second), 1);
}

inline void block_apart(std::uint16_t* samples, KernelColour background) {
    const __m512i first = _mm512_srli_epi16(_mm512_loadu_si512(samples), 8);
    const __m512i second = _mm512_srli_epi16(_mm512_loadu_si512(samples + 32), 8);
    unsigned alike = equal_pixels(narrowed(first, second), background);
    for (; alike != 0; alike &= alike - 1) {
        std::uint16_t& blue = samples[4 * __builtin_ctz(alike)];
        blue = static_cast<std::uint16_t>(blue < 32768 ? blue + 256 : blue - 256);
    }
}

inline bool block_bytes(const std::uint16_t* samples, KernelColour background, std::uint8_t* target) {
    const __m512i first = _mm512_loadu_si512(samples);
    const __m512i second = _mm512_loadu_si512(samples + 32);
    const __m512i marks = _mm512_set1_epi64(static_cast<std::int64_t>(0xFFFF000000000000ULL));
    if (_mm512_test_epi64_mask(_mm512_or_si512(first, second), marks) != 0) {
        return false;
    }
    const __m512i half = _mm512_set1_epi16(128);
    __m512i pixels = narrowed(_mm512_srli_epi16(_mm512_adds_epu16(first, half), 8),
                              _mm512_srli_epi16(_mm512_adds_epu16(second, half), 8));
    const __mmask16 black = _mm512_testn_epi32_mask(pixels, pixels);
    pixels = _mm512_mask_or_epi32(pixels, black, pixels, _mm512_set1_epi32(1));
    const __m512i step = _mm512_set1_epi32(background.channel[0] < 128 ? 1 : -1);
    pixels = _mm512_mask_add_epi32(pixels, equal_pixels(pixels, background), pixels, step);
    const __m512i three =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    const __m512i packed =
        _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15),
                                 _mm512_shuffle_epi8(pixels, three));
    _mm512_mask_storeu_epi32(target, 0x0FFF, packed);
    return true;
}

inline bool block_holds(const std::uint8_t* pixels, KernelColour background) {
    const __mmask64 block = (1ULL << 48) - 1;
    const __m512i bytes = _mm512_maskz_loadu_epi8(block, pixels);
    const std::int32_t wanted =
        background.channel[0] | background.channel[1] << 8 | background.channel[2] << 16;
    const __m512i repeat =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0));
    // Lane by lane the pattern starts one channel later: 16 bytes are five pixels and a third.
    const __m512i late = _mm512_inserti32x4(
        _mm512_inserti32x4(repeat, _mm_setr_epi8(1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1), 1),
        _mm_setr_epi8(2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2), 2);
    const std::uint64_t same =
        _mm512_mask_cmpeq_epi8_mask(block, bytes, _mm512_shuffle_epi8(_mm512_set1_epi32(wanted), late));
    return (same & same >> 1 & same >> 2 & 0x249249249249ULL) != 0;
}

struct Blocks {
    static bool inside(const TapPlan& plan, const std::int32_t* x, const std::int32_t* y) {
        return block_inside(plan, x, y);
    }
    static void sample_block(const TapPlan& plan, const std::int32_t* x, const std::int32_t* y,
                             std::uint16_t* samples) {
        block_samples(plan, x, y, samples);
    }
    static void keep_apart(std::uint16_t* samples, KernelColour background) {
        block_apart(samples, background);
    }
    static bool finish_block(const std::uint16_t* samples, KernelColour background, std::uint8_t* target) {
        return block_bytes(samples, background, target);
    }
    static bool holds(const std::uint8_t* pixels, KernelColour background) {
        return block_holds(pixels, background);
    }
};

}  // namespace

const RowKernels kRowKernelsAvx512 = {
    {map_row<Lanes, 0>, map_row<Lanes, 1>}, bounds, sample<Blocks>, finish<Blocks>, mark<Blocks>};

}  // namespace zemora
