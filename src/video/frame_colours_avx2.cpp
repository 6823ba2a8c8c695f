#include <immintrin.h>

#include <cstddef>

#include "video/frame_colours_kernels.h"

namespace zemora::colour_kernels {

namespace {

constexpr int kBlock = 32;          ///< Pixels made at a time.
constexpr int kLargestDeep = 1023;  ///< Of 10 bits.

inline __m256i load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
inline void store(void* to, __m256i value) {
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}
inline __m128i load_half(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

/// 32 numbers of 16 bits: those of pixels 0 to 7 and 16 to 23, and the others, which is the order that
/// unpacking and packing bytes have.
struct Two {
    __m256i low;
    __m256i high;
};

inline Two in_byte_order(__m256i first, __m256i second) {
    return {_mm256_permute2x128_si256(first, second, 0x20), _mm256_permute2x128_si256(first, second, 0x31)};
}

int mix_chroma(const std::uint8_t* near, const std::uint8_t* far, int samples, int deep,
               std::uint16_t* mixed) {
    constexpr int kSamples = 16;
    const __m256i largest = _mm256_set1_epi16(kLargestDeep);
    int i = 0;
    for (; i + kSamples <= samples; i += kSamples) {
        __m256i a;
        __m256i b;
        if (deep != 0) {
            a = _mm256_min_epu16(load(near + 2 * static_cast<std::ptrdiff_t>(i)), largest);
            b = _mm256_min_epu16(load(far + 2 * static_cast<std::ptrdiff_t>(i)), largest);
        } else {
            a = _mm256_cvtepu8_epi16(load_half(near + i));
            b = _mm256_cvtepu8_epi16(load_half(far + i));
        }
        store(mixed + i, _mm256_add_epi16(_mm256_add_epi16(a, a), _mm256_add_epi16(a, b)));
    }
    return i;
}

/// Luma in 1/128 level.
inline Two luma_of(const std::uint8_t* luma, int x, bool deep) {
    if (deep) {
        const std::uint8_t* from = luma + 2 * static_cast<std::ptrdiff_t>(x);
        const __m256i largest = _mm256_set1_epi16(kLargestDeep);
        const Two two =
            in_byte_order(_mm256_min_epu16(load(from), largest), _mm256_min_epu16(load(from + 32), largest));
        return {_mm256_slli_epi16(two.low, 5), _mm256_slli_epi16(two.high, 5)};
    }
    const __m256i bytes = load(luma + x);
    const __m256i zero = _mm256_setzero_si256();
    return {_mm256_slli_epi16(_mm256_unpacklo_epi8(bytes, zero), 7),
            _mm256_slli_epi16(_mm256_unpackhi_epi8(bytes, zero), 7)};
}

/// Chroma about its middle in 1/256 level.
template <ChromaPlace kPlace>
inline Two chroma_of(const std::uint16_t* samples, int x, __m128i scale) {
    const __m256i middle = _mm256_set1_epi16(-32768);
    if constexpr (kPlace == ChromaPlace::at_each_pixel) {
        const Two two = in_byte_order(load(samples + x), load(samples + x + 16));
        return {_mm256_xor_si256(_mm256_sll_epi16(_mm256_slli_epi16(two.low, 2), scale), middle),
                _mm256_xor_si256(_mm256_sll_epi16(_mm256_slli_epi16(two.high, 2), scale), middle)};
    } else {
        const std::uint16_t* from = samples + x / 2;
        const __m256i own = load(from);
        const __m256i next = load(from + 1);
        __m256i even = _mm256_slli_epi16(own, 2);
        __m256i odd = _mm256_add_epi16(own, next);
        if constexpr (kPlace == ChromaPlace::at_even_pixels) {
            odd = _mm256_add_epi16(odd, odd);
        } else {
            const __m256i twice = _mm256_add_epi16(own, own);
            even = _mm256_add_epi16(_mm256_add_epi16(own, load(from - 1)), twice);
            odd = _mm256_add_epi16(odd, twice);
        }
        even = _mm256_xor_si256(_mm256_sll_epi16(even, scale), middle);
        odd = _mm256_xor_si256(_mm256_sll_epi16(odd, scale), middle);
        return {_mm256_unpacklo_epi16(even, odd), _mm256_unpackhi_epi16(even, odd)};
    }
}

/// Bytes of the sums, which are in 1/64.
inline __m256i levels(__m256i low, __m256i high) {
    return _mm256_packus_epi16(_mm256_srai_epi16(low, 6), _mm256_srai_epi16(high, 6));
}

/// 32 pixels of three bytes from 32 of each channel.
inline void store_pixels(__m256i blue, __m256i green, __m256i red, std::uint8_t* out) {
    const auto twice = [](__m128i order) { return _mm256_broadcastsi128_si256(order); };
    const __m256i b0 = twice(_mm_setr_epi8(0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1, 5));
    const __m256i g0 = twice(_mm_setr_epi8(-1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1));
    const __m256i r0 = twice(_mm_setr_epi8(-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1));
    const __m256i b1 = twice(_mm_setr_epi8(-1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10, -1));
    const __m256i g1 = twice(_mm_setr_epi8(5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10));
    const __m256i r1 = twice(_mm_setr_epi8(-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1));
    const __m256i b2 = twice(_mm_setr_epi8(-1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1, -1));
    const __m256i g2 = twice(_mm_setr_epi8(-1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1));
    const __m256i r2 = twice(_mm_setr_epi8(10, -1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15));
    const auto merged = [&](__m256i b, __m256i g, __m256i r) {
        return _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(blue, b), _mm256_shuffle_epi8(green, g)),
                               _mm256_shuffle_epi8(red, r));
    };
    const __m256i first = merged(b0, g0, r0);
    const __m256i second = merged(b1, g1, r1);
    const __m256i third = merged(b2, g2, r2);
    store(out, _mm256_permute2x128_si256(first, second, 0x20));
    store(out + 32, _mm256_permute2x128_si256(third, first, 0x30));
    store(out + 64, _mm256_permute2x128_si256(second, third, 0x31));
}

template <ChromaPlace kPlace>
int bgr_row_at(const YuvRow& row, const BgrFactors& factors, std::uint8_t* bgr) {
    const bool deep = row.deep != 0;
    const __m128i scale = _mm_cvtsi32_si128(deep ? 2 : 4);
    const __m256i offset = _mm256_set1_epi16(factors.luma_offset);
    const __m256i luma = _mm256_set1_epi16(factors.luma);
    const __m256i red_v = _mm256_set1_epi16(factors.red_v);
    const __m256i green_u = _mm256_set1_epi16(factors.green_u);
    const __m256i green_v = _mm256_set1_epi16(factors.green_v);
    const __m256i blue_u = _mm256_set1_epi16(factors.blue_u);
    const __m256i half = _mm256_set1_epi16(32);
    const auto light = [&](__m256i y) {
        return _mm256_add_epi16(_mm256_mulhrs_epi16(_mm256_sub_epi16(y, offset), luma), half);
    };
    const auto plus = [](__m256i y, __m256i c, __m256i factor) {
        return _mm256_adds_epi16(y, _mm256_mulhrs_epi16(c, factor));
    };
    const auto minus = [](__m256i y, __m256i c, __m256i factor) {
        return _mm256_subs_epi16(y, _mm256_mulhrs_epi16(c, factor));
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

/// Eight pixels of four bytes, the fourth 0, from the 24 bytes of three; 32 are read.
inline __m256i eight_pixels(const std::uint8_t* bgr) {
    const __m256i spread = _mm256_permutevar8x32_epi32(load(bgr), _mm256_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6));
    return _mm256_shuffle_epi8(spread, _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6,
                                                                                 7, 8, -1, 9, 10, 11, -1)));
}

