#pragma once
/// The way of one stereo pair after the other from two raw views to stored, corrected output.

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "analysis/height_check.h"
#include "analysis/stereo_analyse.h"
#include "depth/depth_views.h"
#include "driver/exiftool.h"
#include "driver/output_names.h"
#include "driver/post_run.h"
#include "driver/run_context.h"
#include "driver/run_inputs.h"
#include "driver/settings_analysis.h"
#include "driver/settings_render.h"
#include "driver/trust.h"
#include "driver/window_placement.h"
#include "input/image_list.h"
#include "input/pair_reader.h"
#include "input/stored_record.h"
#include "input/view_preparer.h"
#include "render/finished.h"
#include "render/framing.h"
#include "render/output_size.h"
#include "render/selection_box.h"
#include "render/warp_pair.h"
#include "report/pair_report.h"

namespace zemora {

/// What lives for the whole run of the pipeline.
struct Pipeline {
    Pipeline(const ParameterSet& parameters_in, RunContext& run_in, ImageList& list_in, ExifTool& exiftool_in,
             Voice& voice_in);
    Pipeline(const Pipeline&) = delete;  // its parts refer to each other
    Pipeline& operator=(const Pipeline&) = delete;

    const ParameterSet& parameters;
    RunContext& run;
    ImageList& list;
    ExifTool& exiftool;
    Voice& voice;
    PairFileSource source;
    ViewPreparer preparer;
    InputViews input;  ///< Of the pair at work.
    AnalysisDump analysis_dump;
    AnalysisState analysis;
    const RenderSettings render;
    WarpedPair warped;
    std::optional<ColourChange>
        colours;  ///< External colour management of the warp; read anew by its script.
    DepthState depth;
    RunInputs inputs;
    GivenNames given_names;
    int processed = 0;
    int mounted = 0;            ///< Objects whose products are all stored.
    const FrameSettings frame;  ///< Of the settings; each pair starts from it.
    BatchNames last_stored;

    // What the run decides on its way, for all pairs to come.
    bool previewer_is_off = false;   ///< The corrections come from storage.
    bool stamps_time = false;        ///< A repeat wants a name of its own.
    bool stores_plain_tiff = false;  ///< There is no usable profile for print.
};

/// Whether `EstimateGeometry` is one of 3 to 5 and -3 to -5, whose results go into the input files.
[[nodiscard]] constexpr bool uses_record(int mode) {
    return (mode >= 3 && mode <= 5) || (mode >= -5 && mode <= -3);
}

/// What belongs to the pair at work. Stages fill it in their order.
struct PairRun {
    int index = 0;
    int mode = 1;  ///< Working copy of `EstimateGeometry`.
    StatusCode status = StatusCode::no_result;
    bool failure_told = false;
    bool store_failed = false;  ///< A product is missing: no record, no line of the list.
    bool repeat = false;        ///< The post viewer wants the pair once more.
    bool exchanged = false;     ///< The user exchanged the views in the post viewer.
    bool counted = false;       ///< Among the processed ones.
    int viewer_exit_code = 0;   ///< Of the viewer that the user left the pair with.
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();

    // Names.
    PairFiles files;            ///< Absolute.
    std::string left_relative;  ///< Relative to the image folder, or absolute.
    std::string right_relative;
    std::string left_suffix;  ///< Of the input, lower case.
    std::string right_suffix;
    std::string left_output_suffix;
    std::string right_output_suffix;
    InputClass input_class = InputClass::none;
    TagPermissions permissions;
    std::string stamp;
    std::string left_thumb;  ///< Absolute; empty until there is one.
    std::string right_thumb;
    int html_images = 0;

    // Input.
    ViewOrders orders;        ///< What is done to the views before they are measured.
    bool swap_views = false;  ///< The previewer asked for an exchange of two files.
    int inverse_input = 0;    ///< Working copy of `InverseInput`.

    // Geometry.
    StoredCorrectionRecord stored = empty_record();
    bool has_stored = false;
    TargetSize target;
    SizeWish wish;           ///< The size that the final warps are to reach.
    PairGeometry geometry;   ///< Its preset is in force for the full-size pair.
    double scale = 1.0;      ///< Working pixels per input pixel.
    int working_height = 0;  ///< Whole frame of the latest warp.
    int working_width = 0;
    PixelRectangle common_area;   ///< Of that frame.
    double rejected_share = 0.0;  ///< Of the cells with a match that the fit did not believe, 0 to 1.
    SelectionBox selection;

    // Result, in output pixels.
    double original_near_px = 0.0;  ///< Input pixels; unmeasured and without record the shift of the keys.
    double original_far_px = 0.0;
    int output_width = 0;  ///< Of the pair that was measured, then of the final size; pixels.
    int output_height = 0;
    DisparityStatistics result;
    std::optional<HeightCheck> heights;  ///< Of the measured pair; none where the check is off.
    bool looks_exchanged = false;        ///< The views, by near and far of the measured pair.
    std::vector<Doubt> doubts;           ///< What keeps the pair from being a success.
    double deviation = 0.0;
    double projected_deviation = 0.0;
    Curtains curtains;        ///< Of the finished views.
    FrameSettings frame;      ///< Round the pictures.
    int inverse_output = 0;   ///< Working copy of `InverseOutput`.
    Finished finished;        ///< From `finish_pictures` on.
    std::string picture_tag;  ///< Of the stored pictures, for the HTML report.
};

/// Runs all objects of the list.
void run_image_pipeline(Pipeline& pipeline);

// The stages of a pair, in their order. Each has a file of its own. False ends the pair.

/// Names, suffixes, settings of the pair; reads the views and the size to work at.
[[nodiscard]] bool prepare_pair(Pipeline& pipeline, PairRun& pair);
/// Measures the pair: its correction and its disparities.
[[nodiscard]] bool measure_geometry(Pipeline& pipeline, PairRun& pair);
/// Takes the corrections from keys or from a stored record.
void load_unmeasured_geometry(Pipeline& pipeline, PairRun& pair);
/// The corrections and the window of a record, at the scale of the pair.
void take_geometry(const StoredCorrectionRecord& record, PairRun& pair);
/// The selection of a record, and its shape for the final warps.
void take_selection_and_shape(const StoredCorrectionRecord& record, PairRun& pair);
/// Stereo window from the measured disparities.
void place_stereo_window(const Pipeline& pipeline, PairRun& pair);
/// What all warps for the output of a pair have in common; frame, scale and correction are not set.
[[nodiscard]] WarpPlan output_plan(const Pipeline& pipeline, const PairRun& pair);
/// The output pair: final warp, automatic frame, forced size.
[[nodiscard]] bool warp_final(Pipeline& pipeline, PairRun& pair);
/// Disparities of the finished pair.
[[nodiscard]] bool measure_result(Pipeline& pipeline, PairRun& pair);
/// A measured and checked pair with doubts is usable at most.
void settle_trust(PairRun& pair);
/// Sharpening, floating windows, texts, turning.
void finish_pictures(Pipeline& pipeline, PairRun& pair);
/// Writes the products with their metadata.
void store_outputs(Pipeline& pipeline, PairRun& pair);
/// Report, stored record, list, progress files.
void conclude_pair(Pipeline& pipeline, PairRun& pair);

/// Tells that the pair cannot be mounted and sets its status; always false.
bool fail_to_mount(const Pipeline& pipeline, PairRun& pair, StatusCode status);

}  // namespace zemora
