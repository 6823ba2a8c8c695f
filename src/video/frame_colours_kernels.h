#pragma once
/// The steps of the change between luma with chroma and blue, green, red, row by row, and their vector forms.
/// A vector form does the start of a row, gives how far it came, and leaves the rest to the plain code, with
/// the same numbers.
///
/// This header holds plain numbers only, no inline functions: the files that include it are compiled
/// for other instruction sets.

#include <cstdint>

namespace zemora::colour_kernels {

/// A product is (a x b + 2^14) >> 15 of two 16-bit numbers; sums are held to 16 bits. Luma comes in 1/128 of
/// an 8-bit level, chroma in 1/256 about its middle, which is what 16 bits hold, and all products are in
/// 1/64.
struct BgrFactors {
    std::int16_t luma_offset;  ///< Black, in 1/128 level.
    std::int16_t luma;         ///< Half the factor of luma, as all in 1/32768.
    std::int16_t red_v;        ///< A quarter of the factors of chroma.
    std::int16_t green_u;      ///< Those of green are taken off.
    std::int16_t green_v;
    std::int16_t blue_u;
};

/// Where the chroma samples of a row stand.
enum class ChromaPlace : std::int32_t { at_each_pixel, at_even_pixels, between_pixels };

/// One row of a picture. Chroma is four times the sample, so that it can lie a quarter between two rows, and
/// has one more sample at both ends.
struct YuvRow {
    const std::uint8_t* luma;
    const std::uint16_t* u;
    const std::uint16_t* v;
    std::int32_t width;  ///< Pixels.
    std::int32_t deep;   ///< 1: luma of 10 bits in 16; chroma is four times 10 bits.
    ChromaPlace place;
};

/// Three parts of `near` and one of `far`, for samples of 8 or 10 bits; gives the number of samples done.
int mix_chroma_avx2(const std::uint8_t* near, const std::uint8_t* far, int samples, int deep,
                    std::uint16_t* mixed);
int bgr_row_avx2(const YuvRow& row, const BgrFactors& factors, std::uint8_t* bgr);

}  // namespace zemora::colour_kernels
