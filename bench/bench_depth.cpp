// Views from a photo and its depth mask, beside a plain copy of the photo.

#include <benchmark/benchmark.h>

#include <cmath>

#include "depth/depth_views.h"

namespace {

using namespace zemora;

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

/// A textured photo, or a mask of slopes with steps between them.
Bitmap make_picture(bool is_mask) {
    Bitmap bitmap = Bitmap::create(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y) {
        std::uint8_t* pixel = bitmap.picture().row(y);
        for (int x = 0; x < kWidth; ++x, pixel += kPixelBytes) {
            const int step = (x / 400 + y / 300) % 4 * 60;
            const int value = is_mask ? step + y % 300 / 5 : (x * 7 + y * 13) ^ (x * y / 97);
            pixel[0] = pixel[1] = pixel[2] = static_cast<std::uint8_t>(value);
        }
    }
    return bitmap;
}

void depth_views_12mp(benchmark::State& state) {
    const Bitmap photo = make_picture(false);
    const Bitmap mask = make_picture(true);
    ParameterSet parameters;
    parameters.deviation_target = static_cast<int>(state.range(0));
    DepthState depth(parameters);
    for ([[maybe_unused]] auto round : state) {
        (void)depth.render_view_from_depth(photo.picture(), mask.picture(), DepthView::right);
        (void)depth.render_view_from_depth(photo.picture(), mask.picture(), DepthView::left);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(depth_views_12mp)->Arg(0)->Arg(30)->Arg(60)->Unit(benchmark::kMillisecond)->UseRealTime();

void copy_12mp(benchmark::State& state) {
    const Bitmap photo = make_picture(false);
    const Bitmap target = Bitmap::create(kWidth, kHeight);
    for ([[maybe_unused]] auto round : state) {
        copy(photo.picture(), target.picture());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(copy_12mp)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
