#include "render/framing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "numerics/rounding.h"

namespace zemora {

namespace {

/// Ratios of the screens that `WinOffReference` 2 to 5 refer to: 4:3, 16:10, 16:9, 17:9.
constexpr std::array<double, 4> kScreenRatios = {1.3333333333333333, 1.6, 1.7777777777777777,
                                                 1.8888888888888888};

/// Filling sets the frames above and below.
void settle_height(WarpState& warp) {
    FrameSettings& frame = warp.frame;
    if (frame.fill_height == 0) {
        return;
    }
    if (frame.fill_height < warp.height && warp.voice.verbose() >= 2) {
        warp.voice.say_once<Msg::warpimage_fill_height_too_low>();
    }
    const int framed = warp.height + 2 * frame.thin_line;
    frame.fill_height = std::max(frame.fill_height, framed);
    const int excess = frame.fill_height - framed;
    frame.top = excess / 2;
    frame.bottom = excess - excess / 2;
}

CellFrame lay_out_width(WarpState& warp, int least_fill_width) {
    FrameSettings& frame = warp.frame;
    if (frame.fill_width == 0) {
        return {frame.left_right, frame.left_right};
    }
    if (frame.fill_width < least_fill_width && warp.voice.verbose() >= 2) {
        warp.voice.say_once<Msg::warpimage_fill_width_too_low>();
    }
    const int framed = warp.width + 2 * frame.thin_line;
    frame.fill_width = std::max(frame.fill_width, framed);
    const int excess = frame.fill_width - framed;
    return {excess / 2, excess - excess / 2};
}

/// Holds the share of a view in the floating displacement to the margin that is there for it.
void hold_floating(WarpState& warp, const CellFrame& cell) {
    int& floating = warp.frame.floating;
    const int largest = std::max(0, std::min(cell.left, cell.right));
    if (std::abs(floating / 2) > largest) {
        warp.voice.say_once<Msg::warpimage_frame_floating_reduced>();
        floating = floating < 0 ? -2 * largest : 2 * largest;
    }
}

void set_colour(std::uint8_t* pixel, Colour colour) {
    pixel[0] = colour.blue;
    pixel[1] = colour.green;
    pixel[2] = colour.red;
}

/// Fades a column by `factor`, 0 black to 1 unchanged.
void fade_column(Picture picture, int column, double factor) {
    if (column < 0 || column >= picture.width) {
        return;
    }
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* pixel = picture.pixel(column, y);
        for (int c = 0; c < kPixelBytes; ++c) {
            pixel[c] = static_cast<std::uint8_t>(std::clamp(round_half_up(pixel[c] * factor), 0, 255));
        }
    }
}

void blacken_columns(Picture picture, int first, int count) {
    const int begin = std::clamp(first, 0, picture.width);
    const int end = std::clamp(first + count, begin, picture.width);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = begin; x < end; ++x) {
            set_colour(picture.pixel(x, y), Colour{});
        }
    }
}

/// Columns counted from the edge of a view that a curtain hangs at.
struct Edge {
    Picture picture;
    bool from_right;
    [[nodiscard]] int column(int distance) const {
        return from_right ? picture.width - 1 - distance : distance;
    }
};

/// A curtain with a ramp that ends half a per cent of the width inside of it; `ramp` is 1 per cent.
void hang_soft_curtain(const Edge& edge, int curtain, int ramp) {
    const int end = ramp / 2 + curtain;
    const int black = std::max(0, curtain - 1);
    blacken_columns(edge.picture, edge.from_right ? edge.picture.width - black : 0, black);
    for (int distance = black; distance < end; ++distance) {
        fade_column(edge.picture, edge.column(distance),
                    std::max(0.0, 1.0 - (end - 1 - distance) * 2.0 / ramp));
    }
}

void feather_edge(const Edge& edge, int ramp) {
    for (int distance = 0; distance < ramp / 2; ++distance) {
        fade_column(edge.picture, edge.column(distance), distance * 2.0 / ramp);
    }
}

bool has_forced_width(const WarpState& warp) {
    return warp.latest_size_step != 0 && warp.work_width > 0 &&
           (warp.force_size == kForceWidth || warp.force_size == kForceBothWidthLarger ||
            warp.force_size == kForceBothHeightLarger);
}

/// The views get narrower in place of their canvas: by a smaller forced width, or by a cut. `width` belongs
/// to the output, the result to the size worked at.
int narrow(WarpState& warp, int width, double reduction) {
    const int narrowed = std::max(round_half_up(width / reduction), 1);
    if (has_forced_width(warp)) {
        warp.work_width = narrowed;
    }
    return narrowed;
}

}  // namespace

double pixels_from_reference(int value, int win_off_reference, int height, int width) {
    if (win_off_reference == 1) {
        return static_cast<double>(value) * width / 1000.0;
    }
    constexpr int kFirstScreen = 2;
    if (win_off_reference >= kFirstScreen &&
        win_off_reference < kFirstScreen + static_cast<int>(kScreenRatios.size())) {
        const auto screen = static_cast<std::size_t>(win_off_reference - kFirstScreen);
        return value * kScreenRatios[screen] * height / 1000.0;
    }
    return value;
}

