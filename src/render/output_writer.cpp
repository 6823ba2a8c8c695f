#include "render/output_writer.h"

#include <array>

#include "platform/console.h"
#include "render/canvas.h"
#include "render/rgb16.h"
#include "render/save_picture.h"

namespace zemora {

namespace {

StoreResult joined(StoreResult first, const StoreResult& second) {
    if (second.code != 0) {
        first.reason += (first.reason.empty() ? "" : "\n") + second.reason;
        first.code = second.code;
    }
    return first;
}

/// What became of a view that one of two threads stored.
struct ViewStore {
    bool out_of_memory = false;
    std::string reason;
};

/// One view and what is written of it.
struct ViewProduct {
    View view;
    CanvasLayout layout;
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

ViewStore store_view(const Finished& pair, const ViewProduct& product, const SaveOptions& options,
                     Notes& notes) {
    return product.deep != nullptr ? store_deep_view(pair, product, options, notes)
                                   : store_shallow_view(pair, product, options, notes);
}

}  // namespace

StoreResult result_of(const std::string& file, const std::string& reason) {
    constexpr int kStoreFailed = 2;
    return reason.empty() ? StoreResult{} : StoreResult{kStoreFailed, printable(file + ": " + reason)};
}

FrameSettings frame_behind_views(const Finished& pair, const FrameSettings& frame) {
    return single_view_layout(pair, single_view_layout(pair, frame, View::left).frame, View::right).frame;
}

Result<StoreResult> write_left_right(const Finished& pair, const FrameSettings& frame,
                                     const std::string& left_file, const std::string& right_file,
                                     const DeepViews& deep, const SaveOptions& options, Notes& notes) {
    const CanvasLayout left = single_view_layout(pair, frame, View::left);
    const std::array<ViewProduct, 2> products = {
        ViewProduct{View::left, left, deep.left, left_file},
        {View::right, single_view_layout(pair, left.frame, View::right), deep.right, right_file}};
    for (const ViewProduct& product : products) {
        tell_frame_faults(product.layout.faults, notes);
    }
    const int verbosity = notes.verbose();
    std::array<KeptNotes, 2> kept = {KeptNotes(notes.messages(), verbosity),
                                     KeptNotes(notes.messages(), verbosity)};
    std::array<ViewStore, 2> stores;
    // Encoding is the longest step of a pair: one view a thread.
#pragma omp parallel for schedule(static, 1)
    for (int i = 0; i < 2; ++i) {
        const auto index = static_cast<std::size_t>(i);
        stores[index] = store_view(pair, products[index], options, kept[index]);
    }
    for (KeptNotes& told : kept) {
        told.tell(notes);
    }
    if (stores[0].out_of_memory) {
        return Failure::out_of_memory("4289: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (LEFT)\n");
    }
    if (stores[1].out_of_memory) {
        return Failure::out_of_memory("4757: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (RIGHT)\n");
    }
    return joined(result_of(left_file, stores[0].reason), result_of(right_file, stores[1].reason));
}

Result<StoreResult> write_stereo(const Finished& pair, const FrameSettings& frame, const std::string& file,
                                 const DeepViews& deep, const SaveOptions& options, Notes& notes) {
    const CanvasLayout layout = side_by_side_layout(pair, frame);
    tell_frame_faults(layout.faults, notes);
    const Bitmap canvas = compose_side_by_side(pair, layout, notes);
    if (!canvas) {
        return Failure::out_of_memory("5503: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (STEREO)\n",
                                      "TRY ALSO TO CREATE LEFT-RIGHT IMAGES INSTEAD OF SIDE-BY-SIDE\n");
    }
    if (!deep) {
        return result_of(file, save_picture(canvas, file, options));
    }
    const std::array placed = {PlacedDeepView{deep.left, layout.left_picture_column, layout.picture_row},
                               PlacedDeepView{deep.right, layout.right_picture_column, layout.picture_row}};
    const Bitmap picture = deepened(canvas, placed);
    if (!picture) {
        return Failure::out_of_memory(kNoMemoryDeep);
    }
    return result_of(file, save_deep_picture(picture, file, options));
}

}  // namespace zemora
