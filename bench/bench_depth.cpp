// Views from a photo and its depth mask, and the motion between two frames, beside plain copies.

#include <benchmark/benchmark.h>

#include <cmath>

#include "config/voice.h"
#include "depth/depth_masks.h"
#include "depth/depth_views.h"
#include "depth/motion_field.h"

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
    DepthState depth({.deviation_target = static_cast<int>(state.range(0))});
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

constexpr int kFrameWidth = 1920;
constexpr int kFrameHeight = 1080;

/// Frame `number` of a pan across a wall of fine texture with a disc in front that runs the other way.
Bitmap make_frame(int number) {
    Bitmap bitmap = Bitmap::create(kFrameWidth, kFrameHeight);
    const auto texture = [](int x, int y) {
        unsigned mixed =
            static_cast<unsigned>(x / 3) * 374761393U + static_cast<unsigned>(y / 3) * 668265263U;
        mixed = (mixed ^ (mixed >> 13)) * 1274126177U;
        return static_cast<std::uint8_t>(mixed >> 24);
    };
    for (int y = 0; y < kFrameHeight; ++y) {
        std::uint8_t* pixel = bitmap.picture().row(y);
        for (int x = 0; x < kFrameWidth; ++x, pixel += kPixelBytes) {
            const bool is_disc = std::hypot(x - 900 - 4 * number, y - 500) < 300.0;
            const int shifted = is_disc ? x - 4 * number : x + 2 * number;
            pixel[0] = pixel[1] = pixel[2] = texture(shifted, is_disc ? y + 5000 : y);
        }
    }
    return bitmap;
}

struct Talk {
    MessageCatalogue messages{Language::english};
    int verbosity = 1;
    KeptNotes notes{messages, verbosity};
};

void motion_field_2mp(benchmark::State& state) {
    const Bitmap from = make_frame(0);
    const Bitmap to = make_frame(1);
    Talk talk;
    MotionField field(talk.notes);
    for ([[maybe_unused]] auto round : state) {
        (void)field.estimate_motion_field(from.picture(), to.picture());
        benchmark::ClobberMemory();
    }
    if (field.at(950, 500) != MotionVector{4, 0} || field.at(100, 100) != MotionVector{-2, 0}) {
        state.SkipWithError("the motion is wrong");
    }
}
BENCHMARK(motion_field_2mp)->Unit(benchmark::kMillisecond)->UseRealTime();

void moved_mask_2mp(benchmark::State& state) {
    const Bitmap from = make_frame(0);
    Talk talk;
    MotionField field(talk.notes);
    (void)field.estimate_motion_field(from.picture(), make_frame(1).picture());
    const Bitmap target = Bitmap::create(kFrameWidth, kFrameHeight);
    for ([[maybe_unused]] auto round : state) {
        project_depth_mask(field, from.picture(), target.picture());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(moved_mask_2mp)->Unit(benchmark::kMillisecond)->UseRealTime();

void copy_2mp(benchmark::State& state) {
    const Bitmap frame = make_frame(0);
    const Bitmap target = Bitmap::create(kFrameWidth, kFrameHeight);
    for ([[maybe_unused]] auto round : state) {
        copy(frame.picture(), target.picture());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(copy_2mp)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
