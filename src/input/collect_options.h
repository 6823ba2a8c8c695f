#pragma once
/// What decides which objects a run has, under the names of the parameters.

#include <string>

#include "config/setting_values.h"
#include "input/stored_record.h"

namespace zemora {

/// The defaults are those of the parameters.
struct CollectOptions {
    std::string path_of_images;  ///< Absolute.
    std::string image_type = "tif;tga;bmp;jpg;mpo";
    std::string left_file_name = "image_l.jpg";
    std::string right_file_name = "image_r.jpg";
    std::string stereo_file_name = "image_s.jpg";
    std::string ident_output_dir;
    std::string list_of_images = "zemora_files.txt";
    int input_mode = setting::input_mode::by_names;
    int stereo_image_input = setting::stereo_image_input::two_files;
    int include_subdirs = setting::include_subdirs::folder_alone;
    int write_data_base = setting::write_data_base::with_results;
    int exif_time_tolerance = 0;  ///< Seconds; 0 switches the control by capture time off.
    int rename_orphans = setting::rename_orphans::left_alone;
    int inverse_input = setting::inverse_input::kept;
    int interlaced_mode = setting::interlaced_mode::progressive;
    bool applies_stored_values = false;  ///< The corrections come from the list or the input files.
    WantedShape shape;                   ///< That stored selections have to fit.
};

}  // namespace zemora
