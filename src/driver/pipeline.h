#pragma once
/// The way of one stereo pair after the other from two raw views to stored, corrected output.
///
// clang-format off
/// | stage         | reads                              | writes                             | ends the pair as          |
/// | prepare_pair  | list, settings, files of the pair  | names, orders, input views, sizes  | unread, failed, abandoned |
/// | locate_pair   | input views, orders, sizes         | located; the views in depth runs   | status of the measurement |
/// | show_to_user  | input views, located               | located, sizes, stamp              | abandoned, failed, swap   |
/// | mount_views   | input views, located, sizes        | mounted, warped                    | failed                    |
/// | store_outputs | mounted, warped, input views, names| files, transfers, picture tag      | store_failed              |
/// | conclude_pair | all of it                          | reports, records, list             |                           |
// clang-format on
///
/// The stations of a run, each with a pair of its own, are prepare_pair; locate_pair and mount_views;
/// store_outputs and conclude_pair.

#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "depth/depth_views.h"
#include "driver/exiftool.h"
#include "driver/mount.h"
#include "driver/output_names.h"
#include "driver/post_run.h"
#include "driver/run_context.h"
#include "driver/run_inputs.h"
#include "input/image_list.h"
#include "input/pair_reader.h"
#include "report/analysis_dump.h"

namespace zemora {

/// What lives for the whole run of the pipeline: what serves all stations, then what belongs to one alone.
struct Pipeline {
    Pipeline(const ParameterSet& parameters_in, RunContext& run_in, ImageList& list_in, ExifTool& exiftool_in,
             Voice& voice_in);
    Pipeline(const Pipeline&) = delete;  // its parts refer to each other
    Pipeline& operator=(const Pipeline&) = delete;

    const ParameterSet& parameters;
    RunContext& run;
    ImageList& list;
    ExifTool& exiftool;
    Voice& voice;  ///< Of the pair whose turn it is, and of the user's own programs.
    MountSettings settings;
    RunInputs inputs;

    // Reading.
    PairFileSource source;
    ViewPreparer preparer;
    bool previewer_is_off = false;  ///< The corrections come from storage.

    // Mounting.
    AnalysisDump analysis_dump;
    Workbench bench;
    DepthState depth;
    bool stamps_time = false;  ///< A repeat wants a name of its own.

    // Storing.
    GivenNames given_names;
    BatchNames last_stored;
    bool stores_plain_tiff = false;  ///< There is no usable profile for print.
    int processed = 0;
    int mounted = 0;  ///< Objects whose products are all stored.
};

/// Whether `EstimateGeometry` is one of 3 to 5 and -3 to -5, whose results go into the input files.
[[nodiscard]] constexpr bool uses_record(int mode) {
    return (mode >= 3 && mode <= 5) || (mode >= -5 && mode <= -3);
}

/// How far a pair has come.
enum class Course {
    at_work,
    unread,  ///< Its views could not be read: nothing is concluded.
    ended,   ///< It cannot be mounted, or the user gave it up.
};

/// The time that a pair takes, without that of the user.
class WorkClock {
public:
    using Duration = std::chrono::steady_clock::duration;
    /// From here on as if so much had been spent.
    void set(Duration spent) { start_ = std::chrono::steady_clock::now() - spent; }
    [[nodiscard]] Duration spent() const { return std::chrono::steady_clock::now() - start_; }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// What belongs to the pair at work. Stages fill it in their order.
struct PairRun {
    PairRun(int index_in, Notes& notes_in) : index(index_in), notes(notes_in), profiles(notes_in) {}

    int index = 0;
    std::optional<int> frame;  ///< Its number, for a frame of a film.
    Notes& notes;
    Course course = Course::at_work;
    int mode = 1;  ///< Working copy of `EstimateGeometry`.
    StatusCode status = StatusCode::no_result;
    bool failure_told = false;
    bool store_failed = false;  ///< A product is missing: no record, no line of the list.
    bool repeat = false;        ///< The post viewer wants the pair once more.
    bool exchanged = false;     ///< The user exchanged the views in the post viewer.
    bool counted = false;       ///< Among the processed ones.
    int viewer_exit_code = 0;   ///< Of the viewer that the user left the pair with.
    WorkClock clock;

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
    TransferLog profiles;               ///< Of the colour profiles that are fetched while it is read.
    std::deque<TransferLog> transfers;  ///< Of its files, in the order of the products.
    std::string stamp;
    std::string headline;    ///< Of the left input, where a text asks for it.
    std::string left_thumb;  ///< Absolute; empty until there is one.
    std::string right_thumb;
    int html_images = 0;

    // Input.
    InputViews input;
    ViewOrders orders;        ///< What is done to the views before they are measured.
    bool swap_views = false;  ///< The previewer asked for an exchange of two files.
    int inverse_input = 0;    ///< Working copy of `InverseInput`.
    int inverse_output = 0;   ///< Working copy of `InverseOutput`.

    // Geometry.
    StoredCorrectionRecord stored = empty_record();
    bool has_stored = false;
    TargetSize target;
    SizeWish wish;  ///< The size that the final warps are to reach.
    LocatedPair located;

    // Result.
    MountedPair mounted;
    WarpedPair warped;        ///< The pixels of the finished views.
    std::string picture_tag;  ///< Of the stored pictures, for the HTML report.
};

/// Runs all objects of the list.
void run_image_pipeline(Pipeline& pipeline);

// The stages of a pair, in their order. Each has a file of its own. False ends the pair.

/// Names, suffixes, settings of the pair; reads the views and the size to work at.
[[nodiscard]] bool prepare_pair(Pipeline& pipeline, PairRun& pair);
/// Finds the correction of the pair and, from a photo and its mask, renders its views.
[[nodiscard]] bool locate_pair(Pipeline& pipeline, PairRun& pair);
/// Warps, measures and finishes the views.
[[nodiscard]] bool mount_views(Pipeline& pipeline, PairRun& pair);
/// Writes the products with their metadata.
void store_outputs(Pipeline& pipeline, PairRun& pair);
/// Names and writes the pictures alone.
void store_products(Pipeline& pipeline, PairRun& pair);
/// Report, stored record, list, progress files.
void conclude_pair(Pipeline& pipeline, PairRun& pair);

/// What the warps of the pair are wanted for.
[[nodiscard]] PairWish wish_of(const Pipeline& pipeline, const PairRun& pair);

/// Reports that the pair cannot be mounted and sets its status; always false.
bool fail_to_mount(const Pipeline& pipeline, PairRun& pair, StatusCode status);

}  // namespace zemora
