#pragma once
/// What a film tells of itself, and what of that holds for a film that is made of some of its frames.

#include <string>
#include <utility>
#include <vector>

#include "numerics/rational.h"
#include "video/frame_walk.h"

struct AVFormatContext;

namespace zemora {

struct FilmChapter {
    double start_s = 0.0;
    double end_s = 0.0;
    std::string title;
};

struct FilmMetadata {
    std::vector<std::pair<std::string, std::string>>
        tags;               ///< Title, time, place, author; names of the library.
    std::string time_code;  ///< Of frame 0, "hh:mm:ss:ff"; empty for none.
    Rational rate;          ///< Frames a second.
    std::vector<FilmChapter> chapters;
};

/// Empty for a file that cannot be read.
[[nodiscard]] FilmMetadata read_film_metadata(const std::string& path);

/// The time code `frames` later, for a film of another rate. A semicolon, of drop-frame counting, is kept.
/// Empty where it cannot be read, and where the rate has none.
[[nodiscard]] std::string advanced_time_code(const std::string& time_code, Rational rate, int frames,
                                             Rational output_rate);

/// The chapters that the frames of the walk touch, at the times of the written film, which has `frames`
/// pictures.
[[nodiscard]] std::vector<FilmChapter> chapters_of_walk(const FilmMetadata& source, const FrameWalk& walk,
                                                        int frames, Rational output_rate);

/// Before the header is written; `time_code` may be empty.
void put_tags(AVFormatContext& film, const FilmMetadata& source, const std::string& time_code);
/// Before the trailer is written.
void put_chapters(AVFormatContext& film, const std::vector<FilmChapter>& chapters);

}  // namespace zemora
