// The second pass of a film: each frame is warped once with the values of the series and given to the
// writers.

#include <chrono>
#include <utility>

#include "driver/failure.h"
#include "driver/file_kinds.h"
#include "driver/thumbnail_files.h"
#include "driver/video_products.h"
#include "driver/video_run.h"
#include "input/pair_reader.h"
#include "numerics/rounding.h"
#include "platform/paths.h"
#include "platform/process_end.h"
#include "report/pair_report.h"
#include "report/video_report.h"
#include "video/frame_reader.h"

namespace zemora {

namespace {

class VideoMount {
public:
    explicit VideoMount(VideoRun& run)
        : run_(run),
          pipeline_(run.pipeline),
          notes_(run.notes),
          products_(run),
          reader_(*run.source, run.mounted, kAhead, run.notes) {}

    void run();

private:
    static constexpr int kAhead = 3;

    void mount(int frame, int number);
    [[nodiscard]] PictureFacts facts_of(int frame) const;
    [[nodiscard]] bool warp(int frame);
    void store_pictures(int frame, Finished finished, bool has_thumbnails);
    void show_time(int number) const;

    VideoRun& run_;
    Pipeline& pipeline_;
    Voice& notes_;
    VideoProducts products_;
    FrameReader reader_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// What the finishing goes by; disparities in output pixels.
PictureFacts VideoMount::facts_of(int frame) const {
    const auto i = static_cast<std::size_t>(frame);
    const FrameDisparities& d = run_.series.disparities[i];
    const FrameValues& v = run_.series.values[i];
    const float scale = run_.frame.scale;
    PictureFacts facts;
    facts.disparities.near_point = scale * d.near_px;
    facts.disparities.far_point = scale * d.far_px;
    facts.disparities.centre_disparity = scale * d.centre_px;
    facts.disparities.left_edge_near = scale * v.curtain_left_px;
    facts.disparities.right_edge_near = scale * v.curtain_right_px;
    facts.frame = pipeline_.settings.frame;
    facts.texts = {run_.files.left, "", pipeline_.run.stamp, frame};
    facts.is_exchanged = pipeline_.parameters.inverse_output == 1;
    return facts;
}

/// Leaves the corrected views of the next frame in the bench; false where there are none, which is told.
bool VideoMount::warp(int frame) {
    std::optional<InputViews> views = prepared_frame(run_, reader_.next(notes_));
    if (!views) {
        return false;
    }
    const Correction correction = correction_of(run_.series.values[static_cast<std::size_t>(frame)]);
    const auto& colours = pipeline_.settings.colours;
    const Result<void> done = warp_pair(views->full(), film_plan(run_.base_plan, correction, run_.frame),
                                        colours ? &*colours : nullptr, pipeline_.bench.warped, notes_);
    if (!done) {
        conclude_failure(notes_, done.failure());
    }
    reader_.give_back({std::move(views->left), std::move(views->right)});
    pipeline_.preparer.take_back(*std::move(views));
    return done.has_value();
}

void VideoMount::mount(int frame, int number) {
    if (!warp(frame)) {
        products_.repeat();
        return;
    }
    const ParameterSet& p = pipeline_.parameters;
    PictureFacts facts = facts_of(frame);
    facts.wants_thumbnails = number == 0 && p.html_images == setting::html_images::thumbnails;
    Finished finished =
        value_or_end(notes_, finish_pair(pipeline_.bench.warped, pipeline_.settings.finish, facts, notes_));
    if (products_.is_wanted()) {
        products_.add(finished);
    }
    if (facts.wants_thumbnails || stores_products(p)) {
        store_pictures(frame, std::move(finished), facts.wants_thumbnails);
    }
    show_time(number);
}

/// The pictures of the frame, as those of a pair; of the first one its thumbnails too. Only what goes wrong
/// is told.
void VideoMount::store_pictures(int frame, Finished finished, bool has_thumbnails) {
    static constexpr int kQuiet = 0;
    const ParameterSet& p = pipeline_.parameters;
    KeptNotes quiet(notes_.messages(), kQuiet);
    PairRun pair(frame, quiet);
    pair.frame = frame;
    pair.files = files_of(pipeline_.list, 0);
    pair.left_relative = run_.left_relative;
    pair.right_relative = run_.right_relative;
    pair.left_output_suffix = output_suffix(p, suffix_of(run_.left_relative), false, quiet);
    pair.right_output_suffix = pair.left_output_suffix;
    pair.inverse_output = p.inverse_output;
    pair.stamp = pipeline_.run.stamp;
    pair.mounted.finished = std::move(finished);
    pair.mounted.finished.eight_bits_only = true;
    const Finished& shown = pair.mounted.finished;
    pair.mounted.size = {shown.width(), shown.height()};
    pair.mounted.image_ratio = static_cast<double>(shown.width()) / shown.height();
    pair.mounted.deviation = run_.largest_deviation;
    if (has_thumbnails) {
        pair.html_images = setting::html_images::thumbnails;
        store_thumbnails(pipeline_, pair);
        run_.left_thumb = pair.left_thumb;
        run_.right_thumb = pair.right_thumb;
        quiet.report_html("<p style=\"text-align:left; margin-left:1em\">\n" + pair.picture_tag);
    }
    store_products(pipeline_, pair);
    quiet.tell(notes_);
}

std::string clock_text(int seconds) {
    constexpr int kMinute = 60;
    constexpr int kHour = 3600;
    return format_text("%02d:%02d:%02d", seconds / kHour, seconds / kMinute % kMinute, seconds % kMinute);
}

/// How long it has taken, and how long it will.
void VideoMount::show_time(int number) const {
    if (number == 0) {
        return;
    }
    const std::chrono::duration<double> used = std::chrono::steady_clock::now() - start_;
    const int total = round_half_up(run_.mounted.count() * used.count() / (number + 1));
    const int spent = round_half_up(used.count());
    notes_.progress(format_text("Frame index: %d/%d   Total time = %s, used time = %s, time left = %s",
                                run_.mounted.at(number), run_.mounted.end - 1, clock_text(total).c_str(),
                                clock_text(spent).c_str(), clock_text(std::max(0, total - spent)).c_str()),
                    100.0 * (number + 1) / run_.mounted.count());
}

void VideoMount::run() {
    const EndRequests requests;
    for (int i = 0; i < run_.mounted.count(); ++i) {
        mount(run_.mounted.at(i), i);
        if (EndRequests::is_asked()) {
            products_.close_parts();
            return;  // the signal acts
        }
    }
    products_.close();
}

/// The charts go into the report, and onto a page of their own.
void show_charts(VideoRun& run) {
    const ParameterSet& p = run.pipeline.parameters;
    if (run.notes.verbose() <= 1 || p.estimate_geometry != setting::estimate_geometry::measured) {
        return;
    }
    DeepVideoPage page{p.path_of_images, {run.files.left}, run.left_thumb, run.right_thumb};
    if (!run.files.is_one_file()) {
        page.videos.push_back(run.files.right);
    }
    write_video_charts(page, run.series, run.view_size.width, run.notes);
}

}  // namespace

void mount_video(VideoRun& run) {
    const ParameterSet& p = run.pipeline.parameters;
    if (p.video_output == setting::video_output::none && !stores_products(p)) {
        return;
    }
    VideoMount(run).run();
    ++run.pipeline.processed;
    ++run.pipeline.mounted;
}

void conclude_video(VideoRun& run) {
    SequenceReport report;
    report.mode = run.pipeline.parameters.estimate_geometry;
    report.correction = correction_of(run.means);
    report.near_shift_px = static_cast<double>(run.means.window_px);
    const std::chrono::duration<double> used = std::chrono::steady_clock::now() - run.start;
    report.seconds = round_half_up(used.count());
    write_sequence_report(report, run.notes);
    show_charts(run);
}

}  // namespace zemora
