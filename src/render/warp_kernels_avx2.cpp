#include <immintrin.h>

#include "render/warp_blocks_simd.h"
#include "render/warp_kernels.h"
#include "render/warp_map_simd.h"

namespace zemora {

namespace {

struct Lanes {
    using Int = __m256i;
    static constexpr int kLanes = 8;
    static Int all(std::int32_t value) { return _mm256_set1_epi32(value); }
    static Int steps_of_128() { return _mm256_setr_epi32(0, 128, 256, 384, 512, 640, 768, 896); }
    static Int add(Int a, Int b) { return _mm256_add_epi32(a, b); }
    static Int subtract(Int a, Int b) { return _mm256_sub_epi32(a, b); }
    static Int multiply(Int a, Int b) { return _mm256_mullo_epi32(a, b); }
    template <int bits>
    static Int shift_right(Int a) {
        return _mm256_srai_epi32(a, bits);
    }
    template <int bits>
    static Int shift_right_logical(Int a) {
        return _mm256_srli_epi32(a, bits);
    }
    static void store(std::int32_t* target, Int a) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(target), a);
    }
    static Int truncated_quotient(Int a, float divisor) {
        return _mm256_cvttps_epi32(_mm256_div_ps(_mm256_cvtepi32_ps(a), _mm256_set1_ps(divisor)));
    }
    /// floor(a / divisor + 0.5): the half is compared with, since adding it could round.
    static Int rounded_quotient(Int a, float divisor) {
        const __m256 quotient = _mm256_div_ps(_mm256_cvtepi32_ps(a), _mm256_set1_ps(divisor));
        const __m256 whole = _mm256_floor_ps(quotient);
        const __m256 up = _mm256_cmp_ps(_mm256_sub_ps(quotient, whole), _mm256_set1_ps(0.5F), _CMP_GE_OQ);
        return _mm256_sub_epi32(_mm256_cvttps_epi32(whole), _mm256_castps_si256(up));
    }
    static Int multiply_high(Int a, std::uint32_t factor, int bits) {
        const Int factors = _mm256_set1_epi32(static_cast<std::int32_t>(factor));
        const __m128i shift = _mm_cvtsi32_si128(bits);
        const Int even = _mm256_srl_epi64(_mm256_mul_epu32(a, factors), shift);
        const Int odd = _mm256_srl_epi64(_mm256_mul_epu32(_mm256_srli_epi64(a, 32), factors), shift);
        return _mm256_or_si256(even, _mm256_slli_epi64(odd, 32));
    }
};

inline __m256i load8(const std::int32_t* source) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source));
}

inline bool block_inside(const TapPlan& plan, const std::int32_t* x, const std::int32_t* y) {
    const __m256i lowest = _mm256_set1_epi32(plan.low);
    const __m256i last_x = _mm256_set1_epi32(plan.x_end - 1);
    const __m256i last_y = _mm256_set1_epi32(plan.y_end - 1);
    __m256i outside = _mm256_setzero_si256();
    for (int i = 0; i < kKernelBlock; i += 8) {
        const __m256i px = load8(x + i);
        const __m256i py = load8(y + i);
        outside = _mm256_or_si256(
            outside, _mm256_or_si256(_mm256_cmpgt_epi32(lowest, px), _mm256_cmpgt_epi32(lowest, py)));
        outside = _mm256_or_si256(
            outside, _mm256_or_si256(_mm256_cmpgt_epi32(px, last_x), _mm256_cmpgt_epi32(py, last_y)));
    }
    return _mm256_testz_si256(outside, outside) != 0;
}

/// Smallest and largest of 16 numbers.
inline void bounds_of(const std::int32_t* values, std::int32_t* result) {
    const __m256i a = load8(values);
    const __m256i b = load8(values + 8);
    const __m256i low = _mm256_min_epi32(a, b);
    const __m256i high = _mm256_max_epi32(a, b);
    __m128i smallest = _mm_min_epi32(_mm256_castsi256_si128(low), _mm256_extracti128_si256(low, 1));
    __m128i largest = _mm_max_epi32(_mm256_castsi256_si128(high), _mm256_extracti128_si256(high, 1));
    smallest = _mm_min_epi32(smallest, _mm_shuffle_epi32(smallest, 0x4E));
    largest = _mm_max_epi32(largest, _mm_shuffle_epi32(largest, 0x4E));
    result[0] = _mm_cvtsi128_si32(_mm_min_epi32(smallest, _mm_shuffle_epi32(smallest, 0xB1)));
    result[1] = _mm_cvtsi128_si32(_mm_max_epi32(largest, _mm_shuffle_epi32(largest, 0xB1)));
}

void bounds(const std::int32_t* x, const std::int32_t* y, std::int32_t* result) {
    bounds_of(x, result);
    bounds_of(y, result + 2);
}

