#pragma once
/// Source positions of a row in vectors; for the files of one instruction set each.
///
/// `V` wraps the vector type: `V::Int`, `V::kLanes` and the operations used below.

#include "render/warp_kernels.h"

namespace zemora {
namespace {

/// Division by a power of two towards zero.
template <class V, int bits>
typename V::Int divided(typename V::Int value) {
    const typename V::Int sign = V::template shift_right<31>(value);
    return V::template shift_right<bits>(V::add(value, V::template shift_right_logical<32 - bits>(sign)));
}

template <class V, int halving>
void add_vergence_v(const MapRow& row, typename V::Int& x, typename V::Int& y) {
    using Int = typename V::Int;
    const Int strength = V::multiply(V::truncated_quotient(x, row.half_width_px), V::all(row.vergence_v));
    const Int rounding = V::all(4096 << halving);
    const auto moved = [&row, strength, rounding](Int value) {
        const Int product = V::multiply(V::template shift_right<8>(value), strength);
        const Int step = V::template shift_right<13 + halving>(V::add(product, rounding));
        return row.side > 0 ? V::add(value, step) : V::subtract(value, step);
    };
    x = moved(x);
    y = moved(y);
}

template <class V, int halving>
typename V::Int with_vergence_h(const MapRow& row, typename V::Int y) {
    using Int = typename V::Int;
    const Int square = V::multiply(V::template shift_right<4>(y), V::template shift_right<5>(y));
    const Int parabola =
        V::subtract(V::multiply_high(square, row.divider, row.divider_bits), V::all(row.parabola_mean));
    const Int product = V::multiply(parabola, V::all(row.vergence_h));
    const Int step = V::template shift_right<15 + halving>(V::add(product, V::all(16384 << halving)));
    return row.side > 0 ? V::add(y, step) : V::subtract(y, step);
}

template <class V, int halving>
void map_row(const MapRow& row, int count, std::int32_t* x_out, std::int32_t* y_out) {
    using Int = typename V::Int;
    for (int i = 0; i < count; i += V::kLanes) {
        Int x = V::add(V::all(row.x + 128 * i), V::steps_of_128());
        if (row.has_trapez != 0) {
            const Int shear =
                V::add(V::multiply(x, V::all(row.trapez_slope)), V::all(row.trapez_offset + 2048));
            x = V::subtract(x, V::template shift_right<12>(shear));
        }
        x = V::add(x, V::all(row.shift_x));
        if (row.size != 0) {
            const Int grown = V::multiply(divided<V, 2 + halving>(x), V::all(row.size));
            x = V::add(x, V::template shift_right<13>(V::add(grown, V::all(4096))));
        }
        Int y = V::all(row.y);
        if (row.rotation != 0) {
            const Int turned = V::multiply(divided<V, 1 + halving>(x), V::all(row.rotation));
            y = V::add(y, V::template shift_right<13>(V::add(turned, V::all(4096))));
            x = V::add(x, V::all(row.rotation_x));
        }
        if (row.vergence_v != 0) {
            add_vergence_v<V, halving>(row, x, y);
        }
        if (row.vergence_h != 0) {
            y = with_vergence_h<V, halving>(row, y);
        }
        x = V::add(x, V::all(row.half_width));
        y = V::add(y, V::all(row.half_height));
        if (row.total_scale != 1.0F) {
            x = V::rounded_quotient(x, row.total_scale);
            y = V::rounded_quotient(y, row.total_scale);
        }
        V::store(x_out + i, x);
        V::store(y_out + i, y);
    }
}

}  // namespace
}  // namespace zemora
