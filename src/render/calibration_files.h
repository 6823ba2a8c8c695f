#pragma once
/// The files of the calibration companion: how a monitor and a printer show colours through red-cyan glasses.

#include <string>

#include "config/notes.h"

namespace zemora {

/// "tintrovela_monitor.txt", for `AnaglyphType` 6: what shines through the wrong filter.
struct MonitorCalibration {
    float white_red = 0.0F;
    float white_cyan = 0.0F;
    float black_red = 0.0F;
    float black_cyan = 0.0F;
};

/// "tintrovela_print.txt", for `AnaglyphType` 7. The exponents are named for height, channel, base.
struct PrintCalibration {
    int green_percent = 100;  ///< Green ink in per cent of the blue one.
    float white_red = 0.0F;
    float black_red = 0.0F;
    float shape_red = 0.0F;
    float white_cyan = 0.0F;
    float black_cyan = 0.0F;
    float shape_cyan = 0.0F;
    float gamma_white_red_red = 1.0F;
    float gamma_white_red_cyan = 1.0F;
    float gamma_black_red_red = 1.0F;
    float gamma_black_red_cyan = 1.0F;
    float gamma_white_cyan_cyan = 1.0F;
    float gamma_white_cyan_red = 1.0F;
    float gamma_black_cyan_cyan = 1.0F;
    float gamma_black_cyan_red = 1.0F;
};

/// Read the file in `folder`. One that is missing or damaged is reported and gives the standard values;
/// values that were read are listed with `VerboseMode` above 1.
[[nodiscard]] MonitorCalibration read_monitor_calibration(const std::string& folder, Notes& notes);
[[nodiscard]] PrintCalibration read_print_calibration(const std::string& folder, Notes& notes);

}  // namespace zemora
