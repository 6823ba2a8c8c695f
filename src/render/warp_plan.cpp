#include "render/warp_plan.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kLargestSize = 4096;      // 12.5 per cent of 32768
constexpr int kLargestRotation = 2048;  // sine 0.125
constexpr int kLargestVergence = 2048;
constexpr std::int64_t kLargestPreTurn = std::int64_t{1} << 25;
constexpr std::int64_t kFarPosition = std::int64_t{1} << 30;

int fixed_sine(float angle_rad, float unit) {
    return round_half_up(static_cast<double>(std::sin(angle_rad) * unit));
}

int fixed_sine_of_degrees(float angle_deg, float unit) {
    return fixed_sine(static_cast<float>(static_cast<double>(angle_deg) * kPi / 180.0), unit);
}

int fixed_shift(float shift_px, double factor, int limit) {
    const float scaled = shift_px * static_cast<float>(factor) * static_cast<float>(kPositionUnit);
    return std::clamp(round_half_up(static_cast<double>(scaled)), -limit, limit);
}

/// The source position nearest to `value` / `scale`, the quotient in single precision.
std::int64_t scale_back(std::int64_t value, float scale) {
    if (scale == 1.0F) {
        return std::clamp(value, -kFarPosition, kFarPosition);
    }
    const float quotient = static_cast<float>(value) / scale;
    return std::clamp<std::int64_t>(round_half_up(static_cast<double>(quotient)), -kFarPosition,
                                    kFarPosition);
}

/// Division by a power of two towards zero.
std::int64_t divided(std::int64_t value, int bits) {
    return (value + ((value >> 63) & ((std::int64_t{1} << bits) - 1))) >> bits;
}

/// Half a frame in positions, never 0, as a divisor.
int half_frame(int size_px) {
    return std::max(1, kPositionUnit * size_px / 2);
}

void add_shapes(const ViewTransform& view, Position& p) {
    const double half_height = half_frame(view.height);
    const auto x = static_cast<double>(p.x);
    const auto y = static_cast<double>(p.y);
    if (view.phantogram != 0.0 || view.edge_warp != 0.0 || view.vertical_ax != 0.0) {
        const std::int64_t shear = std::int64_t{round_half_up(view.phantogram * y)} +
                                   round_half_up(view.edge_warp * x * y / half_height) +
                                   round_half_up(view.vertical_ax * x);
        p.x += view.side * shear;
    }
    if (view.common_trapez != 0.0 || view.sym_trapez != 0.0) {
        const std::int64_t slope = round_half_up(view.common_trapez * y / half_height);
        const std::int64_t offset = round_half_up(view.sym_trapez * y / half_height);
        p.x -= (offset + 2048 + slope * p.x) >> 12;
    }
}

void add_vergences(const ViewTransform& view, Position& p) {
    const int halving = view.halving;
    if (view.vergence_v != 0) {
        const std::int64_t strength = p.x / std::max(1, view.width / 2) * view.vergence_v;
        const std::int64_t rounding = std::int64_t{4096} << halving;
        const int shift = 13 + halving;
        p.x += view.side * (((p.x >> 8) * strength + rounding) >> shift);
        p.y += view.side * (((p.y >> 8) * strength + rounding) >> shift);
    }
    if (view.vergence_h != 0) {
        const std::int64_t parabola = (p.y >> 4) * (p.y >> 5) / std::max(1, view.height >> 3) -
                                      std::int64_t{kPositionUnit} * (view.height / 6);
        p.y +=
            view.side * ((view.vergence_h * parabola + (std::int64_t{16384} << halving)) >> (15 + halving));
    }
}

bool is_size_too_different(const FixedCorrection& fixed) {
    return std::abs(std::int64_t{fixed.size_32768}) > kLargestSize;
}

bool is_turned_too_far(const FixedCorrection& fixed, int height, int width) {
    const auto too_far = [height, width](int sine) {
        return std::int64_t{std::abs(sine)} * std::max(height, width) > kLargestPreTurn;
    };
    return std::abs(fixed.rotation_16384) > kLargestRotation || too_far(fixed.pre_rotation_left_16384) ||
           too_far(fixed.pre_rotation_right_16384);
}

/// A vergence beyond the limit becomes 0.
void drop_vergence(int& vergence, Notes& notes, Msg text) {
    if (std::abs(vergence) <= kLargestVergence) {
        return;
    }
    vergence = 0;
    notes.add(Note{.severity = Severity::information,
                   .text = notes.messages().raw(text),
                   .audience = Audience::everywhere,
                   .repeat = Repeat::once_a_pair,
                   .waits = true});
}

/// Division of numbers below 2^31 by a product and a shift (Granlund and Montgomery, Division by
/// invariant integers using multiplication, 1994).
void set_divider(MapRow& numbers, std::uint32_t divisor) {
    int bits = 0;
    while ((std::uint64_t{1} << bits) < divisor) {
        ++bits;
    }
    numbers.divider_bits = 31 + bits;
    numbers.divider = static_cast<std::uint32_t>((std::uint64_t{1} << numbers.divider_bits) / divisor + 1);
}

}  // namespace

