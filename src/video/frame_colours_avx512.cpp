#include "video/frame_colours_kernels.h"

// The intrinsics of this compiler start from undefined registers on purpose.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include <cstddef>

namespace zemora::colour_kernels {

namespace {

constexpr int kBlock = 64;          ///< Pixels made at a time.
constexpr int kLargestDeep = 1023;  ///< Of 10 bits.

inline __m512i load(const void* from) {
    return _mm512_loadu_si512(from);
}
inline void store(void* to, __m512i value) {
    _mm512_storeu_si512(to, value);
}
inline __m256i load_half(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
inline __m512i in_all_lanes(__m128i lane) {
    return _mm512_broadcast_i32x4(lane);
}

/// 64 numbers of 16 bits: those of the lower eight of each 16 pixels, and the others, which is the order that
/// unpacking and packing bytes have.
struct Two {
    __m512i low;
    __m512i high;
};

inline Two in_byte_order(__m512i first, __m512i second) {
    return {_mm512_shuffle_i32x4(first, second, _MM_SHUFFLE(2, 0, 2, 0)),
            _mm512_shuffle_i32x4(first, second, _MM_SHUFFLE(3, 1, 3, 1))};
}

int mix_chroma(const std::uint8_t* near, const std::uint8_t* far, int samples, int deep,
               std::uint16_t* mixed) {
    constexpr int kSamples = 32;
    const __m512i largest = _mm512_set1_epi16(kLargestDeep);
    int i = 0;
    for (; i + kSamples <= samples; i += kSamples) {
        __m512i a;
        __m512i b;
        if (deep != 0) {
            a = _mm512_min_epu16(load(near + 2 * static_cast<std::ptrdiff_t>(i)), largest);
            b = _mm512_min_epu16(load(far + 2 * static_cast<std::ptrdiff_t>(i)), largest);
        } else {
            a = _mm512_cvtepu8_epi16(load_half(near + i));
            b = _mm512_cvtepu8_epi16(load_half(far + i));
        }
        store(mixed + i, _mm512_add_epi16(_mm512_add_epi16(a, a), _mm512_add_epi16(a, b)));
    }
    return i;
}

/// Luma in 1/128 level.
inline Two luma_of(const std::uint8_t* luma, int x, bool deep) {
    if (deep) {
        const std::uint8_t* from = luma + 2 * static_cast<std::ptrdiff_t>(x);
        const __m512i largest = _mm512_set1_epi16(kLargestDeep);
        const Two two =
            in_byte_order(_mm512_min_epu16(load(from), largest), _mm512_min_epu16(load(from + 64), largest));
        return {_mm512_slli_epi16(two.low, 5), _mm512_slli_epi16(two.high, 5)};
    }
    const __m512i bytes = load(luma + x);
    const __m512i zero = _mm512_setzero_si512();
    return {_mm512_slli_epi16(_mm512_unpacklo_epi8(bytes, zero), 7),
            _mm512_slli_epi16(_mm512_unpackhi_epi8(bytes, zero), 7)};
}

/// Chroma about its middle in 1/256 level.
template <ChromaPlace kPlace>
inline Two chroma_of(const std::uint16_t* samples, int x, __m128i scale) {
    const __m512i middle = _mm512_set1_epi16(-32768);
    if constexpr (kPlace == ChromaPlace::at_each_pixel) {
        const Two two = in_byte_order(load(samples + x), load(samples + x + 32));
        return {_mm512_xor_si512(_mm512_sll_epi16(_mm512_slli_epi16(two.low, 2), scale), middle),
                _mm512_xor_si512(_mm512_sll_epi16(_mm512_slli_epi16(two.high, 2), scale), middle)};
    } else {
        const std::uint16_t* from = samples + x / 2;
        const __m512i own = load(from);
        const __m512i next = load(from + 1);
        __m512i even = _mm512_slli_epi16(own, 2);
        __m512i odd = _mm512_add_epi16(own, next);
        if constexpr (kPlace == ChromaPlace::at_even_pixels) {
            odd = _mm512_add_epi16(odd, odd);
        } else {
            const __m512i twice = _mm512_add_epi16(own, own);
            even = _mm512_add_epi16(_mm512_add_epi16(own, load(from - 1)), twice);
            odd = _mm512_add_epi16(odd, twice);
        }
        even = _mm512_xor_si512(_mm512_sll_epi16(even, scale), middle);
        odd = _mm512_xor_si512(_mm512_sll_epi16(odd, scale), middle);
        return {_mm512_unpacklo_epi16(even, odd), _mm512_unpackhi_epi16(even, odd)};
    }
}

/// Bytes of the sums, which are in 1/64.
inline __m512i levels(__m512i low, __m512i high) {
    return _mm512_packus_epi16(_mm512_srai_epi16(low, 6), _mm512_srai_epi16(high, 6));
}

/// The three parts of 16 pixels that stand in one lane of each vector.
template <int kLane>
inline void store_lane(__m512i first, __m512i second, __m512i third, std::uint8_t* out) {
    const auto put = [](std::uint8_t* to, __m128i part) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), part);
    };
    std::uint8_t* const to = out + std::ptrdiff_t{48} * kLane;
    put(to, _mm512_extracti32x4_epi32(first, kLane));
    put(to + 16, _mm512_extracti32x4_epi32(second, kLane));
    put(to + 32, _mm512_extracti32x4_epi32(third, kLane));
}

