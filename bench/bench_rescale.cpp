// Both rescalers, the rotated copy and the colour tables, each with its result looked at afterwards.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "analysis/colormap.h"
#include "analysis/histogram.h"
#include "numerics/rescale.h"
#include "platform/cpu.h"

namespace {

using namespace zemora;

/// A gradient with some noise: rescaled values are known to a few levels.
Bitmap make_gradient(int width, int height) {
    Bitmap bitmap = Bitmap::create(width, height);
    std::mt19937 random(1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = bitmap.picture().pixel(x, y);
            pixel[0] = static_cast<std::uint8_t>(200.0 * x / width + static_cast<double>(random() % 8));
            pixel[1] = static_cast<std::uint8_t>(200.0 * y / height + static_cast<double>(random() % 8));
            pixel[2] = static_cast<std::uint8_t>(random() % 256);
        }
    }
    return bitmap;
}

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

void megapixels(benchmark::State& state, double pixels) {
    state.counters["source_px"] = benchmark::Counter(pixels, benchmark::Counter::kIsIterationInvariantRate);
}

/// Without vector code, with set 0, the bilinear filter is its plain twin; the bicubic filter has no other.
void run_rescale(benchmark::State& state) {
    limit_instruction_set(static_cast<InstructionSet>(state.range(2)));
    const auto filter = static_cast<RescaleFilter>(state.range(0));
    const int width = static_cast<int>(state.range(1));
    const int height = width * 3 / 4;
    const Bitmap source = make_gradient(kWidth, kHeight);
    const Bitmap target = Bitmap::create(width, height);
    RescaleScratch scratch;
    for ([[maybe_unused]] auto turn : state) {
        rescale(source.picture(), target.picture(), scratch, filter, RescaleFit::stretch);
        benchmark::DoNotOptimize(target.bits());
    }
    const std::uint8_t* middle = target.picture().pixel(width / 2, height / 4);
    if (std::abs(middle[0] - 103) > 5 || std::abs(middle[1] - 53) > 5) {
        state.SkipWithError("wrong picture");
    }
    limit_instruction_set(InstructionSet::avx512);
    megapixels(state, static_cast<double>(kWidth) * kHeight);
}
BENCHMARK(run_rescale)
    ->ArgNames({"filter", "width", "set"})
    ->ArgsProduct({{1}, {66, 200, 400, 1024, 1900, 3600, 4400}, {0, 1}})
    ->ArgsProduct({{2}, {66, 200, 1024, 3600, 4400}, {0}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void run_rotated(benchmark::State& state) {
    const Bitmap source = make_gradient(kWidth, kHeight);
    const Bitmap target = Bitmap::create(800, 600);
    for ([[maybe_unused]] auto turn : state) {
        rescale_rotated(source.picture(), target.picture(),
                        {static_cast<double>(state.range(0)), 0.0, 1.0, {}});
    }
    if (std::abs(target.picture().pixel(400, 300)[0] - 103) > 6) {
        state.SkipWithError("wrong picture");
    }
}
BENCHMARK(run_rotated)->ArgName("degrees")->Arg(0)->Arg(3)->Unit(benchmark::kMillisecond)->UseRealTime();

void count_greys(benchmark::State& state) {
    limit_instruction_set(static_cast<InstructionSet>(state.range(0)));
    const Bitmap source = make_gradient(kWidth, kHeight);
    Histogram histogram{};
    for ([[maybe_unused]] auto turn : state) {
        histogram = grey_histogram(source.picture(), {0, 0, 0});
    }
    Histogram plain{};
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const std::uint8_t* p = source.picture().pixel(x, y);
            if (p[0] + p[1] + p[2] != 0) {
                ++plain[static_cast<std::size_t>(grey_value(p[0], p[1], p[2]))];
            }
        }
    }
    if (plain != histogram) {
        state.SkipWithError("wrong counts");
    }
    limit_instruction_set(InstructionSet::avx512);
    megapixels(state, static_cast<double>(kWidth) * kHeight);
}
BENCHMARK(count_greys)->ArgName("set")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void adapt_colours(benchmark::State& state) {
    const Bitmap source = make_gradient(kWidth, kHeight);
    const StereoPicture pair{source.picture(), source.picture()};
    AnalysisState analysis{AnalysisOptions{}};
    for ([[maybe_unused]] auto turn : state) {
        colormap_adapt(analysis, pair, nullptr, static_cast<int>(state.range(0)));
    }
    if (analysis.tone_left.plane != analysis.tone_right.plane) {
        state.SkipWithError("equal views, different tables");
    }
    megapixels(state, 2.0 * kWidth * kHeight);
}
BENCHMARK(adapt_colours)
    ->ArgName("mode")
    ->Arg(1)
    ->Arg(4)
    ->Arg(5)
    ->Arg(9)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
