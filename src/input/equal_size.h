#pragma once
/// Brings two views of different sizes to one.

#include "config/notes.h"
#include "input/conditioning.h"
#include "input/loaded_view.h"
#include "numerics/rescale.h"
#include "numerics/result.h"

namespace zemora {

struct EqualSizeOptions {
    int cropp_input = setting::cropp_input::framed;
    FrameOptions frame;              ///< Its colour fills what is no picture.
    bool has_pre_selection = false;  ///< The sizes were chosen by the user.
};

/// The views keep their places round the common middle. Fails for the run without memory.
[[nodiscard]] Result<void> make_equal_size(const RecordedView& left, const RecordedView& right,
                                           const EqualSizeOptions& options, RescaleScratch& scratch,
                                           Notes& notes);

}  // namespace zemora
