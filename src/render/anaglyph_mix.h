#pragma once
/// The ways to mix two views into one picture for red-cyan glasses: pixels and plain values only.

#include <array>
#include <cstdint>
#include <memory>

#include "numerics/bitmap.h"
#include "render/calibration_files.h"
#include "render/color_management.h"

namespace zemora {

/// Everything that decides about the colours of an anaglyph.
struct AnaglyphSettings {
    int type = 5;  ///< A row of the table; any other value is the default, 5.
    float brightness = 1.0F;
    float density = 1.0F;
    float gamma_red = 1.0F;
    float gamma_cyan = 1.0F;
    /// Share of red, green, blue: below 0 of the left view, else of the right one.
    std::array<float, 3> balance = {-1.0F, 1.0F, 1.0F};
    MonitorCalibration monitor;
    PrintCalibration print;
    ColorManagement colours;
};

/// Mixes pixels. Holds what is worked out once for all of them and does not change any more: threads may
/// share it. Results depend neither on threads nor on the instruction set.
class AnaglyphMixer {
public:
    AnaglyphMixer() = default;
    AnaglyphMixer(const AnaglyphMixer&) = delete;
    AnaglyphMixer& operator=(const AnaglyphMixer&) = delete;
    virtual ~AnaglyphMixer() = default;

    /// Mixes `count` pixels of three bytes. False when the calibration has no stable result for one.
    [[nodiscard]] virtual bool mix(const std::uint8_t* left, const std::uint8_t* right, std::uint8_t* mixed,
                                   int count) const = 0;
};

/// What has to be read from a file before a mix.
enum class MixNeeds { nothing, monitor, print, colours };

struct AnaglyphMixRow {
    int type;
    const char* name;
    MixNeeds needs;
    std::unique_ptr<AnaglyphMixer> (*make)(const AnaglyphSettings& settings);
};

/// The row of an `AnaglyphType`.
[[nodiscard]] const AnaglyphMixRow& anaglyph_mix_row(int type);

/// Where the views lie on the canvas, pixels: they share the rows and may be apart in columns.
struct MergePlace {
    int row = 0;
    int left_column = 0;
    int right_column = 0;
};

/// Mixes the views into the canvas, rows in parallel. Between the outermost columns of both a view that is
/// not there counts as black; what lies beyond them stays as it is. False when the calibration is unstable.
[[nodiscard]] bool merge_views(const AnaglyphMixer& mixer, const StereoPicture& views, Picture canvas,
                               MergePlace place);

}  // namespace zemora
