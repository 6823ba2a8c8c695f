#include "render/output_writer.h"

#include <array>

#include "platform/console.h"
#include "render/canvas.h"
#include "render/rgb16.h"
#include "render/save_picture.h"

namespace zemora {

namespace {

/// What became of a stored view.
struct ViewStore {
    bool out_of_memory = false;
    std::string reason;
};

/// One view and what is written of it.
struct ViewProduct {
    View view;
    const CanvasLayout& layout;
    const Bitmap* deep;  ///< Null for 8 bits.
    const std::string& file;
};

ViewStore store_shallow_view(const Finished& pair, const ViewProduct& product, const SaveOptions& options,
                             Notes& notes) {
    const Bitmap canvas = compose_view(pair, product.layout, product.view, notes);
    if (!canvas) {
        return {true, {}};
    }
    return {false, save_picture(canvas, product.file, options)};
}

/// The same with the view in 16 bits.
ViewStore store_deep_view(const Finished& pair, const ViewProduct& product, const SaveOptions& options,
                          Notes& notes) {
    const CanvasLayout& layout = product.layout;
    const Bitmap& deep = *product.deep;
    if (layout.width == deep.width() && layout.height == deep.height() && layout.left_picture_column == 0 &&
        layout.picture_row == 0) {
        return {false, save_deep_picture(deep, product.file, options)};
    }
    const Bitmap canvas = compose_view(pair, layout, product.view, notes);
    if (!canvas) {
        return {true, {}};
    }
    const PlacedDeepView placed{&deep, layout.left_picture_column, layout.picture_row};
    const Bitmap picture = deepened(canvas, {&placed, 1});
    return picture ? ViewStore{false, save_deep_picture(picture, product.file, options)}
                   : ViewStore{true, {}};
}

}  // namespace

StoreResult joined(StoreResult first, const StoreResult& second) {
    if (second.code != 0) {
        first.reason += (first.reason.empty() ? "" : "\n") + second.reason;
        first.code = second.code;
    }
    return first;
}

StoreResult result_of(const std::string& file, const std::string& reason) {
    constexpr int kStoreFailed = 2;
    return reason.empty() ? StoreResult{} : StoreResult{kStoreFailed, printable(file + ": " + reason)};
}

ViewLayouts view_layouts(const Finished& pair, const FrameSettings& frame) {
    const CanvasLayout left = single_view_layout(pair, frame, View::left);
    return {left, single_view_layout(pair, left.frame, View::right)};
}

Result<StoreResult> write_view(const Finished& pair, const ViewLayouts& layouts, View view,
                               const std::string& file, const DeepViews& deep, const SaveOptions& options,
                               Notes& notes) {
    const bool is_left = view == View::left;
    const ViewProduct product{view, layouts.of(view), is_left ? deep.left : deep.right, file};
    const ViewStore store = product.deep != nullptr ? store_deep_view(pair, product, options, notes)
                                                    : store_shallow_view(pair, product, options, notes);
    if (store.out_of_memory) {
        return Failure::out_of_memory(is_left ? "4289: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (LEFT)\n"
                                              : "4757: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (RIGHT)\n");
    }
    return result_of(file, store.reason);
}

Result<StereoCanvas> compose_stereo(const Finished& pair, const FrameSettings& frame, Notes& notes) {
    StereoCanvas canvas;
    canvas.layout = side_by_side_layout(pair, frame);
    tell_frame_faults(canvas.layout.faults, notes);
    canvas.picture = compose_side_by_side(pair, canvas.layout, notes);
    if (!canvas.picture) {
        return Failure::out_of_memory("5503: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (STEREO)\n",
                                      "TRY ALSO TO CREATE LEFT-RIGHT IMAGES INSTEAD OF SIDE-BY-SIDE\n");
    }
    return canvas;
}

Result<StoreResult> write_stereo(const StereoCanvas& canvas, const std::string& file, const DeepViews& deep,
                                 const SaveOptions& options) {
    if (!deep) {
        return result_of(file, save_picture(canvas.picture, file, options));
    }
    const CanvasLayout& layout = canvas.layout;
    const std::array placed = {PlacedDeepView{deep.left, layout.left_picture_column, layout.picture_row},
                               PlacedDeepView{deep.right, layout.right_picture_column, layout.picture_row}};
    const Bitmap picture = deepened(canvas.picture, placed);
    if (!picture) {
        return Failure::out_of_memory(kNoMemoryDeep);
    }
    return result_of(file, save_deep_picture(picture, file, options));
}

}  // namespace zemora
