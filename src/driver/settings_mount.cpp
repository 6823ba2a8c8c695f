#include "driver/settings_mount.h"

#include "driver/settings_input.h"
#include "driver/settings_render.h"

namespace zemora {

namespace {

FinishSettings finish_settings(const ParameterSet& p) {
    namespace video = setting::video_output;
    const bool is_film = p.video_mode != setting::video_mode::images;
    const bool turns =
        p.left_right_output != 0 || p.extra_output != 0 ||
        (is_film && p.video_output != video::side_by_side && p.video_output != video::anaglyph);
    FinishSettings finish;
    finish.ghost_percent = p.auto_ghost_bust;
    finish.sharpen_intensity = p.sharpen_intensity;
    finish.sharpens_soft_kernel = p.interpolation_mode == setting::interpolation_mode::by_scale_sharpened;
    finish.auto_frame_floating = p.auto_frame_floating;
    finish.floating_target = p.floating_target;
    finish.win_off_reference = p.win_off_reference;
    finish.image_text = p.image_text;
    finish.caption = p.caption_text;
    finish.copyright = p.exif_copyright;
    finish.image_text_has_ground = p.smart_text_back_gr == 1;
    finish.wants_sixteen_bits = p.output_format == setting::output_format::tif_16_bits;
    finish.has_anaglyph = p.anaglyph_output != 0;
    finish.extra = static_cast<ExtraFormat>(p.extra_output);
    finish.left_turn = turns ? p.rot_mir_output_left : 0;
    finish.right_turn = turns ? p.rot_mir_output_right : 0;
    finish.is_film = is_film;
    return finish;
}

}  // namespace

Correction use_keys(const ParameterSet& p) {
    return {p.use_height,
            0.0,
            p.use_size / 100.0,
            p.use_rotation * kRadiansPerDegree,
            p.use_vergence_v * kRadiansPerDegree,
            p.use_vergence_h * kRadiansPerDegree};
}

RenderSettings render_settings(const ParameterSet& p) {
    RenderSettings render;
    render.cropp_output = p.cropp_output;
    render.applied_view = p.apply_left_right;
    render.interpolation_mode = p.interpolation_mode;
    render.is_shown_first = p.post_viewer_active != 0;
    render.auto_output_contrast = p.auto_output_contrast;
    render.adapted_view = p.color_left_right;
    render.gamma = p.gamma_correction;
    render.background = prepare_options(p).frame.colour;
    return render;
}

WindowWish window_wish(const ParameterSet& p) {
    return {p.estimate_window, p.window_offset, p.win_off_reference};
}

MountSettings mount_settings(const ParameterSet& p) {
    MountSettings settings;
    settings.measure = {p.iterative_warp, p.iterative_min, p.progress_output == 1};
    settings.window = window_wish(p);
    settings.render = render_settings(p);
    settings.frame = frame_settings(p);
    settings.finish = finish_settings(p);
    settings.output_width = p.output_width;
    settings.is_checked = p.robust_estimation != 0;
    return settings;
}

}  // namespace zemora
