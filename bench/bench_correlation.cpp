// Correlation of one tile in the shape of each phase, with each instruction set and by its plain
// definition; point selection; and a whole phase over its grid.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "analysis/correlation.h"
#include "analysis/stereo_analyse.h"
#include "analysis/surface.h"
#include "platform/cpu.h"

namespace {

using namespace zemora;

struct PhaseShape {
    const char* name;
    int width;
    int height;
    TileSearch search;
};

// Tile and search of a cell in the middle of the grid. Full size: 12 megapixels.
const std::array<PhaseShape, 6> kShapes = {{
    {"phase 1", 200, 152, {50, 38, 76, 100, 20, 26, 1, 1, 0, 0}},
    {"phase 2", 800, 600, {330, 250, 100, 133, 100, 133, 2, 2, 0, 0}},
    {"phase 3 reduced", 800, 600, {330, 250, 57, 76, 30, 57, 1, 2, 0, 0}},
    {"phase 3 full", 4000, 3000, {1800, 1300, 285, 380, 30, 123, 2, 3, 0, 0}},
    {"phase 3 full, wide", 4000, 3000, {1800, 1300, 285, 380, 53, 164, 2, 3, 0, 0}},
    {"phase 5", 1024, 768, {480, 350, 51, 51, 0, 304, 1, 1, 0, 0}},
}};

enum Variant { kClean, kSpeckled, kWedge };

/// Noise of medium correlation length; `kSpeckled` has 2 % single black pixels, `kWedge` a black
/// wedge through the middle.
Bitmap make_view(int width, int height, unsigned seed, int variant) {
    Bitmap bitmap = Bitmap::create(width, height);
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool black =
                (variant == kSpeckled && random() % 50 == 0) || (variant == kWedge && x < width / 2 + y / 40);
            const auto value = static_cast<std::uint8_t>(black ? 0 : 1 + random() % 255);
            std::fill_n(bitmap.picture().pixel(x, y), kPixelBytes, value);
        }
    }
    return bitmap;
}

double work_of(const TileSearch& s) {
    const auto samples = [](int length, int step) { return (length + step - 1) / step; };
    return static_cast<double>(samples(s.tile_rows, s.step_y)) * samples(s.tile_columns, s.step_x) *
           (s.search_rows / s.step_y + 1) * (s.search_columns / s.step_x + 1);
}

/// The definition for one displacement.
float plain_error(const ToneView& first, const ToneView& second, const TileSearch& s, int row_offset,
                  int column_offset) {
    std::int64_t sum = 0;
    int count = 0;
    for (int r = 0; r < s.tile_rows; r += s.step_y) {
        for (int c = 0; c < s.tile_columns; c += s.step_x) {
            const int y = s.y > first.picture.height / 2 ? s.y + r : s.y + s.tile_rows - 1 - r;
            const int x = s.x > first.picture.width / 2 ? s.x + c : s.x + s.tile_columns - 1 - c;
            const int x2 = x + column_offset;
            const int y2 = y + row_offset;
            if (x2 < 0 || y2 < 0 || x2 >= second.picture.width || y2 >= second.picture.height) {
                continue;
            }
            const std::uint8_t* a = first.picture.pixel(x, y);
            const std::uint8_t* b = second.picture.pixel(x2, y2);
            if (a[0] + a[1] + a[2] == 0 || b[0] + b[1] + b[2] == 0) {
                continue;
            }
            ++count;
            for (int ch = 0; ch < kPixelBytes; ++ch) {
                const int d = a[ch] - b[ch];
                sum += d * d;
            }
        }
    }
    const double half = s.search_columns / 2.0;
    const double t = column_offset - s.shift_x + (s.search_columns / s.step_x / 2) * s.step_x - half;
    const double n = std::floor(count * (2.0 - t * t / (half * half)) + 0.5);
    const double least =
        s.search_rows == 0 ? 0.0 : 0.75 * (s.tile_rows / s.step_y) * (s.tile_columns / s.step_x);
    return n > 0.0 && n >= least ? static_cast<float>(static_cast<double>(sum) / n) : kNoOverlap;
}

struct Scene {
    Bitmap left_bitmap;
    Bitmap right_bitmap;
    ToneView left;
    ToneView right;
    Scene(const PhaseShape& shape, int variant)
        : left_bitmap(make_view(shape.width, shape.height, 1, variant)),
          right_bitmap(make_view(shape.width, shape.height, 2, variant)),
          left(left_bitmap.picture(), ToneTables::identity()),
          right(right_bitmap.picture(), ToneTables::identity()) {}
};

void rate(benchmark::State& state, const TileSearch& search) {
    state.counters["px_offsets"] =
        benchmark::Counter(work_of(search), benchmark::Counter::kIsIterationInvariantRate);
}