inline __m256i four_factors(const std::int16_t* three) {
    return _mm256_broadcastsi128_si256(
        _mm_setr_epi16(three[0], three[1], three[2], 0, three[0], three[1], three[2], 0));
}

int luma_row(const std::uint8_t* bgr, int width, const YuvFactors& factors, std::uint8_t* luma) {
    constexpr int kPixels = 16;
    constexpr int kRead = kPixels + 3;  // pixels, with those that the last load reads beyond
    const __m256i weights = four_factors(factors.y);
    const __m256i start = _mm256_set1_epi32(kLumaStart);
    const __m256i zero = _mm256_setzero_si256();
    const auto eight = [&](const std::uint8_t* from) {
        const __m256i pixels = eight_pixels(from);
        const __m256i sums =
            _mm256_hadd_epi32(_mm256_madd_epi16(_mm256_unpacklo_epi8(pixels, zero), weights),
                              _mm256_madd_epi16(_mm256_unpackhi_epi8(pixels, zero), weights));
        return _mm256_srai_epi32(_mm256_add_epi32(sums, start), kLumaBits);
    };
    int x = 0;
    for (; x + kRead <= width; x += kPixels) {
        const std::uint8_t* from = bgr + 3 * static_cast<std::ptrdiff_t>(x);
        // Pixels 0 to 3 and 8 to 11, then the others.
        const __m256i words = _mm256_packs_epi32(eight(from), eight(from + 24));
        const __m256i bytes = _mm256_packus_epi16(words, words);
        const __m128i mixed =
            _mm_unpacklo_epi32(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(luma + x), mixed);
    }
    return x;
}

