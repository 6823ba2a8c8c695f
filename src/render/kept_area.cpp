#include "render/kept_area.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "config/setting_values.h"
#include "numerics/rounding.h"
#include "render/crop.h"
#include "render/warp_plan.h"

namespace zemora {

namespace {

/// Tells picture from its absence by where a pixel comes from.
class TransformTest {
public:
    TransformTest(const PairTransform& views, const PictureSize& source)
        : views_(views),
          most_x_(std::int64_t{kPositionUnit} * source.width - kHalf),
          most_y_(std::int64_t{kPositionUnit} * source.height - kHalf) {}

    [[nodiscard]] bool operator()(int column, int row) const {
        return comes_from_picture(views_[0], column, row) && comes_from_picture(views_[1], column, row);
    }

private:
    static constexpr int kHalf = kPositionUnit / 2;

    [[nodiscard]] bool comes_from_picture(const ViewTransform& view, int column, int row) const {
        const Position p = view.map(column, row);
        return p.x >= -kHalf && p.y >= -kHalf && p.x < most_x_ && p.y < most_y_;
    }

    const PairTransform& views_;
    std::int64_t most_x_;
    std::int64_t most_y_;
};

/// The position farthest from `middle`, which `holds`, towards `end`, up to which all hold: what is picture
/// is in one piece.
template <class Holds>
int farthest(int middle, int end, const Holds& holds) {
    if (holds(end)) {
        return end;
    }
    int inside = middle;
    int outside = end;
    while (std::abs(outside - inside) > 1) {
        const int half = inside + (outside - inside) / 2;
        (holds(half) ? inside : outside) = half;
    }
    return inside;
}

struct Point {
    int column = 0;
    int row = 0;
};

/// The last picture on the way from `centre` to the corner.
Point walk_to_corner(const TransformTest& holds, Point centre, Point corner) {
    const int run = corner.column - centre.column;
    const auto at = [&](int column) {
        const std::int64_t rise = std::int64_t{corner.row} - centre.row;
        return run == 0 ? centre
                        : Point{column, centre.row + static_cast<int>((column - centre.column) * rise / run)};
    };
    const int column = farthest(centre.column, corner.column, [&](int position) {
        const Point p = at(position);
        return holds(p.column, p.row);
    });
    return at(column);
}

/// Whether picture stands all along an edge, seen at many places.
template <class At>
bool holds_along(int low, int high, const At& at) {
    constexpr int kPlaces = 32;
    for (int i = 0; i <= kPlaces; ++i) {
        if (!at(low + static_cast<int>(std::int64_t{high - low} * i / kPlaces))) {
            return false;
        }
    }
    return true;
}

/// Edges are bent where the views have vergences: each is drawn in until it lies in the picture.
PixelRectangle drawn_in(PixelRectangle r, const TransformTest& holds) {
    for (bool changed = true; changed && r.width() > 1 && r.height() > 1;) {
        changed = false;
        const auto settle = [&](int& edge, int step, bool good) {
            edge += good ? 0 : step;
            changed = changed || !good;
        };
        settle(r.left, 1, holds_along(r.bottom, r.top, [&](int row) { return holds(r.left, row); }));
        settle(r.right, -1, holds_along(r.bottom, r.top, [&](int row) { return holds(r.right, row); }));
        settle(r.bottom, 1,
               holds_along(r.left, r.right, [&](int column) { return holds(column, r.bottom); }));
        settle(r.top, -1, holds_along(r.left, r.right, [&](int column) { return holds(column, r.top); }));
    }
    return r;
}

PixelRectangle search(const TransformTest& holds, const PictureSize& frame) {
    const int middle_column = frame.width / 2;
    const int middle_row = frame.height / 2;
    const auto in_row = [&](int column) { return holds(column, middle_row); };
    const auto in_column = [&](int row) { return holds(middle_column, row); };
    const int left = farthest(middle_column, 0, in_row);
    const int right = farthest(middle_column, frame.width - 1, in_row);
    const int bottom = farthest(middle_row, 0, in_column);
    const int top = farthest(middle_row, frame.height - 1, in_column);
    const Point centre{(left + right) / 2, (bottom + top) / 2};
    const Point upper_right = walk_to_corner(holds, centre, {right, top});
    const Point lower_right = walk_to_corner(holds, centre, {right, bottom});
    const Point lower_left = walk_to_corner(holds, centre, {left, bottom});
    const Point upper_left = walk_to_corner(holds, centre, {left, top});
    return drawn_in(
        {std::max(lower_left.column, upper_left.column), std::min(upper_right.column, lower_right.column),
         std::max(lower_left.row, lower_right.row), std::min(upper_left.row, upper_right.row)},
        holds);
}

bool is_large_enough(const PixelRectangle& r) {
    return r.width() >= kSmallestCommonSide && r.height() >= kSmallestCommonSide;
}

PixelRectangle common_part(const PixelRectangle& a, const PixelRectangle& b) {
    return {std::max(a.left, b.left), std::min(a.right, b.right), std::max(a.bottom, b.bottom),
            std::min(a.top, b.top)};
}

PixelRectangle whole_of(const PictureSize& size) {
    return {0, size.width - 1, 0, size.height - 1};
}

/// Keeps the middle of a side.
void cut_side(int& low, int& high, int size) {
    low += (high - low + 1 - size) / 2;
    high = low + size - 1;
}

/// One scale and what it leaves of all frames.
class FilmFit {
public:
    FilmFit(const FilmFrameWish& wish, const WarpPlan& base, std::span<const Correction> corrections)
        : wish_(wish), base_(base), corrections_(corrections) {}

