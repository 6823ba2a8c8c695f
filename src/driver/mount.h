#pragma once
/// The way of a pair from its two equal views to the finished pictures, the same for files, frames, tests and
/// benchmarks. It knows no names, no files and no console.
///
///     find_geometry   measures the correction, or takes it from keys or a record     -> LocatedPair
///     mount           warps, measures what came out, judges it, finishes the views   -> MountedPair

#include <optional>
#include <vector>

#include "analysis/height_check.h"
#include "analysis/measure_pair.h"
#include "driver/trust.h"
#include "driver/window_placement.h"
#include "input/stored_record.h"
#include "input/view_preparer.h"
#include "render/colour_change.h"
#include "render/finish_pair.h"
#include "render/framing.h"
#include "render/output_size.h"

namespace zemora {

/// What a thread mounts with, one pair after the other; kept for its memory. `find_geometry` leaves in it
/// what `mount` of the same pair goes on from: the measured pair, which gives the tone, and how far the fit
/// is believed. So no other pair may come between the two. Whoever keeps a mounted pair takes `warped` out
/// before the next one begins.
struct Workbench {
    explicit Workbench(const AnalysisOptions& options) : analysis(options) {}
    AnalysisState analysis;
    WarpedPair warped;  ///< The latest warp; holds the finished views when the pair is mounted.
};

/// What all warps of a run go by.
struct RenderSettings {
    int cropp_output = 0;
    int applied_view = 0;  ///< `ApplyLeftRight`.
    int interpolation_mode = 0;
    bool is_shown_first = false;   ///< In the post viewer.
    int auto_output_contrast = 0;  ///< Of the finished pair.
    int adapted_view = 0;          ///< `ColorLeftRight`.
    float gamma = 1.0F;
    Colour background;  ///< Marks the absence of picture.
};

/// What a run wants of all its pairs.
struct MountSettings {
    MeasureSettings measure;
    WindowWish window;
    RenderSettings render;
    FrameSettings frame;  ///< Each pair starts from it.
    FinishSettings finish;
    int output_width = 0;     ///< Pixels; 0 where any width will do.
    bool is_checked = false;  ///< A measured pair is measured once more when it is finished.
    std::optional<ColourChange> colours;
};

/// Where the geometry of a pair comes from.
enum class GeometrySource { pictures, keys, record, nothing };

struct GeometryWish {
    GeometrySource source = GeometrySource::pictures;
    Correction keys;                      ///< Without shift.
    StoredCorrectionRecord record;        ///< Of the list or of the input files.
    PictureSize working;                  ///< The whole frame at the size that the pair is worked at.
    PreSelection preset;                  ///< The reduced views have it in them, the full-size ones have not.
    const FrameMemory* before = nullptr;  ///< The frame before, for one that follows it in a film.
};

/// A pair whose correction is known.
struct LocatedPair {
    PairGeometry geometry;       ///< Its preset is in force for the full-size views.
    double scale = 1.0;          ///< Working pixels per input pixel.
    PictureSize working;         ///< Whole frame, as it was warped last.
    PixelRectangle common_area;  ///< Of that frame.
    SelectionBox selection;      ///< From a record; a viewer may change it.
    double deviation = 0.0;      ///< Near to far point over the width; before the output is measured.
    double near_input_px = 0.0;  ///< Of a record.
    GeometrySource source = GeometrySource::pictures;
};

/// Takes the corrections of one pair from its pictures, the keys or a record, and places its window. The
/// status is that of the measurement: what is not written cannot be mounted. Fails for want of memory alone.
[[nodiscard]] Result<LocatedPair> find_geometry(const InputViews& views, const GeometryWish& wish,
                                                const MountSettings& settings, Workbench& bench,
                                                Notes& notes);

/// The corrections and the window of a record.
void take_geometry(const StoredCorrectionRecord& record, LocatedPair& pair);
/// The selection of a record, and its shape for the final warps.
void take_selection_and_shape(const StoredCorrectionRecord& record, LocatedPair& pair);
/// The corrections and the window as a record keeps them.
void put_geometry(const PairGeometry& geometry, StoredCorrectionRecord& record);

/// What is wanted of one pair.
struct PairWish {
    TargetSize target;
    SizeWish size;  ///< That the final warps are to reach.
    TextSource texts;
    bool is_developed = false;  ///< The files were developed or converted to 8 bits.
    bool is_exchanged = false;  ///< The true left view goes to the right.
    bool wants_thumbnails = false;
};

/// A pair that is ready to be written.
struct MountedPair {
    StatusCode status = StatusCode::failed;
    Finished finished;         ///< Its pixels stand in the bitmaps of the bench that mounted it.
    PictureSize size;          ///< Of the finished views, before their turning.
    double image_ratio = 0.0;  ///< Width over height of the views, before a size of less than 250 pixels.
    DisparityStatistics disparities;  ///< Pixels of the finished views.
    double deviation = 0.0;           ///< Near to far point over the width.
    double near_input_px = 0.0;       ///< Of a pair that was not measured that of its record, or its shift.
    double far_input_px = 0.0;
    std::optional<HeightCheck> heights;  ///< None where the check is off.
    bool looks_exchanged = false;        ///< The views, by near and far.
    std::vector<Doubt> doubts;           ///< What keeps the pair from being a success.
};

/// From the views and their corrections to the finished pictures. A status that is not written means that
/// the output has nothing to measure. Fails for the pair beyond the limits of the warp, and where it does not
/// come to a size; for the run without memory, or for a value of `ExtraOutput` that has no product.
[[nodiscard]] Result<MountedPair> mount(const InputViews& views, const LocatedPair& located,
                                        const PairWish& wish, const MountSettings& settings, Workbench& bench,
                                        Notes& notes);

/// The doubts about a measured and checked output; `rejected_share` of its cells contradicted the fit.
[[nodiscard]] std::vector<Doubt> doubts_about(const MountedPair& mounted, const LocatedPair& located,
                                              double rejected_share);

}  // namespace zemora