/// 64 pixels of three bytes from 64 of each channel.
inline void store_pixels(__m512i blue, __m512i green, __m512i red, std::uint8_t* out) {
    const __m512i b0 = in_all_lanes(_mm_setr_epi8(0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1, 5));
    const __m512i g0 = in_all_lanes(_mm_setr_epi8(-1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1));
    const __m512i r0 = in_all_lanes(_mm_setr_epi8(-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1));
    const __m512i b1 =
        in_all_lanes(_mm_setr_epi8(-1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10, -1));
    const __m512i g1 = in_all_lanes(_mm_setr_epi8(5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10));
    const __m512i r1 = in_all_lanes(_mm_setr_epi8(-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1));
    const __m512i b2 =
        in_all_lanes(_mm_setr_epi8(-1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1, -1));
    const __m512i g2 =
        in_all_lanes(_mm_setr_epi8(-1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1));
    const __m512i r2 =
        in_all_lanes(_mm_setr_epi8(10, -1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15));
    const auto merged = [&](__m512i b, __m512i g, __m512i r) {
        return _mm512_or_si512(_mm512_or_si512(_mm512_shuffle_epi8(blue, b), _mm512_shuffle_epi8(green, g)),
                               _mm512_shuffle_epi8(red, r));
    };
    const __m512i first = merged(b0, g0, r0);
    const __m512i second = merged(b1, g1, r1);
    const __m512i third = merged(b2, g2, r2);
    store_lane<0>(first, second, third, out);
    store_lane<1>(first, second, third, out);
    store_lane<2>(first, second, third, out);
    store_lane<3>(first, second, third, out);
}

