#include "render/warp_state.h"

#include "input/passepartout.h"

namespace zemora {

WarpState::WarpState(const ParameterSet& set, ViewGeometry& left_geometry, ViewGeometry& right_geometry,
                     Notes& speaker)
    : cropp_output(set.cropp_output),
      apply_left_right(set.apply_left_right),
      interpolation_mode(set.interpolation_mode),
      post_viewer_active(set.post_viewer_active),
      passe_colour(passe_colour_of(set.passepartout, {static_cast<std::uint8_t>(set.passe_color_blue),
                                                      static_cast<std::uint8_t>(set.passe_color_green),
                                                      static_cast<std::uint8_t>(set.passe_color_red)})),
      pre_settings(set.pre_settings),
      pre_rotation_left(set.pre_rotation_left),
      pre_rotation_right(set.pre_rotation_right),
      pre_vergence_v(set.pre_vergence_v),
      left_record(left_geometry),
      right_record(right_geometry),
      parameters(set),
      notes(speaker) {}

}  // namespace zemora
