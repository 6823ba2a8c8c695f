#include <immintrin.h>

#include <cstdint>

namespace zemora::histogram_kernels {

int grey_row_avx2(const std::uint8_t* pixels, int count, const std::uint8_t* passe, std::uint16_t* levels);

int grey_row_avx2(const std::uint8_t* pixels, int count, const std::uint8_t* passe, std::uint16_t* levels) {
    // Two groups of four pixels become lanes of 32 bits: blue, green, red, 0. The second load reads
    // 16 bytes from byte 12 on, four of them behind the eight pixels.
    constexpr int kBlock = 8;
    constexpr int kBlockBytes = 24;
    constexpr int kBytesRead = 28;
    const __m256i spread = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                                            0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    const __m256i blue_red = _mm256_set1_epi32(114 | 299 << 16);
    const __m256i green = _mm256_set1_epi32(587);
    const __m256i low_bytes = _mm256_set1_epi32(0x00FF00FF);
    const __m256i excluded = _mm256_set1_epi32(passe[0] | passe[1] << 8 | passe[2] << 16);
    const __m256i not_counted = _mm256_set1_epi32(256);
    int x = 0;
    const std::uint8_t* from = pixels;
    for (; (count - x) * 3 >= kBytesRead; x += kBlock, from += kBlockBytes) {
        const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + kBlockBytes / 2));
        const __m256i bgr = _mm256_shuffle_epi8(_mm256_set_m128i(second, first), spread);
        const __m256i odd = _mm256_and_si256(_mm256_srli_epi32(bgr, 8), low_bytes);
        const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(_mm256_and_si256(bgr, low_bytes), blue_red),
                                             _mm256_madd_epi16(odd, green));
        // sum / 1000 as (sum / 8) / 125: sum / 8 is at most 31875, where 33555 / 2^22 does for 1 / 125.
        const __m256i eighth = _mm256_srli_epi32(sum, 3);
        const __m256i grey = _mm256_srli_epi32(_mm256_mulhi_epu16(eighth, _mm256_set1_epi32(33555)), 6);
        const __m256i same = _mm256_cmpeq_epi32(bgr, excluded);
        const __m256i level = _mm256_blendv_epi8(grey, not_counted, same);
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi32(level, level), 0x08);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(levels + x), _mm256_castsi256_si128(packed));
    }
    return x;
}

}  // namespace zemora::histogram_kernels
