#pragma once
/// The loops over a line that is matched with another one.
///
/// This header holds plain numbers only, no inline functions: the files that include it are compiled for
/// other instruction sets.

#include <cstdint>

namespace zemora {

/// Pixels on either side of the one that a piece of a line is compared for.
constexpr int kContourHalfColumns = 4;

/// One set of loops; all of them give the same numbers. `costs`, `sums` and `least` are what a match costs,
/// `found` are numbers of disparities.
struct ContourRows {
    /// Adds to `costs` how far the brightness of `count` pixels lies apart.
    void (*add_differences)(const std::int16_t* a, const std::int16_t* b, int count, std::uint16_t* costs);
    /// For the pixels from `first` to `end` - 1 the sum of the costs of the piece round each.
    void (*sum_pieces)(const std::uint16_t* costs, int first, int end, std::uint16_t* sums);
    /// Disparity `number` where its sum is less than the least so far.
    void (*take_least)(const std::uint16_t* sums, int number, int count, std::uint16_t* least,
                       std::int16_t* found);
    /// The least sum of the disparities that lie more than 2 apart from the one found.
    void (*take_rival)(const std::uint16_t* sums, int number, int count, const std::int16_t* found,
                       std::uint16_t* rival);
};

extern const ContourRows kContourRowsPortable;
extern const ContourRows kContourRowsAvx2;

}  // namespace zemora