void correlate_tile(benchmark::State& state) {
    const PhaseShape& shape = kShapes[static_cast<std::size_t>(state.range(0))];
    const auto set = static_cast<InstructionSet>(state.range(1));
    limit_instruction_set(InstructionSet::avx512);
    if (set > usable_instruction_set()) {
        state.SkipWithError("not on this machine");
        return;
    }
    limit_instruction_set(set);
    const Scene scene(shape, static_cast<int>(state.range(2)));
    Correlator correlator;
    ErrorSurface surface;
    for ([[maybe_unused]] auto turn : state) {
        correlator.correlate(scene.left, scene.right, {{0, 0, 0}, 0.75}, shape.search, surface);
        benchmark::DoNotOptimize(surface.errors().data());
    }
    for (int k = 0; k < 20; ++k) {
        const int i = k * 7 % surface.rows();
        const int j = k * 13 % surface.columns();
        if (surface.at(i, j) != plain_error(scene.left, scene.right, shape.search,
                                            (i - surface.centre_row()) * surface.step_y(),
                                            (j - surface.centre_column()) * surface.step_x())) {
            state.SkipWithError("differs from the definition");
        }
    }
    limit_instruction_set(InstructionSet::avx512);
    state.SetLabel(shape.name);
    rate(state, shape.search);
}
BENCHMARK(correlate_tile)
    ->ArgNames({"shape", "set", "variant"})
    ->ArgsProduct({benchmark::CreateDenseRange(0, 5, 1), {0, 1, 2}, {kClean, kSpeckled, kWedge}})
    ->Unit(benchmark::kMicrosecond);

void correlate_plain(benchmark::State& state) {
    const PhaseShape& shape = kShapes[static_cast<std::size_t>(state.range(0))];
    const Scene scene(shape, kClean);
    TileSearch one = shape.search;
    one.search_rows = one.search_columns = 0;
    for ([[maybe_unused]] auto turn : state) {
        benchmark::DoNotOptimize(plain_error(scene.left, scene.right, shape.search, 2, 4));
    }
    state.SetLabel(shape.name);
    rate(state, one);
}
BENCHMARK(correlate_plain)->DenseRange(0, 5)->Unit(benchmark::kMicrosecond);

void select_point(benchmark::State& state) {
    ErrorSurface surface;
    surface.reshape(kShapes[static_cast<std::size_t>(state.range(0))].search);
    for (int i = 0; i < surface.rows(); ++i) {
        for (int j = 0; j < surface.columns(); ++j) {
            surface.set(i, j, static_cast<float>(100 + (i - 3) * (i - 3) + (j - 5) * (j - 5)));
        }
    }
    SurfaceFigures figures;
    for ([[maybe_unused]] auto turn : state) {
        figures = evaluate_surface(surface, 600, 800, SubPixel::damped_height);
        benchmark::DoNotOptimize(figures);
    }
    if (figures.dx != static_cast<float>((5 - surface.centre_column()) * surface.step_x())) {
        state.SkipWithError("wrong minimum");
    }
}
BENCHMARK(select_point)->Arg(1)->Arg(3);

/// Smooth noise: blocks of 24 pixels a side, blended, so that tiles match at any step.
Bitmap make_texture(int width, int height) {
    constexpr int kBlock = 24;
    const int columns = width / kBlock + 2;
    std::mt19937 random(7);
    std::vector<int> lattice(static_cast<std::size_t>(columns) *
                             static_cast<std::size_t>(height / kBlock + 2));
    std::generate(lattice.begin(), lattice.end(),
                  [&random] { return static_cast<int>(random() % 220) + 20; });
    Bitmap bitmap = Bitmap::create(width, height);
    const Picture out = bitmap.picture();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int* l = &lattice[static_cast<std::size_t>(y / kBlock * columns + x / kBlock)];
            const int u = x % kBlock;
            const int v = y % kBlock;
            const int value = (l[0] * (kBlock - u) + l[1] * u) * (kBlock - v) +
                              (l[columns] * (kBlock - u) + l[columns + 1] * u) * v;
            std::fill_n(out.pixel(x, y), kPixelBytes, static_cast<std::uint8_t>(value / (kBlock * kBlock)));
        }
    }
    return bitmap;
}

/// A phase over its grid, on views that lie 6 pixels apart.
void whole_phase(benchmark::State& state) {
    constexpr int kShift = 6;
    const auto phase = static_cast<AnalysePhase>(state.range(0));
    const int width = static_cast<int>(state.range(1));
    const int height = width * 3 / 4;
    const Bitmap wide = make_texture(width + kShift, height);
    const StereoPicture pair{wide.picture().part(kShift, 0, width, height),
                             wide.picture().part(0, 0, width, height)};
    AnalysisState analysis{AnalysisOptions{}};
    for ([[maybe_unused]] auto turn : state) {
        reset_analysis(analysis, false);
        benchmark::DoNotOptimize(analyse_phase(analysis, pair, {phase, 1, false, width <= 800}, {}));
    }
    if (phase == AnalysePhase::geometry && std::abs(analysis.dx[5][5] - kShift) > 2.0F) {
        state.SkipWithError("wrong displacement");
    }
}
BENCHMARK(whole_phase)
    ->ArgNames({"phase", "width"})
    ->Args({1, 800})
    ->Args({2, 800})
    ->Args({3, 800})
    ->Args({3, 4000})
    ->Args({3, 5660})
    ->Args({5, 4000})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