template <ChromaPlace kPlace>
int bgr_row_at(const YuvRow& row, const BgrFactors& factors, std::uint8_t* bgr) {
    const bool deep = row.deep != 0;
    const __m128i scale = _mm_cvtsi32_si128(deep ? 2 : 4);
    const __m512i offset = _mm512_set1_epi16(factors.luma_offset);
    const __m512i luma = _mm512_set1_epi16(factors.luma);
    const __m512i red_v = _mm512_set1_epi16(factors.red_v);
    const __m512i green_u = _mm512_set1_epi16(factors.green_u);
    const __m512i green_v = _mm512_set1_epi16(factors.green_v);
    const __m512i blue_u = _mm512_set1_epi16(factors.blue_u);
    const __m512i half = _mm512_set1_epi16(32);
    const auto light = [&](__m512i y) {
        return _mm512_add_epi16(_mm512_mulhrs_epi16(_mm512_sub_epi16(y, offset), luma), half);
    };
    const auto plus = [](__m512i y, __m512i c, __m512i factor) {
        return _mm512_adds_epi16(y, _mm512_mulhrs_epi16(c, factor));
    };
    const auto minus = [](__m512i y, __m512i c, __m512i factor) {
        return _mm512_subs_epi16(y, _mm512_mulhrs_epi16(c, factor));
    };
    int x = 0;
    for (; x + kBlock <= row.width; x += kBlock) {
        const Two u = chroma_of<kPlace>(row.u, x, scale);
        const Two v = chroma_of<kPlace>(row.v, x, scale);
        Two y = luma_of(row.luma, x, deep);
        y = {light(y.low), light(y.high)};
        store_pixels(levels(plus(y.low, u.low, blue_u), plus(y.high, u.high, blue_u)),
                     levels(minus(minus(y.low, u.low, green_u), v.low, green_v),
                            minus(minus(y.high, u.high, green_u), v.high, green_v)),
                     levels(plus(y.low, v.low, red_v), plus(y.high, v.high, red_v)),
                     bgr + 3 * static_cast<std::ptrdiff_t>(x));
    }
    return x;
}

int bgr_row(const YuvRow& row, const BgrFactors& factors, std::uint8_t* bgr) {
    switch (row.place) {
        case ChromaPlace::at_each_pixel: return bgr_row_at<ChromaPlace::at_each_pixel>(row, factors, bgr);
        case ChromaPlace::at_even_pixels: return bgr_row_at<ChromaPlace::at_even_pixels>(row, factors, bgr);
        case ChromaPlace::between_pixels: return bgr_row_at<ChromaPlace::between_pixels>(row, factors, bgr);
    }
    return 0;
}

/// Sixteen pixels of four bytes, the fourth 0, from the 48 bytes of three; 64 are read.
inline __m512i sixteen_pixels(const std::uint8_t* bgr) {
    const __m512i places = _mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12);
    return _mm512_shuffle_epi8(
        _mm512_permutexvar_epi32(places, load(bgr)),
        in_all_lanes(_mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1)));
}

int luma_row(const std::uint8_t* bgr, int width, const YuvFactors& factors, std::uint8_t* luma) {
    constexpr int kPixels = 16;
    constexpr int kRead = kPixels + 6;  // pixels, with those that the load reads beyond
    const std::int16_t* three = factors.y;
    const __m512i weights =
        in_all_lanes(_mm_setr_epi16(three[0], three[1], three[2], 0, three[0], three[1], three[2], 0));
    const __m512i start = _mm512_set1_epi32(kLumaStart);
    const __m512i zero = _mm512_setzero_si512();
    int x = 0;
    for (; x + kRead <= width; x += kPixels) {
        const __m512i pixels = sixteen_pixels(bgr + 3 * static_cast<std::ptrdiff_t>(x));
        const __m512i low = _mm512_madd_epi16(_mm512_unpacklo_epi8(pixels, zero), weights);
        const __m512i high = _mm512_madd_epi16(_mm512_unpackhi_epi8(pixels, zero), weights);
        // Each pixel has two sums beside each other: those of blue with green, and of red.
        const __m512i sums = _mm512_add_epi32(
            _mm512_castps_si512(_mm512_shuffle_ps(_mm512_castsi512_ps(low), _mm512_castsi512_ps(high),
                                                  _MM_SHUFFLE(2, 0, 2, 0))),
            _mm512_castps_si512(_mm512_shuffle_ps(_mm512_castsi512_ps(low), _mm512_castsi512_ps(high),
                                                  _MM_SHUFFLE(3, 1, 3, 1))));
        const __m512i levels_of = _mm512_srai_epi32(_mm512_add_epi32(sums, start), kLumaBits);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(luma + x), _mm512_cvtepi32_epi8(levels_of));
    }
    return x;
}

