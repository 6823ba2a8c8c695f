#include "input/view_preparer.h"

#include <algorithm>
#include <utility>

#include "input/equal_size.h"
#include "input/percent_crop.h"
#include "numerics/rounding.h"
#include "numerics/turn.h"

namespace zemora {

namespace {

constexpr int kReducedSide = 800;  // pixels; long side of the reduced copies

void start_geometry(InputViews& views, const ViewOrders& orders) {
    const auto whole = [](const LoadedView& view, int rot_mir) {
        InputGeometry geometry;
        geometry.crop_width = view.width;
        geometry.crop_height = view.height;
        geometry.rot_mir = rot_mir;
        return geometry;
    };
    views.left_geometry = whole(views.left, orders.rot_mir_left);
    views.right_geometry = whole(views.right, orders.rot_mir_right);
}

Result<void> turn_view(LoadedView& view, int mode) {
    if (mode <= 0 || mode >= kTurnModes) {
        return {};
    }
    const bool exchanged = exchanges_sides(mode);
    Bitmap turned =
        Bitmap::create(exchanged ? view.height : view.width, exchanged ? view.width : view.height);
    if (!turned) {
        return Failure::out_of_memory("3109: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (ROT RIGHT) \n");
    }
    const Picture source = view.picture();
    turn_pixels({source.bits, source.pitch}, source.width, source.height, kPixelBytes, mode,
                {turned.bits(), turned.pitch()});
    view.take(std::move(turned));
    return {};
}

Result<void> make_both_exact(InputViews& views) {
    make_exact(views.left);
    make_exact(views.right);
    if (!views.left.bitmap || !views.right.bitmap) {
        return Failure::out_of_memory("3411: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (CROPP)\n");
    }
    return {};
}

/// The memory of a reduced copy: that of an earlier pair, or new.
Result<Bitmap> reduced_bitmap(Bitmap& spare) {
    Bitmap bitmap = spare ? std::move(spare) : Bitmap::create(kReducedSide, kReducedSide);
    if (!bitmap) {
        return Failure::out_of_memory("96: FAILED TO ALLOCATE MEMORY FOR IMAGE (CORRELATION)\n");
    }
    return bitmap;
}

}  // namespace

Result<InputViews> ViewPreparer::prepare(RawViews raw, const ViewOrders& orders, Notes& notes) {
    InputViews views;
    views.left = std::move(orders.exchanged ? raw.right : raw.left);
    views.right = std::move(orders.exchanged ? raw.left : raw.right);
    start_geometry(views, orders);
    const RecordedView left{views.left, views.left_geometry};
    const RecordedView right{views.right, views.right_geometry};
    if (orders.has_pre_selection) {
        crop_by_percent(left, right, orders.pre_selection, notes);
    }
    if (const auto done = condition_views(left, right, orders.mask_stems, options_.frame, notes); !done) {
        return done.failure();
    }
    for (const auto& [view, mode] :
         {std::pair{&views.left, orders.rot_mir_left}, std::pair{&views.right, orders.rot_mir_right}}) {
        if (const auto done = turn_view(*view, mode); !done) {
            return done.failure();
        }
    }
    const EqualSizeOptions sizes{options_.cropp_input, options_.frame, orders.has_pre_selection};
    if (const auto done = make_equal_size(left, right, sizes, scratch_, notes); !done) {
        return done.failure();
    }
    if (const auto done = make_both_exact(views); !done) {
        return done.failure();
    }
    if (orders.wants_copies) {
        if (const auto done = provide_copies(views); !done) {
            return done.failure();
        }
        make_reduced(views, orders);
    }
    return views;
}

Result<void> ViewPreparer::provide_copies(InputViews& views) {
    for (const auto& [bitmap, spare] :
         {std::pair{&views.reduced_left, &spare_left_}, std::pair{&views.reduced_right, &spare_right_}}) {
        Result<Bitmap> memory = reduced_bitmap(*spare);
        if (!memory) {
            return memory.failure();
        }
        *bitmap = *std::move(memory);
    }
    return {};
}

void ViewPreparer::crop_by_mask(InputViews& views, const MaskFrame& mask, const ViewOrders& orders) const {
    const PictureSize kept = apply_mask_crop(views.left.picture(), views.right.picture(), mask);
    for (LoadedView* view : {&views.left, &views.right}) {
        view->width = kept.width;
        view->height = kept.height;
    }
    make_reduced(views, orders);
}

void ViewPreparer::take_back(InputViews&& used) {
    InputViews views = std::move(used);
    used = InputViews();
    if (views.reduced_left && views.reduced_right) {
        spare_left_ = std::move(views.reduced_left);
        spare_right_ = std::move(views.reduced_right);
    }
}

void ViewPreparer::make_reduced(InputViews& views, const ViewOrders& orders) const {
    const double w = views.width();
    const double h = views.height();
    const bool portrait = views.width() <= views.height();
    const int height = portrait ? kReducedSide : std::max(round_half_up(h * kReducedSide / w), 2);
    const int width = portrait ? std::max(round_half_up(w * kReducedSide / h), 2) : kReducedSide;
    views.reduced_size = {width, height};
    const PreSelection none;
    const PreSelection& preset = orders.has_pre_selection ? orders.pre_selection : none;
    const double half_vergence = 0.5 * preset.vergence_v;
    const auto reduce = [&](const LoadedView& view, const Bitmap& target, RotatedRescale how) {
        how.outside = options_.frame.colour;
        rescale_rotated(view.picture(), target.picture(width, height), how);
    };
    reduce(views.left, views.reduced_left, {preset.rotation_left, half_vergence, orders.left_zoom, {}});
    reduce(views.right, views.reduced_right, {preset.rotation_right, -half_vergence, orders.right_zoom, {}});
}

}  // namespace zemora
