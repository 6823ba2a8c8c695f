#pragma once
/// Where the pixels of one frame go in another: block matching with filling and refinement.

#include <array>
#include <vector>

#include "config/notes.h"
#include "numerics/bitmap.h"
#include "numerics/result.h"

namespace zemora {

/// Narrower frames have cells of less than 8 pixels, which are not refined.
inline constexpr int kLeastRefinedWidth = 480;  ///< Pixels.
/// The search grows up to this share of the width.
inline constexpr int kWidthPerReach = 24;

/// A motion vector, pixels.
struct MotionVector {
    int x = 0;
    int y = 0;
    friend bool operator==(const MotionVector&, const MotionVector&) = default;
};

/// One per sequence; keeps its memory and the search width from call to call.
class MotionField {
public:
    explicit MotionField(Notes& notes) : notes_(notes) {}

    /// Finds for each pixel of `from` its place in `to`, of the same size. The result does not depend on
    /// the number of threads. Fails for the run without memory.
    [[nodiscard]] Result<void> estimate_motion_field(ConstPicture from, ConstPicture to);

    [[nodiscard]] MotionVector at(int x, int y) const {
        return vectors_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                        static_cast<std::size_t>(x)];
    }
    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }
    /// Side of the smallest cell of the refinement, pixels.
    [[nodiscard]] int fine_step() const { return fine_step_; }
    [[nodiscard]] int search_width() const { return shift_h_; }

private:
    void set(int x, int y, MotionVector vector) {
        vectors_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                 static_cast<std::size_t>(x)] = vector;
    }
    void match_grid(ConstPicture from, ConstPicture smooth_from, ConstPicture smooth_to, int block);
    void widen_search(int stray, int allowed, int width);
    void refine(ConstPicture from, ConstPicture to, int half);
    void refine_node(ConstPicture from, ConstPicture to, int half, int x, int y,
                     const std::array<MotionVector, 4>& corners);

    Notes& notes_;
    int width_ = 0;
    int height_ = 0;
    int fine_step_ = 0;
    int shift_h_ = 11;  ///< Search width of the matching, pixels.
    std::vector<MotionVector> vectors_;
};

/// The result of a match and the marks that it sets.
struct BlockMatch {
    MotionVector vector;
    int flags = 0;  ///< 5 without a clear minimum.
};
/// Offsets of a search, both ends inclusive, pixels.
struct MatchRange {
    int dx_min = 0;
    int dx_max = 0;
    int dy_min = 0;
    int dy_max = 0;
};
/// The place in `to` that the block of `size` pixels a side at (x, y) of `from` fits best.
[[nodiscard]] BlockMatch match_block(ConstPicture from, ConstPicture to, int size, int x, int y,
                                     const MatchRange& range);

}  // namespace zemora