FixedCorrection fixed_correction(const WarpPlan& plan) {
    const auto largest_shift = static_cast<int>(std::int64_t{plan.frame.width} * kPositionUnit / 3);
    const Correction& c = plan.correction;
    FixedCorrection fixed;
    fixed.height_shift_128 = fixed_shift(static_cast<float>(c.height_px), plan.size_step, largest_shift);
    fixed.window_shift_128 = fixed_shift(static_cast<float>(c.shift_px), plan.size_step, largest_shift);
    fixed.size_32768 = round_half_up(static_cast<double>(static_cast<float>(c.size) * 32768.0F));
    fixed.rotation_16384 = fixed_sine(static_cast<float>(c.rotation_rad), 16384.0F);
    fixed.vergence_v_16384 = fixed_sine(static_cast<float>(c.vergence_v_rad), 16384.0F);
    fixed.vergence_h_32768 = fixed_sine(static_cast<float>(c.vergence_h_rad), 32768.0F);
    fixed.pre_rotation_left_16384 = fixed_sine_of_degrees(plan.preset.rotation_left, 16384.0F);
    fixed.pre_rotation_right_16384 = fixed_sine_of_degrees(plan.preset.rotation_right, 16384.0F);
    fixed.pre_vergence_v_16384 = fixed_sine_of_degrees(plan.preset.vergence_v, 16384.0F);
    return fixed;
}

bool check_limits(FixedCorrection& fixed, int height, int width, Notes& notes) {
    if (is_size_too_different(fixed)) {
        notes.tell_everywhere(notes.messages().text<Msg::warpimage_sizes_too_different>());
        notes.wait(Severity::information);
        return false;
    }
    if (is_turned_too_far(fixed, height, width)) {
        notes.tell_everywhere(notes.messages().text<Msg::warpimage_rotation_too_different>());
        notes.wait(Severity::information);
        return false;
    }
    drop_vergence(fixed.vergence_v_16384, notes, Msg::warpimage_vertical_vergence_too_different);
    drop_vergence(fixed.vergence_h_32768, notes, Msg::warpimage_horizontal_vergence_too_different);
    return true;
}

bool is_within_limits(FixedCorrection& fixed, const PictureSize& frame) {
    for (int* vergence : {&fixed.vergence_v_16384, &fixed.vergence_h_32768}) {
        *vergence = std::abs(*vergence) > kLargestVergence ? 0 : *vergence;
    }
    return !is_size_too_different(fixed) && !is_turned_too_far(fixed, frame.height, frame.width);
}

Position ViewTransform::map_centred(Position p) const {
    add_shapes(*this, p);
    p.x += shift_x;
    p.y += shift_y;
    if (size != 0) {
        const int bits = 2 + halving;
        p.x += (divided(p.x, bits) * size + 4096) >> 13;
        p.y += (divided(p.y, bits) * size + 4096) >> 13;
    }
    if (rotation != 0) {
        // First order in the angle: both new values come from the old pair.
        const int bits = 1 + halving;
        const Position old = p;
        p.x = old.x + ((-divided(old.y, bits) * rotation + 4096) >> 13);
        p.y = old.y + ((divided(old.x, bits) * rotation + 4096) >> 13);
    }
    add_vergences(*this, p);
    return p;
}

Position ViewTransform::map(int column, int row) const {
    const std::int64_t half_width = kPositionUnit * width / 2;
    const std::int64_t half_height = kPositionUnit * height / 2;
    const Position p = map_centred(
        {std::int64_t{kPositionUnit} * column - half_width, std::int64_t{kPositionUnit} * row - half_height});
    return {scale_back(p.x + half_width, total_scale), scale_back(p.y + half_height, total_scale)};
}

bool ViewTransform::fits_32() const {
    if (edge_warp != 0.0 || vertical_ax != 0.0) {
        return false;  // terms that the vector code does not have
    }
    constexpr double kLimit = 2147483647.0 * 0.98;
    constexpr double kExactFloat = 8388608.0;  // 2^23: a float still holds halves
    const double half_width = 64.0 * width;
    const double half_height = 64.0 * height;
    const double slope = std::abs(common_trapez) + 1.0;
    const double offset = std::abs(sym_trapez) + 1.0;
    double x = half_width + std::abs(phantogram) * half_height + 1.0;
    double y = half_height + static_cast<double>(std::abs(shift_y));
    if (offset + 2048.0 + slope * x > kLimit) {
        return false;
    }
    x += (offset + 2048.0 + slope * x) / 4096.0 + static_cast<double>(std::abs(shift_x)) + 1.0;
    const double larger = std::max(x, y) * 1.2;  // after size and rotation, both limited to 12.5 per cent
    const auto size_limit = static_cast<double>(std::abs(size));
    const auto rotation_limit = static_cast<double>(std::abs(rotation));
    if (larger / (4 << halving) * size_limit > kLimit || larger / (2 << halving) * rotation_limit > kLimit ||
        size_limit > 4096.0 || rotation_limit > 8192.0) {
        return false;
    }
    const double turn = 1.0 + rotation_limit / (16384 << halving) + size_limit / (32768 << halving);
    x = (x + rotation_limit / 16384.0 * y) * turn + 2.0;
    y = (y + rotation_limit / 16384.0 * x) * turn + 2.0;
    const double strength =
        (x / std::max(1.0, width / 2.0 - 0.5)) * static_cast<double>(std::abs(vergence_v));
    if (std::max(x, y) / 256.0 * strength + 8192.0 > kLimit) {
        return false;
    }
    y += std::max(x, y) / 256.0 * strength / 8192.0;
    x += x / 256.0 * strength / 8192.0;
    const double square = y / 16.0 * y / 32.0 + 65536.0;
    const double parabola = square / std::max(1, height >> 3) + 128.0 * height / 6.0;
    if (square > kLimit || parabola * static_cast<double>(std::abs(vergence_h)) + 32768.0 > kLimit) {
        return false;
    }
    y += parabola * static_cast<double>(std::abs(vergence_h)) / 32768.0;
    const double farthest = std::max(x + half_width, y + half_height);
    return farthest < kExactFloat && farthest / static_cast<double>(total_scale) < kExactFloat;
}

