// Keeping the colour of background out of a picture, against a plain copy of it; and the search for a frame.

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "input/cut_edges.h"
#include "input/passepartout.h"
#include "tests/input/framed_scan.h"

namespace zemora {
namespace {

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;
constexpr std::size_t kBytes = std::size_t{3} * kWidth * kHeight;

/// The change of the one leads to the other, so that every round has the same number of pixels to change.
constexpr Colour kColours[] = {{128, 0, 0}, {129, 0, 0}};

/// Random grey pixels, `per_mille` of them of the first colour.
std::vector<std::uint8_t> pixels(int per_mille) {
    std::vector<std::uint8_t> bytes(kBytes);
    std::mt19937 random(4);
    for (std::size_t i = 0; i < bytes.size(); i += kPixelBytes) {
        if (static_cast<int>(random() % 1000) < per_mille) {
            set_colour(bytes.data() + i, kColours[0]);
        } else {
            std::memset(bytes.data() + i, static_cast<int>(random() % 256), kPixelBytes);
        }
    }
    return bytes;
}

void copy_picture(benchmark::State& state) {
    const std::vector<std::uint8_t> from = pixels(0);
    std::vector<std::uint8_t> to(kBytes);
    for ([[maybe_unused]] auto round : state) {
#pragma omp parallel for schedule(static)
        for (int y = 0; y < kHeight; ++y) {
            const std::size_t row = std::size_t{3} * kWidth * static_cast<std::size_t>(y);
            std::memcpy(to.data() + row, from.data() + row, std::size_t{3} * kWidth);
        }
        benchmark::ClobberMemory();
    }
    if (to != from) {
        state.SkipWithError("the copy differs");
    }
}
BENCHMARK(copy_picture)->Unit(benchmark::kMicrosecond)->UseRealTime();

void protect_picture(benchmark::State& state) {
    std::vector<std::uint8_t> bytes = pixels(static_cast<int>(state.range(0)));
    const Picture picture{bytes.data(), std::ptrdiff_t{3} * kWidth, kWidth, kHeight};
    unsigned rounds = 0;
    for ([[maybe_unused]] auto round : state) {
        protect_from_colour(picture, kColours[rounds++ % 2]);
        benchmark::ClobberMemory();
    }
    const Colour kept_free = kColours[(rounds + 1) % 2];
    for (std::size_t i = 0; i < bytes.size(); i += kPixelBytes) {
        if (is_colour(bytes.data() + i, kept_free)) {
            state.SkipWithError("a pixel is left");
            break;
        }
    }
}
BENCHMARK(protect_picture)->Arg(0)->Arg(20)->Unit(benchmark::kMicrosecond)->UseRealTime();

void find_frame(benchmark::State& state) {
    test::ScanPlan plan;
    plan.width = kWidth;
    plan.height = kHeight;
    plan.border = state.range(0) == 1 ? 0.05 : -0.05;
    const test::FramedScan scan = test::make_scan(plan);
    CutRule rule;
    rule.tolerance = 100;
    rule.frame = Colour{};
    std::optional<KeptRegion> kept;
    for ([[maybe_unused]] auto round : state) {
        kept = find_inside_of_frame(scan.view, rule);
    }
    if (!kept || (kept->width < kWidth) != (state.range(0) == 1)) {
        state.SkipWithError("the frame is not found, or one that is not there");
    }
    state.SetLabel(state.range(0) == 1 ? "framed" : "no frame");
}
BENCHMARK(find_frame)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace zemora
