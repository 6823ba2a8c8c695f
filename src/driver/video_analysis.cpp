// The first pass of a film: some of its frames are measured, each from the one before it.

#include <algorithm>
#include <optional>
#include <utility>

#include "analysis/colormap.h"
#include "config/html_text.h"
#include "driver/failure.h"
#include "driver/settings_mount.h"
#include "driver/settings_report.h"
#include "driver/video_run.h"
#include "numerics/rounding.h"
#include "platform/paths.h"
#include "report/analysis_rows.h"
#include "report/pair_report.h"
#include "video/frame_reader.h"

namespace zemora {

namespace {

/// The pass with what one frame leaves for the next.
class VideoAnalysis {
public:
    explicit VideoAnalysis(VideoRun& run)
        : run_(run),
          pipeline_(run.pipeline),
          notes_(run.notes),
          reader_(*run.source, walk_of(run), kAhead, run.notes) {}

    void run();

private:
    static constexpr int kAhead = 1;

    [[nodiscard]] static FrameWalk walk_of(const VideoRun& run);
    void analyse(int frame);
    void announce(int frame);
    [[nodiscard]] GeometryWish wish_for(int frame, const InputViews& views);
    [[nodiscard]] bool is_of_scene(int frame) const;
    [[nodiscard]] bool measure_disparity();
    void take_tone();
    void take_disparities(const LocatedPair& located);
    void take_correction(int frame, const LocatedPair& located);
    void report_frame(const LocatedPair& located, StatusCode status);

