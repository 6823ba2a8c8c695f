#include <immintrin.h>

#include <cstddef>
#include <cstring>

#include "numerics/rescale_kernels.h"

namespace zemora::rescale_kernels {

namespace {

constexpr int kPixel = 3;  ///< Samples.
constexpr int kBlock = 4;  ///< Pixels made at a time, in the order 0, 2 and 1, 3 in two vectors.

inline __m256i load32(const std::uint8_t* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

/// Eight samples from either place.
inline __m256i load_two(const std::uint16_t* low, const std::uint16_t* high) {
    return _mm256_set_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(high)),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(low)));
}

/// The bytes of four pixels, out of lanes of 32 bits of which every fourth is left out.
inline void store_pixels(__m256i pixels_0_2, __m256i pixels_1_3, std::uint8_t* out) {
    const __m256i words = _mm256_packus_epi32(pixels_0_2, pixels_1_3);
    const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(words, words), 0x08);
    const __m128i close = _mm_shuffle_epi8(
        _mm256_castsi256_si128(bytes), _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), close);
    const int last = _mm_extract_epi32(close, 2);
    std::memcpy(out + 8, &last, sizeof last);
}

inline __m128i load_pixel(const std::uint8_t* from) {
    int bytes = 0;
    std::memcpy(&bytes, from, sizeof bytes);
    return _mm_cvtepu8_epi32(_mm_cvtsi32_si128(bytes));
}

inline __m256 load_pixels(const std::uint8_t* low, const std::uint8_t* high) {
    return _mm256_cvtepi32_ps(_mm256_set_m128i(load_pixel(high), load_pixel(low)));
}

/// Both weights of a place, twice.
inline __m128 load_weights(const Place& place) {
    double both = 0.0;
    std::memcpy(&both, &place.first_weight, sizeof both);
    return _mm_castpd_ps(_mm_set1_pd(both));
}

/// The products and sums stand in the order of the plain code, so that they are rounded alike.
inline __m256i interpolate_two(const std::uint8_t* lower, const std::uint8_t* upper, __m256 row_weights,
                               const Place& low, const Place& high) {
    const __m256 weights = _mm256_mul_ps(_mm256_set_m128(load_weights(high), load_weights(low)), row_weights);
    __m256 sum =
        _mm256_mul_ps(_mm256_permute_ps(weights, 0x00), load_pixels(lower + low.first, lower + high.first));
    sum = _mm256_add_ps(sum, _mm256_mul_ps(_mm256_permute_ps(weights, 0x55),
                                           load_pixels(lower + low.second, lower + high.second)));
    sum = _mm256_add_ps(sum, _mm256_mul_ps(_mm256_permute_ps(weights, 0xAA),
                                           load_pixels(upper + low.first, upper + high.first)));
    sum = _mm256_add_ps(sum, _mm256_mul_ps(_mm256_permute_ps(weights, 0xFF),
                                           load_pixels(upper + low.second, upper + high.second)));
    return _mm256_cvttps_epi32(sum);
}

}  // namespace

int sum_rows_avx2(const std::uint8_t* const* rows, int n, int count, std::uint16_t* sums) {
    constexpr int kBytes = 32;
    // Rows at the same distance from the middle have the same weight. A product of both bytes is at most
    // 14 x 510, and all together are at most 65025.
    const std::uint8_t* const* middle = rows + (n - 1);
    const __m256i one = _mm256_set1_epi8(1);
    int x = 0;
    for (; x + kBytes <= count; x += kBytes) {
        __m256i weight = _mm256_set1_epi8(static_cast<char>(n));
        const __m256i centre = load32(middle[0] + x);
        __m256i low = _mm256_maddubs_epi16(_mm256_unpacklo_epi8(centre, _mm256_setzero_si256()), weight);
        __m256i high = _mm256_maddubs_epi16(_mm256_unpackhi_epi8(centre, _mm256_setzero_si256()), weight);
        for (int k = 1; k < n; ++k) {
            weight = _mm256_sub_epi8(weight, one);
            const __m256i below = load32(middle[-k] + x);
            const __m256i above = load32(middle[k] + x);
            low = _mm256_add_epi16(low, _mm256_maddubs_epi16(_mm256_unpacklo_epi8(below, above), weight));
            high = _mm256_add_epi16(high, _mm256_maddubs_epi16(_mm256_unpackhi_epi8(below, above), weight));
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums + x), _mm256_permute2x128_si256(low, high, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums + x + kBytes / 2),
                            _mm256_permute2x128_si256(low, high, 0x31));
    }
    return x;
}

