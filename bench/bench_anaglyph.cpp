// Each mix of an anaglyph on 24 megapixels. Compare with `copy_view`, a plain copy of one view, and with
// `plain_mix`, the formula for each pixel. Rates are pixels of the canvas per second.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <random>

#include "platform/cpu.h"
#include "render/dome.h"
#include "tests/render/anaglyph_twin.h"

namespace {

using namespace zemora;

constexpr int kWidth = 6000;  // 24 megapixels
constexpr int kHeight = 4000;

/// Waves with noise in each channel.
Bitmap make_view(unsigned seed) {
    Bitmap bitmap = Bitmap::create(kWidth, kHeight);
    std::mt19937 random(seed);
    for (int y = 0; y < kHeight; ++y) {
        std::uint8_t* row = bitmap.picture().row(y);
        for (int i = 0; i < kWidth * kPixelBytes; ++i) {
            const int wave = (i / (2 + i % kPixelBytes) + y / 5 + static_cast<int>(seed) * 60) % 440;
            row[i] = static_cast<std::uint8_t>((wave < 220 ? wave : 440 - wave) +
                                               static_cast<int>(random() >> 27));
        }
    }
    return bitmap;
}

struct Scene {
    Bitmap left = make_view(1);
    Bitmap right = make_view(2);
    Bitmap canvas = Bitmap::create(kWidth, kHeight);
    [[nodiscard]] StereoPicture views() const { return {left.picture(), right.picture()}; }
};

Scene& scene() {
    static Scene made;
    return made;
}

AnaglyphSettings settings_for(int type) {
    AnaglyphSettings settings;
    settings.type = type;
    settings.gamma_red = 0.8F;
    settings.monitor = {0.02F, 0.03F, 0.02F, 0.1F};
    settings.print = {90,   0.1F, 0.12F, 0.2F, 0.08F, 0.15F, 0.1F, 1.1F,
                      0.9F, 1.3F, 0.8F,  1.0F, 1.2F,  0.7F,  1.4F};
    settings.colours.left = {
        {{0.456F, 0.5F, 0.176F}, {-0.04F, -0.038F, -0.016F}, {-0.015F, -0.02F, -0.005F}}};
    settings.colours.right = {
        {{-0.043F, -0.088F, -0.002F}, {0.378F, 0.734F, -0.018F}, {-0.072F, -0.113F, 1.226F}}};
    settings.colours.gamma_in = {2.2F, 2.2F, 2.2F};
    settings.colours.gamma_out = {1.0F / 2.2F, 1.0F / 2.2F, 1.0F / 2.2F};
    return settings;
}

/// The colour of the twin at a pixel.
bool equals_twin(const testing::AnaglyphTwin& twin, int x, int y) {
    const auto rgb = [x, y](const Bitmap& view) {
        const std::uint8_t* pixel = view.picture().pixel(x, y);
        return testing::Rgb{static_cast<double>(pixel[2]), static_cast<double>(pixel[1]),
                            static_cast<double>(pixel[0])};
    };
    const auto wanted = twin.mix(rgb(scene().left), rgb(scene().right));
    return wanted && is_colour(scene().canvas.picture().pixel(x, y), *wanted);
}

void count_pixels(benchmark::State& state, double pixels) {
    state.counters["pixels"] = benchmark::Counter(pixels, benchmark::Counter::kIsIterationInvariantRate);
}

/// Arguments: type, instruction set, threads. The mixer is made anew for each picture.
void merge_pair(benchmark::State& state) {
    const int type = static_cast<int>(state.range(0));
    limit_instruction_set(static_cast<InstructionSet>(state.range(1)));
    omp_set_num_threads(static_cast<int>(state.range(2)));
    const AnaglyphSettings settings = settings_for(type);
    const StereoPicture views = scene().views();
    for (auto _ : state) {
        if (!merge_views(*anaglyph_mix_row(type).make(settings), views, scene().canvas.picture(), {})) {
            state.SkipWithError("the calibration is unstable");
        }
    }
    const testing::AnaglyphTwin twin(settings);
    for (int i = 0; i < 10000; ++i) {
        if (!equals_twin(twin, i * 7919 % kWidth, i * 104729 % kHeight)) {
            state.SkipWithError("wrong picture");
            break;
        }
    }
    limit_instruction_set(InstructionSet::avx512);
    omp_set_num_threads(omp_get_num_procs());
    state.SetLabel(anaglyph_mix_row(type).name);
    count_pixels(state, static_cast<double>(kWidth) * kHeight);
}
BENCHMARK(merge_pair)
    ->ArgNames({"type", "isa", "threads"})
    ->ArgsProduct({benchmark::CreateDenseRange(0, 8, 1), {1}, {1, 2}})
    ->ArgsProduct({{4, 5, 8}, {0}, {1}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void copy_view(benchmark::State& state) {
    const StereoPicture views = scene().views();
    for (auto _ : state) {
        copy(views.left, scene().canvas.picture());
        benchmark::ClobberMemory();
    }
    count_pixels(state, static_cast<double>(kWidth) * kHeight);
}
BENCHMARK(copy_view)->Unit(benchmark::kMillisecond);

/// One row in a hundred with the twin, one thread.
void plain_mix(benchmark::State& state) {
    constexpr int kRowStep = 100;
    const testing::AnaglyphTwin twin(settings_for(static_cast<int>(state.range(0))));
    const auto rgb = [](const std::uint8_t* pixel) {
        return testing::Rgb{static_cast<double>(pixel[2]), static_cast<double>(pixel[1]),
                            static_cast<double>(pixel[0])};
    };
    const StereoPicture views = scene().views();
    for (auto _ : state) {
        for (int y = 0; y < kHeight; y += kRowStep) {
            for (int x = 0; x < kWidth; ++x) {
                benchmark::DoNotOptimize(twin.mix(rgb(views.left.pixel(x, y)), rgb(views.right.pixel(x, y))));
            }
        }
    }
    count_pixels(state, static_cast<double>(kWidth) * (kHeight / kRowStep));
}
BENCHMARK(plain_mix)->ArgNames({"type"})->DenseRange(0, 8, 1)->Unit(benchmark::kMillisecond);

void bend_to_dome(benchmark::State& state) {
    for (auto _ : state) {
        if (!dome_picture(scene().left.picture())) {
            state.SkipWithError("no memory");
        }
    }
}
BENCHMARK(bend_to_dome)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