MapRow map_row_of(const ViewTransform& view, int row, int first) {
    MapRow numbers{};
    numbers.half_width = kPositionUnit * view.width / 2;
    numbers.half_height = kPositionUnit * view.height / 2;
    numbers.side = view.side;
    numbers.halving = view.halving;
    Position p{std::int64_t{kPositionUnit} * first - numbers.half_width,
               std::int64_t{kPositionUnit} * row - numbers.half_height};
    const auto y = static_cast<double>(p.y);
    const double half_height = half_frame(view.height);
    p.x += view.side * std::int64_t{round_half_up(view.phantogram * y)};
    numbers.has_trapez = view.common_trapez != 0.0 || view.sym_trapez != 0.0 ? 1 : 0;
    numbers.trapez_slope = round_half_up(view.common_trapez * y / half_height);
    numbers.trapez_offset = round_half_up(view.sym_trapez * y / half_height);
    numbers.shift_x = static_cast<std::int32_t>(view.shift_x);
    numbers.size = static_cast<std::int32_t>(view.size);
    numbers.rotation = static_cast<std::int32_t>(view.rotation);
    p.y += view.shift_y;
    p.y += (divided(p.y, 2 + view.halving) * view.size + 4096) >> 13;
    numbers.rotation_x =
        static_cast<std::int32_t>((-divided(p.y, 1 + view.halving) * view.rotation + 4096) >> 13);
    numbers.x = static_cast<std::int32_t>(p.x);
    numbers.y = static_cast<std::int32_t>(p.y);
    numbers.vergence_v = static_cast<std::int32_t>(view.vergence_v);
    numbers.half_width_px = static_cast<float>(std::max(1, view.width / 2));
    numbers.vergence_h = static_cast<std::int32_t>(view.vergence_h);
    numbers.parabola_mean = kPositionUnit * (view.height / 6);
    set_divider(numbers, static_cast<std::uint32_t>(std::max(1, view.height >> 3)));
    numbers.total_scale = view.total_scale;
    return numbers;
}

PairTransform make_transforms(const WarpPlan& plan, const FixedCorrection& fixed) {
    const int width = plan.frame.width;
    const int height = plan.frame.height;
    const ViewShape& shape = plan.shape;
    const double thirtieth = width / 30.0;
    const double half_width = std::max(0.5, width / 2.0);
    const double half_height = std::max(0.5, height / 2.0);
    PairTransform pair;
    for (const int side : {-1, 1}) {
        ViewTransform& view = pair[side < 0 ? 0 : 1];
        view.height = height;
        view.width = width;
        view.side = side;
        view.total_scale = plan.scale > 0.0F ? plan.scale : 1.0F;
        view.phantogram = shape.phantogram * thirtieth / half_height;
        view.edge_warp = shape.edge_warp * thirtieth / half_width;
        view.vertical_ax = shape.vertical_ax * thirtieth / half_width;
        view.common_trapez = shape.common_trapez * 512.0;
        view.sym_trapez = shape.sym_trapez * 512.0 * 128.0 * half_width;
        const int pre_rotation = side < 0 ? fixed.pre_rotation_left_16384 : fixed.pre_rotation_right_16384;
        const int applied = plan.applied_view > 0 ? 1 : (plan.applied_view < 0 ? -1 : 0);
        if (applied == -side) {
            view.rotation = -pre_rotation;
            continue;
        }
        view.halving = applied == 0 ? 1 : 0;
        const int share = 1 << view.halving;
        view.shift_x = side * fixed.window_shift_128 / share;
        view.shift_y = side * fixed.height_shift_128 / share;
        view.size = std::int64_t{side} * fixed.size_32768;
        view.rotation = std::int64_t{side} * fixed.rotation_16384 - std::int64_t{share} * pre_rotation;
        view.vergence_v = std::int64_t{fixed.vergence_v_16384} - fixed.pre_vergence_v_16384;
        view.vergence_h = fixed.vergence_h_32768;
    }
    return pair;
}

}  // namespace zemora
