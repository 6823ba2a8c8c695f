// The warp with each kernel, with gamma and tone tables; canvas and encoding. Rates are output pixels
// of both views per second.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <array>
#include <filesystem>

#include "config/voice.h"
#include "platform/cpu.h"
#include "render/canvas.h"
#include "render/output_writer.h"
#include "render/warp_pair.h"

namespace {

using namespace zemora;

constexpr int kWidth = 4000;  // 12 megapixels
constexpr int kHeight = 3000;

/// Textured, without background colour; `with_black` strews pixels of it.
Bitmap make_picture(unsigned seed, bool with_black) {
    Bitmap bitmap = Bitmap::create(kWidth, kHeight);
    const Picture picture = bitmap.picture();
    unsigned state = seed;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            state = state * 1664525U + 1013904223U;
            const int wave = (x / 3 + y / 5 + static_cast<int>(seed) * 40) % 200;
            for (int c = 0; c < kPixelBytes; ++c) {
                picture.pixel(x, y)[c] = static_cast<std::uint8_t>(20 + wave + static_cast<int>(state >> 28));
            }
            if (with_black && (state >> 8) % 50000 == 0) {
                fill(picture.part(x, y, 1, 1), Colour{});
            }
        }
    }
    return bitmap;
}

struct Scene {
    explicit Scene(bool with_black) : left(make_picture(1, with_black)), right(make_picture(2, with_black)) {
        parameters.verbose_mode = 0;
    }

    bool run(int kernel, float scale, float gamma, bool tone) {
        const StereoPicture source{left.picture(), right.picture()};
        WarpPlan plan;
        plan.frame = {static_cast<int>(kWidth * scale), static_cast<int>(kHeight * scale)};
        plan.scale = scale;
        plan.interpolation = {kernel, interpolation_for(4, scale).tent_radius};
        plan.gamma = gamma;
        plan.tone.is_applied = tone;
        plan.tone.mode_left = plan.tone.mode_right = 3;
        plan.correction = {12.3, 40.0, 0.008, 0.015, 0.008, 0.008};
        return warp_pair(source, plan, nullptr, warped, voice).has_value();
    }

    [[nodiscard]] Finished finished() const {
        Finished done;
        done.left.picture = warped.pair().left;
        done.right.picture = warped.pair().right;
        return done;
    }

    Bitmap left;
    Bitmap right;
    ParameterSet parameters;
    Console console;
    MessageCatalogue messages{Language::english};
    Voice voice{console, messages, parameters};
    WarpedPair warped;
};

Scene& scene(bool with_black = false) {
    static Scene plain(false);
    static Scene strewn(true);
    return with_black ? strewn : plain;
}

void count_pixels(benchmark::State& state, const WarpedPair& warp) {
    state.counters["pixels"] =
        benchmark::Counter(2.0 * warp.width * warp.height, benchmark::Counter::kIsIterationInvariantRate);
}

/// Arguments: kernel, scale in per cent, gamma in per cent, tone, black pixels, instruction set, threads.
void warp_pair(benchmark::State& state) {
    const auto argument = [&state](int i) {
        return static_cast<int>(state.range(static_cast<std::size_t>(i)));
    };
    Scene& pair = scene(argument(4) != 0);
    limit_instruction_set(static_cast<InstructionSet>(argument(5)));
    omp_set_num_threads(argument(6));
    for (auto _ : state) {
        if (!pair.run(argument(0), static_cast<float>(argument(1)) / 100.0F,
                      static_cast<float>(argument(2)) / 100.0F, argument(3) != 0)) {
            state.SkipWithError("the warp failed");
        }
    }
    const Picture middle =
        pair.warped.right.picture().part(pair.warped.width / 2, pair.warped.height / 2, 1, 1);
    if (middle.bits[0] < 10) {
        state.SkipWithError("the middle of the picture is black");
    }
    limit_instruction_set(InstructionSet::avx512);
    omp_set_num_threads(omp_get_num_procs());
    count_pixels(state, pair.warped);
}

BENCHMARK(warp_pair)
    ->ArgNames({"kernel", "scale", "gamma", "tone", "black", "isa", "threads"})
    ->Args({0, 100, 100, 0, 0, 2, 1})
    ->Args({1, 100, 100, 0, 0, 0, 1})
    ->Args({1, 100, 100, 0, 0, 1, 1})
    ->Args({1, 100, 100, 0, 0, 2, 1})
    ->Args({2, 100, 100, 0, 0, 0, 1})
    ->Args({2, 100, 100, 0, 0, 1, 1})
    ->Args({2, 100, 100, 0, 0, 2, 1})
    ->Args({2, 100, 100, 0, 0, 2, 2})
    ->Args({2, 100, 100, 1, 0, 2, 1})
    ->Args({2, 100, 100, 0, 1, 2, 1})
    ->Args({2, 90, 100, 0, 0, 2, 1})
    ->Args({3, 50, 100, 0, 0, 2, 1})
    ->Args({2, 100, 220, 0, 0, 2, 2})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void compose_stereo(benchmark::State& state) {
    Scene& pair = scene();
    (void)pair.run(1, 1.0F, 1.0F, false);
    for (auto _ : state) {
        const Finished finished = pair.finished();
        const Bitmap canvas =
            compose_side_by_side(finished, side_by_side_layout(finished, finished.frame), pair.voice);
        benchmark::DoNotOptimize(canvas.bits());
    }
    count_pixels(state, pair.warped);
}
BENCHMARK(compose_stereo)->Unit(benchmark::kMillisecond)->UseRealTime();

Result<StoreResult> write_both(const Finished& finished, const std::string& left_file,
                               const std::string& right_file, const SaveOptions& options, Notes& notes) {
    const ViewLayouts layouts = view_layouts(finished, {});
    std::array<StoreResult, 2> results;
#pragma omp parallel for schedule(static, 1)
    for (int i = 0; i < 2; ++i) {
        KeptNotes kept = KeptNotes::for_listener(notes);
        results[static_cast<std::size_t>(i)] =
            *write_view(finished, layouts, i == 0 ? View::left : View::right, i == 0 ? left_file : right_file,
                        {}, options, kept);
    }
    return joined(results[0], results[1]);
}

/// Both views, or the pair side by side, from the working pictures to files.
void store(benchmark::State& state, const char* suffix, bool stereo) {
    Scene& pair = scene();
    (void)pair.run(1, 1.0F, 1.0F, false);
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "zemora_bench_store";
    std::filesystem::create_directories(folder);
    const std::string left = (folder / ("left" + std::string(suffix))).string();
    const std::string right = (folder / ("right" + std::string(suffix))).string();
    SaveOptions options;
    options.jpeg_quality = 95;
    for (auto _ : state) {
        const Finished finished = pair.finished();
        const Result<StoreResult> result =
            stereo ? write_stereo(*compose_stereo(finished, {}, pair.voice), left, {}, options)
                   : write_both(finished, left, right, options, pair.voice);
        if (!result || result->code != 0) {
            state.SkipWithError("not stored");
        }
    }
    std::filesystem::remove_all(folder);
    count_pixels(state, pair.warped);
}
BENCHMARK_CAPTURE(store, left_right_jpeg, ".jpg", false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(store, stereo_jpeg, ".jpg", true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(store, left_right_tiff, ".tif", false)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
