#pragma once
/// Everything that the rendering keeps from pair to pair: the working pair, its size and its frame.

#include <optional>

#include "analysis/tone_tables.h"
#include "config/notes.h"
#include "config/parameter_set.h"
#include "input/view_geometry.h"
#include "numerics/bitmap.h"
#include "render/colour_change.h"
#include "render/warped_pair.h"

namespace zemora {

inline constexpr int kLargestSide = 16384;  ///< Pixels; the largest side of a warped picture.

/// Which side of the target size is forced.
enum ForceSize {
    kForceNothing = 0,
    kForceWidth = 1,
    kForceHeight = 2,
    kForceBothWidthLarger = 5,   ///< Both; the width was the larger ratio.
    kForceBothHeightLarger = 6,  ///< Both; the height was the larger ratio.
};

/// The corrections of one warp in fixed point, before they are shared between the views.
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

struct WarpState : WarpedPair {
    WarpState(const ParameterSet& set, ViewGeometry& left_geometry, ViewGeometry& right_geometry,
              Notes& speaker);

    // Copies of parameters.
    int cropp_output;
    int apply_left_right;
    int interpolation_mode;
    int post_viewer_active;
    Colour passe_colour;  ///< Marks the absence of picture.
    /// External colour management, read once; nothing without `ExtColorManagement`.
    std::optional<ColourChange> colours;

    // Size logic.
    int work_height = 0;
    int work_width = 0;
    int force_size = kForceNothing;
    int filter_radius = 1;     ///< Set by `choose_interpolation`.
    float total_scale = 1.0F;  ///< Output pixels per source pixel.
    float last_scale_step = 1.0F;
    int latest_size_step = 0;  ///< `size_step` of the latest warp.
    float aspect = 1.0F;       ///< Source width over source height.
    int source_height = 0;
    int source_width = 0;
    int scaled_height = 0;  ///< Whole frame after scaling to the target.
    int scaled_width = 0;
    /// Whole, uncropped frame of the latest warp; the size step multiplies it.
    int frame_height = 0;
    int frame_width = 0;

    // Shape parameters; zero except in the final passes.
    double phantogram = 0.0;
    double edge_warp = 0.0;
    double vertical_ax = 0.0;
    double common_trapez = 0.0;
    double sym_trapez = 0.0;
    double trapez_scale = 1.0;
    /// A fixed pre-correction, degrees; in force while `pre_settings` is not 0.
    int pre_settings = 0;
    float pre_rotation_left = 0.0F;
    float pre_rotation_right = 0.0F;
    float pre_vergence_v = 0.0F;

    // What the latest warp applied, for the 16-bit output.
    FixedCorrection latest_correction;
    int latest_interpolation = 0;
    float latest_gamma = 1.0F;
    ToneTables left_tone = ToneTables::identity();
    ToneTables right_tone = ToneTables::identity();

    ViewGeometry& left_record;
    ViewGeometry& right_record;
    const ParameterSet& parameters;
    Notes& notes;
};

}  // namespace zemora
