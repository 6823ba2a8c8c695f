#include <array>
#include <memory>
#include <mutex>
#include <optional>

#include "driver/failure.h"
#include "driver/pair_files.h"
#include "driver/pair_notes.h"
#include "driver/phone_depth.h"
#include "driver/pipeline.h"
#include "driver/product_names.h"
#include "driver/settings_analysis.h"
#include "driver/settings_input.h"
#include "driver/settings_mount.h"
#include "driver/settings_render.h"
#include "driver/stations.h"
#include "driver/viewers.h"
#include "numerics/rounding.h"
#include "platform/memory_use.h"
#include "platform/paths.h"
#include "report/analysis_rows.h"
#include "report/pair_report.h"

namespace zemora {

namespace {

PairReadOptions read_options_with_phone_depth(const ParameterSet& parameters, ExifTool& exiftool) {
    PairReadOptions options = pair_read_options(parameters);
    options.find_phone_depth = [&exiftool](const std::string& photo, Notes& notes) {
        return read_phone_depth(exiftool, photo, notes);
    };
    return options;
}

}  // namespace

Pipeline::Pipeline(const ParameterSet& parameters_in, RunContext& run_in, ImageList& list_in,
                   ExifTool& exiftool_in, Voice& voice_in)
    : parameters(parameters_in),
      run(run_in),
      list(list_in),
      exiftool(exiftool_in),
      voice(voice_in),
      settings(mount_settings(parameters_in)),
      inputs(list_in),
      source(list_in, read_options_with_phone_depth(parameters_in, exiftool_in)),
      preparer(prepare_options(parameters_in)),
      analysis_dump(dump_options(parameters_in, run_in.working_directory, run_in.program_directory),
                    voice_in),
      bench(analysis_options(parameters_in)),
      depth(depth_settings(parameters_in)) {
    bench.analysis.visitor = &analysis_dump;
    settings.colours = value_or_end(voice, read_colour_change(parameters, voice.messages()));
}

bool fail_to_mount(const Pipeline& pipeline, PairRun& pair, StatusCode status) {
    report_mount_failure(pair.notes);
    pair.notes.wait(Severity::information);
    rename_refused(pipeline, pair);
    pair.status = status;
    pair.failure_told = true;
    return false;
}

namespace {

// The stations. A pair that has ended passes the ones behind it without being touched.

void mount_station(Pipeline& pipeline, PairRun& pair) {
    if (pair.course == Course::at_work && locate_pair(pipeline, pair) && !mount_views(pipeline, pair)) {
        pair.course = Course::ended;
    }
}

void store_station(Pipeline& pipeline, PairRun& pair) {
    if (pair.course == Course::at_work) {
        store_outputs(pipeline, pair);
    }
    conclude_pair(pipeline, pair);
}

/// Behind the last station, when the pair does not come back.
void end_pair(Pipeline& pipeline, const PairRun& pair) {
    pipeline.mounted += is_written(pair.status) && !pair.store_failed ? 1 : 0;
    pipeline.exiftool.forget_files({pair.files.left, pair.files.right, pair.files.stereo});
}

bool shares_file(const ImageList& list, int one, int other) {
    const PairFiles a = files_of(list, one);
    const PairFiles b = files_of(list, other);
    if (!list.two_files) {
        return is_same_file(a.stereo, b.stereo);
    }
    return is_same_file(a.left, b.left) || is_same_file(a.left, b.right) || is_same_file(a.right, b.left) ||
           is_same_file(a.right, b.right);
}

/// Which pair of how many is at work, and the time that the rest will take.
class RunCourse {
public:
    explicit RunCourse(const Pipeline& pipeline) : voice_(pipeline.voice), count_(pipeline.list.count()) {}
    ~RunCourse() { voice_.console().set_course({}, {}); }
    RunCourse(const RunCourse&) = delete;
    RunCourse& operator=(const RunCourse&) = delete;

    void begin_pair(int index) const {
        show(index);
        voice_.begin_report_section();
    }
    void end_pair() const { voice_.end_report_section(); }

private:
    void show(int index) const;