inline __m256i in_both_lanes(__m128i value) {
    return _mm256_broadcastsi128_si256(value);
}

/// The taps of two pixels in one row, one pixel a lane: four pixels of three bytes each.
template <bool neighbours>
inline __m256i load_taps(const std::uint8_t* base, const std::int32_t* offset) {
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(base + offset[0]));
    if constexpr (neighbours) {
        return in_both_lanes(first);
    } else {
        const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(base + offset[1]));
        return _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
    }
}

/// The bytes of the taps by channel. Where the second pixel's taps begin one pixel behind those of the first,
/// both are cut from the same 16 bytes.
template <bool neighbours>
inline __m256i channel_order() {
    constexpr char kStep = neighbours ? 3 : 0;
    return _mm256_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1, kStep, kStep + 3, kStep + 6,
                            kStep + 9, kStep + 1, kStep + 4, kStep + 7, kStep + 10, kStep + 2, kStep + 5,
                            kStep + 8, kStep + 11, -1, -1, -1, -1);
}

/// Two pixels: across in 8 by 8 bits, then up in 16 by 16 bits, then the two halves of a channel are added.
/// The first sum is of two taps, one weight of each sign, and so stays within 16 bits.
template <bool neighbours>
inline __m256i weigh_two(const TapPlan& plan, const std::int32_t* offset, __m256i across, __m256i up) {
    const __m256i by_channel = channel_order<neighbours>();
    __m256i pairs[4];
    for (int j = 0; j < 4; ++j) {
        const __m256i taps = load_taps<neighbours>(plan.source + j * plan.pitch, offset);
        pairs[j] = _mm256_maddubs_epi16(_mm256_shuffle_epi8(taps, by_channel), across);
    }
    // Each weight in the high byte of its 16 bits: 256 times the weight.
    const __m256i low_weights =
        _mm256_shuffle_epi8(up, _mm256_set1_epi32(static_cast<std::int32_t>(0x01800080)));
    const __m256i high_weights =
        _mm256_shuffle_epi8(up, _mm256_set1_epi32(static_cast<std::int32_t>(0x03800280)));
    const __m256i blue_green =
        _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpacklo_epi16(pairs[0], pairs[1]), low_weights),
                         _mm256_madd_epi16(_mm256_unpacklo_epi16(pairs[2], pairs[3]), high_weights));
    const __m256i red =
        _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpackhi_epi16(pairs[0], pairs[1]), low_weights),
                         _mm256_madd_epi16(_mm256_unpackhi_epi16(pairs[2], pairs[3]), high_weights));
    const __m256i sum = _mm256_hadd_epi32(blue_green, red);
    return _mm256_srai_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(plan.rounding)), 14);
}

template <bool neighbours>
inline void weigh_eight(const TapPlan& plan, const std::int32_t* offset, __m256i across, __m256i up,
                        std::uint16_t* samples) {
    __m256i lane = _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1);
    const __m256i next = _mm256_set1_epi32(2);
    for (int k = 0; k < 8; k += 4) {
        const __m256i first =
            weigh_two<neighbours>(plan, offset + k, _mm256_permutevar8x32_epi32(across, lane),
                                  _mm256_permutevar8x32_epi32(up, lane));
        lane = _mm256_add_epi32(lane, next);
        const __m256i second =
            weigh_two<neighbours>(plan, offset + k + 2, _mm256_permutevar8x32_epi32(across, lane),
                                  _mm256_permutevar8x32_epi32(up, lane));
        lane = _mm256_add_epi32(lane, next);
        const __m256i narrow = _mm256_permute4x64_epi64(_mm256_packus_epi32(first, second), 0xD8);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(samples + 4 * k), narrow);
    }
}

/// Whether each second of eight pixels has its taps one pixel behind those of the one before, as nearly all
/// have where little is turned or scaled.
inline bool are_neighbours(__m256i offsets) {
    const __m256i steps = _mm256_sub_epi32(_mm256_srli_epi64(offsets, 32), offsets);
    const __m256i same = _mm256_cmpeq_epi32(steps, _mm256_set1_epi32(3));
    return (_mm256_movemask_ps(_mm256_castsi256_ps(same)) & 0x55) == 0x55;
}

