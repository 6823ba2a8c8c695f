#include "render/extra_output.h"

#include <algorithm>
#include <array>
#include <optional>

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

/// Lines and texts of one row of pictures.
void draw_cell_row(const Finished& pair, const FrameSettings& frame, const CellRow& row, Picture canvas,
                   Notes& notes) {
    std::vector<CaptionPlace> captions;
    for (const PlacedView& placed : row.views) {
        draw_thin_line(pair, frame.thin_line, canvas, placed.column, placed.row);
        if (row.has_bottom_frame) {
            captions.push_back(caption_place(pair, frame, placed.column, placed.view));
        }
    }
    draw_cell_texts(pair.texts, frame, pair.height(),
                    clipped(canvas, 0, row.bottom, canvas.width, row.height), captions, notes);
}

/// Everything but the pictures comes first: cells may overlap. Empty when the memory is not there.
Bitmap compose_tiled(const Finished& pair, const TiledLayout& layout, Notes& notes) {
    Bitmap canvas = framed_canvas(layout.width, layout.height, layout.frame.colour);
    if (!canvas) {
        return canvas;
    }
    for (const CellRow& row : layout.rows) {
        draw_cell_row(pair, layout.frame, row, canvas.picture(), notes);
    }
    for (const CellRow& row : layout.rows) {
        for (const PlacedView& placed : row.views) {
            copy_clipped(pair.view(placed.view).picture, canvas.picture(), placed.column, placed.row);
        }
    }
    return canvas;
}

Result<Bitmap> squeezed_canvas(Bitmap canvas, const TiledFormat& format) {
    if (format.squeeze == Squeeze::nothing) {
        return {std::move(canvas)};
    }
    Bitmap half = squeezed(canvas, format.squeeze);
    if (!half) {
        return Failure::out_of_memory(format.no_memory_squeezed);
    }
    return {std::move(half)};
}

/// Without texts and line: they would be torn apart.
Result<Bitmap> compose_interlaced(const Finished& pair, const FrameSettings& frame, Notes& notes) {
    const CanvasLayout layout = anaglyph_layout(pair, frame);
    tell_frame_faults(layout.faults, notes);
    Bitmap canvas = framed_canvas(layout.width, layout.height, layout.frame.colour);
    if (!canvas) {
        return Failure::out_of_memory(kNoMemoryInterlaced);
    }
    interlace_rows(pair.views(), canvas.picture(), layout.picture_row, layout.left_picture_column,
                   layout.right_picture_column);
    return {std::move(canvas)};
}

/// The format with 8 bits, or with 16 where there are deep views.
Result<Bitmap> compose_tiled_format(const Finished& pair, const FrameSettings& frame,
                                    const TiledFormat& format, const DeepViews& deep, Notes& notes) {
    const TiledLayout layout = tiled_layout(pair, frame, format.tiling);
    tell_frame_faults(layout.faults, notes);
    Bitmap canvas = compose_tiled(pair, layout, notes);
    if (!canvas) {
        return Failure::out_of_memory(format.no_memory, format.advice);
    }
    if (!deep) {
        return squeezed_canvas(std::move(canvas), format);
    }
    std::vector<PlacedDeepView> views;
    for (const CellRow& row : layout.rows) {
        for (const PlacedView& placed : row.views) {
            views.push_back({placed.view == View::left ? deep.left : deep.right, placed.column, placed.row});
        }
    }
    Bitmap picture = deepened(canvas, views);
    if (!picture) {
        return Failure::out_of_memory(kNoMemoryDeep);
    }
    return squeezed_canvas(std::move(picture), format);
}

/// The Exif data of some files are taken over as they stand.
bool has_exif_for_mpo(const std::string& source) {
    const std::string suffix = usual_suffix(source);
    return suffix == ".jpg" || suffix == ".mpo";
}

