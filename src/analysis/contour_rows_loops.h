#pragma once
/// The loops of `ContourRows` in a form that compilers turn into vector code; for the files of one
/// instruction set each.

#include "analysis/contour_rows.h"

namespace zemora {
namespace {

void add_row_differences(const std::int16_t* a, const std::int16_t* b, int count, std::uint16_t* costs) {
    for (int x = 0; x < count; ++x) {
        const int difference = (a[x] > b[x] ? a[x] : b[x]) - (a[x] < b[x] ? a[x] : b[x]);
        costs[x] = static_cast<std::uint16_t>(costs[x] + difference);
    }
}

void sum_row_pieces(const std::uint16_t* costs, int first, int end, std::uint16_t* sums) {
    for (int x = first; x < end; ++x) {
        std::uint16_t total = 0;
        for (int i = -kContourHalfColumns; i <= kContourHalfColumns; ++i) {
            total = static_cast<std::uint16_t>(total + costs[x + i]);
        }
        sums[x] = total;
    }
}

void take_row_least(const std::uint16_t* sums, int number, int count, std::uint16_t* least,
                    std::int16_t* found) {
    for (int x = 0; x < count; ++x) {
        const bool less = sums[x] < least[x];
        least[x] = less ? sums[x] : least[x];
        found[x] = less ? static_cast<std::int16_t>(number) : found[x];
    }
}

void take_row_rival(const std::uint16_t* sums, int number, int count, const std::int16_t* found,
                    std::uint16_t* rival) {
    constexpr int kBeside = 2;  // disparities that belong to the same minimum
    const auto lowest = static_cast<std::int16_t>(number - kBeside);
    const auto highest = static_cast<std::int16_t>(number + kBeside);
    for (int x = 0; x < count; ++x) {
        const bool apart = (found[x] < lowest) | (found[x] > highest);
        const std::uint16_t sum = apart ? sums[x] : static_cast<std::uint16_t>(0xFFFF);
        rival[x] = sum < rival[x] ? sum : rival[x];
    }
}

constexpr ContourRows kLoops = {add_row_differences, sum_row_pieces, take_row_least, take_row_rival};

}  // namespace
}  // namespace zemora
