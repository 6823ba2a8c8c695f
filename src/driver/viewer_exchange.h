#pragma once
/// What passes between the run and the viewers of a person: packed arguments and result files.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/parameter_set.h"
#include "input/input_pair.h"
#include "render/selection_box.h"

namespace zemora {

/// The seven words of the previewer's command line: rotations, left x and width, left y and height, right x
/// and width, right y and height, colours, flags. `rot_mir_*` are those after the Exif orientation.
using PreviewerWords = std::array<std::uint32_t, 7>;
[[nodiscard]] PreviewerWords previewer_words(const ParameterSet& parameters, const PreSelection& selection,
                                             int rot_mir_left, int rot_mir_right);

/// The previewer's result.
struct PreviewerAnswer {
    bool swaps_views = false;
    PreSelection selection;
    float scale = 1.0F;
};
/// Nothing for a text that is short, holds other than finite numbers, or values out of their range.
[[nodiscard]] std::optional<PreviewerAnswer> parse_previewer_answer(std::string_view text);

/// The rectangle that the viewer shows, in fractions of the preview; y from the top.
struct ViewerBox {
    double left = 0.0;
    double bottom = 0.0;
    double width = 1.0;
    double height = 1.0;
};

/// The post viewer's result.
struct PostViewerAnswer {
    bool has_selection = false;
    double window_shift = 0.0;  ///< Fraction of the kept rectangle's width.
    ViewerBox box;
    double band_left = 0.0;  ///< Floating window, as the selection keeps it.
    double band_right = 0.0;
    double phantogram = 0.0;
    double edge_warp = 0.0;
    double vertical_ax = 0.0;  ///< With the viewer's sign.
    double common_trapez = 0.0;
    double sym_trapez = 0.0;
    double trapez_scale = 1.0;
    bool swaps_output = false;
    int ratio_code = 0;
    unsigned language = 0;
};
/// Nothing for a text that is short or holds other than finite numbers in their ranges.
[[nodiscard]] std::optional<PostViewerAnswer> parse_post_viewer_answer(std::string_view text);

/// Size of the preview and its scale, from the warped pair (pixels) and the limits of the screen.
struct PreviewSize {
    int height = 0;
    int width = 0;
    double scale = 1.0;
};
[[nodiscard]] PreviewSize preview_size(int height, int width, int max_viewer_size, int screen_height,
                                       int screen_width);

/// Ratio and rectangle that go to the post viewer.
struct ViewerFrame {
    int ratio_width = 0;
    int ratio_height = 0;
    ViewerBox box;
};
/// `free_size`: the output takes any size. `box` is the present selection in the preview, if there is one.
[[nodiscard]] ViewerFrame viewer_frame(const ParameterSet& parameters, bool free_size, const PreviewSize& preview,
                                       const std::optional<ViewerBox>& box);

/// `WorkHeight` : `WorkWidth` of a ratio code; nothing for code 0 and unknown ones.
struct RatioSides {
    int height = 0;
    int width = 0;
};
[[nodiscard]] std::optional<RatioSides> ratio_of_code(int code, const PreviewSize& preview, const ViewerBox& box);

}  // namespace zemora
