#pragma once
/// When the first picture of a film is seen.

#include <cstdint>
#include <optional>
#include <string>

#include "numerics/rational.h"

namespace zemora {

/// A time as a count of `base` seconds.
struct FilmTime {
    std::int64_t count = 0;
    Rational base;
};

/// Of the first picture that the decoder of the first video stream gives, in the clock that the streams of
/// the file share. None without video, zero where the file does not tell.
[[nodiscard]] std::optional<FilmTime> time_of_first_picture(const std::string& path);

}  // namespace zemora
