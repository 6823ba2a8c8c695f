#pragma once
/// Decoded views, and who brings them: pairs of files, later frames of a video.

#include "config/notes.h"
#include "input/loaded_view.h"
#include "numerics/result.h"

namespace zemora {

/// The two views of a pair as they were decoded: halves of one picture are split, nothing is turned, cropped
/// or brought to one size yet.
struct RawViews {
    LoadedView left;         ///< Or the photo of a depth mask.
    LoadedView right;        ///< Or the depth mask, in the size of the photo.
    bool converted = false;  ///< The outside converter had to help.
};

class ViewSource {
public:
    virtual ~ViewSource() = default;
    /// The views of object `number`, counted from 0. What happens on the way goes to `notes` alone, so that
    /// a pair can be read while another one is at work. Fails for the object, with the file that could not
    /// be read in `Failure::file`.
    [[nodiscard]] virtual Result<RawViews> read(int number, Notes& notes) = 0;
};

}  // namespace zemora
