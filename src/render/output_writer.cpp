#include "render/output_writer.h"

#include <array>

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

[[noreturn]] void fail_for_memory(const WarpState& warp, const char* reason) {
    end_run_without_picture_memory(warp.voice.console(), reason);
}

/// What became of a view that one of two threads stored.
struct ViewStore {
    bool out_of_memory = false;
    std::string reason;
};

ViewStore store_view(const WarpState& warp, const CanvasLayout& layout, View view, const std::string& file,
                     const SaveOptions& options) {
    const Bitmap canvas = compose_view(warp, layout, view);
    if (!canvas) {
        return {true, {}};
    }
    return {false, save_picture(canvas, file, options)};
}

/// The same with the view in 16 bits.
ViewStore store_deep_view(const WarpState& warp, const CanvasLayout& layout, View view, const Bitmap& deep,
                          const std::string& file, const SaveOptions& options) {
    if (layout.width == deep.width() && layout.height == deep.height() && layout.left_picture_column == 0 &&
        layout.picture_row == 0) {
        return {false, save_deep_picture(deep, file, options)};
    }
    const Bitmap canvas = compose_view(warp, layout, view);
    if (!canvas) {
        return {true, {}};
    }
    const PlacedDeepView placed{&deep, layout.left_picture_column, layout.picture_row};
    const Bitmap picture = deepened(canvas, {&placed, 1});
    return picture ? ViewStore{false, save_deep_picture(picture, file, options)} : ViewStore{true, {}};
}

}  // namespace

StoreResult result_of(const std::string& file, const std::string& reason) {
    constexpr int kStoreFailed = 2;
    return reason.empty() ? StoreResult{} : StoreResult{kStoreFailed, printable(file + ": " + reason)};
}

StoreResult write_left_right(WarpState& warp, const std::string& left_file, const std::string& right_file,
                             const SourceFiles& sources) {
    const DeepViews deep = find_deep_views(warp, sources, left_file);
    const std::array<const Bitmap*, 2> deep_views = {deep.left, deep.right};
    const std::array<CanvasLayout, 2> layouts = {single_view_layout(warp, View::left),
                                                 single_view_layout(warp, View::right)};
    const std::array<const std::string*, 2> files = {&left_file, &right_file};
    const SaveOptions options(warp.parameters);
    std::array<ViewStore, 2> stores;
    // Encoding is the longest step of a pair: one view a thread.
#pragma omp parallel for schedule(static, 1)
    for (int i = 0; i < 2; ++i) {
        const auto index = static_cast<std::size_t>(i);
        const std::string& file = *files[index];
        const View view = i == 0 ? View::left : View::right;
        stores[index] = deep_views[index] != nullptr
                            ? store_deep_view(warp, layouts[index], view, *deep_views[index], file, options)
                            : store_view(warp, layouts[index], view, file, options);
    }
    if (stores[0].out_of_memory) {
        fail_for_memory(warp, "4289: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (LEFT)\n");
    }
    if (stores[1].out_of_memory) {
        fail_for_memory(warp, "4757: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (RIGHT)\n");
    }
    return joined(result_of(left_file, stores[0].reason), result_of(right_file, stores[1].reason));
}

StoreResult write_stereo(WarpState& warp, const std::string& file, const SourceFiles& sources) {
    if (warp.parameters.stereo_output == 0) {
        return {};
    }
    const CanvasLayout layout = side_by_side_layout(warp);
    const Bitmap canvas = compose_side_by_side(warp, layout);
    if (!canvas) {
        end_run_without_picture_memory(warp.voice.console(),
                                       "5503: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (STEREO)\n",
                                       "TRY ALSO TO CREATE LEFT-RIGHT IMAGES INSTEAD OF SIDE-BY-SIDE\n");
    }
    const SaveOptions options(warp.parameters);
    if (const DeepViews deep = find_deep_views(warp, sources, file)) {
        const std::array placed = {
            PlacedDeepView{deep.left, layout.left_picture_column, layout.picture_row},
            PlacedDeepView{deep.right, layout.right_picture_column, layout.picture_row}};
        const Bitmap picture = deepened(canvas, placed);
        if (!picture) {
            fail_for_memory(warp, kNoMemoryDeep);
        }
        return result_of(file, save_deep_picture(picture, file, options));
    }
    return result_of(file, save_picture(canvas, file, options));
}

}  // namespace zemora
