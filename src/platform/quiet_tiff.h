#pragma once
/// Silence for the TIFF library below the image library.

namespace zemora {

/// Stops the TIFF library from printing its own warnings and errors; the results of its
/// calls show failures. Once is enough, more calls do nothing.
void silence_tiff_library();

}  // namespace zemora