    VideoRun& run_;
    Pipeline& pipeline_;
    Voice& notes_;
    FrameReader reader_;
    std::optional<FrameMemory> memory_;  ///< Of the latest frame that was measured.
    int memory_frame_ = 0;
    FrameValues values_;  ///< The latest ones: a frame that measures nothing repeats them.
    FrameDisparities disparities_;
    WorkClock clock_;
};

/// Where nothing is measured one frame tells what there is to tell.
FrameWalk VideoAnalysis::walk_of(const VideoRun& run) {
    const ParameterSet& p = run.pipeline.parameters;
    FrameWalk walk = run.analysed;
    if (p.estimate_geometry == setting::estimate_geometry::from_keys ||
        p.corr_input_output == setting::corr_input_output::from_file) {
        walk.end = std::min(walk.end, walk.first + 1);
    }
    return walk;
}

void VideoAnalysis::announce(int frame) {
    const MessageCatalogue& messages = notes_.messages();
    const std::string head = messages.text<Msg::main_frame_index>() + format_text("%d", frame);
    const std::string left = printable(run_.left_relative);
    const std::string right = printable(run_.right_relative);
    std::string text =
        messages.text<Msg::main_separator>() + head + '\n' + std::string(head.size(), '-') + '\n';
    text += "   " + left + '\n' + (run_.files.is_one_file() ? "" : "   " + right + '\n');
    if (notes_.verbose() > 0) {
        notes_.print(text);
    }
    notes_.report_text(text);
    notes_.report_html(
        "<hr>\n<p class=\"a6\"><b>" + html_text(head) + "</b></p>\n<p>&nbsp;&nbsp;&nbsp;" + html_text(left) +
        (run_.files.is_one_file() ? "" : "<br>\n&nbsp;&nbsp;&nbsp;" + html_text(right)) + "</p>\n<hr>\n");
}

/// Whether the frame shows the scene of the one that was measured before.
bool VideoAnalysis::is_of_scene(int frame) const {
    const std::vector<int> starts = run_.source->scene_starts();
    return std::none_of(starts.begin(), starts.end(),
                        [&](int start) { return start > memory_frame_ && start <= frame; });
}

GeometryWish VideoAnalysis::wish_for(int frame, const InputViews& views) {
    const ParameterSet& p = pipeline_.parameters;
    const TargetSize target =
        find_target_size(views.height(), views.width(), p.output_height, p.output_width, p.cropp_output);
    const SizeWish size = value_or_end(
        notes_, wish_for_size(target, {views.width(), views.height()}, p.cropp_output, notes_.messages()));
    GeometryWish wish;
    wish.source = counts_as_measured(p.estimate_geometry) ? GeometrySource::pictures : GeometrySource::keys;
    wish.keys = use_keys(p);
    wish.working = size.scaled;
    wish.preset = run_.orders.pre_selection;
    if (memory_ && is_of_scene(frame)) {
        wish.before = &*memory_;
    }
    return wish;
}

/// The disparities of the pair as it was warped last.
bool VideoAnalysis::measure_disparity() {
    AnalysisState& analysis = pipeline_.bench.analysis;
    const StereoPicture pair = pipeline_.bench.warped.pair();
    colormap_adapt(analysis, pair, nullptr, kColormapForDisparity);
    const std::string step =
        notes_.messages().either({"Zemora::analyse:  phase 4: EstimateDeviation           ",
                                  "Zemora::Analyse:    Phase 4: EstimateDeviation           "});
    const AnalyseStatus status = analyse_phase(analysis, pair, {AnalysePhase::disparity, 1, false, false},
                                               [&](double percent) { notes_.progress(step, percent); });
    if (status == AnalyseStatus::no_memory) {
        end_with(notes_, no_memory_for_correlation(analysis));
    }
    return status == AnalyseStatus::done;
}

/// The tone that the views of this frame would get; the film gets the mean of all.
void VideoAnalysis::take_tone() {
    AnalysisState& analysis = pipeline_.bench.analysis;
    colormap_adapt(analysis, pipeline_.bench.warped.pair(), nullptr,
                   pipeline_.settings.render.auto_output_contrast);
    run_.tones.add(analysis.tone_left, analysis.tone_right);
}

void VideoAnalysis::take_disparities(const LocatedPair& located) {
    const DisparityStatistics& d = pipeline_.bench.analysis.disparity;
    const double shift = located.geometry.window.window_shift_input_px;
    const auto in_input = [&](float value) { return static_cast<float>(value / located.scale + shift); };
    disparities_.near_px = in_input(d.near_point);
    disparities_.far_px = in_input(d.far_point);
    disparities_.centre_px = in_input(d.centre_disparity);
    disparities_.deviation_px = disparities_.far_px - disparities_.near_px;
    values_.curtain_left_px = in_input(d.left_edge_near);
    values_.curtain_right_px = in_input(d.right_edge_near);
    const auto width = static_cast<double>(run_.view_size.width);
    run_.largest_deviation = std::max(run_.largest_deviation, disparities_.deviation_px / width);
}

void VideoAnalysis::take_correction(int frame, const LocatedPair& located) {
    const Correction& c = located.geometry.correction;
    values_.height_px = static_cast<float>(c.height_px);
    values_.window_px = static_cast<float>(located.geometry.window.pure_shift_input_px);
    values_.size = static_cast<float>(c.size);
    values_.rotation_rad = static_cast<float>(c.rotation_rad);
    values_.vergence_v_rad = static_cast<float>(c.vergence_v_rad);
    values_.vergence_h_rad = static_cast<float>(c.vergence_h_rad);
    disparities_.ssg_px =
        static_cast<float>(mean_model_error(c, run_.view_size.height, run_.view_size.width));
    run_.series.valid[static_cast<std::size_t>(frame)] = 1;
}

void VideoAnalysis::report_frame(const LocatedPair& located, StatusCode status) {
    const ParameterSet& p = pipeline_.parameters;
    const double scale = located.scale;
    ImageReport report;
    report.mode = p.estimate_geometry;
    report.is_analysed = counts_as_measured(p.estimate_geometry);
    report.status = status;
    report.width = located.working.width;
    report.height = located.working.height;
    report.pre_rotation_left = run_.orders.pre_selection.rotation_left;
    report.pre_rotation_right = run_.orders.pre_selection.rotation_right;
    report.pre_vergence_v = run_.orders.pre_selection.vergence_v;
    report.correction = located.geometry.correction.rounded_to_float();
    report.remaining = located.geometry.remaining.rounded_to_float();
    const double pure_shift = located.geometry.window.pure_shift_input_px;
    report.original_near_px = disparities_.near_px + pure_shift;
    report.original_far_px = disparities_.far_px + pure_shift;
    report.near_px = scale * disparities_.near_px;
    report.far_px = scale * disparities_.far_px;
    report.left_edge_px = scale * values_.curtain_left_px;
    report.right_edge_px = scale * values_.curtain_right_px;
    report.seconds = round_half_up(std::chrono::duration<double>(clock_.spent()).count());
    write_image_report(report_options(p), report, notes_);
}

void VideoAnalysis::analyse(int frame) {
    clock_.set({});
    announce(frame);
    std::optional<InputViews> views = prepared_frame(run_, reader_.next(notes_));
    if (!views) {
        return;
    }
    run_.view_size = {views->width(), views->height()};
    const GeometryWish wish = wish_for(frame, *views);
    const LocatedPair located =
        value_or_end(notes_, find_geometry(*views, wish, pipeline_.settings, pipeline_.bench, notes_));
    StatusCode status = located.geometry.status;
    if (is_written(status) && located.geometry.measured) {
        memory_ = remember_frame(pipeline_.bench.analysis, located.geometry);
        memory_frame_ = frame;
        take_tone();
        status = measure_disparity() ? status : StatusCode::failed;
        if (is_written(status)) {
            take_disparities(located);
        }
    } else if (is_written(status)) {
        run_.tones.add(ToneTables::identity(), ToneTables::identity());
    }
    if (is_written(status)) {
        take_correction(frame, located);
        report_frame(located, status);
    } else {
        report_mount_failure(notes_);
        notes_.wait(Severity::information);
        memory_.reset();
    }
    ++run_.analysed_count;
    reader_.give_back({std::move(views->left), std::move(views->right)});
    pipeline_.preparer.take_back(*std::move(views));
}

void VideoAnalysis::run() {
    const FrameWalk walk = walk_of(run_);
    for (int i = 0; i < walk.count(); ++i) {
        const int frame = walk.at(i);
        notes_.begin_report_section();
        analyse(frame);
        run_.series.values[static_cast<std::size_t>(frame)] = values_;
        run_.series.disparities[static_cast<std::size_t>(frame)] = disparities_;
        notes_.end_report_section();
    }
    run_.series.analysed.end = std::min(run_.series.analysed.end, walk.end);
}

}  // namespace

void analyse_video(VideoRun& run) {
    VideoAnalysis(run).run();
    run.series.scene_starts = run.source->scene_starts();
    if (run.analysed_count == 0) {
        end_with(run.notes,
                 Failure::of_run(run.notes.messages().text<Msg::main_no_video_files_to_mount>() + "\n"));
    }
}

}  // namespace zemora
