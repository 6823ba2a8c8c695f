#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "numerics/rescale_parts.h"

namespace zemora {

namespace {

/// From a result pixel to the source pixel nearest to it.
class RotatedMap {
public:
    RotatedMap(ConstPicture source, Picture target, const RotatedRescale& how)
        : cosine_(std::cos(how.rotation_deg * kRadians)),
          sine_(std::sin(how.rotation_deg * kRadians)),
          shear_(std::sin(how.vergence_deg * kRadians)),
          scale_x_(rescale_parts::make_axis(source.width, target.width).scale * how.zoom),
          scale_y_(rescale_parts::make_axis(source.height, target.height).scale * how.zoom),
          half_out_x_(target.width / 2.0),
          half_out_y_(target.height / 2.0),
          half_in_x_(source.width / 2.0),
          half_in_y_(source.height / 2.0) {}

    [[nodiscard]] bool upright() const { return sine_ == 0.0 && shear_ == 0.0; }
    [[nodiscard]] double column(int x, int y) const {
        const double dx = x - half_out_x_;
        const double dy = y - half_out_y_;
        return std::floor((cosine_ * sheared_x(dx) + sine_ * sheared_y(dx, dy)) / scale_x_ + half_in_x_ +
                          0.5);
    }
    [[nodiscard]] double row(int x, int y) const {
        const double dx = x - half_out_x_;
        const double dy = y - half_out_y_;
        return std::floor((cosine_ * sheared_y(dx, dy) - sine_ * sheared_x(dx)) / scale_y_ + half_in_y_ +
                          0.5);
    }

private:
    static constexpr double kRadians = std::numbers::pi / 180.0;
    [[nodiscard]] double sheared_x(double dx) const { return shear_ * dx * dx / half_out_x_ + dx; }
    [[nodiscard]] double sheared_y(double dx, double dy) const { return shear_ * dx * dy / half_out_x_ + dy; }

    double cosine_;
    double sine_;
    double shear_;
    double scale_x_;
    double scale_y_;
    double half_out_x_;
    double half_out_y_;
    double half_in_x_;
    double half_in_y_;
};

void put(ConstPicture source, double column, double row, Colour outside, std::uint8_t* out) {
    // Written so that not-a-number counts as outside.
    if (column >= 0.0 && column < source.width && row >= 0.0 && row < source.height) {
        std::memcpy(out, source.pixel(static_cast<int>(column), static_cast<int>(row)), kPixelBytes);
    } else {
        std::memcpy(out, &outside, kPixelBytes);
    }
}

}  // namespace

void rescale_rotated(ConstPicture source, Picture target, const RotatedRescale& how) {
    if (source.width <= 0 || source.height <= 0 || target.width <= 0 || target.height <= 0) {
        return;
    }
    const RotatedMap map(source, target, how);
    std::vector<double> columns;
    for (int x = 0; map.upright() && x < target.width; ++x) {
        columns.push_back(map.column(x, 0));
    }
#pragma omp parallel for schedule(static)
    for (int y = 0; y < target.height; ++y) {
        std::uint8_t* out = target.row(y);
        const double upright_row = map.row(0, y);
        for (int x = 0; x < target.width; ++x, out += kPixelBytes) {
            const double column = columns.empty() ? map.column(x, y) : columns[static_cast<std::size_t>(x)];
            const double row = columns.empty() ? map.row(x, y) : upright_row;
            put(source, column, row, how.outside, out);
        }
    }
}

}  // namespace zemora
