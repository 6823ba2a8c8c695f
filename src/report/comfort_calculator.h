#pragma once
/// The page that shows how much strain a pair puts on the eyes of an audience, for any screen.

#include <string>

#include "config/messages.h"

namespace zemora {

/// "comfortcalculator_de.html" or "comfortcalculator_en.html".
[[nodiscard]] std::string calculator_file_name(Language language);

/// The page with the values of a pair as its query; far point and deviation in pixels of the picture.
[[nodiscard]] std::string calculator_address(Language language, int far_px, int deviation_px, int width,
                                             int height, int projection_ratio);

/// Writes the page. An empty text, or the reason of the failure.
[[nodiscard]] std::string write_comfort_calculator(const std::string& path, Language language);

}  // namespace zemora
