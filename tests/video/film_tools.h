#pragma once
/// Films for tests, made and looked at by the programs ffmpeg and ffprobe.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "numerics/bitmap.h"
#include "tests/video/clips.h"

namespace zemora::test {

/// All that a command prints.
inline std::string output_of(const std::string& command) {
    std::string text;
    FILE* pipe = popen(command.c_str(), "r");
    char block[65536];
    for (std::size_t count = 1; pipe != nullptr && count > 0;) {
        count = fread(block, 1, sizeof block, pipe);
        text.append(block, count);
    }
    return pipe != nullptr && pclose(pipe) == 0 ? text : "failed: " + command;
}

/// Lines "key=value" of ffprobe as a map; of several equal keys the first one.
inline std::map<std::string, std::string> probe(const std::string& path, const std::string& what) {
    std::istringstream lines(output_of("ffprobe -v error " + what + " -of default=nw=1 '" + path + "'"));
    std::map<std::string, std::string> values;
    for (std::string line; std::getline(lines, line);) {
        if (const std::size_t equals = line.find('='); equals != std::string::npos) {
            values.emplace(line.substr(0, equals), line.substr(equals + 1));
        }
    }
    return values;
}

/// Times and lengths of flashes and beeps, in seconds.
struct Event {
    double start = 0.0;
    double seconds = 0.0;
};

/// What lies above half of the largest value, apart from short holes.
inline std::vector<Event> events_of(const std::vector<float>& loudness, double rate) {
    float largest = 0.0F;
    for (const float value : loudness) {
        largest = std::max(largest, value);
    }
    std::vector<Event> events;
    constexpr double kHole = 0.01;  // s
    for (std::size_t i = 0; i < loudness.size(); ++i) {
        const double time = static_cast<double>(i) / rate;
        if (loudness[i] <= largest / 2) {
            continue;
        }
        if (events.empty() || time > events.back().start + events.back().seconds + kHole) {
            events.push_back({time, 0.0});
        }
        events.back().seconds = time + 1.0 / rate - events.back().start;
    }
    return events;
}

/// Mean brightness of each frame of a stream, as a player shows them.
inline std::vector<float> brightness_of(const std::string& path, const std::string& stream = "0:v:0") {
    const std::string bytes =
        output_of("ffmpeg -v error -nostdin -i '" + path + "' -map " + stream +
                  " -vf scale=1:1:flags=area -fps_mode passthrough -f rawvideo -pix_fmt gray -");
    std::vector<float> brightness;
    for (const char byte : bytes) {
        brightness.push_back(static_cast<float>(static_cast<std::uint8_t>(byte)));
    }
    return brightness;
}

constexpr int kHeardRate = 48000;

/// The first channel as it is heard with the pictures from their start on.
inline std::vector<float> sound_of(const std::string& path) {
    const std::string bytes = output_of("ffmpeg -v error -nostdin -i '" + path +
                                        "' -map 0:a:0 -af aresample=" + std::to_string(kHeardRate) +
                                        ":async=1:first_pts=0,pan='mono|c0=c0' -f f32le -");
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::copy_n(bytes.data(), samples.size() * sizeof(float), reinterpret_cast<char*>(samples.data()));
    return samples;
}

inline std::vector<Event> beeps_of(const std::string& path) {
    std::vector<float> loudness = sound_of(path);
    for (float& sample : loudness) {
        sample = std::fabs(sample);
    }
    return events_of(loudness, kHeardRate);
}

/// The clip that most tests use: `frames` black pictures of 64 by 48 at 25 a second, white ones and beeps of
/// the same time at some frames. `codecs` are arguments of ffmpeg.
inline bool make_flash_clip(const std::string& path, int frames, const std::vector<int>& flashes,
                            const std::string& codecs, int channels = 2, int sample_rate = 48000) {
    constexpr double kRate = 25.0;
    std::string on_frame = "0";
    std::string on_time = "0";
    for (const int frame : flashes) {
        on_frame += "+eq(n," + std::to_string(frame) + ")";
        on_time +=
            "+gte(t," + std::to_string(frame / kRate) + ")*lt(t," + std::to_string((frame + 1) / kRate) + ")";
    }
    std::string tone;
    for (int i = 0; i < channels; ++i) {
        tone += (i == 0 ? "" : "|") + std::string("0.8*sin(6283.2*t)*(") + on_time + ")";
    }
    const std::string seconds = std::to_string(frames / kRate);
    return run_ffmpeg("-f lavfi -i \"color=black:s=64x48:r=25:d=" + seconds +
                      ",drawbox=color=white:t=fill:enable='" + on_frame + "'\" -f lavfi -i \"aevalsrc='" +
                      tone + "':s=" + std::to_string(sample_rate) + ":d=" + seconds + "\" " + codecs + " '" +
                      path + "'");
}

}  // namespace zemora::test
