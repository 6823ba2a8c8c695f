#include "render/framing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "config/setting_values.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

/// Ratios of the screens that `WinOffReference` 2 to 5 refer to: 4:3, 16:10, 16:9, 17:9.
constexpr std::array<double, 4> kScreenRatios = {1.3333333333333333, 1.6, 1.7777777777777777,
                                                 1.8888888888888888};

/// Filling sets the frames above and below.
void settle_height(SettledFrame& settled, int picture_height) {
    FrameSettings& frame = settled.frame;
    if (frame.fill_height == 0) {
        return;
    }
    settled.faults.fill_height_too_low = frame.fill_height < picture_height;
    const int framed = picture_height + 2 * frame.thin_line;
    frame.fill_height = std::max(frame.fill_height, framed);
    const int excess = frame.fill_height - framed;
    frame.top = excess / 2;
    frame.bottom = excess - excess / 2;
}

void settle_width(SettledFrame& settled, int picture_width, int least_fill_width) {
    FrameSettings& frame = settled.frame;
    settled.cell = {frame.left_right, frame.left_right};
    if (frame.fill_width == 0) {
        return;
    }
    settled.faults.fill_width_too_low = frame.fill_width < least_fill_width;
    const int framed = picture_width + 2 * frame.thin_line;
    frame.fill_width = std::max(frame.fill_width, framed);
    const int excess = frame.fill_width - framed;
    settled.cell = {excess / 2, excess - excess / 2};
}