MpoMetadata metadata_of(const ExtraOptions& options, const Bitmap& view, const std::string& source) {
    MpoMetadata metadata;
    metadata.width = view.width();
    metadata.height = view.height();
    metadata.keeps_orientation = options.keeps_orientation;
    metadata.copyright = options.copyright;
    metadata.source = options.hands_exif_on && has_exif_for_mpo(source) ? source : std::string();
    metadata.capture_time = capture_time_text(source);
    metadata.exposure_time = exif_fraction(source, ExifFractionTag::exposure_time);
    metadata.f_number = exif_fraction(source, ExifFractionTag::f_number);
    return metadata;
}

Result<StoreResult> write_multi_picture(const Finished& pair, const FrameSettings& frame,
                                        const std::string& file, const std::string& source,
                                        const ExtraOptions& options, Notes& notes) {
    const CanvasLayout left = single_view_layout(pair, frame, View::left);
    const std::array<CanvasLayout, 2> layouts = {left, single_view_layout(pair, left.frame, View::right)};
    const int verbosity = notes.verbose();
    std::array<KeptNotes, 2> kept = {KeptNotes(notes.messages(), verbosity),
                                     KeptNotes(notes.messages(), verbosity)};
    std::array<Bitmap, 2> views;
    std::array<std::optional<EncodedPicture>, 2> encoded;
    for (const CanvasLayout& layout : layouts) {
        tell_frame_faults(layout.faults, notes);
    }
#pragma omp parallel for schedule(static, 1)
    for (int i = 0; i < 2; ++i) {
        const auto index = static_cast<std::size_t>(i);
        views[index] = compose_view(pair, layouts[index], i == 0 ? View::left : View::right, kept[index]);
        if (views[index]) {
            encoded[index].emplace(encode_camera_jpeg(views[index], options.save));
        }
    }
    for (KeptNotes& told : kept) {
        told.tell(notes);
    }
    if (!views[0] || !views[1]) {
        return Failure::out_of_memory(kNoMemoryMpo);
    }
    const auto joined =
        join_as_mpo(encoded[0]->bytes(), encoded[1]->bytes(), metadata_of(options, views[0], source), notes);
    return result_of(file,
                     joined ? write_file_whole(file, *joined) : std::string("the picture cannot be encoded"));
}

}  // namespace

bool has_deep_form(ExtraFormat format) {
    const TiledFormat* tiled = find_tiled_format(format);
    return tiled != nullptr && tiled->has_deep_form;
}

FrameSettings frame_behind_extra(const Finished& pair, const FrameSettings& frame, ExtraFormat format) {
    if (format == ExtraFormat::multi_picture) {
        return view_layouts(pair, frame).right.frame;
    }
    if (format == ExtraFormat::interlaced) {
        return anaglyph_layout(pair, frame).frame;
    }
    const TiledFormat* tiled = find_tiled_format(format);
    return tiled != nullptr ? tiled_layout(pair, frame, tiled->tiling).frame : frame;
}

Result<Bitmap> compose_extra(const Finished& pair, const FrameSettings& frame, ExtraFormat format,
                             Notes& notes) {
    if (format == ExtraFormat::interlaced) {
        return compose_interlaced(pair, frame, notes);
    }
    const TiledFormat* tiled = find_tiled_format(format);
    return tiled != nullptr ? compose_tiled_format(pair, frame, *tiled, {}, notes) : Bitmap();
}

Result<StoreResult> write_extra(const Finished& pair, const FrameSettings& frame, const std::string& file,
                                const SourceFiles& sources, const DeepViews& deep,
                                const ExtraOptions& options, Notes& notes) {
    if (options.format == ExtraFormat::multi_picture) {
        return write_multi_picture(pair, frame, file, sources.left, options, notes);
    }
    const bool is_deep = deep && has_deep_form(options.format);
    const Result<Bitmap> canvas =
        is_deep ? compose_tiled_format(pair, frame, *find_tiled_format(options.format), deep, notes)
                : compose_extra(pair, frame, options.format, notes);
    if (!canvas) {
        return canvas.failure();
    }
    if (!*canvas) {
        return StoreResult{};
    }
    return result_of(file, is_deep ? save_deep_picture(*canvas, file, options.save)
                                   : save_picture(*canvas, file, options.save));
}

}  // namespace zemora
