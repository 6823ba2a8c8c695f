#include "render/output_writer.h"

#include <array>

#include "render/canvas.h"
#include "render/rgb16.h"
#include "render/save_picture.h"

namespace zemora {

namespace {

constexpr int kStoreFailed = 2;
constexpr int kDeepFormat = 7;  ///< `OutputFormat` with 16 bits per channel.

/// The result of storing `file`, with the reason of a failure.
StoreResult result_of(const std::string& file, const std::string& reason) {
    return reason.empty() ? StoreResult{} : StoreResult{kStoreFailed, file + ": " + reason};
}

StoreResult joined(StoreResult first, const StoreResult& second) {
    if (second.code != 0) {
        first.reason += (first.reason.empty() ? "" : "\n") + second.reason;
        first.code = second.code;
    }
    return first;
}

bool wants_deep(const WarpState& warp, const std::string& file) {
    return warp.parameters.output_format == kDeepFormat && is_tiff_name(file);
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

/// The sources have not been exchanged, the outputs have: then the names change places.
StoreResult write_deep_views(const WarpState& warp, const DeepPair& pair, const std::string& left_file,
                             const std::string& right_file) {
    const SaveOptions options(warp.parameters);
    const bool inverse = warp.inverse_output == 1;
    const std::string& of_left = inverse ? right_file : left_file;
    const std::string& of_right = inverse ? left_file : right_file;
    const StoreResult left = result_of(of_left, save_deep_picture(pair.left, of_left, options));
    return joined(left, result_of(of_right, save_deep_picture(pair.right, of_right, options)));
}

StoreResult write_deep_stereo(const WarpState& warp, const DeepPair& pair, const std::string& file) {
    const bool inverse = warp.inverse_output == 1;
    const Bitmap both = inverse ? join_deep(pair.right, pair.left) : join_deep(pair.left, pair.right);
    if (!both) {
        fail_for_memory(warp, "13668: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (RGB16)\n");
    }
    return result_of(file, save_deep_picture(both, file, SaveOptions(warp.parameters)));
}

}  // namespace

StoreResult write_left_right(WarpState& warp, const std::string& left_file, const std::string& right_file,
                             const SourceFiles& sources) {
    if (wants_deep(warp, left_file)) {
        if (const DeepPair pair = make_deep_pair(warp, sources)) {
            return write_deep_views(warp, pair, left_file, right_file);
        }
    }
    const std::array<CanvasLayout, 2> layouts = {single_view_layout(warp, View::left),
                                                 single_view_layout(warp, View::right)};
    const std::array<const std::string*, 2> files = {&left_file, &right_file};
    const SaveOptions options(warp.parameters);
    std::array<ViewStore, 2> stores;
    // Encoding is the longest step of a pair: one view a thread.
#pragma omp parallel for schedule(static, 1) num_threads(2)
    for (int i = 0; i < 2; ++i) {
        const auto index = static_cast<std::size_t>(i);
        stores[index] =
            store_view(warp, layouts[index], i == 0 ? View::left : View::right, *files[index], options);
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
    if (wants_deep(warp, file)) {
        if (const DeepPair pair = make_deep_pair(warp, sources)) {
            return write_deep_stereo(warp, pair, file);
        }
    }
    const CanvasLayout layout = side_by_side_layout(warp);
    const Bitmap canvas = compose_side_by_side(warp, layout);
    if (!canvas) {
        end_run_without_picture_memory(warp.voice.console(),
                                       "5503: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (STEREO)\n",
                                       "TRY ALSO TO CREATE LEFT-RIGHT IMAGES INSTEAD OF SIDE-BY-SIDE\n");
    }
    return result_of(file, save_picture(canvas, file, SaveOptions(warp.parameters)));
}

}  // namespace zemora
