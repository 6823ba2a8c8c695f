#pragma once
/// Where a film cuts, from the brightness of its frames.

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace zemora {

/// A coarse picture of a frame: the mean brightness of its parts, rows from the top.
struct FrameSketch {
    static constexpr int kColumns = 80;
    static constexpr int kRows = 45;
    std::array<std::uint8_t, std::size_t{kColumns} * kRows> parts{};
};

/// The brightness of a picture as it lies in memory.
struct LumaPlane {
    const std::uint8_t* bits = nullptr;
    std::ptrdiff_t pitch = 0;  ///< Bytes from one row to the one below it.
    int step = 1;              ///< Bytes from one sample to the next.
    int used_bits = 8;         ///< Of a sample, its unused low ones with them; above 8 it takes two bytes.
    int width = 0;
    int height = 0;
};

/// Looks at a few samples of each part.
[[nodiscard]] FrameSketch sketch_of_luma(const LumaPlane& luma);

/// Whether a cut lies between two frames that follow each other: the pieces of one are not to be found in the
/// other, neither in their place nor near it, and be it lighter or darker there.
[[nodiscard]] bool is_cut_between(const FrameSketch& before, const FrameSketch& after);

/// Collects the sketches of decoded frames, in whatever order they come.
class SceneCuts {
public:
    void add(int frame, const FrameSketch& sketch);
    /// The first frames of all scenes behind the first one, ascending. A frame counts when it differs from
    /// the last known one before it as no motion does, and no frame soon behind it is like that one again, as
    /// behind a flash.
    [[nodiscard]] std::vector<int> starts() const;

private:
    std::map<int, bool> cuts_;  ///< False where a guess over a gap was wrong.
    int last_frame_ = -1;
    FrameSketch last_;
    int suspect_ = -1;    ///< A cut that was found, until it is sure that it is no flash.
    FrameSketch before_;  ///< The frame before it.
};

}  // namespace zemora
