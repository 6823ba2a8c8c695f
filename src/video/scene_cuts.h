#pragma once
/// Where a film cuts, from the brightness of its frames.

#include <array>
#include <cstdint>
#include <map>
#include <vector>

namespace zemora {

/// How often each brightness occurs in a frame, as shares of 1, and a coarse picture of it.
struct FrameSketch {
    std::array<float, 64> histogram{};
    std::array<std::uint8_t, 16 * 9> mosaic{};  ///< Mean brightness of its parts, rows from the top.
};

/// Collects the sketches of decoded frames, in whatever order they come.
class SceneCuts {
public:
    void add(int frame, const FrameSketch& sketch);
    /// The first frames of all scenes behind the first one, ascending. A frame counts when it differs from
    /// the last known one before it as no motion does.
    [[nodiscard]] std::vector<int> starts() const;

private:
    std::map<int, bool> cuts_;
    int last_frame_ = -1;
    FrameSketch last_;
};

}  // namespace zemora
