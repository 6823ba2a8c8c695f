#include "driver/settings_report.h"

#include "input/file_selection.h"

namespace zemora {

ReportOptions report_options_of(const ParameterSet& p) {
    return {p.projection_ratio, p.estimate_window, p.iterative_warp, p.auto_frame_floating,
            p.video_mode == 0};
}

ReportSource report_source_of(const ParameterSet& p, const std::string& time_stamp) {
    constexpr int kVideo = 1;  // of VideoMode
    const std::string& file = takes_two_files(p.stereo_image_input) ? p.left_file_name : p.stereo_file_name;
    return {p.report_mode, p.path_of_images, time_stamp, p.video_mode != 0,
            p.video_mode == kVideo ? file : std::string()};
}

AlignmentOptions alignment_options_of(const ParameterSet& p) {
    return {p.output_width, p.output_height, p.path_of_images,
            p.rot_mir_output_right == setting::rot_mir_input_left::mirrored};
}

}  // namespace zemora
