#pragma once
/// What the disparities of a mounted pair mean for print and projection.

#include <string>
#include <vector>

#include "config/messages.h"
#include "config/setting_values.h"

namespace zemora {

/// The mounted pair in pixels of the output. Disparities are right view minus left view.
struct WindowFigures {
    double near_px = 0.0;
    double far_px = 0.0;
    double left_edge_px = 0.0;  ///< Near point in the outermost cells of the left edge.
    double right_edge_px = 0.0;
    int left_curtain_px = 0;  ///< Width of the floating frame.
    int right_curtain_px = 0;
    int width = 0;
    int height = 0;
    int projection_ratio = setting::projection_ratio::none;
    int estimate_window = setting::estimate_window::as_measured;
};

/// How deep the pair is.
enum class DepthVerdict { unsuited, print_only, critical, optimal, too_flat };

/// Where the near point stands, with the advice that goes with it.
enum class NearVerdict {
    // Behind the window.
    very_far_behind_unfavourable,
    very_far_behind_in_print,
    very_far_behind,
    clearly_behind,
    too_far_behind_in_print,
    too_far_behind,
    clearly_behind_control,
    close_behind,
    close_behind_favourable,
    close_behind_with_room,  ///< The middle of the picture may come out of the window.
    // Before the window.
    before_warning,
    before,
    before_as_designed,
    far_before,
    clearly_before,
    possibly_too_far_before,
    extremely_before,
    probably_too_far_before,
};

/// Whether the edges of the picture cut something that stands before the window.
enum class EdgeVerdict { not_judged, no_solution, violation, no_violation };

/// How far the far point is.
enum class FarVerdict { painful, critical, perhaps_critical, tolerable, too_near };

/// The judgement, and the figures that it rests on.
struct WindowJudgement {
    double picture_ratio = 0.0;     ///< Width by height.
    double projection_ratio = 0.0;  ///< That of the picture where none was given.
    double picture_share = 1.0;     ///< The picture's width as a fraction of the projected width.
    double limit_per_mille = 0.0;   ///< Recommended limit of the deviation, of the picture's width.
    double deviation = 0.0;         ///< Fractions of the projected width.
    double near_point = 0.0;        ///< Against the window or the curtain; above 0 behind it.
    double far_point = 0.0;
    bool window_moved_back = false;  ///< A strict near point would have made the far point too far.
    DepthVerdict depth = DepthVerdict::too_flat;
    NearVerdict near_verdict = NearVerdict::before;
    EdgeVerdict edges = EdgeVerdict::not_judged;
    FarVerdict far_verdict = FarVerdict::too_near;
};

/// The projection's width by height for `ProjectionRatio`; 0 and 1 stand for the picture's own.
[[nodiscard]] double projected_ratio(int projection_ratio, double picture_ratio);

[[nodiscard]] WindowJudgement judge_window(const WindowFigures& figures);

/// The judgement in words, in the order in which they are read; each text with its line ends.
[[nodiscard]] std::vector<std::string> judgement_texts(const WindowJudgement& judgement, int projection_ratio,
                                                       const MessageCatalogue& messages);

}  // namespace zemora
