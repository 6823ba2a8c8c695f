#include <algorithm>
#include <cstdint>

#include "render/output_size.h"

namespace zemora {

namespace {

struct Point {
    int column = 0;
    int row = 0;
};

/// Tells picture from background in both views at once.
class PictureTest {
public:
    PictureTest(const StereoPicture& pair, Colour background) : pair_(pair), background_(background) {}
    [[nodiscard]] bool operator()(int column, int row) const {
        return is_picture(pair_.left.pixel(column, row)) && is_picture(pair_.right.pixel(column, row));
    }

private:
    [[nodiscard]] bool is_picture(const std::uint8_t* pixel) const {
        return Colour{pixel[0], pixel[1], pixel[2]} != background_;
    }
    StereoPicture pair_;
    Colour background_;
};

/// First position from `start` towards `middle` that `holds`; one beyond the middle when none does.
template <class Holds>
int scan(int start, int middle, const Holds& holds) {
    const int step = start <= middle ? 1 : -1;
    for (int position = start; position != middle + step; position += step) {
        if (holds(position)) {
            return position;
        }
    }
    return middle - step;
}

/// Last picture sample on the ray from `centre` through `target`, walked column by column to
/// `last_column`. The row of a column is exact: floor of the line in whole numbers.
Point walk_ray(const PictureTest& holds, Point centre, Point target, int last_column,
               const PixelRectangle& range) {
    Point last = centre;
    const std::int64_t run = std::int64_t{target.column} - centre.column;
    if (run == 0) {
        return last;
    }
    const std::int64_t rise = std::int64_t{target.row} - centre.row;
    const int step = last_column >= centre.column ? 1 : -1;
    for (int column = centre.column; column != last_column + step; column += step) {
        const std::int64_t row = (centre.row * run + (column - centre.column) * rise) / run;
        if (row < range.bottom || row > range.top) {
            break;
        }
        if (holds(column, static_cast<int>(row))) {
            last = {column, static_cast<int>(row)};
        }
    }
    return last;
}

}  // namespace

PixelRectangle find_common_area(const StereoPicture& pair, const PixelRectangle& range, Colour background) {
    const PictureTest holds(pair, background);
    const int middle_row = (range.bottom + range.top) / 2;
    const int middle_column = (range.left + range.right) / 2;
    const auto in_row = [&holds, middle_row](int column) { return holds(column, middle_row); };
    const auto in_column = [&holds, middle_column](int row) { return holds(middle_column, row); };
    const int left = scan(range.left, middle_column, in_row);
    const int right = scan(range.right, middle_column, in_row);
    const int bottom = scan(range.bottom, middle_row, in_column);
    const int top = scan(range.top, middle_row, in_column);

    // The axes tell how far the wedges reach there; the rays to the corners cut what turning and
    // keystones take.
    const Point centre{std::clamp((left + right) / 2, range.left, range.right),
                       std::clamp((bottom + top) / 2, range.bottom, range.top)};
    const Point upper_right = walk_ray(holds, centre, {right, top}, range.right, range);
    const Point lower_right = walk_ray(holds, centre, {right, bottom}, range.right, range);
    const Point lower_left = walk_ray(holds, centre, {left, bottom}, range.left, range);
    const Point upper_left = walk_ray(holds, centre, {left, top}, range.left, range);
    return {std::max(lower_left.column, upper_left.column), std::min(upper_right.column, lower_right.column),
            std::max(lower_left.row, lower_right.row), std::min(upper_left.row, upper_right.row)};
}

}  // namespace zemora
