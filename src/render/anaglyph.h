#pragma once
/// Both finished views in one picture for red-cyan glasses.

#include <string>

#include "render/anaglyph_mix.h"
#include "render/output_writer.h"

namespace zemora {

/// How the anaglyph is mixed and stored.
struct AnaglyphOptions {
    AnaglyphSettings mix;            ///< What a mix needs from a file is read for each picture.
    std::string calibration_folder;  ///< Where the calibration companion has left its files.
    ColourFile colour_file;
    bool is_dome = false;  ///< `PlanetariumOutput`: bent for a dome.
    SaveOptions save;
};

/// Merges the views on the canvas of `anaglyph_layout` with frame and texts. Fails without memory, for a
/// faulty colour file and for a print calibration that has no stable result; each ends the run.
[[nodiscard]] Result<Bitmap> compose_anaglyph(const Finished& pair, const FrameSettings& frame,
                                              const AnaglyphOptions& options, Notes& notes);

/// Writes the anaglyph, or its dome image. Fails as `compose_anaglyph`.
[[nodiscard]] Result<StoreResult> write_anaglyph(const Finished& pair, const FrameSettings& frame,
                                                 const std::string& file, const AnaglyphOptions& options,
                                                 Notes& notes);

}  // namespace zemora
