#include "render/extra_output.h"

#include <algorithm>
#include <array>
#include <optional>

#include "config/voice.h"
#include "input/exif_time.h"
#include "input/picture_file.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "render/canvas.h"
#include "render/extra_layout.h"
#include "render/framing.h"
#include "render/mpo_file.h"
#include "render/rgb16.h"
#include "render/save_picture.h"
#include "render/squeeze.h"

namespace zemora {

namespace {

/// A format whose canvas has the pictures in cells.
struct TiledFormat {
    ExtraFormat format;
    Tiling tiling;
    Squeeze squeeze;
    bool has_deep_form;  ///< Of 16 bits per channel.
    const char* no_memory;
    const char* no_memory_squeezed;
    const char* advice;
};

// clang-format off
constexpr TiledFormat kTiledFormats[] = {
    {ExtraFormat::squeezed_side_by_side, {{"lr", ""}, RowGap::central, true}, Squeeze::columns, true,
     "w6145: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (EXTRA)\n",
     "w6328: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (EXTRA)\n", ""},
    {ExtraFormat::above_below, {{"l", "r"}}, Squeeze::nothing, true,
     "w6508: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (EXTRA)\n", "", ""},
    {ExtraFormat::squeezed_above_below, {{"l", "r"}}, Squeeze::rows, true,
     "w6508: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (EXTRA)\n",
     "w6704: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (EXTRA)\n", ""},
    {ExtraFormat::left_right_left, {{"lrl", ""}}, Squeeze::nothing, false,
     "w7991: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (MPO)\n", "", ""},
    {ExtraFormat::left_right_right_left, {{"lr", "rl"}, RowGap::shared_frame}, Squeeze::nothing, false,
     "w8403: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (EXTRA)\n", "",
     "TRY ALSO TO CREATE LEFT-RIGHT IMAGES INSTEAD OF SIDE-BY-SIDE\n"},
};
// clang-format on

constexpr const char* kNoMemoryInterlaced =
    "w6921: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (INTERLACED)\n";
constexpr const char* kNoMemoryMpo = "w7129: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (MPO)\n";

const TiledFormat* find_tiled_format(ExtraFormat format) {
    const auto* row = std::find_if(std::begin(kTiledFormats), std::end(kTiledFormats),
                                   [format](const TiledFormat& tiled) { return tiled.format == format; });
    return row == std::end(kTiledFormats) ? nullptr : row;
}

[[noreturn]] void fail_for_memory(const WarpState& warp, const char* reason, const char* advice = "") {
    end_run_without_picture_memory(warp.voice.console(), reason, advice);
}

/// A canvas in the colour of the frame; empty when the memory is not there.
Bitmap framed_canvas(const WarpState& warp, int width, int height) {
    Bitmap canvas = Bitmap::create(width, height);
    // The library hands out black; only another colour has to be filled in.
    if (canvas && warp.frame.colour != Colour{}) {
        fill(canvas.picture(), warp.frame.colour);
    }
    return canvas;
}

/// Lines and texts of one row of pictures.
void draw_cell_row(const WarpState& warp, const CellRow& row, Picture canvas) {
    std::vector<CaptionPlace> captions;
    for (const PlacedView& placed : row.views) {
        draw_thin_line(warp, canvas, placed.column, placed.row);
        if (row.has_bottom_frame) {
            captions.push_back(caption_place(warp, placed.column, placed.view));
        }
    }
    draw_cell_texts(warp, clipped(canvas, 0, row.bottom, canvas.width, row.height), captions);
}

void draw_views(const WarpState& warp, const CellRow& row, Picture canvas) {
    const StereoPicture pair = warp.pair();
    for (const PlacedView& placed : row.views) {
        copy_clipped(placed.view == View::left ? pair.left : pair.right, canvas, placed.column, placed.row);
    }
}

/// Everything but the pictures comes first: cells may overlap.
Bitmap compose_tiled(const WarpState& warp, const TiledFormat& format, const TiledLayout& layout) {
    Bitmap canvas = framed_canvas(warp, layout.width, layout.height);
    if (!canvas) {
        fail_for_memory(warp, format.no_memory, format.advice);
    }
    for (const CellRow& row : layout.rows) {
        draw_cell_row(warp, row, canvas.picture());
    }
    for (const CellRow& row : layout.rows) {
        draw_views(warp, row, canvas.picture());
    }
    return canvas;
}

Bitmap squeeze_or_end(const WarpState& warp, Bitmap canvas, const TiledFormat& format) {
    if (format.squeeze == Squeeze::nothing) {
        return canvas;
    }
    Bitmap half = squeezed(canvas, format.squeeze);
    if (!half) {
        fail_for_memory(warp, format.no_memory_squeezed);
    }
    return half;
}

/// Without texts and line: they would be torn apart.
Bitmap compose_interlaced(WarpState& warp) {
    const CanvasLayout layout = anaglyph_layout(warp);
    Bitmap canvas = framed_canvas(warp, layout.width, layout.height);
    if (!canvas) {
        fail_for_memory(warp, kNoMemoryInterlaced);
    }
    interlace_rows(warp.pair(), canvas.picture(), layout.picture_row, layout.left_picture_column,
                   layout.right_picture_column);
    return canvas;
}

/// The 16-bit form of a format.
Bitmap compose_deep(WarpState& warp, const TiledFormat& format, const DeepViews& deep) {
    const TiledLayout layout = tiled_layout(warp, format.tiling);
    const Bitmap canvas = compose_tiled(warp, format, layout);
    std::vector<PlacedDeepView> views;
    for (const CellRow& row : layout.rows) {
        for (const PlacedView& placed : row.views) {
            views.push_back({placed.view == View::left ? deep.left : deep.right, placed.column, placed.row});
        }
    }
    Bitmap picture = deepened(canvas, views);
    if (!picture) {
        fail_for_memory(warp, kNoMemoryDeep);
    }
    return squeeze_or_end(warp, std::move(picture), format);
}

/// Whether the Exif data of that file are taken over as they stand.
bool hands_exif_on(const ParameterSet& parameters, const std::string& source) {
    const std::string suffix = usual_suffix(source);
    return parameters.meta_transfer != 0 && (suffix == ".jpg" || suffix == ".mpo");
}

MpoMetadata metadata_of(const WarpState& warp, const Bitmap& view, const std::string& source) {
    MpoMetadata metadata;
    metadata.width = view.width();
    metadata.height = view.height();
    metadata.keeps_orientation = warp.keeps_orientation;
    metadata.copyright = warp.parameters.exif_copyright;
    metadata.source = hands_exif_on(warp.parameters, source) ? source : std::string();
    metadata.capture_time = capture_time_text(source);
    metadata.exposure_time = exif_fraction(source, ExifFractionTag::exposure_time);
    metadata.f_number = exif_fraction(source, ExifFractionTag::f_number);
    return metadata;
}

StoreResult write_multi_picture(WarpState& warp, const std::string& file, const SourceFiles& sources) {
    const std::array<CanvasLayout, 2> layouts = {single_view_layout(warp, View::left),
                                                 single_view_layout(warp, View::right)};
    const SaveOptions options(warp.parameters);
    std::array<Bitmap, 2> views;
    std::array<std::optional<EncodedPicture>, 2> encoded;
#pragma omp parallel for schedule(static, 1)
    for (int i = 0; i < 2; ++i) {
        const auto index = static_cast<std::size_t>(i);
        views[index] = compose_view(warp, layouts[index], i == 0 ? View::left : View::right);
        if (views[index]) {
            encoded[index].emplace(encode_camera_jpeg(views[index], options));
        }
    }
    if (!views[0] || !views[1]) {
        fail_for_memory(warp, kNoMemoryMpo);
    }
    const auto joined = join_as_mpo(encoded[0]->bytes(), encoded[1]->bytes(),
                                    metadata_of(warp, views[0], sources.left), warp.voice);
    return result_of(file,
                     joined ? write_file_whole(file, *joined) : std::string("the picture cannot be encoded"));
}

}  // namespace

Bitmap compose_extra(WarpState& warp, ExtraFormat format) {
    if (format == ExtraFormat::interlaced) {
        return compose_interlaced(warp);
    }
    const TiledFormat* tiled = find_tiled_format(format);
    if (tiled == nullptr) {
        return {};
    }
    const TiledLayout layout = tiled_layout(warp, tiled->tiling);
    return squeeze_or_end(warp, compose_tiled(warp, *tiled, layout), *tiled);
}

StoreResult write_extra(WarpState& warp, const std::string& file, const SourceFiles& sources) {
    const auto format = static_cast<ExtraFormat>(warp.parameters.extra_output);
    if (format == ExtraFormat::multi_picture) {
        return write_multi_picture(warp, file, sources);
    }
    const SaveOptions options(warp.parameters);
    const TiledFormat* tiled = find_tiled_format(format);
    if (tiled != nullptr && tiled->has_deep_form) {
        if (const DeepViews deep = find_deep_views(warp, sources, file)) {
            return result_of(file, save_deep_picture(compose_deep(warp, *tiled, deep), file, options));
        }
    }
    const Bitmap canvas = compose_extra(warp, format);
    return canvas ? result_of(file, save_picture(canvas, file, options)) : StoreResult{};
}

}  // namespace zemora
