#pragma once
/// Where a film cuts, from the brightness of its frames.

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace zemora {

/// How often each brightness occurs in a frame, as shares of 1, and a coarse picture of it.
struct FrameSketch {
    static constexpr int kColumns = 16;
    static constexpr int kRows = 9;
    std::array<float, 64> histogram{};
    std::array<std::uint8_t, std::size_t{kColumns} * kRows>
        mosaic{};  ///< Mean brightness of its parts, rows from the top.
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

/// Looks at about a hundred samples of each part.
[[nodiscard]] FrameSketch sketch_of_luma(const LumaPlane& luma);

/// Whether a cut lies between two frames that follow each other.
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
    std::map<int, bool> cuts_;
    int last_frame_ = -1;
    FrameSketch last_;
    int suspect_ = -1;    ///< A cut that was found, until it is sure that it is no flash.
    FrameSketch before_;  ///< The frame before it.
};

}  // namespace zemora
