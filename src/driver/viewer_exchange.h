#pragma once
/// What passes between the run and the viewers of a person: packed arguments and result files.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/parameter_set.h"
#include "numerics/pair_geometry.h"
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

/// The pre-selection after the views have changed places: turned as the pictures were seen. The parts of a
/// stereo file go with their half; those of two files hold for the new order already.
[[nodiscard]] PreSelection with_views_swapped(const PreSelection& selection, bool is_stereo_file);

/// The rectangle that the viewer shows, in fractions of the preview; y from the top.
struct ViewerBox {
    double left = 0.0;
    double bottom = 0.0;  ///< The edge with the smaller y.
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

/// Whether the selection holds a window; a narrower one than a thousandth is none.
[[nodiscard]] bool has_selected_window(const SelectionBox& selection);
/// The selection's window as a rectangle of the viewer, inside what the preview kept of its frame
/// (`selection.result_*`). Nothing without a window.
[[nodiscard]] std::optional<ViewerBox> box_of_selection(const SelectionBox& selection);
/// Puts window, its shift and the floating bands of the answer into `selection`, inside `result_*`.
void take_selection(const PostViewerAnswer& answer, SelectionBox& selection);

/// Size of a picture of the preview, pixels, and its scale against the warped pair.
struct PreviewSize {
    int height = 0;
    int width = 0;
    double scale = 1.0;
};
/// The preview's whole frame, from the warped pair (pixels) and the limits of the screen.
[[nodiscard]] PreviewSize preview_size(int height, int width, int max_viewer_size, int screen_height,
                                       int screen_width);

/// Ratio and rectangle that go to the post viewer.
struct ViewerFrame {
    int ratio_width = 0;
    int ratio_height = 0;
    ViewerBox box;
};
/// Sides of an output, or of its ratio; 0 for a side that is free.
struct RatioSides {
    int height = 0;
    int width = 0;
};
/// `wanted`: the sides of the output, 0 where it takes any size. `preview` is the picture that the viewer
/// shows, `box` the present selection in it, if there is one.
[[nodiscard]] ViewerFrame viewer_frame(int cropp_output, const RatioSides& wanted, const PreviewSize& preview,
                                       const std::optional<ViewerBox>& box);

/// The numbers of the post viewer's command line, behind its name, the folder and the names of the pair.
/// `warped_over_preview`: width of the warped pair over that of the preview.
[[nodiscard]] std::vector<std::string> post_viewer_numbers(
    const ParameterSet& parameters, const ViewerFrame& frame, const PreviewSize& preview,
    double warped_over_preview, const SelectionBox& selection, double deviation, const ViewShape& shape);

/// Height and width of a ratio code; nothing for code 0 and unknown ones.
[[nodiscard]] std::optional<RatioSides> ratio_of_code(int code, const PreviewSize& preview,
                                                      const ViewerBox& box);

/// The largest sides of that ratio inside the wanted ones, of which one may be 0 for any length.
[[nodiscard]] RatioSides fit_ratio(const RatioSides& ratio, const RatioSides& wanted);

}  // namespace zemora