    /// The frame at that scale with all that may be kept of it; nothing kept where there is no picture.
    [[nodiscard]] FilmFrame at(double scale) const;
    /// Cut to the wanted size.
    [[nodiscard]] std::optional<FilmFrame> fitted() const;

private:
    [[nodiscard]] bool has_target() const { return wish_.width > 0 && wish_.height > 0; }
    [[nodiscard]] double scale_for(const PixelRectangle& area, double scale) const;
    void cut(FilmFrame& frame) const;

    const FilmFrameWish& wish_;
    const WarpPlan& base_;
    std::span<const Correction> corrections_;
};

FilmFrame FilmFit::at(double scale) const {
    FilmFrame frame;
    frame.scale = static_cast<float>(scale);
    frame.whole = {round_half_up(wish_.source.width * scale), round_half_up(wish_.source.height * scale)};
    PixelRectangle kept = whole_of(frame.whole);
    if (wish_.cropp_output >= setting::cropp_output::common_area) {
        const auto count = static_cast<int>(corrections_.size());
#pragma omp parallel
        {
            PixelRectangle part = whole_of(frame.whole);
#pragma omp for schedule(static) nowait
            for (int i = 0; i < count; ++i) {
                const Correction& correction = corrections_[static_cast<std::size_t>(i)];
                const auto area = kept_area(film_plan(base_, correction, frame), wish_.source);
                part = common_part(part, area.value_or(PixelRectangle{0, -1, 0, -1}));
            }
#pragma omp critical
            kept = common_part(kept, part);
        }
    }
    frame.kept = kept;
    return frame;
}

/// The scale at which the area fills the target, or with `CroppOutput` 3 fits into it.
double FilmFit::scale_for(const PixelRectangle& area, double scale) const {
    const double across = static_cast<double>(wish_.width) / area.width();
    const double down = static_cast<double>(wish_.height) / area.height();
    const bool fits_inside = wish_.cropp_output == setting::cropp_output::fitted;
    return scale * (fits_inside ? std::min(across, down) : std::max(across, down));
}

void FilmFit::cut(FilmFrame& frame) const {
    PixelRectangle& kept = frame.kept;
    const auto settle = [this](int& low, int& high, int target) {
        const int size = high - low + 1;
        const int wanted = has_target() ? std::min(size, target) : size;
        cut_side(low, high, wanted - (wanted == target && has_target() ? 0 : wanted % wish_.multiple));
    };
    settle(kept.left, kept.right, wish_.width);
    settle(kept.bottom, kept.top, wish_.height);
}

std::optional<FilmFrame> FilmFit::fitted() const {
    FilmFrame frame = at(1.0);
    if (!is_large_enough(frame.kept)) {
        return std::nullopt;
    }
    if (has_target()) {
        constexpr int kMostSteps = 12;
        const bool fits_inside = wish_.cropp_output == setting::cropp_output::fitted;
        const auto is_reached = [&] {
            return fits_inside || (frame.kept.width() >= wish_.width && frame.kept.height() >= wish_.height);
        };
        double scale = scale_for(frame.kept, 1.0);
        frame = at(scale);
        // The edges fall on whole pixels: one more of the tighter side may be needed.
        for (int i = 0; i < kMostSteps && is_large_enough(frame.kept) && !is_reached(); ++i) {
            scale = std::max(scale_for(frame.kept, scale), scale * (1.0 + 0.5 / frame.whole.width));
            frame = at(scale);
        }
        if (!is_reached()) {
            return std::nullopt;
        }
    }
    if (!is_large_enough(frame.kept)) {
        return std::nullopt;
    }
    cut(frame);
    return frame;
}

}  // namespace

std::optional<PixelRectangle> kept_area(const WarpPlan& plan, const PictureSize& source) {
    FixedCorrection fixed = fixed_correction(plan);
    if (!is_within_limits(fixed, plan.frame)) {
        return std::nullopt;
    }
    const PairTransform views = make_transforms(plan, fixed);
    const TransformTest holds(views, source);
    if (!holds(plan.frame.width / 2, plan.frame.height / 2)) {
        return std::nullopt;
    }
    const PixelRectangle area = search(holds, plan.frame);
    return is_large_enough(area) ? std::optional(area) : std::nullopt;
}

WarpPlan film_plan(const WarpPlan& base, const Correction& correction, const FilmFrame& frame) {
    WarpPlan plan = base;
    plan.frame = frame.whole;
    plan.scale = frame.scale;
    plan.size_step = 1.0;
    plan.correction = correction.scaled(static_cast<double>(frame.scale));
    plan.crop.decided = frame.kept;
    return plan;
}

Result<FilmFrame> find_film_frame(const FilmFrameWish& wish, const WarpPlan& base,
                                  std::span<const Correction> corrections, const MessageCatalogue& messages) {
    const std::optional<FilmFrame> frame = FilmFit(wish, base, corrections).fitted();
    if (!frame) {
        return Failure::of_run(messages.either(
            {"The corrections of the frames leave no picture that all of them have in common. Please look at "
             "the series of corrections, or set CroppOutput = 0.\n",
             "Die Korrekturen der Frames lassen kein Bild uebrig, das allen gemeinsam ist. Bitte die Reihen "
             "der Korrekturen ansehen oder CroppOutput = 0 setzen.\n"}));
    }
    if (frame->whole.width > kLargestSide || frame->whole.height > kLargestSide) {
        const bool is_height = frame->whole.height > kLargestSide;
        return Failure::of_run((is_height ? messages.text<Msg::warpimage_image_height_above_maximum>()
                                          : messages.text<Msg::warpimage_image_width_above_maximum>()) +
                               format_text("%d\n", is_height ? frame->whole.height : frame->whole.width));
    }
    return *frame;
}

}  // namespace zemora