int floating_share(const WarpState& warp, View view) {
    const int sign = view == View::left ? warp.left_floating_sign : warp.right_floating_sign;
    return sign * (warp.frame.floating / 2);
}

CellFrame settle_cell_frame(WarpState& warp, int least_fill_width) {
    settle_height(warp);
    const CellFrame cell = lay_out_width(warp, least_fill_width);
    hold_floating(warp, cell);
    return cell;
}

int held_central(const WarpState& warp, const CellFrame& cell) {
    return std::max(std::abs(warp.frame.floating) - cell.left - cell.right, warp.frame.central);
}

CanvasLayout single_view_layout(WarpState& warp, View view) {
    const CellFrame cell = settle_cell_frame(warp, warp.width);
    const FrameSettings& frame = warp.frame;
    CanvasLayout layout;
    layout.height = warp.height + 2 * frame.thin_line + frame.top + frame.bottom;
    layout.width = warp.width + 2 * frame.thin_line + cell.left + cell.right;
    layout.picture_row = frame.bottom + frame.thin_line;
    layout.left_picture_column = cell.left + frame.thin_line + floating_share(warp, view);
    layout.right_picture_column = layout.left_picture_column;
    return layout;
}

CanvasLayout side_by_side_layout(WarpState& warp) {
    const CellFrame cell = settle_cell_frame(warp, warp.width);
    FrameSettings& frame = warp.frame;
    frame.central = held_central(warp, cell);
    const int half = warp.width + 2 * frame.thin_line + cell.left + cell.right;
    CanvasLayout layout;
    layout.height = warp.height + 2 * frame.thin_line + frame.top + frame.bottom;
    layout.width = 2 * half + frame.central;
    layout.picture_row = frame.bottom + frame.thin_line;
    layout.left_picture_column = frame.thin_line + cell.left + floating_share(warp, View::left);
    layout.right_picture_column =
        half + frame.central + cell.left + frame.thin_line + floating_share(warp, View::right);
    return layout;
}

CanvasLayout anaglyph_layout(WarpState& warp) {
    const int line = std::exchange(warp.frame.thin_line, 0);
    CanvasLayout layout = single_view_layout(warp, View::left);
    warp.frame.thin_line = line;
    layout.right_picture_column += floating_share(warp, View::right) - floating_share(warp, View::left);
    return layout;
}

int apply_automatic_frame(WarpState& warp, const ParameterSet& parameters, double far_point_px,
                          double reduction) {
    const bool narrows = parameters.auto_frame_floating == 2;
    if (parameters.auto_frame_floating != 1 && !narrows) {
        return 0;
    }
    const double target =
        pixels_from_reference(parameters.floating_target, parameters.win_off_reference,
                              round_half_up(warp.height * reduction), round_half_up(warp.width * reduction));
    const int surplus = round_half_up(far_point_px * reduction - target);
    const int floating = surplus > -2 ? 2 * (surplus / 2) : 0;
    FrameSettings& frame = warp.frame;
    const int width = round_half_up((has_forced_width(warp) ? warp.work_width : warp.width) * reduction);
    frame.floating = -floating;
    if (frame.fill_width == 0) {
        const int old = frame.left_right;
        if (old >= floating / 2) {
            return 0;
        }
        warp.voice.print(
            format_text("Warning: FrameLeftRight = %d too small: need at least %d\n", old, floating / 2));
        frame.left_right = floating / 2;
        return narrows ? narrow(warp, width + 2 * old - floating, reduction) : 0;
    }
    if (frame.fill_width - width >= floating) {
        return 0;
    }
    const int output_width = parameters.output_width > 0 ? parameters.output_width : width;
    warp.voice.print(format_text("Warning: FillWidth = %d too small: need at least %d\n", frame.fill_width,
                                 output_width + floating));
    if (narrows) {
        return narrow(warp, frame.fill_width - floating, reduction);
    }
    frame.fill_width = width + floating;
    return 0;
}

void floating_bands(WarpState& warp, Curtains curtains, int auto_frame_floating) {
    const int left = std::clamp(curtains.left, 0, warp.width / 2);
    const int right = std::clamp(curtains.right, 0, warp.width / 2);
    const bool soft = auto_frame_floating == 4 || auto_frame_floating == 6;
    if (left == 0 && right == 0) {
        return;
    }
    const Edge left_edge{warp.left.picture(warp.width, warp.height), false};
    const Edge right_edge{warp.right.picture(warp.width, warp.height), true};
    const int ramp = round_half_up(warp.width / 100.0);
    if (!soft || ramp < 2) {
        blacken_columns(left_edge.picture, 0, left);
        blacken_columns(right_edge.picture, warp.width - right, right);
        return;
    }
    hang_soft_curtain(left_edge, left, ramp);
    hang_soft_curtain(right_edge, right, ramp);
    feather_edge({right_edge.picture, false}, ramp);
    feather_edge({left_edge.picture, true}, ramp);
}

}  // namespace zemora
