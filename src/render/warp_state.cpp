#include "render/warp_state.h"

#include <algorithm>

#include "input/passepartout.h"

namespace zemora {

namespace {

Colour colour_of(int red, int green, int blue) {
    return {static_cast<std::uint8_t>(blue), static_cast<std::uint8_t>(green),
            static_cast<std::uint8_t>(red)};
}

/// Options may be far outside the limits of the file. A canvas adds up a few of these; with this one it is
/// too large for any memory already.
int within_sums(int setting_px) {
    constexpr int kLargest = 1 << 26;
    return std::clamp(setting_px, -kLargest, kLargest);
}

FrameSettings frame_of(const ParameterSet& parameters) {
    FrameSettings frame;
    frame.top = within_sums(parameters.frame_top);
    frame.bottom = within_sums(parameters.frame_bottom);
    frame.left_right = within_sums(parameters.frame_left_right);
    frame.central = within_sums(parameters.frame_central);
    frame.floating = within_sums(parameters.frame_floating);
    frame.fill_height = within_sums(parameters.fill_height);
    frame.fill_width = within_sums(parameters.fill_width);
    frame.thin_line = within_sums(parameters.thin_black_line);
    frame.colour =
        colour_of(parameters.frame_color_red, parameters.frame_color_green, parameters.frame_color_blue);
    return frame;
}

void record_frame(const FrameSettings& frame, int floating_share, ViewGeometry& record) {
    record.fill_height = frame.fill_height;
    record.fill_width = frame.fill_width;
    record.frame_top = frame.top;
    record.frame_bottom = frame.bottom;
    record.frame_left_right = frame.left_right;
    record.frame_central = frame.central;
    record.frame_floating = floating_share;
}

}  // namespace

WarpState::WarpState(const ParameterSet& set, ViewGeometry& left_geometry, ViewGeometry& right_geometry,
                     Voice& speaker)
    : cropp_output(set.cropp_output),
      apply_left_right(set.apply_left_right),
      interpolation_mode(set.interpolation_mode),
      auto_output_contrast(set.auto_output_contrast),
      post_viewer_active(set.post_viewer_active),
      inverse_output(set.inverse_output),
      passe_colour(passe_colour_of(set.passepartout, {static_cast<std::uint8_t>(set.passe_color_blue),
                                                      static_cast<std::uint8_t>(set.passe_color_green),
                                                      static_cast<std::uint8_t>(set.passe_color_red)})),
      frame(frame_of(set)),
      colours(read_colour_change(set, speaker)),
      pre_settings(set.pre_settings),
      pre_rotation_left(set.pre_rotation_left),
      pre_rotation_right(set.pre_rotation_right),
      pre_vergence_v(set.pre_vergence_v),
      left_record(left_geometry),
      right_record(right_geometry),
      parameters(set),
      voice(speaker) {
    record_frame(frame, -frame.floating / 2, left_record);
    record_frame(frame, frame.floating / 2, right_record);
}

}  // namespace zemora
