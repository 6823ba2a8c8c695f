#include "video/stereo_flags.h"

#include <algorithm>
#include <iterator>

namespace zemora {

namespace {

struct PackingRow {
    StereoPacking packing;
    int h264_number;
    bool is_in_mp4;
};
// clang-format off
constexpr PackingRow kPackings[] = {
    {StereoPacking::chequers,     0, false},
    {StereoPacking::columns,      1, false},
    {StereoPacking::rows,         2, false},
    {StereoPacking::side_by_side, 3, true},
    {StereoPacking::above_below,  4, true},
    {StereoPacking::frames,       5, false},
};
// clang-format on

const PackingRow* row_of(StereoFlag flag) {
    const auto* row = std::find_if(std::begin(kPackings), std::end(kPackings),
                                   [&](const PackingRow& known) { return known.packing == flag.packing; });
    return row == std::end(kPackings) || flag.right_first ? nullptr : row;
}

}  // namespace

std::optional<int> frame_packing_of(StereoFlag flag) {
    const PackingRow* row = row_of(flag);
    return row != nullptr ? std::optional<int>(row->h264_number) : std::nullopt;
}

bool has_mp4_flag(StereoFlag flag) {
    const PackingRow* row = row_of(flag);
    return row != nullptr && row->is_in_mp4;
}

}  // namespace zemora
