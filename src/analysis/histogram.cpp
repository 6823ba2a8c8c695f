#include "analysis/histogram.h"

#include <vector>

#include "platform/cpu.h"

namespace zemora {

namespace {

/// Neighbouring pixels are often equal: counters of their own keep their increments from waiting on
/// each other.
constexpr int kLanes = 4;
constexpr int kLaneLevels = kLevels + 1;

/// Below this many pixels the threads cost more than they bring.
bool worth_sharing(ConstPicture view) {
    constexpr std::int64_t kLeastPixels = 100000;
    return static_cast<std::int64_t>(view.width) * view.height >= kLeastPixels;
}

void grey_row(const std::uint8_t* pixels, int count, Colour passe, std::uint16_t* levels) {
    const std::uint8_t bytes[] = {passe.blue, passe.green, passe.red};
    int done = 0;
#if defined(__x86_64__)
    if (usable_instruction_set() != InstructionSet::portable) {
        done = histogram_kernels::grey_row_avx2(pixels, count, bytes, levels);
    }
#endif
    histogram_kernels::grey_row_portable(pixels + static_cast<std::ptrdiff_t>(done) * kPixelBytes,
                                         count - done, bytes, levels + done);
}

}  // namespace

void histogram_kernels::grey_row_portable(const std::uint8_t* pixels, int count, const std::uint8_t* passe,
                                          std::uint16_t* levels) {
    for (int x = 0; x < count; ++x, pixels += kPixelBytes) {
        const bool counted = pixels[0] != passe[0] || pixels[1] != passe[1] || pixels[2] != passe[2];
        levels[x] =
            static_cast<std::uint16_t>(counted ? grey_value(pixels[0], pixels[1], pixels[2]) : kNotCounted);
    }
}

Histogram grey_histogram(ConstPicture view, Colour passe) {
    Histogram total{};
#pragma omp parallel if (worth_sharing(view))
    {
        std::vector<std::uint16_t> levels(static_cast<std::size_t>(view.width));
        std::array<std::uint32_t, static_cast<std::size_t>(kLanes) * kLaneLevels> counts{};
#pragma omp for schedule(static)
        for (int y = 0; y < view.height; ++y) {
            grey_row(view.row(y), view.width, passe, levels.data());
            for (std::size_t x = 0; x < levels.size(); ++x) {
                ++counts[x % kLanes * kLaneLevels + levels[x]];
            }
        }
#pragma omp critical
        for (std::size_t i = 0; i < counts.size(); ++i) {
            if (i % kLaneLevels < kLevels) {
                total[i % kLaneLevels] += counts[i];
            }
        }
    }
    return total;
}

std::array<Histogram, kPixelBytes> channel_histograms(ConstPicture view, Colour passe) {
    std::array<Histogram, kPixelBytes> total{};
#pragma omp parallel if (worth_sharing(view))
    {
        std::array<Histogram, kPixelBytes> counts{};
#pragma omp for schedule(static)
        for (int y = 0; y < view.height; ++y) {
            const std::uint8_t* pixel = view.row(y);
            for (int x = 0; x < view.width; ++x, pixel += kPixelBytes) {
                if (!is_colour(pixel, passe)) {
                    ++counts[0][pixel[0]];
                    ++counts[1][pixel[1]];
                    ++counts[2][pixel[2]];
                }
            }
        }
#pragma omp critical
        for (std::size_t c = 0; c < counts.size(); ++c) {
            for (std::size_t i = 0; i < counts[c].size(); ++i) {
                total[c][i] += counts[c][i];
            }
        }
    }
    return total;
}

}  // namespace zemora
