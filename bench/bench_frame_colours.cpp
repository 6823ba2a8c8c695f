/// The change of colours between films and pictures against plain code and the film library, on one core.
/// Each benchmark checks its result after timing.

extern "C" {
#include <libswscale/swscale.h>
}

#include <benchmark/benchmark.h>
#include <omp.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

#include "platform/cpu.h"
#include "video/frame_colours.h"

namespace {

using namespace zemora;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr ColourTags kTags{1, 1, 1, false};

/// A soft picture with its planes.
struct Scene {
    Bitmap bgr = Bitmap::create(kWidth, kHeight);
    Bitmap result = Bitmap::create(kWidth, kHeight);
    std::vector<std::uint8_t> y = std::vector<std::uint8_t>(std::size_t{kWidth} * kHeight);
    std::vector<std::uint8_t> u = std::vector<std::uint8_t>(y.size() / 4);
    std::vector<std::uint8_t> v = u;

    Scene() {
        for (int row = 0; row < kHeight; ++row) {
            for (int i = 0; i < 3 * kWidth; ++i) {
                bgr.picture().row(row)[i] =
                    static_cast<std::uint8_t>((i / 17 * (i % 3 + 1) + row / 3) % 256 / 2 + 60);
            }
        }
        omp_set_num_threads(1);
        to_planes();
    }
    void to_planes() {
        yuv_from_bgr(bgr.picture(), kTags,
                     {WritablePlane{y.data(), kWidth}, WritablePlane{u.data(), kWidth / 2},
                      WritablePlane{v.data(), kWidth / 2}});
    }
    void to_bgr() const {
        YuvPicture yuv;
        yuv.planes = {Plane{y.data(), kWidth}, Plane{u.data(), kWidth / 2}, Plane{v.data(), kWidth / 2}};
        yuv.width = kWidth;
        yuv.height = kHeight;
        yuv.colours = kTags;
        bgr_from_yuv(yuv, result.picture());
    }
    /// Mean difference of the round trip.
    [[nodiscard]] double error() const {
        double sum = 0;
        for (int row = 0; row < kHeight; ++row) {
            for (int i = 0; i < 3 * kWidth; ++i) {
                sum += std::abs(result.picture().row(row)[i] - bgr.picture().row(row)[i]);
            }
        }
        return sum / (3.0 * kWidth * kHeight);
    }
};

void check(benchmark::State& state, const Scene& scene, double limit) {
    const double error = scene.error();
    state.counters["error"] = error;
    if (error > limit) {
        state.SkipWithError("the picture is another one");
    }
}

void use(benchmark::State& state) {
    limit_instruction_set(static_cast<InstructionSet>(state.range(0)));
}

void to_bgr(benchmark::State& state) {
    const Scene scene;
    use(state);
    for (auto _ : state) {
        scene.to_bgr();
    }
    check(state, scene, 3.0);
}
BENCHMARK(to_bgr)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void to_planes(benchmark::State& state) {
    Scene scene;
    use(state);
    for (auto _ : state) {
        scene.to_planes();
    }
    scene.to_bgr();
    check(state, scene, 3.0);
}
BENCHMARK(to_planes)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

/// The film library, as exact as it can.
void library_to_bgr(benchmark::State& state) {
    const Scene scene;
    const std::unique_ptr<SwsContext, FreeScaler> scaler(sws_getContext(
        kWidth, kHeight, AV_PIX_FMT_YUV420P, kWidth, kHeight, AV_PIX_FMT_BGR24,
        SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(SWS_CS_ITU709), 0,
                             sws_getCoefficients(SWS_CS_ITU709), 1, 0, 1 << 16, 1 << 16);
    const std::uint8_t* planes[] = {scene.y.data(), scene.u.data(), scene.v.data(), nullptr};
    const int pitches[] = {kWidth, kWidth / 2, kWidth / 2, 0};
    std::uint8_t* const out[] = {scene.result.picture().row(kHeight - 1), nullptr, nullptr, nullptr};
    const int out_pitches[] = {-static_cast<int>(scene.result.pitch()), 0, 0, 0};
    for (auto _ : state) {
        sws_scale(scaler.get(), planes, pitches, 0, kHeight, out, out_pitches);
    }
    check(state, scene, 3.0);
}
BENCHMARK(library_to_bgr)->Unit(benchmark::kMillisecond);

void library_to_planes(benchmark::State& state) {
    Scene scene;
    const std::unique_ptr<SwsContext, FreeScaler> scaler(sws_getContext(
        kWidth, kHeight, AV_PIX_FMT_BGR24, kWidth, kHeight, AV_PIX_FMT_YUV420P,
        SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(SWS_CS_ITU709), 1,
                             sws_getCoefficients(SWS_CS_ITU709), 0, 0, 1 << 16, 1 << 16);
    const std::uint8_t* top[] = {scene.bgr.picture().row(kHeight - 1), nullptr, nullptr, nullptr};
    const int pitches[] = {-static_cast<int>(scene.bgr.pitch()), 0, 0, 0};
    std::uint8_t* const out[] = {scene.y.data(), scene.u.data(), scene.v.data(), nullptr};
    const int out_pitches[] = {kWidth, kWidth / 2, kWidth / 2, 0};
    for (auto _ : state) {
        sws_scale(scaler.get(), top, pitches, 0, kHeight, out, out_pitches);
    }
    scene.to_bgr();
    check(state, scene, 3.0);
}
BENCHMARK(library_to_planes)->Unit(benchmark::kMillisecond);

}  // namespace