    Voice& voice_;
    int count_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

void RunCourse::show(int index) const {
    if (count_ < 2) {
        return;
    }
    constexpr int kMinute = 60;
    constexpr int kHour = 3600;
    std::string behind;
    if (index > 0) {
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start_;
        const int left = round_half_up(spent.count() / index * (count_ - index));
        behind = format_text(voice_.messages().either({"%d:%02d:%02d left", "noch %d:%02d:%02d"}),
                             left / kHour, left / kMinute % kMinute, left % kMinute);
    }
    voice_.console().set_course(format_text("%d/%d  ", index + 1, count_), behind);
}

// One pair after the other, each seen by the user where he wants that.

/// What the pair has before the user sees it.
struct BeforeViewer {
    WorkClock::Duration spent{};
    StatusCode status = StatusCode::success;  ///< Of the geometry; a size that is missed lowers it.
};

/// Puts back what the stores of the first time have changed.
void prepare_repeat(PairRun& pair, const BeforeViewer& before) {
    pair.notes.say<Msg::main_same_image_repeated>();
    pair.notes.wait(Severity::warning);
    pair.failure_told = pair.store_failed = false;
    pair.status = before.status;
}

/// Shows the pair to the user, whose time does not count, and neither does that of earlier stores.
ViewerDecision show_to_user(Pipeline& pipeline, PairRun& pair, const BeforeViewer& before) {
    if (pair.repeat) {
        prepare_repeat(pair, before);
    }
    const ViewerDecision decision = run_post_viewer(pipeline, pair);
    pair.repeat = decision == ViewerDecision::repeat;
    pair.clock.set(before.spent);
    return decision;
}

/// From the corrections to the stored pictures, again as long as the post viewer asks for it. True when the
/// views are to change places.
bool mount_as_shown(Pipeline& pipeline, PairRun& pair) {
    const BeforeViewer before{pair.clock.spent(), pair.status};
    do {
        const ViewerDecision decision = show_to_user(pipeline, pair, before);
        if (decision == ViewerDecision::swap) {
            return true;
        }
        const bool is_stored = decision == ViewerDecision::go_on || decision == ViewerDecision::repeat;
        pair.course = is_stored && mount_views(pipeline, pair) ? Course::at_work : Course::ended;
        store_station(pipeline, pair);
        if (pair.warped.left) {
            std::swap(pair.warped, pipeline.bench.warped);  // keeps its memory for the next pair
        }
    } while (pair.repeat && is_written(pair.status));
    return false;
}

/// The views in the other order than the user saw them; whether that is not the order of the list.
bool exchange_views(Pipeline& pipeline, const PairRun& pair) {
    const bool exchanged = !has_exchanged_views(pipeline, pair);
    if (exchanged != pair.exchanged && exchanges_files(pipeline)) {
        pipeline.list.exchange_views(pair.index);
    }
    return exchanged;
}

/// One way of a pair through the stations; true when it starts over with its views exchanged.
bool run_once(Pipeline& pipeline, PairRun& pair) {
    if (prepare_pair(pipeline, pair) && locate_pair(pipeline, pair)) {
        return mount_as_shown(pipeline, pair);
    }
    store_station(pipeline, pair);
    return false;
}

void run_pair(Pipeline& pipeline, int index) {
    bool exchanged = false;
    bool counted = false;
    for (bool starts_over = true; starts_over;) {
        PairRun pair(index, pipeline.voice);
        pair.exchanged = exchanged;
        pair.counted = counted;
        starts_over = run_once(pipeline, pair);
        counted = pair.counted;
        exchanged = starts_over && exchange_views(pipeline, pair);
        if (starts_over) {
            (void)pipeline.exiftool.settle(pair.profiles, pair.notes);
        } else {
            end_pair(pipeline, pair);
        }
        pipeline.preparer.take_back(std::move(pair.input));
    }
}

void run_one_by_one(Pipeline& pipeline, const RunCourse& course) {
    for (int index = 0; index < pipeline.list.count(); ++index) {
        course.begin_pair(index);
        run_pair(pipeline, index);
        course.end_pair();
        if (pipeline.parameters.corr_input_output == setting::corr_input_output::from_file) {
            break;
        }
    }
}

// Several pairs at a time.

/// The pairs on their way through the stations. Each is reported when those before it are done.
class Batch {
public:
    Batch(Pipeline& pipeline, const RunCourse& course) : pipeline_(pipeline), course_(course) {}
    /// False, with nothing done, when the system has no threads for it.
    [[nodiscard]] bool run();

private:
    struct Place {
        std::unique_ptr<PairNotes> notes;
        std::unique_ptr<PairRun> pair;
    };
    [[nodiscard]] Place& place_of(int index) {
        return places_[static_cast<std::size_t>(index % kObjectsAtWork)];
    }
    void begin(int index);
    void end(int index);
    void stop();
    void read(int index);
    void mount(int index);
    void store(int index);

