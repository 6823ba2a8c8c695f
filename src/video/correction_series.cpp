#include "video/correction_series.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>

namespace zemora {

namespace {

using Member = float FrameValues::*;

constexpr std::array<Member, 5> kGeometry = {&FrameValues::height_px, &FrameValues::size,
                                             &FrameValues::rotation_rad, &FrameValues::vergence_v_rad,
                                             &FrameValues::vergence_h_rad};
constexpr std::array<Member, 3> kWindow = {&FrameValues::window_px, &FrameValues::curtain_left_px,
                                           &FrameValues::curtain_right_px};
/// What a warp is told; holes in it are filled, and a file of values has it.
constexpr std::array<Member, 6> kApplied = {&FrameValues::height_px,      &FrameValues::size,
                                            &FrameValues::rotation_rad,   &FrameValues::vergence_v_rad,
                                            &FrameValues::vergence_h_rad, &FrameValues::window_px};
constexpr std::array<float FrameDisparities::*, 5> kDisparities = {
    &FrameDisparities::near_px, &FrameDisparities::far_px, &FrameDisparities::centre_px,
    &FrameDisparities::deviation_px, &FrameDisparities::ssg_px};

constexpr int kShortestMedian = 2;  // of its lengths, the median of three

std::size_t index(int i) {
    return static_cast<std::size_t>(i);
}

FrameValues& at(CorrectionSeries& series, int frame) {
    return series.values[index(frame)];
}

/// The analysed frames, ascending.
std::vector<int> analysed_frames(const CorrectionSeries& series) {
    std::vector<int> frames;
    for (int i = 0; i < series.analysed.count() && series.analysed.at(i) < series.frames(); ++i) {
        frames.push_back(series.analysed.at(i));
    }
    return frames;
}

/// Where the scene of a frame ends, as a place in `scene_starts`.
auto next_cut(const CorrectionSeries& series, int frame) {
    return std::upper_bound(series.scene_starts.begin(), series.scene_starts.end(), frame);
}

/// The frames of each scene that has some, in their order.
std::vector<std::span<const int>> by_scenes(const CorrectionSeries& series, std::span<const int> frames) {
    std::vector<std::span<const int>> scenes;
    while (!frames.empty()) {
        const auto cut = next_cut(series, frames.front());
        const auto end = std::find_if(frames.begin(), frames.end(),
                                      [&](int frame) { return next_cut(series, frame) != cut; });
        const auto count = static_cast<std::size_t>(end - frames.begin());
        scenes.push_back(frames.first(count));
        frames = frames.subspan(count);
    }
    return scenes;
}

std::vector<int> valid_ones(const CorrectionSeries& series, std::span<const int> frames) {
    std::vector<int> valid;
    std::copy_if(frames.begin(), frames.end(), std::back_inserter(valid),
                 [&](int frame) { return series.valid[index(frame)] != 0; });
    return valid;
}

void copy_values(CorrectionSeries& series, std::span<const Member> members, int from, int to) {
    for (const Member member : members) {
        at(series, to).*member = at(series, from).*member;
    }
}

/// The values of `frame` on the straight line from `before` to `behind`, a share `t` of the way.
void put_between(CorrectionSeries& series, std::span<const Member> members, int before, int behind, int frame,
                 float t) {
    for (const Member member : members) {
        const float a = at(series, before).*member;
        const float b = at(series, behind).*member;
        at(series, frame).*member = a + (b - a) * t;
    }
}

/// Fills one frame from those around it; `valid` has at least one.
void fill_hole(CorrectionSeries& series, const std::vector<int>& valid, int frame) {
    const auto behind = std::upper_bound(valid.begin(), valid.end(), frame);
    if (behind == valid.begin()) {
        copy_values(series, kApplied, valid.front(), frame);
    } else if (behind == valid.end()) {
        copy_values(series, kApplied, valid.back(), frame);
    } else {
        const int before = *(behind - 1);
        const float share = static_cast<float>(frame - before) / static_cast<float>(*behind - before);
        put_between(series, kApplied, before, *behind, frame, share);
    }
}

/// Of a scene that has no valid frame: the one of `valid`, which is not empty, to take its values from.
int valid_neighbour(const std::vector<int>& valid, int first_of_scene) {
    const auto behind = std::upper_bound(valid.begin(), valid.end(), first_of_scene);
    return behind == valid.begin() ? *behind : *(behind - 1);
}

/// Puts the running median over 2 (length - 1) + 1 of the frames into those that have so many round them.
void median_of_scene(CorrectionSeries& series, std::span<const int> frames, Member member, int length) {
    const int reach = std::min(length, (static_cast<int>(frames.size()) + 1) / 2) - 1;
    if (reach < kShortestMedian - 1) {
        return;
    }
    std::vector<float> measured;
    for (const int frame : frames) {
        measured.push_back(at(series, frame).*member);
    }
    for (int i = reach; i + reach < static_cast<int>(frames.size()); ++i) {
        std::vector<float> window(measured.begin() + i - reach, measured.begin() + i + reach + 1);
        std::nth_element(window.begin(), window.begin() + reach, window.end());
        at(series, frames[index(i)]).*member = window[index(reach)];
    }
}

void smooth(CorrectionSeries& series, std::span<const Member> members, const FrameValues& mean, int& length) {
    const std::vector<int> frames = analysed_frames(series);
    length = std::min(length, (series.analysed.end + 1) / 2);
    for (const Member member : members) {
        if (length <= 0) {
            for (const int frame : frames) {
                at(series, frame).*member = mean.*member;
            }
            continue;
        }
        for (const std::span<const int> scene : by_scenes(series, frames)) {
            median_of_scene(series, scene, member, length);
        }
    }
}

/// Fills the frames between two neighbours.
void spread_between(CorrectionSeries& series, std::span<const Member> members, int before, int behind) {
    const auto cut = next_cut(series, behind);
    const bool same_scene = next_cut(series, before) == cut;
    const int scene = same_scene ? before : *(cut - 1);
    for (int frame = before + 1; frame < behind; ++frame) {
        if (same_scene) {
            const float share = static_cast<float>(frame - before) / static_cast<float>(behind - before);
            put_between(series, members, before, behind, frame, share);
        } else {
            copy_values(series, members, frame < scene ? before : behind, frame);
        }
    }
}

/// Fills all frames from those of `frames`, ascending.
void spread(CorrectionSeries& series, std::span<const Member> members, const std::vector<int>& frames) {
    if (frames.empty()) {
        return;
    }
    for (std::size_t i = 1; i < frames.size(); ++i) {
        spread_between(series, members, frames[i - 1], frames[i]);
    }
    for (int frame = 0; frame < frames.front(); ++frame) {
        copy_values(series, members, frames.front(), frame);
    }
    for (int frame = frames.back() + 1; frame < series.frames(); ++frame) {
        copy_values(series, members, frames.back(), frame);
    }
}

/// Puts 0 for what is no finite number; whether there was any.
template <class Values, std::size_t count>
bool discard_no_numbers(Values& values, const std::array<float Values::*, count>& members) {
    bool found = false;
    for (const auto member : members) {
        if (!std::isfinite(values.*member)) {
            values.*member = 0.0F;
            found = true;
        }
    }
    return found;
}

}  // namespace

void CorrectionSeries::resize(int frames) {
    values.resize(index(frames));
    disparities.resize(index(frames));
    valid.resize(index(frames));
}

FrameValues mean_values(const CorrectionSeries& series) {
    const std::vector<int> valid = valid_ones(series, analysed_frames(series));
    FrameValues mean;
    const auto add = [&](std::span<const Member> members) {
        for (const Member member : members) {
            double sum = 0.0;
            for (const int frame : valid) {
                sum += static_cast<double>(series.values[index(frame)].*member);
            }
            mean.*member = valid.empty() ? 0.0F : static_cast<float>(sum / static_cast<double>(valid.size()));
        }
    };
    add(kGeometry);
    add(kWindow);
    return mean;
}

void discard_unusable(CorrectionSeries& series) {
    for (int frame = 0; frame < series.frames(); ++frame) {
        const bool geometry = discard_no_numbers(at(series, frame), kGeometry);
        const bool window = discard_no_numbers(at(series, frame), kWindow);
        if (geometry || window) {
            series.valid[index(frame)] = 0;
        }
        (void)discard_no_numbers(series.disparities[index(frame)], kDisparities);
    }
}

void fill_holes(CorrectionSeries& series, const SmoothSettings& settings) {
    const std::vector<int> frames = analysed_frames(series);
    const std::vector<int> valid = valid_ones(series, frames);
    if (valid.empty() || (settings.geometry == 0 && settings.window == 0)) {
        return;
    }
    for (const std::span<const int> scene : by_scenes(series, frames)) {
        std::vector<int> valid_here = valid_ones(series, scene);
        if (valid_here.empty()) {
            valid_here.push_back(valid_neighbour(valid, scene.front()));
        }
        for (const int frame : scene) {
            if (series.valid[index(frame)] == 0) {
                fill_hole(series, valid_here, frame);
            }
        }
    }
}

void smooth_geometry(CorrectionSeries& series, const FrameValues& mean, int& length) {
    smooth(series, kGeometry, mean, length);
}

void smooth_window(CorrectionSeries& series, const FrameValues& mean, int& length) {
    smooth(series, kWindow, mean, length);
}

void spread_values(CorrectionSeries& series) {
    const std::vector<int> frames = analysed_frames(series);
    spread(series, kGeometry, frames);
    spread(series, kWindow, frames);
}

bool fill_series(CorrectionSeries& series, const SmoothSettings& settings) {
    discard_unusable(series);
    if (valid_ones(series, analysed_frames(series)).empty()) {
        return false;
    }
    fill_holes(series, settings);
    return true;
}

void smooth_filled_series(CorrectionSeries& series, SmoothSettings& settings) {
    const FrameValues mean = mean_values(series);
    smooth_geometry(series, mean, settings.geometry);
    smooth_window(series, mean, settings.window);
    spread_values(series);
}

bool smooth_series(CorrectionSeries& series, SmoothSettings& settings) {
    if (!fill_series(series, settings)) {
        return false;
    }
    smooth_filled_series(series, settings);
    return true;
}

void take_stored_values(CorrectionSeries& series, const std::vector<StoredValues>& stored) {
    std::vector<int> frames;
    for (const StoredValues& line : stored) {
        frames.push_back(line.frame);
        for (const Member member : kApplied) {
            at(series, line.frame).*member = line.values.*member;
        }
    }
    spread(series, kApplied, frames);
}

}  // namespace zemora
