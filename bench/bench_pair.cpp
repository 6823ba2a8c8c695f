// A whole pair, from two JPEG files to left, right and side-by-side JPEG files, with the share of each
// stage as counters (milliseconds).

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "driver/pipeline.h"
#include "platform/paths.h"
#include "platform/temp_folder.h"
#include "render/save_picture.h"
#include "scene.h"

namespace zemora {
namespace {

struct Format {
    int width;
    int height;
};
constexpr Format kFormats[] = {{1152, 864}, {4000, 3000}, {6000, 4000}};

/// The generated pair in the temporary folder; made once for each format.
PairFiles pair_files(const Format& format) {
    const std::string stem = temporary_folder() + '/' + std::to_string(format.width);
    PairFiles files{stem + "_l.jpg", stem + "_r.jpg", {}};
    if (file_exists(files.left)) {
        return files;
    }
    SceneOptions options;
    options.width = format.width;
    options.height = format.height;
    options.seed = 8;
    SceneErrors errors;
    errors.height_px = 0.01 * format.height;
    errors.size = 0.01;
    errors.rotation_rad = errors.vergence_v_rad = 0.01;
    errors.noise = 2.0;
    const Scene scene(options, errors);
    SaveOptions save;
    save.jpeg_quality = 95;
    (void)save_picture(scene.render_left(), files.left, save);
    (void)save_picture(scene.render_right(), files.right, save);
    return files;
}

/// Adds the time since the last call to a stage.
class StageClock {
public:
    void add(benchmark::State& state, const char* stage) {
        const auto now = std::chrono::steady_clock::now();
        state.counters[stage] +=
            benchmark::Counter(std::chrono::duration<double, std::milli>(now - last_).count(),
                               benchmark::Counter::kAvgIterations);
        last_ = now;
    }

private:
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

bool mount_files(Pipeline& pipeline, Notes& notes, benchmark::State& state) {
    StageClock clock;
    PairRun pair(0, notes);
    if (!prepare_pair(pipeline, pair)) {
        return false;
    }
    clock.add(state, "load");
    if (!locate_pair(pipeline, pair)) {
        return false;
    }
    clock.add(state, "find_geometry");
    if (!mount_views(pipeline, pair)) {
        return false;
    }
    clock.add(state, "mount");
    store_outputs(pipeline, pair);
    clock.add(state, "store");
    return pair.status == StatusCode::success;
}

void mount_pair_of_files(benchmark::State& state) {
    const Format& format = kFormats[state.range(0)];
    const PairFiles files = pair_files(format);
    ParameterSet parameters;
    parameters.input_mode = 0;
    parameters.verbose_mode = 0;
    parameters.stop_at_error = 0;
    parameters.meta_transfer = 0;
    parameters.report_mode = 0;
    parameters.jpg_quality = 95;
    parameters.path_of_images = temporary_folder();
    Console console;
    MessageCatalogue messages(Language::english);
    Voice voice(console, messages, parameters);
    RunContext context;
    ImageList list;
    list.add_object(list.add_name(files.left), list.add_name(files.right));
    ExifTool exiftool(parameters);
    bool mounted = true;
    for ([[maybe_unused]] auto round : state) {
        Pipeline pipeline(parameters, context, list, exiftool, voice);
        mounted = mount_files(pipeline, voice, state) && mounted;
    }
    if (!mounted) {
        state.SkipWithError("the pair was not mounted");
    }
    for (const char* folder : {"/cl", "/cr", "/cs"}) {
        std::filesystem::remove_all(temporary_folder() + folder);
    }
    state.SetLabel(std::to_string(format.width * format.height / 1000000) + " MP");
}
BENCHMARK(mount_pair_of_files)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace zemora