    Pipeline& pipeline_;
    const RunCourse& course_;
    std::array<Place, kObjectsAtWork> places_;
    std::mutex mutex_;
    int turn_ = 0;          ///< The pair that is reported.
    WorkClock turn_clock_;  ///< Since the pair before was done.
    bool is_stopped_ = false;
    WarpedPair spare_;  ///< Memory for the views of the next pair.
};

/// A place for the pair, where one before it has been.
void Batch::begin(int index) {
    Place& place = place_of(index);
    std::unique_ptr<PairRun> before;
    {
        const std::lock_guard lock(mutex_);
        before = std::move(place.pair);
    }
    if (before) {
        pipeline_.preparer.take_back(std::move(before->input));
        before.reset();
    }
    const std::lock_guard lock(mutex_);
    place.notes = std::make_unique<PairNotes>(pipeline_.voice);
    place.pair = std::make_unique<PairRun>(index, *place.notes);
    if (index == 0) {
        course_.begin_pair(index);
    }
    if (turn_ == index) {
        place.notes->open();
    }
    if (is_stopped_) {
        place.notes->stop();
    }
}

/// The next pair has its turn.
void Batch::end(int index) {
    end_pair(pipeline_, *place_of(index).pair);
    const std::lock_guard lock(mutex_);
    course_.end_pair();
    spare_ = std::move(place_of(index).pair->warped);
    turn_ = index + 1;
    if (turn_ == pipeline_.list.count()) {
        return;
    }
    course_.begin_pair(turn_);
    const Place& next = place_of(turn_);
    if (next.pair && next.pair->index == turn_) {
        next.notes->open();
    }
}

void Batch::stop() {
    const std::lock_guard lock(mutex_);
    is_stopped_ = true;
    for (const Place& place : places_) {
        if (place.notes) {
            place.notes->stop();
        }
    }
}

void Batch::read(int index) {
    begin(index);
    (void)prepare_pair(pipeline_, *place_of(index).pair);
}

void Batch::mount(int index) {
    if (!pipeline_.bench.warped.left) {
        const std::lock_guard lock(mutex_);
        std::swap(pipeline_.bench.warped, spare_);
    }
    mount_station(pipeline_, *place_of(index).pair);
}

void Batch::store(int index) {
    // The times of all pairs add up to that of the run.
    PairRun& pair = *place_of(index).pair;
    pair.clock.set(turn_clock_.spent());
    store_station(pipeline_, pair);
    end(index);
    turn_clock_.set({});
}

/// Another pair at work would leave little memory. It then starts when the others are done.
bool is_memory_short() {
    constexpr int kReserve = 2;  // times what is held now
    const MemoryUse use = memory_use();
    return use.available < kReserve * use.resident;
}

bool Batch::run() {
    // The system ends an outside program with the thread that started it, and this one lives longest.
    (void)pipeline_.exiftool.is_available();
    const ImageList& list = pipeline_.list;
    return run_stations(
        list.count(),
        {[this](int index) { read(index); }, [this](int index) { mount(index); },
         [this](int index) { store(index); },
         [&list](int index, int earlier) { return shares_file(list, index, earlier) || is_memory_short(); },
         [this] { stop(); }});
}

/// Whether nobody but the program looks at a pair on its way, and nothing of a pair depends on the one
/// before.
bool can_run_in_batch(const Pipeline& pipeline) {
    const ParameterSet& p = pipeline.parameters;
    const bool is_watched = p.pre_viewer_active != 0 || p.post_viewer_active != 0 ||
                            p.graphical_interface != 0 || p.progress_output != 0 || calls_colour_script(p);
    const bool is_studied = p.gnu_error_output != 0 || p.image_segment_output != 0 || p.matrix_output != 0;
    return pipeline.list.count() > 1 && !is_watched && !is_studied && p.corr_input_output == 0;
}

}  // namespace

void run_image_pipeline(Pipeline& pipeline) {
    give_away_mounted_names(pipeline.parameters, pipeline.voice, pipeline.list, pipeline.given_names);
    const RunCourse course(pipeline);
    if (!can_run_in_batch(pipeline) || !Batch(pipeline, course).run()) {
        run_one_by_one(pipeline, course);
    }
}

}  // namespace zemora
