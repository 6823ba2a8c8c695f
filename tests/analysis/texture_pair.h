#pragma once
/// Textured pairs with a known displacement of every point.

#include <functional>

#include "analysis/stereo_analyse.h"

namespace zemora::testing {

struct Displacement {
    double dx = 0.0;
    double dy = 0.0;
};

/// Displacement, right minus left, of the point (X, Y) of the left view, from its middle in pixels.
using DisplacementField = std::function<Displacement(double x, double y)>;

/// A fixed texture without repetition or symmetry, of details from about 4 to 60 pixels at `scale` 1.
[[nodiscard]] double texture(double x, double y, int channel, double scale = 1.0);

/// Brightness of 0 to 1 at a point, from the middle of the left view in pixels.
using Surface = std::function<double(double x, double y, int channel)>;

/// Soft light and dark fields of `period` pixels for one of each, in both directions.
[[nodiscard]] double chequers(double x, double y, double period);

/// A pair of bitmaps with one texture, the right view displaced by the field.
class TexturePair {
public:
    TexturePair(int width, int height, const DisplacementField& field, double scale = 1.0);
    TexturePair(int width, int height, const DisplacementField& field, const Surface& surface);

    [[nodiscard]] StereoPicture pictures() const { return {left.picture(), right.picture()}; }
    [[nodiscard]] StereoPicture exchanged() const { return {right.picture(), left.picture()}; }

    Bitmap left;
    Bitmap right;
};

/// Options with their defaults and no tone mapping; every test starts from these.
[[nodiscard]] AnalysisOptions analysis_options();

/// Calls `run` with every instruction set of this machine.
void for_each_instruction_set(const std::function<void()>& run);

}  // namespace zemora::testing