int sum_rows(const std::uint8_t* a, const std::uint8_t* b, int samples, std::uint16_t* sums) {
    constexpr int kSamples = 32;
    int i = 0;
    for (; i + kSamples <= samples; i += kSamples) {
        store(sums + i, _mm512_add_epi16(_mm512_cvtepu8_epi16(load_half(a + i)),
                                         _mm512_cvtepu8_epi16(load_half(b + i))));
    }
    return i;
}

/// Blue, green, red of four chroma samples, eight times, each at the start of a lane.
inline __m512i four_smoothed(const std::uint16_t* sums) {
    constexpr int kPixel = 3;
    constexpr int kStep = 6;  // two pixels
    const auto lane = [](const std::uint16_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    };
    const auto four = [&](const std::uint16_t* from) {
        __m512i lanes = _mm512_castsi128_si512(lane(from));
        lanes = _mm512_inserti32x4(lanes, lane(from + kStep), 1);
        lanes = _mm512_inserti32x4(lanes, lane(from + std::ptrdiff_t{2} * kStep), 2);
        return _mm512_inserti32x4(lanes, lane(from + std::ptrdiff_t{3} * kStep), 3);
    };
    const __m512i own = four(sums);
    return _mm512_add_epi16(_mm512_add_epi16(own, own),
                            _mm512_add_epi16(four(sums - kPixel), four(sums + kPixel)));
}

int chroma_row(const std::uint16_t* sums, int samples, const YuvFactors& factors, std::uint8_t* u,
               std::uint8_t* v) {
    constexpr int kSamples = 8;
    constexpr int kRead = kSamples + 1;  // the last loads read beyond
    const __m512i weights = in_all_lanes(_mm_setr_epi16(factors.u[0], factors.u[1], factors.u[2], 0,
                                                        factors.v[0], factors.v[1], factors.v[2], 0));
    const __m512i start = _mm512_set1_epi32(kChromaStart);
    const __m512i doubled = in_all_lanes(_mm_setr_epi8(0, 1, 2, 3, 4, 5, -1, -1, 0, 1, 2, 3, 4, 5, -1, -1));
    const auto weighted = [&](const std::uint16_t* from) {
        return _mm512_castsi512_ps(
            _mm512_madd_epi16(_mm512_shuffle_epi8(four_smoothed(from), doubled), weights));
    };
    // Sums of u and v of samples 0 and 4, 1 and 5, 2 and 6, 3 and 7, a lane each; u of all goes to the front.
    const __m512i apart = _mm512_setr_epi32(0, 4, 8, 12, 2, 6, 10, 14, 1, 5, 9, 13, 3, 7, 11, 15);
    int i = 0;
    for (; i + kRead <= samples; i += kSamples) {
        const std::uint16_t* from = sums + 6 * static_cast<std::ptrdiff_t>(i);
        const __m512 first = weighted(from);
        const __m512 second = weighted(from + 24);
        const __m512i sum =
            _mm512_add_epi32(_mm512_castps_si512(_mm512_shuffle_ps(first, second, _MM_SHUFFLE(2, 0, 2, 0))),
                             _mm512_castps_si512(_mm512_shuffle_ps(first, second, _MM_SHUFFLE(3, 1, 3, 1))));
        const __m512i both = _mm512_srai_epi32(_mm512_add_epi32(sum, start), kChromaBits);
        const __m128i bytes = _mm512_cvtepi32_epi8(_mm512_permutexvar_epi32(apart, both));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(u + i), bytes);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(v + i), _mm_srli_si128(bytes, 8));
    }
    return i;
}

}  // namespace

const ColourKernels kColourKernelsAvx512 = {mix_chroma, bgr_row, luma_row, sum_rows, chroma_row};

}  // namespace zemora::colour_kernels
