#include "tests/analysis/texture_pair.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "platform/cpu.h"

namespace zemora::testing {

namespace {

/// A value of 0 to 1 for each lattice point.
double lattice(std::int64_t x, std::int64_t y, int salt) {
    std::uint64_t h = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15ULL ^
                      static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4FULL ^
                      static_cast<std::uint64_t>(salt) * 0x165667B19E3779F9ULL;
    h = (h ^ (h >> 29U)) * 0xBF58476D1CE4E5B9ULL;
    h = (h ^ (h >> 32U)) * 0x94D049BB133111EBULL;
    return static_cast<double>(h >> 40U) / 16777216.0;
}

/// Lattice values joined smoothly.
double noise(double x, double y, int salt) {
    const double fx = std::floor(x);
    const double fy = std::floor(y);
    const auto ease = [](double t) { return t * t * (3.0 - 2.0 * t); };
    const double u = ease(x - fx);
    const double v = ease(y - fy);
    const auto ix = static_cast<std::int64_t>(fx);
    const auto iy = static_cast<std::int64_t>(fy);
    const double below = lattice(ix, iy, salt) * (1.0 - u) + lattice(ix + 1, iy, salt) * u;
    const double above = lattice(ix, iy + 1, salt) * (1.0 - u) + lattice(ix + 1, iy + 1, salt) * u;
    return below * (1.0 - v) + above * v;
}

void draw(const Picture& out, const DisplacementField& field, const Surface& surface) {
#pragma omp parallel for schedule(static)
    for (int row = 0; row < out.height; ++row) {
        for (int column = 0; column < out.width; ++column) {
            const double px = column - out.width / 2.0;
            const double py = row - out.height / 2.0;
            double x = px;
            double y = py;
            for (int k = 0; k < 3; ++k) {  // the point whose displacement ends here
                const Displacement d = field(x, y);
                x = px - d.dx;
                y = py - d.dy;
            }
            for (int c = 0; c < kPixelBytes; ++c) {
                out.pixel(column, row)[c] =
                    static_cast<std::uint8_t>(std::lround(20.0 + 215.0 * surface(x, y, c)));
            }
        }
    }
}

}  // namespace

double texture(double x, double y, int channel, double scale) {
    const double sx = (x + 0.31 * y) / scale + 1000.0;
    const double sy = (y - 0.17 * x) / scale + 700.0;
    return 0.45 * noise(sx / 31.0, sy / 27.0, 1 + channel) + 0.3 * noise(sx / 9.0, sy / 11.0, 5) +
           0.25 * noise(sx / 4.3, sy / 3.7, 9 + channel);
}

double chequers(double x, double y, double period) {
    const double turn = 2.0 * std::numbers::pi / period;
    return 0.5 + 0.5 * std::sin(turn * x) * std::sin(turn * y);
}

TexturePair::TexturePair(int width, int height, const DisplacementField& field, double scale)
    : TexturePair(width, height, field,
                  [scale](double x, double y, int channel) { return texture(x, y, channel, scale); }) {}

TexturePair::TexturePair(int width, int height, const DisplacementField& field, const Surface& surface)
    : left(Bitmap::create(width, height)), right(Bitmap::create(width, height)) {
    draw(
        left.picture(), [](double, double) { return Displacement{}; }, surface);
    draw(right.picture(), field, surface);
}

AnalysisOptions analysis_options() {
    AnalysisOptions options;
    options.estimate_vergence_v = 1;
    options.estimate_vergence_h = 1;
    return options;
}

void for_each_instruction_set(const std::function<void()>& run) {
    const InstructionSet best = usable_instruction_set();
    for (const InstructionSet set :
         {InstructionSet::portable, InstructionSet::avx2, InstructionSet::avx512}) {
        if (set <= best) {
            limit_instruction_set(set);
            run();
        }
    }
    limit_instruction_set(best);
}

}  // namespace zemora::testing
