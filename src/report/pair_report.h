#pragma once
/// The section of a pair in the reports, and that of the mean values of a sequence.

#include <optional>
#include <string>

#include "analysis/height_check.h"
#include "analysis/stereo_analyse.h"
#include "config/notes.h"
#include "config/setting_values.h"
#include "numerics/pair_geometry.h"

namespace zemora {

/// Everything that the report of a pair says.
struct ImageReport {
    int mode = setting::estimate_geometry::measured;  ///< `EstimateGeometry` of this pair.
    /// The result was measured and is reported: not where the keys alone gave the geometry (mode 0), unless
    /// the views come from a depth mask.
    bool is_analysed = true;
    StatusCode status = StatusCode::failed;
    int width = 0;  ///< Output, pixels.
    int height = 0;
    float pre_rotation_left = 0.0F;  ///< Degrees.
    float pre_rotation_right = 0.0F;
    float pre_vergence_v = 0.0F;
    Correction correction;          ///< Accumulated; height in input pixels.
    double original_near_px = 0.0;  ///< Before the correction, input pixels.
    double original_far_px = 0.0;
    Correction remaining;                     ///< The last step of the iteration.
    std::optional<HeightCheck> heights = {};  ///< Of the finished pair, where it was checked.
    bool looks_exchanged = false;             ///< Near and far look turned round; only a warning.
    std::string doubt = {};  ///< Why a pair that has settled is no success; a line, or empty.
    double near_px = 0.0;    ///< Output pixels, after the correction.
    double far_px = 0.0;
    double left_edge_px = 0.0;
    double right_edge_px = 0.0;
    int left_curtain_px = 0;
    int right_curtain_px = 0;
    int seconds = 0;  ///< Time spent on the pair.
};

/// What the reports of all pairs of a run go by, under the names of the parameters.
struct ReportOptions {
    int projection_ratio = setting::projection_ratio::none;
    int estimate_window = setting::estimate_window::near_point;
    int iterative_warp = 10;
    int auto_frame_floating = setting::auto_frame_floating::none;
    bool links_calculator = true;  ///< With `VerboseMode` above 1 the page hands values to the calculator.
};

/// Writes the result of a pair on the console and into both reports.
void write_image_report(const ReportOptions& options, const ImageReport& report, Notes& notes);

/// Writes on the console and into both reports that a pair cannot be mounted.
void report_mount_failure(Notes& notes);

/// Mean values of all frames of a sequence.
struct SequenceReport {
    int mode = setting::estimate_geometry::measured;  ///< `EstimateGeometry`.
    Correction correction;
    double near_shift_px = 0.0;
    int seconds = 0;
};

/// Writes the mean values of a sequence on the console and into both reports.
void write_sequence_report(const SequenceReport& report, Notes& notes);

}  // namespace zemora
