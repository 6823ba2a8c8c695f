#pragma once
/// The change of colours of one row, by vector code as far as it goes and by plain code behind it.

#include "video/frame_colours_kernels.h"

namespace zemora::colour_kernels {

/// `mixed` has room for one more sample at both ends, which repeat the outer ones.
void mix_chroma_row(const std::uint8_t* near, const std::uint8_t* far, int samples, bool deep,
                    std::uint16_t* mixed);
void bgr_row(const YuvRow& row, const BgrFactors& factors, std::uint8_t* bgr);
void luma_row(const std::uint8_t* bgr, int width, const YuvFactors& factors, std::uint8_t* luma);
/// Chroma of two rows of pixels; `sums` has room for `width` and two more pixels.
void chroma_row(const std::uint8_t* above, const std::uint8_t* below, int width, const YuvFactors& factors,
                std::uint16_t* sums, std::uint8_t* u, std::uint8_t* v);

}  // namespace zemora::colour_kernels
