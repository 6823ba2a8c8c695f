#include "render/anaglyph_mix.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "render/anaglyph_mixers.h"

namespace zemora {

namespace {

constexpr AnaglyphMixRow kMixes[] = {
#define MIX(type, name, needs, make) {type, name, MixNeeds::needs, make},
#include "render/anaglyph_mixes.inc"
#undef MIX
};
constexpr int kMixCount = static_cast<int>(std::size(kMixes));
constexpr int kDefaultType = 5;

constexpr bool rows_stand_at_their_type() {
    for (int type = 0; type < kMixCount; ++type) {
        if (kMixes[type].type != type) {
            return false;
        }
    }
    return true;
}
static_assert(rows_stand_at_their_type());

/// Columns of the canvas that the same views cover; a view that does not is not there.
struct Stretch {
    int begin;
    int end;
    bool has_left;
    bool has_right;
};

bool covers(int first, int width, int column) {
    return column >= first && column < first + width;
}

/// The stretches between the outermost columns of both views, inside the canvas.
std::vector<Stretch> stretches_of(int view_width, int canvas_width, MergePlace place) {
    std::array<int, 4> edges = {place.left_column, place.left_column + view_width, place.right_column,
                                place.right_column + view_width};
    std::sort(edges.begin(), edges.end());
    std::vector<Stretch> stretches;
    for (std::size_t i = 0; i + 1 < edges.size(); ++i) {
        const int begin = std::max(edges[i], 0);
        const int end = std::min(edges[i + 1], canvas_width);
        if (begin < end) {
            stretches.push_back({begin, end, covers(place.left_column, view_width, begin),
                                 covers(place.right_column, view_width, begin)});
        }
    }
    return stretches;
}

/// `AnaglyphType` 2: red of the left view, green and blue of the right one.
class ChannelMixer : public AnaglyphMixer {
public:
    bool mix(const std::uint8_t* left, const std::uint8_t* right, std::uint8_t* mixed,
             int count) const override {
        for (int i = 0; i < count * kPixelBytes; i += kPixelBytes) {
            mixed[i] = right[i];
            mixed[i + 1] = right[i + 1];
            mixed[i + 2] = left[i + 2];
        }
        return true;
    }
};

}  // namespace

MixerPointer make_full_colours(const AnaglyphSettings& /*settings*/) {
    return std::make_unique<ChannelMixer>();
}

const AnaglyphMixRow& anaglyph_mix_row(int type) {
    return kMixes[type >= 0 && type < kMixCount ? type : kDefaultType];
}

bool merge_views(const AnaglyphMixer& mixer, const StereoPicture& views, Picture canvas, MergePlace place) {
    const ConstPicture& left = views.left;
    const ConstPicture& right = views.right;
    const std::vector<Stretch> stretches = stretches_of(left.width, canvas.width, place);
    const std::vector<std::uint8_t> black(static_cast<std::size_t>(std::max(canvas.width, 0)) * kPixelBytes);
    const int first = std::max(0, -place.row);
    const int last = std::min(left.height, canvas.height - place.row);
    std::atomic<bool> stable = true;
#pragma omp parallel for schedule(static)
    for (int y = first; y < last; ++y) {
        for (const Stretch& stretch : stretches) {
            if (!stable.load(std::memory_order_relaxed)) {
                break;
            }
            const auto* from_left =
                stretch.has_left ? left.pixel(stretch.begin - place.left_column, y) : black.data();
            const auto* from_right =
                stretch.has_right ? right.pixel(stretch.begin - place.right_column, y) : black.data();
            if (!mixer.mix(from_left, from_right, canvas.pixel(stretch.begin, y + place.row),
                           stretch.end - stretch.begin)) {
                stable.store(false, std::memory_order_relaxed);
            }
        }
    }
    return stable;
}

}  // namespace zemora
