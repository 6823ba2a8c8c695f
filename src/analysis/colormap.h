#pragma once
/// Colour adaptation tables: the two views are brought to one tone before they are compared.

#include "analysis/stereo_analyse.h"

namespace zemora {

/// Part of the picture that is counted; rows from the bottom, all four inclusive.
struct CountRectangle {
    int first_row = 0;
    int last_row = 0;
    int first_column = 0;
    int last_column = 0;
};

/// Modes of `colormap_adapt` beside 0 to 8, the values of `AutoOutputContrast`.
inline constexpr int kColormapForDisparity = 9;
inline constexpr int kColormapForGeometry = 10;

/// Every entry i of all planes of both views becomes i x 256.
void colormap_identity(AnalysisState& state);

/// Adapts `tone_left` and `tone_right` by the histograms of the pair, counted in `rectangle` or, where that
/// is null or does not fit, in the whole views. Another mode adapts nothing. In every mode the
/// dark colours that would come out as `AnalysisOptions::passe_colour` are raised.
void colormap_adapt(AnalysisState& state, const StereoPicture& pair, const CountRectangle* rectangle,
                    int mode);

}  // namespace zemora
