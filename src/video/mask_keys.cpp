#include "video/mask_keys.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace zemora {

namespace {

constexpr std::array<float MaskFrame::*, 4> kSides = {&MaskFrame::left, &MaskFrame::right, &MaskFrame::low,
                                                      &MaskFrame::high};
constexpr double kPerMille = 1000.0;

void copy_sides(const MaskFrame& from, MaskFrame& to) {
    for (const auto side : kSides) {
        to.*side = from.*side;
    }
}

/// A cubic from a to b with slope 0 at both ends: a + d (3 t^2 - 2 t^3).
void interpolate_between(std::vector<MaskFrame>& masks, std::size_t before, std::size_t behind) {
    const double length = static_cast<double>(behind - before);
    for (const auto side : kSides) {
        const double start = masks[before].*side;
        const double change = masks[behind].*side - start;
        const double cubic = -2.0 * change / (length * length * length);
        const double square = -1.5 * cubic * length;
        for (std::size_t frame = before + 1; frame < behind; ++frame) {
            const double j = static_cast<double>(frame - before);
            masks[frame].*side = static_cast<float>(start + square * j * j + cubic * j * j * j);
        }
    }
}

std::vector<std::size_t> keys_of(const MaskTrack& track) {
    std::vector<std::size_t> keys;
    for (std::size_t frame = 0; frame < track.masks.size(); ++frame) {
        if (track.is_key[frame] != 0) {
            keys.push_back(frame);
        }
    }
    return keys;
}

double zoom_of(const MaskFrame& mask) {
    const double width = static_cast<double>(mask.right) - mask.left;
    return width > 0.0 ? 1.0 / width : 1.0;
}

}  // namespace

void interpolate_mask_keys(MaskTrack& track) {
    const std::vector<std::size_t> keys = keys_of(track);
    if (keys.empty()) {
        return;
    }
    for (std::size_t i = 1; i < keys.size(); ++i) {
        interpolate_between(track.masks, keys[i - 1], keys[i]);
    }
    for (std::size_t frame = 0; frame < keys.front(); ++frame) {
        copy_sides(track.masks[keys.front()], track.masks[frame]);
    }
    for (std::size_t frame = keys.back() + 1; frame < track.masks.size(); ++frame) {
        copy_sides(track.masks[keys.back()], track.masks[frame]);
    }
}

ZoomShift shift_window_by_zoom(CorrectionSeries& series, const MaskTrack& track, int first, int end,
                               double per_mille, int width) {
    ZoomShift shift;
    const int last = std::min({end, series.frames(), static_cast<int>(track.masks.size())});
    for (int frame = first; frame < last; ++frame) {
        const double zoom = zoom_of(track.masks[static_cast<std::size_t>(frame)]);
        float& window = series.values[static_cast<std::size_t>(frame)].window_px;
        const double before = window;
        window = static_cast<float>(before + per_mille * width * (zoom - 1.0) / kPerMille);
        const ZoomShift::Extreme here{zoom, frame, before, window};
        if (zoom < shift.smallest.zoom) {
            shift.smallest = here;
        }
        if (zoom > shift.largest.zoom) {
            shift.largest = here;
        }
    }
    return shift;
}

}  // namespace zemora
