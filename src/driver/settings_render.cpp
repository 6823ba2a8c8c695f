#include "driver/settings_render.h"

#include <algorithm>

#include "driver/settings_input.h"
#include "platform/paths.h"

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

bool mixes_by_matrices(const ParameterSet& p) {
    return p.anaglyph_type == setting::anaglyph_type::by_matrices ||
           p.anaglyph_type == setting::anaglyph_type::by_other_matrices;
}

bool changes_colours(const ParameterSet& p) {
    return p.ext_color_management == 1 || p.ext_color_management == 2;
}

}  // namespace

FrameSettings frame_settings(const ParameterSet& p) {
    FrameSettings frame;
    frame.top = within_sums(p.frame_top);
    frame.bottom = within_sums(p.frame_bottom);
    frame.left_right = within_sums(p.frame_left_right);
    frame.central = within_sums(p.frame_central);
    frame.floating = within_sums(p.frame_floating);
    frame.fill_height = within_sums(p.fill_height);
    frame.fill_width = within_sums(p.fill_width);
    frame.thin_line = within_sums(p.thin_black_line);
    frame.colour = colour_of(p.frame_color_red, p.frame_color_green, p.frame_color_blue);
    return frame;
}

SaveOptions save_options(const ParameterSet& p, bool plain_tiff) {
    const int format = plain_tiff && p.output_format == setting::output_format::cmyk_by_profile
                           ? setting::output_format::tif
                           : p.output_format;
    return {format,        p.compress_bitmap == 1, p.jpg_quality, p.dots_per_inch_x, p.dots_per_inch_y,
            p.cmyk_profile};
}

AnaglyphOptions anaglyph_options(const ParameterSet& p, bool plain_tiff) {
    AnaglyphOptions options;
    options.mix.type = p.anaglyph_type;
    options.mix.brightness = p.brightness;
    options.mix.density = p.density_ana;
    options.mix.gamma_red = p.gamma_red;
    options.mix.gamma_cyan = p.gamma_cyan;
    options.mix.balance = {p.red_balance, p.green_balance, p.blue_balance};
    options.calibration_folder = p.path_of_images;
    options.colour_file = colour_file(p).value_or(ColourFile());
    options.is_dome = p.planetarium_output == 1;
    options.save = save_options(p, plain_tiff);
    return options;
}

ExtraOptions extra_options(const ParameterSet& p, bool keeps_orientation, bool plain_tiff) {
    return {static_cast<ExtraFormat>(p.extra_output), save_options(p, plain_tiff), p.meta_transfer != 0,
            keeps_orientation, p.exif_copyright};
}

SourceLayout source_layout(const ParameterSet& p) {
    switch (p.stereo_image_input) {
        case setting::stereo_image_input::two_files: return SourceLayout::two_files;
        case setting::stereo_image_input::side_by_side: return SourceLayout::side_by_side;
        default: return SourceLayout::other;
    }
}

std::optional<ColourFile> colour_file(const ParameterSet& p) {
    if (!changes_colours(p) && !mixes_by_matrices(p)) {
        return std::nullopt;
    }
    const bool has_exponents = p.ext_color_management == 1 || mixes_by_matrices(p);
    return ColourFile{join_path(p.path_of_images, p.ecm_file_name), p.ecm_file_name,
                      has_exponents ? ColourCurves::exponents : ColourCurves::tables};
}

Result<std::optional<ColourChange>> read_colour_change(const ParameterSet& p,
                                                       const MessageCatalogue& messages) {
    const std::optional<ColourFile> file = colour_file(p);
    if (!file) {
        return std::optional<ColourChange>();
    }
    Result<ColorManagement> colours = read_colour_file(*file, messages);
    if (!colours) {
        return colours.failure();
    }
    return changes_colours(p) ? std::optional(ColourChange(std::move(*colours))) : std::nullopt;
}

}  // namespace zemora
