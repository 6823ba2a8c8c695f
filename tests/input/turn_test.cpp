#include "numerics/turn.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/pictures.h"

namespace zemora {
namespace {

/// Where the pixel at (x, y) of a W by H picture goes, rows from the bottom.
struct Place {
    int x;
    int y;
};
Place turned_place(int mode, int x, int y, int w, int h) {
    const Place places[] = {{x, y},         {h - 1 - y, x}, {w - 1 - x, h - 1 - y}, {y, w - 1 - x},
                            {w - 1 - x, y}, {y, x},         {x, h - 1 - y},         {h - 1 - y, w - 1 - x}};
    return places[mode];
}

class TurnPixels : public testing::TestWithParam<std::tuple<int, int, int>> {};

TEST_P(TurnPixels, PutsEveryPixelInItsPlace) {
    const int width = std::get<0>(GetParam());
    const int height = std::get<1>(GetParam());
    const int bytes = std::get<2>(GetParam());
    const std::ptrdiff_t source_pitch = width * bytes + 5;
    std::vector<std::uint8_t> source(static_cast<std::size_t>(source_pitch * height));
    const auto source_pixel = [&](int x, int y) { return source.data() + y * source_pitch + x * bytes; };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int i = 0; i < bytes; ++i) {
                source_pixel(x, y)[i] = static_cast<std::uint8_t>(x + 3 * (y >> (i % 3)) + i * 41);
            }
        }
    }
    for (int mode = 0; mode < kTurnModes; ++mode) {
        const bool exchanged = exchanges_sides(mode);
        const std::ptrdiff_t pitch = (exchanged ? height : width) * bytes + 3;
        std::vector<std::uint8_t> target(static_cast<std::size_t>(pitch * (exchanged ? width : height)),
                                         0xEE);
        turn_pixels({source.data(), source_pitch}, width, height, bytes, mode, {target.data(), pitch});
        int wrong = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const Place to = turned_place(mode, x, y, width, height);
                wrong += std::memcmp(target.data() + to.y * pitch + to.x * bytes, source_pixel(x, y),
                                     static_cast<std::size_t>(bytes)) != 0;
            }
        }
        EXPECT_EQ(wrong, 0) << "mode " << mode;
        EXPECT_EQ(target[static_cast<std::size_t>(pitch) - 1], 0xEE) << "padding touched in mode " << mode;
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, TurnPixels,
                         testing::Combine(testing::Values(1, 7, 64, 130), testing::Values(1, 5, 65),
                                          testing::Values(3, 6)));

}  // namespace
}  // namespace zemora
