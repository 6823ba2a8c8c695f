#pragma once
/// Left-right and side-by-side output of the finished pair.

#include <string>

#include "config/notes.h"
#include "render/finished.h"
#include "render/framing.h"
#include "render/save_picture.h"

namespace zemora {

/// Result of a store: what could not be written, in words for the user; empty when all is well.
struct StoreResult {
    int code = 0;        ///< 0 done, else the error code that the driver shows.
    std::string reason;  ///< A line for each file that failed.
};

/// Both, with the code of the one that failed last.
[[nodiscard]] StoreResult joined(StoreResult first, const StoreResult& second);

/// The result of storing `file`, with the reason of a failure or an empty one.
[[nodiscard]] StoreResult result_of(const std::string& file, const std::string& reason);

/// How the views lie in the source files.
enum class SourceLayout { two_files, side_by_side, other };

/// The source files, for the 16-bit output and for metadata.
struct SourceFiles {
    std::string left;  ///< The stereo file for stereo input.
    std::string right;
    /// The views as they were loaded, with 8 bits: what has the passepartout colour in them is no picture.
    StereoPicture views{};
    bool halves_exchanged = false;  ///< The left view is the right half of the stereo file.
    SourceLayout layout = SourceLayout::two_files;
};

/// The finished views in 16 bits, as the outputs stand; null where there is none.
struct DeepViews {
    const Bitmap* left = nullptr;
    const Bitmap* right = nullptr;
    [[nodiscard]] explicit operator bool() const { return left != nullptr && right != nullptr; }
};

// Products. None of them changes the pair or the frame: the frame that a product settled is the one of its
// layout (`framing.h`). All of them may be made at the same time. Each file is written beside its
// final name and renamed when it is whole. Without memory for the canvas they fail, which ends the run.

/// The canvases of both views; the right one goes on from the frame that the left one settled.
struct ViewLayouts {
    CanvasLayout left;
    CanvasLayout right;
    [[nodiscard]] const CanvasLayout& of(View view) const { return view == View::left ? left : right; }
};
[[nodiscard]] ViewLayouts view_layouts(const Finished& pair, const FrameSettings& frame);

/// Reports nothing of the frame: what is wrong with it stands in `layouts`.
[[nodiscard]] Result<StoreResult> write_view(const Finished& pair, const ViewLayouts& layouts, View view,
                                             const std::string& file, const DeepViews& deep,
                                             const SaveOptions& options, Notes& notes);
/// The side-by-side picture, on its canvas.
struct StereoCanvas {
    CanvasLayout layout;
    Bitmap picture;
};
/// Reports what is wrong with the frame. Uses all threads where it is not called by one of a team.
[[nodiscard]] Result<StereoCanvas> compose_stereo(const Finished& pair, const FrameSettings& frame,
                                                  Notes& notes);
[[nodiscard]] Result<StoreResult> write_stereo(const StereoCanvas& canvas, const std::string& file,
                                               const DeepViews& deep, const SaveOptions& options);

}  // namespace zemora
