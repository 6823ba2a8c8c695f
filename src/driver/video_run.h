#pragma once
/// The way of a film: twice through its frames.
///
// clang-format off
/// | stage            | what it does                                                      |
/// | set_up_video     | opens the sources, finds offset and ranges                        |
/// | analyse_video    | measures some of the frames, one after the other                  |
/// | settle_series    | smooths what was measured and spreads it over all frames          |
/// | plan_video       | one scale, one crop, one tone for all frames                      |
/// | mount_video      | warps and finishes each frame once and gives it to its writers    |
/// | conclude_video   | the report of the whole film                                      |
// clang-format on
///
/// A frame takes the way of a pair (`mount.h`): read, prepare, find_geometry in the first pass; read,
/// prepare, warp_pair, finish_pair in the second.

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "driver/pipeline.h"
#include "render/kept_area.h"
#include "video/correction_series.h"
#include "video/frame_source.h"
#include "video/frame_walk.h"
#include "video/video_writer.h"

namespace zemora {

/// The sum of the tones of the analysed frames.
class ToneSums {
public:
    void add(const ToneTables& left, const ToneTables& right);
    [[nodiscard]] int count() const { return count_; }
    /// Only with a count.
    [[nodiscard]] ToneTables mean_left() const { return mean(left_); }
    [[nodiscard]] ToneTables mean_right() const { return mean(right_); }

private:
    using Sums = std::array<std::array<std::uint64_t, ToneTables::kLevels>, ToneTables::kPlanes>;
    [[nodiscard]] ToneTables mean(const Sums& sums) const;
    Sums left_{};
    Sums right_{};
    int count_ = 0;
};

struct VideoRun {
    explicit VideoRun(Pipeline& pipeline_in) : pipeline(pipeline_in), notes(pipeline_in.voice) {}

    Pipeline& pipeline;
    Voice& notes;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();

    // Set-up.
    FilmFiles files;
    std::string left_relative;  ///< Relative to the image folder, or absolute.
    std::string right_relative;
    std::unique_ptr<FrameSource> source;
    int frames = 0;  ///< Of the film.
    int offset = 0;  ///< Frames by which the right view runs ahead.
    FrameWalk analysed;
    FrameWalk mounted;
    Rational output_rate;
    SoundWish sound;
    ViewOrders orders;  ///< The same for all frames.

    // First pass.
    CorrectionSeries series;
    ToneSums tones;
    int analysed_count = 0;
    PictureSize view_size;  ///< Of the prepared views.
    FrameValues means;
    double largest_deviation = 0.0;  ///< As a fraction of the width.

    // Second pass.
    WarpPlan base_plan;  ///< Without frame and correction.
    FilmFrame frame;
    std::string left_thumb;  ///< Of the first frame, absolute; empty without.
    std::string right_thumb;
};

/// Runs the film of the list.
void run_video(Pipeline& pipeline);

void set_up_video(VideoRun& run);
void analyse_video(VideoRun& run);
void settle_series(VideoRun& run);
/// Whether `CorrInputOutput` wants the values alone, which is told.
[[nodiscard]] bool stops_behind_analysis(VideoRun& run);
void plan_video(VideoRun& run);
void mount_video(VideoRun& run);
void conclude_video(VideoRun& run);

/// The next frame of a pass as equal views; none where it could not be read, which is told.
[[nodiscard]] std::optional<InputViews> prepared_frame(VideoRun& run, Result<RawViews> raw);

/// The correction of a frame as the series has it, lengths in input pixels.
[[nodiscard]] Correction correction_of(const FrameValues& values);

}  // namespace zemora
