#pragma once
/// The last changes of the warped views, in their order: ghosts, sharpening, curtains, text, final size,
/// turning.

#include <optional>
#include <string>

#include "analysis/stereo_analyse.h"
#include "config/notes.h"
#include "render/extra_output.h"
#include "render/finished.h"
#include "render/selection_box.h"
#include "render/warp_pair.h"

namespace zemora {

/// What a run wants done to each of its pairs.
struct FinishSettings {
    int ghost_percent = 0;              ///< `AutoGhostBust`; 0 leaves the views as they are.
    int sharpen_intensity = 0;          ///< `SharpenIntensity`; 0 for none.
    bool sharpens_soft_kernel = false;  ///< Without an intensity too, where the softest kernel was taken.
    int auto_frame_floating = 0;
    int floating_target = 0;  ///< In the unit of `win_off_reference`.
    int win_off_reference = 0;
    std::string image_text;  ///< The settings of the texts, with their prefixes.
    std::string caption;
    std::string copyright;
    bool image_text_has_ground = false;
    bool wants_sixteen_bits = false;
    bool has_anaglyph = false;
    ExtraFormat extra = ExtraFormat::none;
    int left_turn = 0;  ///< 0 to 7 as `RotMirOutputLeft`.
    int right_turn = 0;
    bool is_film = false;  ///< Each curtain goes by the edge of its own, and nothing is said of it.
};

/// What is known of the pair besides its pixels.
struct PictureFacts {
    DisparityStatistics disparities;  ///< Pixels of the views as they were warped.
    SelectionBox selection;
    TargetSize target;
    FrameSettings frame;  ///< As the first product shall find it.
    TextSource texts;
    bool is_developed = false;      ///< The files were developed or converted to 8 bits.
    bool is_exchanged = false;      ///< The true left view goes to the right.
    bool wants_thumbnails = false;  ///< Of the views before their final size and their turning.
};

/// Changes the views in the bitmaps of `warped`, where the result then stands. Fails for the run without
/// memory, or for a value of `ExtraOutput` that has no product.
[[nodiscard]] Result<Finished> finish_pair(WarpedPair& warped, const FinishSettings& settings,
                                           const PictureFacts& facts, Notes& notes);

}  // namespace zemora