int sum_rows(const std::uint8_t* a, const std::uint8_t* b, int samples, std::uint16_t* sums) {
    constexpr int kSamples = 16;
    int i = 0;
    for (; i + kSamples <= samples; i += kSamples) {
        store(sums + i, _mm256_add_epi16(_mm256_cvtepu8_epi16(load_half(a + i)),
                                         _mm256_cvtepu8_epi16(load_half(b + i))));
    }
    return i;
}

/// Blue, green, red of two chroma samples, eight times, each at the start of a half.
inline __m256i two_smoothed(const std::uint16_t* sums) {
    constexpr int kPixel = 3;
    constexpr int kStep = 6;  // two pixels
    const auto both = [](const std::uint16_t* from) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(load_half(from)), load_half(from + kStep), 1);
    };
    const __m256i own = both(sums);
    return _mm256_add_epi16(_mm256_add_epi16(own, own),
                            _mm256_add_epi16(both(sums - kPixel), both(sums + kPixel)));
}

int chroma_row(const std::uint16_t* sums, int samples, const YuvFactors& factors, std::uint8_t* u,
               std::uint8_t* v) {
    constexpr int kSamples = 8;
    constexpr int kRead = kSamples + 1;  // the last loads read beyond
    const __m256i weights = _mm256_broadcastsi128_si256(_mm_setr_epi16(
        factors.u[0], factors.u[1], factors.u[2], 0, factors.v[0], factors.v[1], factors.v[2], 0));
    const __m256i start = _mm256_set1_epi32(kChromaStart);
    const __m256i doubled =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, 3, 4, 5, -1, -1, 0, 1, 2, 3, 4, 5, -1, -1));
    const auto weighted = [&](const std::uint16_t* from) {
        return _mm256_madd_epi16(_mm256_shuffle_epi8(two_smoothed(from), doubled), weights);
    };
    const auto four = [&](const std::uint16_t* from) {
        const __m256i pairs = _mm256_hadd_epi32(weighted(from), weighted(from + 12));
        return _mm256_srai_epi32(_mm256_add_epi32(pairs, start), kChromaBits);
    };
    // u and v in turn, the even samples in the lower half and the odd ones in the upper.
    const __m256i apart =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 8, 12, 2, 6, 10, 14, -1, -1, -1, -1, -1, -1, -1, -1));
    int i = 0;
    for (; i + kRead <= samples; i += kSamples) {
        const std::uint16_t* from = sums + 6 * static_cast<std::ptrdiff_t>(i);
        const __m256i parts = _mm256_shuffle_epi8(_mm256_packs_epi32(four(from), four(from + 24)), apart);
        const __m128i in_order =
            _mm_unpacklo_epi8(_mm256_castsi256_si128(parts), _mm256_extracti128_si256(parts, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(u + i), in_order);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(v + i), _mm_srli_si128(in_order, 8));
    }
    return i;
}

}  // namespace

const ColourKernels kColourKernelsAvx2 = {mix_chroma, bgr_row, luma_row, sum_rows, chroma_row};

}  // namespace zemora::colour_kernels
