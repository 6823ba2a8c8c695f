/// The writer of films against the program ffmpeg with the same frames, rate and preset, on all cores. The
/// frames lie in a file for ffmpeg; ours lie in memory.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "config/voice.h"
#include "platform/threads.h"
#include "video/encoder_settings.h"
#include "video/video_writer.h"

namespace {

using namespace zemora;

constexpr int kHeight = 1080;
constexpr int kQuality = 3;
const char* const kPresets[] = {"veryfast", "slow"};

struct Speech {
    ParameterSet parameters;
    Console console;
    MessageCatalogue messages{Language::english};
    Voice voice{console, messages, parameters};
};

/// A textured scene that moves sideways, with the noise of a camera.
class Frames {
public:
    Frames(int width, int count) : width_(width) {
        std::mt19937 random(1);
        std::vector<int> noise(1 << 16);
        std::normal_distribution<double> grain(0.0, 1.5);
        for (int& value : noise) {
            value = static_cast<int>(grain(random));
        }
        for (int i = 0; i < count; ++i) {
            frames_.push_back(Bitmap::create(width, kHeight));
            draw(frames_.back().picture(), i, noise);
        }
    }
    [[nodiscard]] const std::vector<Bitmap>& all() const { return frames_; }
    /// Rows from the top, as other programs take them.
    void write(const std::string& path) const {
        FILE* file = std::fopen(path.c_str(), "wb");
        for (const Bitmap& frame : frames_) {
            for (int y = kHeight - 1; y >= 0; --y) {
                std::fwrite(frame.picture().row(y), kPixelBytes, static_cast<std::size_t>(width_), file);
            }
        }
        std::fclose(file);
    }

private:
    static void draw(Picture picture, int time, const std::vector<int>& noise) {
        unsigned place = static_cast<unsigned>(time) * 7919U;
        for (int y = 0; y < picture.height; ++y) {
            std::uint8_t* pixel = picture.row(y);
            for (int x = 0; x < picture.width; ++x, pixel += kPixelBytes) {
                const int moved = x + 3 * time;
                const int pattern = ((moved * 5 + y * 3) & 255) / 4 + ((moved / 40 + y / 56) % 3) * 40;
                for (int c = 0; c < kPixelBytes; ++c) {
                    const int value = 40 + pattern + 10 * c + noise[place++ & 0xffffU];
                    pixel[c] = static_cast<std::uint8_t>(value);
                }
            }
        }
    }

    int width_;
    std::vector<Bitmap> frames_;
};

int frames_for(const benchmark::State& state) {
    return state.range(0) == 0 ? 72 : 36;
}

std::string temporary(const char* name) {
    return "/tmp/zemora-bench-" + std::to_string(getpid()) + name;
}

void tell_rate(benchmark::State& state, int frames) {
    state.counters["frames"] = benchmark::Counter(frames, benchmark::Counter::kIsIterationInvariantRate);
    state.SetLabel(std::string(kPresets[state.range(0)]) + " " + std::to_string(state.range(1)));
}

void writer(benchmark::State& state) {
    start_worker_threads();
    const auto width = static_cast<int>(state.range(1));
    const Frames frames(width, frames_for(state));
    Speech speech;
    VideoWriterOptions options;
    options.path = temporary(".mp4");
    options.size = {width, kHeight};
    options.rate = {25, 1};
    options.quality = kQuality;
    options.preset = kPresets[state.range(0)];
    for (auto _ : state) {
        auto made = VideoWriter::open(options, speech.voice);
        for (const Bitmap& frame : frames.all()) {
            if (!(*made)->add(frame.picture(), nullptr)) {
                state.SkipWithError("a frame was not written");
            }
        }
        if (!(*made)->close()) {
            state.SkipWithError("the film was not written");
        }
    }
    std::remove(options.path.c_str());
    tell_rate(state, frames_for(state));
}

void ffmpeg(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(1));
    const std::string raw = temporary(".raw");
    Frames(width, frames_for(state)).write(raw);
    const EncoderSettings settings = h264_settings(kQuality, kPresets[state.range(0)], {width, kHeight});
    const std::string command =
        "ffmpeg -v error -nostdin -y -f rawvideo -pix_fmt bgr24 -s " + std::to_string(width) +
        "x1080 -r 25 -i " + raw + " -c:v libx264 -pix_fmt yuv420p -g 12 -preset " + settings.preset +
        " -b:v " + std::to_string(settings.bit_rate) + " -movflags faststart " + temporary("f.mp4");
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("ffmpeg failed");
        }
    }
    std::remove(raw.c_str());
    std::remove(temporary("f.mp4").c_str());
    tell_rate(state, frames_for(state));
}

void cases(benchmark::internal::Benchmark* bench) {
    bench->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
    for (const int preset : {0, 1}) {
        for (const int width : {1920, 3840}) {
            bench->Args({preset, width});
        }
    }
}

BENCHMARK(writer)->Apply(cases);
BENCHMARK(ffmpeg)->Apply(cases);

}  // namespace
