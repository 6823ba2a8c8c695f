#pragma once
/// The warp, decided and done: a plan of plain numbers, and the pair that comes out of it.

#include <optional>

#include "analysis/tone_tables.h"
#include "config/notes.h"
#include "numerics/pair_geometry.h"
#include "numerics/rescale.h"
#include "render/colour_change.h"
#include "render/frame_settings.h"
#include "render/output_size.h"
#include "render/selection_box.h"

namespace zemora {

/// How a value between the pixels of the source is found.
struct Interpolation {
    int kernel = 1;       ///< 0 to 3; any other is read as 1, which is reported.
    int tent_radius = 1;  ///< Source pixels that kernel 3 reaches over.
};
/// That of `InterpolationMode` at `scale` output pixels per source pixel.
[[nodiscard]] Interpolation interpolation_for(int mode, float scale);

/// The tone that brings both views together.
struct TonePlan {
    bool is_applied = false;
    ToneTables left = ToneTables::identity();
    ToneTables right = ToneTables::identity();
    int mode_left = 0;  ///< `AutoOutputContrast` for an adapted view, else 0.
    int mode_right = 0;
};

/// Which part of the frame is warped and kept.
struct CropPlan {
    bool keeps_frame = true;  ///< All of it, whatever follows: for measuring.
    int cropp_output = 0;
    bool is_shown_first = false;  ///< A person cuts it in the post viewer.
    bool is_sized = false;        ///< This warp may change the size.
    SizeWish wish;
    SelectionBox selection;
    std::optional<PixelRectangle>
        decided;  ///< Of a film: just this is warped and kept, whatever else is said.
};

/// What one warp applies; lengths are pixels of the output.
struct WarpPlan {
    PictureSize frame;       ///< Whole.
    float scale = 1.0F;      ///< Output pixels per source pixel.
    double size_step = 1.0;  ///< The frame over the one that the lengths of `correction` belong to.
    /// Signs are those of the right view's source coordinate; rows count upward.
    Correction correction;
    PreSelection preset;  ///< Its turns and its vergence.
    ViewShape shape;
    int applied_view = 0;  ///< Which view is corrected: below 0 the left one, above 0 the right one, 0 both.
    Interpolation interpolation;
    float gamma = 1.0F;  ///< 0 counts as 1.
    Colour background;   ///< Marks the absence of picture.
    TonePlan tone;
    CropPlan crop;
};

/// The correction in fixed point, before it is shared between the views.
struct FixedCorrection {
    int height_shift_128 = 0;
    int window_shift_128 = 0;
    int size_32768 = 0;
    int rotation_16384 = 0;    ///< Sine.
    int vergence_v_16384 = 0;  ///< Sine.
    int vergence_h_32768 = 0;  ///< Sine.
    int pre_rotation_left_16384 = 0;
    int pre_rotation_right_16384 = 0;
    int pre_vergence_v_16384 = 0;
};

/// Both views at one size, in bitmaps that serve one pair after the other.
struct WarpedPair {
    /// `width` by `height` pixels in the lower left of bitmaps of one pitch.
    Bitmap left;
    Bitmap right;
    int height = 0;
    int width = 0;
    // How they were made, for the 16-bit output.
    WarpPlan plan;
    FixedCorrection correction;  ///< As it was applied.
    PixelRectangle kept;         ///< Of the frame.

    [[nodiscard]] StereoPicture pair() const {
        return {left.picture(width, height), right.picture(width, height)};
    }
    [[nodiscard]] WorkingViews views() { return {left.picture(width, height), right.picture(width, height)}; }
};

/// Why there is no pair where its bitmaps find no memory.
inline constexpr const char* kNoMemoryForViews = "w1024: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE\n";

/// Warps `source`, which stays untouched, as planned; `colours` may be null. Fails for the pair, with all
/// said, beyond the limits of the warp; for the run without memory.
[[nodiscard]] Result<void> warp_pair(const StereoPicture& source, const WarpPlan& plan,
                                     const ColourChange* colours, WarpedPair& into, Notes& notes);

}  // namespace zemora
