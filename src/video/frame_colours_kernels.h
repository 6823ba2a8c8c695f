#pragma once
/// The steps of the change between luma with chroma and blue, green, red, row by row, in their vector forms.
/// Each does the start of a row, gives how far it came, and leaves the rest to the plain code, with the same
/// numbers.
///
/// This header holds plain numbers only, no inline functions: the files that include it are compiled
/// for other instruction sets.

#include <cstdint>

namespace zemora::colour_kernels {

/// A product is (a x b + 2^14) >> 15 of two 16-bit numbers, sums are held to 16 bits. Luma comes in 1/128 of
/// an 8-bit level and chroma in 1/256 about its middle, the most that 16 bits hold; products are in 1/64.
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

/// Factors in 1/32768 of a level. Those of luma add up to the whole range, those of chroma to nothing.
struct YuvFactors {
    std::int16_t y[3];  ///< Of blue, green, red.
    std::int16_t u[3];
    std::int16_t v[3];
};

/// Bits behind the point of the sums of luma, and of chroma from eight times the pixel.
constexpr int kLumaBits = 15;
constexpr int kChromaBits = 18;
/// Black and no colour, with the half that rounds.
constexpr std::int32_t kLumaStart = (16 << kLumaBits) + (1 << (kLumaBits - 1));
constexpr std::int32_t kChromaStart = (128 << kChromaBits) + (1 << (kChromaBits - 1));

struct ColourKernels {
    /// Three parts of `near` and one of `far`; samples of 8 bits, or with `deep` of 10 bits in 16. Gives the
    /// samples done.
    int (*mix_chroma)(const std::uint8_t* near, const std::uint8_t* far, int samples, int deep,
                      std::uint16_t* mixed);
    /// Gives the pixels done.
    int (*bgr_row)(const YuvRow& row, const BgrFactors& factors, std::uint8_t* bgr);
    int (*luma_row)(const std::uint8_t* bgr, int width, const YuvFactors& factors, std::uint8_t* luma);
    /// Sums of the samples of two rows.
    int (*sum_rows)(const std::uint8_t* a, const std::uint8_t* b, int samples, std::uint16_t* sums);
    /// Chroma at every other pixel of such sums, which go on for one more pixel at both ends: a quarter of
    /// each neighbour and a half of the pixel. Gives the chroma samples done.
    int (*chroma_row)(const std::uint16_t* sums, int samples, const YuvFactors& factors, std::uint8_t* u,
                      std::uint8_t* v);
};

extern const ColourKernels kColourKernelsAvx2;
extern const ColourKernels kColourKernelsAvx512;

}  // namespace zemora::colour_kernels
