#include "driver/settings_input.h"

#include "input/list_file.h"
#include "input/passepartout.h"

namespace zemora {

CollectOptions collect_options(const ParameterSet& p) {
    CollectOptions options;
    options.path_of_images = p.path_of_images;
    options.image_type = p.image_type;
    options.left_file_name = p.left_file_name;
    options.right_file_name = p.right_file_name;
    options.stereo_file_name = p.stereo_file_name;
    options.ident_output_dir = p.ident_output_dir;
    options.list_of_images = p.list_of_images;
    options.input_mode = p.input_mode;
    options.stereo_image_input = p.stereo_image_input;
    options.include_subdirs = p.include_subdirs;
    options.write_data_base = p.write_data_base;
    options.exif_time_tolerance = p.exif_time_tolerance;
    options.rename_orphans = p.rename_orphans;
    options.inverse_input = p.inverse_input;
    options.interlaced_mode = p.interlaced_mode;
    options.applies_stored_values = p.estimate_geometry == setting::estimate_geometry::from_list ||
                                    p.estimate_geometry == setting::estimate_geometry::from_list_and_stored ||
                                    p.estimate_geometry == setting::estimate_geometry::from_list_unchanged;
    options.shape = wanted_shape(p);
    return options;
}

std::string list_path_of(const ParameterSet& parameters) {
    return list_path_of(parameters.path_of_images, parameters.list_of_images);
}

WantedShape wanted_shape(const ParameterSet& parameters) {
    return {parameters.cropp_output, parameters.output_height, parameters.output_width};
}

PairReadOptions pair_read_options(const ParameterSet& p) {
    using namespace setting::estimate_geometry;
    const int mode = p.estimate_geometry;
    PairReadOptions options;
    options.stereo_image_input = p.stereo_image_input;
    options.keeps_cut_pictures = mode == from_keys || mode == measured_and_stored || mode == from_files ||
                                 mode == from_list_and_stored;
    options.has_view_folders = p.input_mode == setting::input_mode::view_folders;
    options.converter = p.path_of_irfanview;
    return options;
}

PrepareOptions prepare_options(const ParameterSet& p) {
    return {p.cropp_input, {p.passepartout, passe_colour_of(p), p.passe_tolerance, p.passe_output == 1}};
}

Colour passe_colour_of(const ParameterSet& p) {
    return passe_colour_of(p.passepartout, {static_cast<std::uint8_t>(p.passe_color_blue),
                                            static_cast<std::uint8_t>(p.passe_color_green),
                                            static_cast<std::uint8_t>(p.passe_color_red)});
}

PreSelection pre_selection_of(const ParameterSet& p) {
    return {p.pre_rotation_left,  p.pre_rotation_right, p.pre_vergence_v,    p.left_image_startx,
            p.left_image_starty,  p.left_image_width,   p.left_image_height, p.right_image_startx,
            p.right_image_starty, p.right_image_width,  p.right_image_height};
}

DepthSettings depth_settings(const ParameterSet& parameters) {
    return {parameters.deviation_target, parameters.depth_mask_offset, parameters.depth_mask_nonlin,
            parameters.depth_mask_nl_type};
}

}  // namespace zemora