int reduce_row_avx2(const std::uint16_t* sums, int width, int n, const std::int32_t* weights,
                    std::uint8_t* out) {
    constexpr int kSamplesRead = 8;
    // Each load holds two pixels; their samples become pairs of a channel. The products take signed samples:
    // 32768 less, which the weights make n x n times as much.
    const __m256i pairs = _mm256_setr_epi8(0, 1, 6, 7, 2, 3, 8, 9, 4, 5, 10, 11, -1, -1, -1, -1,  //
                                           0, 1, 6, 7, 2, 3, 8, 9, 4, 5, 10, 11, -1, -1, -1, -1);
    const __m256i half_range = _mm256_set1_epi16(-32768);
    const __m256i taken = _mm256_set1_epi32(32768 * n * n);
    // A sum is below 2^24 and the divisor below 2^16, so that both are exact as numbers of 32 bits, and a
    // quotient below a whole number is below it by more than the rounding.
    const __m256 divisor = _mm256_set1_ps(static_cast<float>(n * n * n * n));
    const int step = n * kPixel;
    const int last_read = ((kBlock - 1) * n + 2 * n - 2) * kPixel + kSamplesRead;
    int i = 1;
    for (int at = kPixel; at + last_read <= width * kPixel; at += kBlock * step, i += kBlock) {
        const std::uint16_t* from = sums + at;
        __m256i sum_0_2 = taken;
        __m256i sum_1_3 = taken;
        for (int k = 0; k < n; ++k, from += 2 * kPixel) {
            const __m256i weight = _mm256_set1_epi32(weights[k]);
            const __m256i two = _mm256_xor_si256(load_two(from, from + 2 * step), half_range);
            const __m256i other = _mm256_xor_si256(load_two(from + step, from + 3 * step), half_range);
            sum_0_2 = _mm256_add_epi32(sum_0_2, _mm256_madd_epi16(_mm256_shuffle_epi8(two, pairs), weight));
            sum_1_3 = _mm256_add_epi32(sum_1_3, _mm256_madd_epi16(_mm256_shuffle_epi8(other, pairs), weight));
        }
        store_pixels(_mm256_cvttps_epi32(_mm256_div_ps(_mm256_cvtepi32_ps(sum_0_2), divisor)),
                     _mm256_cvttps_epi32(_mm256_div_ps(_mm256_cvtepi32_ps(sum_1_3), divisor)),
                     out + static_cast<std::ptrdiff_t>(i) * kPixel);
    }
    return i;
}

int interpolate_row_avx2(const std::uint8_t* lower, const std::uint8_t* upper, float upper_weight,
                         const Place* places, int count, std::uint8_t* out) {
    const float lower_weight = 1.0F - upper_weight;
    const __m256 row_weights = _mm256_setr_ps(lower_weight, lower_weight, upper_weight, upper_weight,
                                              lower_weight, lower_weight, upper_weight, upper_weight);
    int x = 0;
    for (; x + kBlock <= count; x += kBlock, out += kBlock * kPixel) {
        const Place* four = places + x;
        store_pixels(interpolate_two(lower, upper, row_weights, four[0], four[2]),
                     interpolate_two(lower, upper, row_weights, four[1], four[3]), out);
    }
    return x;
}

}  // namespace zemora::rescale_kernels
