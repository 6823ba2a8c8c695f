#include "numerics/rescale.h"

#include <algorithm>

#include "numerics/rescale_parts.h"

namespace zemora {

using rescale_parts::Axis;

namespace rescale_parts {

Axis make_axis(int in, int out) {
    Axis axis{in, out, 1.0F, in - 1, out - 1};
    if (axis.in_span == 0 || axis.out_span == 0) {
        axis.in_span = in;
        axis.out_span = out;
    }
    axis.scale = static_cast<float>(axis.out_span) / static_cast<float>(axis.in_span);
    return axis;
}

}  // namespace rescale_parts

namespace {

/// Whether the width limits a picture of the size `in` that is to fit into `wanted`.
bool width_decides(PictureSize in, PictureSize wanted) {
    return static_cast<std::int64_t>(wanted.height) * in.width >=
           static_cast<std::int64_t>(wanted.width) * in.height;
}

/// The largest size with the aspect of `in` that fits into `wanted`.
PictureSize inside(PictureSize in, PictureSize wanted) {
    const auto scaled = [](std::int64_t side, std::int64_t of, std::int64_t to) {
        return static_cast<int>((2 * side * to + of) / (2 * of));  // floor(side x to / of + 0.5)
    };
    PictureSize size = wanted;
    if (width_decides(in, wanted)) {
        size.height = std::clamp(scaled(wanted.width, in.width, in.height), 1, wanted.height);
    } else {
        size.width = std::clamp(scaled(wanted.height, in.height, in.width), 1, wanted.width);
    }
    return size;
}

}  // namespace

std::uint16_t* RescaleScratch::room(std::size_t samples) {
    if (samples > size_) {
        size_ = 0;
        samples_.reset();  // the memory of the old room may do for the new one
        samples_ = std::make_unique_for_overwrite<std::uint16_t[]>(samples);
        size_ = samples;
    }
    return samples_.get();
}

PictureSize rescale(ConstPicture source, Picture target, RescaleScratch& scratch, RescaleFilter filter,
                    RescaleFit fit) {
    if (source.width <= 0 || source.height <= 0 || target.width <= 0 || target.height <= 0) {
        return {};
    }
    const PictureSize wanted{target.width, target.height};
    Axis x = rescale_parts::make_axis(source.width, wanted.width);
    Axis y = rescale_parts::make_axis(source.height, wanted.height);
    PictureSize size = wanted;
    if (fit == RescaleFit::keep_aspect) {
        const float scale = width_decides({source.width, source.height}, wanted) ? x.scale : y.scale;
        size = inside({source.width, source.height}, wanted);
        x = rescale_parts::make_axis(source.width, size.width);
        y = rescale_parts::make_axis(source.height, size.height);
        x.scale = scale;
        y.scale = scale;
    }
    const Picture written = target.part(0, 0, size.width, size.height);
    if (filter == RescaleFilter::bilinear) {
        if (!rescale_parts::bilinear(source, written, scratch, x, y)) {
            return {};
        }
    } else {
        rescale_parts::bicubic(source, written, scratch, x, y);
    }
    return size;
}

}  // namespace zemora