inline void block_samples(const TapPlan& plan, const std::int32_t* x, const std::int32_t* y,
                          std::uint16_t* samples) {
    const __m256i fraction = _mm256_set1_epi32(127);
    const __m256i one = _mm256_set1_epi32(1);
    for (int i = 0; i < kKernelBlock; i += 8) {
        const __m256i px = load8(x + i);
        const __m256i py = load8(y + i);
        const __m256i column = _mm256_sub_epi32(_mm256_srai_epi32(px, 7), one);
        const __m256i row = _mm256_sub_epi32(_mm256_srai_epi32(py, 7), one);
        const __m256i across = _mm256_i32gather_epi32(plan.weights, _mm256_and_si256(px, fraction), 4);
        const __m256i up = _mm256_i32gather_epi32(plan.weights, _mm256_and_si256(py, fraction), 4);
        const __m256i columns3 = _mm256_add_epi32(column, _mm256_add_epi32(column, column));
        const __m256i rows =
            _mm256_mullo_epi32(row, _mm256_set1_epi32(static_cast<std::int32_t>(plan.pitch)));
        const __m256i offsets = _mm256_add_epi32(columns3, rows);
        alignas(32) std::int32_t offset[8];
        _mm256_store_si256(reinterpret_cast<__m256i*>(offset), offsets);
        if (are_neighbours(offsets)) {
            weigh_eight<true>(plan, offset, across, up, samples + 4 * i);
        } else {
            weigh_eight<false>(plan, offset, across, up, samples + 4 * i);
        }
    }
}

inline __m256i load_samples(const std::uint16_t* samples) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples));
}

inline __m256i colour_words(KernelColour colour) {
    return _mm256_set1_epi32(colour.channel[0] | colour.channel[1] << 8 | colour.channel[2] << 16);
}

/// Bytes of 8 samples held in two vectors of small 16-bit numbers, four bytes a sample.
inline __m256i narrowed(__m256i first, __m256i second) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8);
}

inline void block_apart(std::uint16_t* samples, KernelColour background) {
    for (int i = 0; i < kKernelBlock; i += 8, samples += 32) {
        const __m256i high = narrowed(_mm256_srli_epi16(load_samples(samples), 8),
                                      _mm256_srli_epi16(load_samples(samples + 16), 8));
        const __m256i same = _mm256_cmpeq_epi32(high, colour_words(background));
        auto alike = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(same)));
        for (; alike != 0; alike &= alike - 1) {
            std::uint16_t& blue = samples[4 * __builtin_ctz(alike)];
            blue = static_cast<std::uint16_t>(blue < 32768 ? blue + 256 : blue - 256);
        }
    }
}

inline bool has_empty(const std::uint16_t* samples) {
    __m256i any = _mm256_setzero_si256();
    for (int i = 0; i < 4 * kKernelBlock; i += 16) {
        any = _mm256_or_si256(any, load_samples(samples + i));
    }
    return _mm256_testz_si256(any, _mm256_set1_epi64x(static_cast<std::int64_t>(0xFFFF000000000000ULL))) == 0;
}

inline bool block_bytes(const std::uint16_t* samples, KernelColour background, std::uint8_t* target) {
    if (has_empty(samples)) {
        return false;
    }
    const __m256i half = _mm256_set1_epi16(128);
    const __m256i step = _mm256_set1_epi32(background.channel[0] < 128 ? 1 : -1);
    const __m256i three =
        in_both_lanes(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    for (int i = 0; i < kKernelBlock; i += 8, samples += 32, target += 24) {
        __m256i pixels = narrowed(_mm256_srli_epi16(_mm256_adds_epu16(load_samples(samples), half), 8),
                                  _mm256_srli_epi16(_mm256_adds_epu16(load_samples(samples + 16), half), 8));
        const __m256i black = _mm256_cmpeq_epi32(pixels, _mm256_setzero_si256());
        pixels = _mm256_sub_epi32(pixels, black);
        const __m256i same = _mm256_cmpeq_epi32(pixels, colour_words(background));
        pixels = _mm256_add_epi32(pixels, _mm256_and_si256(same, step));
        const __m256i packed = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(pixels, three),
                                                           _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target), _mm256_castsi256_si128(packed));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(target + 16), _mm256_extracti128_si256(packed, 1));
    }
    return true;
}

/// Bits of the 16 bytes from `pixels` on that equal the colour, whose channel `first` comes first.
inline std::uint64_t equal_bytes(const std::uint8_t* pixels, KernelColour colour, int first) {
    const __m128i channels = _mm_setr_epi8(0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0);
    const std::uint8_t a = colour.channel[first];
    const std::uint8_t b = colour.channel[(first + 1) % 3];
    const std::uint8_t c = colour.channel[(first + 2) % 3];
    const __m128i wanted = _mm_shuffle_epi8(_mm_cvtsi32_si128(a | b << 8 | c << 16), channels);
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels));
    return static_cast<std::uint64_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted)));
}

inline bool block_holds(const std::uint8_t* pixels, KernelColour background) {
    const std::uint64_t same = equal_bytes(pixels, background, 0) |
                               equal_bytes(pixels + 16, background, 1) << 16 |
                               equal_bytes(pixels + 32, background, 2) << 32;
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

const RowKernels kRowKernelsAvx2 = {
    {map_row<Lanes, 0>, map_row<Lanes, 1>}, bounds, sample<Blocks>, finish<Blocks>, mark<Blocks>};

}  // namespace zemora
