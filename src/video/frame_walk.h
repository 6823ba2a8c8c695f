#pragma once
/// Which frames a pass goes through, in its order.

namespace zemora {

/// Frames `first`, `first` + `step`, ... and not beyond `end`, which is excluded. A step below 0 walks the
/// same range from its last frame down; a step of 0 counts as 1.
struct FrameWalk {
    int first = 0;
    int end = 0;
    int step = 1;

    [[nodiscard]] int stride() const { return step == 0 ? 1 : (step < 0 ? -step : step); }
    [[nodiscard]] int count() const { return end <= first ? 0 : (end - first + stride() - 1) / stride(); }
    /// The `i`-th frame, counted from 0.
    [[nodiscard]] int at(int i) const { return step < 0 ? end - 1 - i * stride() : first + i * stride(); }
};

}  // namespace zemora