/// Holds the share of a view in the floating displacement to the margin that is there for it.
void hold_floating(SettledFrame& settled) {
    int& floating = settled.frame.floating;
    const int largest = std::max(0, std::min(settled.cell.left, settled.cell.right));
    if (std::abs(floating / 2) > largest) {
        settled.faults.floating_reduced = true;
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

void tell_frame_faults(const FrameFaults& faults, Notes& notes) {
    const bool tells_fill = notes.verbose() >= 2;
    if (faults.fill_height_too_low && tells_fill) {
        notes.say_once<Msg::warpimage_fill_height_too_low>();
    }
    if (faults.fill_width_too_low && tells_fill) {
        notes.say_once<Msg::warpimage_fill_width_too_low>();
    }
    if (faults.floating_reduced) {
        notes.say_once<Msg::warpimage_frame_floating_reduced>();
    }
}

int floating_share(const Finished& pair, const FrameSettings& frame, View view) {
    return pair.view(view).floating_sign * (frame.floating / 2);
}

SettledFrame settle_frame(const Finished& pair, const FrameSettings& frame, int least_fill_width) {
    SettledFrame settled{frame, {}, {}};
    settle_height(settled, pair.height());
    settle_width(settled, pair.width(), least_fill_width);
    hold_floating(settled);
    return settled;
}

int held_central(const FrameSettings& frame, const CellFrame& cell) {
    return std::max(std::abs(frame.floating) - cell.left - cell.right, frame.central);
}

CanvasLayout single_view_layout(const Finished& pair, const FrameSettings& wanted, View view) {
    const auto [frame, cell, faults] = settle_frame(pair, wanted, pair.width());
    CanvasLayout layout;
    layout.height = pair.height() + 2 * frame.thin_line + frame.top + frame.bottom;
    layout.width = pair.width() + 2 * frame.thin_line + cell.left + cell.right;
    layout.picture_row = frame.bottom + frame.thin_line;
    layout.left_picture_column = cell.left + frame.thin_line + floating_share(pair, frame, view);
    layout.right_picture_column = layout.left_picture_column;
    layout.frame = frame;
    layout.faults = faults;
    return layout;
}

CanvasLayout side_by_side_layout(const Finished& pair, const FrameSettings& wanted) {
    auto [frame, cell, faults] = settle_frame(pair, wanted, pair.width());
    frame.central = held_central(frame, cell);
    const int half = pair.width() + 2 * frame.thin_line + cell.left + cell.right;
    CanvasLayout layout;
    layout.height = pair.height() + 2 * frame.thin_line + frame.top + frame.bottom;
    layout.width = 2 * half + frame.central;
    layout.picture_row = frame.bottom + frame.thin_line;
    layout.left_picture_column = frame.thin_line + cell.left + floating_share(pair, frame, View::left);
    layout.right_picture_column =
        half + frame.central + cell.left + frame.thin_line + floating_share(pair, frame, View::right);
    layout.frame = frame;
    layout.faults = faults;
    return layout;
}

CanvasLayout anaglyph_layout(const Finished& pair, const FrameSettings& wanted) {
    FrameSettings lineless = wanted;
    lineless.thin_line = 0;
    CanvasLayout layout = single_view_layout(pair, lineless, View::left);
    layout.right_picture_column +=
        floating_share(pair, layout.frame, View::right) - floating_share(pair, layout.frame, View::left);
    layout.frame.thin_line = wanted.thin_line;
    return layout;
}

AutomaticFrame automatic_frame(const FrameSettings& wanted, const AutomaticFrameRequest& request,
                               Notes& notes) {
    AutomaticFrame result{wanted, 0};
    const bool narrows = request.mode == setting::auto_frame_floating::frame_narrowed;
    if (request.mode != setting::auto_frame_floating::frame && !narrows) {
        return result;
    }
    const double reduction = request.reduction;
    const double target = pixels_from_reference(request.floating_target, request.win_off_reference,
                                                round_half_up(request.height * reduction),
                                                round_half_up(request.width * reduction));
    const int surplus = round_half_up(request.far_point_px * reduction - target);
    const int floating = surplus > -2 ? 2 * (surplus / 2) : 0;
    FrameSettings& frame = result.frame;
    const int width =
        round_half_up((request.forced_width > 0 ? request.forced_width : request.width) * reduction);
    // The width belongs to the output, the result to the size worked at.
    const auto narrowed = [reduction](int width_px) {
        return std::max(round_half_up(width_px / reduction), 1);
    };
    frame.floating = -floating;
    if (frame.fill_width == 0) {
        const int old = frame.left_right;
        if (old >= floating / 2) {
            return result;
        }
        notes.print(
            format_text("Warning: FrameLeftRight = %d too small: need at least %d\n", old, floating / 2));
        frame.left_right = floating / 2;
        result.narrowed_width = narrows ? narrowed(width + 2 * old - floating) : 0;
        return result;
    }
    if (frame.fill_width - width >= floating) {
        return result;
    }
    const int output_width = request.output_width > 0 ? request.output_width : width;
    notes.print(format_text("Warning: FillWidth = %d too small: need at least %d\n", frame.fill_width,
                            output_width + floating));
    if (narrows) {
        result.narrowed_width = narrowed(frame.fill_width - floating);
    } else {
        frame.fill_width = width + floating;
    }
    return result;
}

void floating_bands(const WorkingViews& views, Curtains curtains, int auto_frame_floating) {
    const int width = views.left.width;
    const int left = std::clamp(curtains.left, 0, width / 2);
    const int right = std::clamp(curtains.right, 0, width / 2);
    const bool soft = auto_frame_floating == setting::auto_frame_floating::ramps_alike ||
                      auto_frame_floating == setting::auto_frame_floating::ramps;
    if (left == 0 && right == 0) {
        return;
    }
    const Edge left_edge{views.left, false};
    const Edge right_edge{views.right, true};
    const int ramp = round_half_up(width / 100.0);
    if (!soft || ramp < 2) {
        blacken_columns(left_edge.picture, 0, left);
        blacken_columns(right_edge.picture, width - right, right);
        return;
    }
    hang_soft_curtain(left_edge, left, ramp);
    hang_soft_curtain(right_edge, right, ramp);
    feather_edge({right_edge.picture, false}, ramp);
    feather_edge({left_edge.picture, true}, ramp);
}

}  // namespace zemora
