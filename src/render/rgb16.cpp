#include "render/rgb16.h"

#include <algorithm>
#include <array>
#include <utility>

#include "input/picture_file.h"
#include "numerics/turn.h"
#include "render/deep_rows.h"
#include "render/framing.h"
#include "render/save_picture.h"

namespace zemora {

namespace {

/// Which part of a source file is the view.
enum class SourcePart { whole, left_half, right_half };

[[noreturn]] void fail_for_memory(const WarpState& warp) {
    end_run_without_picture_memory(warp.voice.console(), kNoMemoryDeep);
}

Bitmap create_or_end(const WarpState& warp, int width, int height) {
    Bitmap bitmap = create_deep(width, height);
    if (!bitmap) {
        fail_for_memory(warp);
    }
    return bitmap;
}

Bitmap turned(const WarpState& warp, Bitmap view, int mode) {
    if (mode <= 0 || mode >= kTurnModes) {
        return view;
    }
    const bool exchanged = exchanges_sides(mode);
    const int width = view.width();
    const int height = view.height();
    Bitmap result = create_or_end(warp, exchanged ? height : width, exchanged ? width : height);
    turn_pixels({view.bits(), view.pitch()}, width, height, kDeepBytes, mode,
                {result.bits(), result.pitch()});
    return result;
}

/// The view in a larger size, its corner pixels at the corners, as `rescale` does it.
Bitmap enlarged(const WarpState& warp, const Bitmap& view, int width, int height) {
    Bitmap result = create_or_end(warp, width, height);
    const DeepPicture target = deep_picture(result);
    const Sampler sampler(Kernel::bicubic, 1, 1.0F, warp.passe_colour);
    const DeepRows rows(ViewTransform(), sampler, deep_picture(view), {});
    const auto place = [](int to, int size, int from_size) {
        return size > 1 ? static_cast<std::int32_t>(std::int64_t{kPositionUnit} * to * (from_size - 1) /
                                                    (size - 1))
                        : 0;
    };
#pragma omp parallel for schedule(static)
    for (int y = 0; y < height; ++y) {
        const std::int32_t from_y = place(y, height, view.height());
        for (int x = 0; x < width; ++x) {
            sample_deep(rows, place(x, width, view.width()), from_y, target.pixel(x, y));
        }
    }
    return result;
}

/// The view cut from its file, turned, enlarged and placed as the input did it with the 8-bit picture.
Bitmap prepare_source(const WarpState& warp, Bitmap file, const ViewGeometry& record, SourcePart part) {
    const int half = file.width() / 2;
    const int first = part == SourcePart::right_half ? half : 0;
    const int width = part == SourcePart::left_half ? half : file.width() - first;
    const bool cropped = record.crop_width > 0 && record.crop_height > 0;
    const int kept_width = cropped ? std::min(record.crop_width, width) : width;
    const int kept_height = cropped ? std::min(record.crop_height, file.height()) : file.height();
    Bitmap view = std::move(file);
    if (kept_width != view.width() || kept_height != view.height()) {
        Bitmap kept = create_or_end(warp, kept_width, kept_height);
        copy_deep(deep_picture(view), deep_picture(kept), -first - (cropped ? record.crop_x : 0),
                  cropped ? -record.crop_y : 0);
        view = std::move(kept);
    }
    view = turned(warp, std::move(view), record.rot_mir);
    if (record.scaled_width > 0 && record.scaled_height > 0) {
        view = enlarged(warp, view, record.scaled_width, record.scaled_height);
    }
    const bool is_placed = record.frame_width > 0 && record.frame_height > 0;
    if (is_placed && (record.frame_x != 0 || record.frame_y != 0 || record.frame_width != view.width() ||
                      record.frame_height != view.height())) {
        Bitmap canvas = create_or_end(warp, record.frame_width, record.frame_height);
        copy_deep(deep_picture(view), deep_picture(canvas), record.frame_x, record.frame_y);
        view = std::move(canvas);
    }
    return view;
}

/// The kept part of the warped frame.
Bitmap warp_deep(const WarpState& warp, const Bitmap& source, View view, ConstPicture plain) {
    const bool is_left = view == View::left;
    const ViewGeometry& record = is_left ? warp.left_record : warp.right_record;
    Bitmap result = create_or_end(warp, record.kept_width, record.kept_height);
    const PairTransform pair = make_transforms(warp, warp.latest_correction, record.height, record.width);
    const Sampler sampler(kernel_of(warp.latest_interpolation), warp.filter_radius, warp.latest_gamma,
                          warp.passe_colour);
    const bool fits = plain.width == source.width() && plain.height == source.height();
    DeepRows rows(pair[is_left ? 0 : 1], sampler, deep_picture(source), fits ? plain : ConstPicture());
    for (int channel = 0; channel < kPixelBytes; ++channel) {
        rows.tone[static_cast<std::size_t>(kPixelBytes - 1 - channel)] =
            tone_plane(is_left ? warp.left_tone : warp.right_tone, record.tone_mode, channel);
    }
    rows.rows.colours = warp.colours ? &*warp.colours : nullptr;
    rows.rows.is_left = is_left;
    const DeepPicture target = deep_picture(result);
#pragma omp parallel for schedule(dynamic, 8)
    for (int y = 0; y < record.kept_height; ++y) {
        warp_deep_row(rows, record.kept_y + y, record.kept_x, record.kept_width, target.pixel(0, y));
    }
    return result;
}

/// The source files, decoded at the same time; empty where a file is not deep. One file of both views comes
/// once.
std::array<Bitmap, 2> load_sources(const SourceFiles& sources, bool has_two_files) {
    std::array<Bitmap, 2> loaded;
    const int count = has_two_files ? 2 : 1;
#pragma omp parallel for schedule(static, 1)
    for (int i = 0; i < count; ++i) {
        Bitmap file = load_picture(i == 0 ? sources.left : sources.right, true).bitmap;
        if (is_deep(file)) {
            loaded[static_cast<std::size_t>(i)] = std::move(file);
        }
    }
    return loaded;
}

/// What `CroppOutput` 1 blanked in the finished views is blank in 16 bits too.
void blank_as_in(ConstPicture plain, Colour background, const Bitmap& deep) {
    const DeepPicture target = deep_picture(deep);
    for (int y = 0; y < plain.height; ++y) {
        for (int x = 0; x < plain.width; ++x) {
            if (is_colour(plain.pixel(x, y), background)) {
                std::uint16_t* pixel = target.pixel(x, y);
                pixel[0] = deep_level(background.red);
                pixel[1] = deep_level(background.green);
                pixel[2] = deep_level(background.blue);
            }
        }
    }
}

/// Puts the finished deep views beside those of 8 bits.
void make_deep_outputs(WarpState& warp, const SourceFiles& sources) {
    DeepPair pair = make_deep_pair(warp, sources);
    const std::array turns = {warp.left_turn, warp.right_turn};
    const std::array views = {&pair.left, &pair.right};
    for (std::size_t i = 0; i < views.size(); ++i) {
        if (*views[i]) {
            *views[i] = turned(warp, std::move(*views[i]), turns[i]);
        }
    }
    if (warp.inverse_output == 1) {
        std::swap(pair.left, pair.right);
    }
    const StereoPicture plain = warp.pair();
    for (const auto& [view, shown] : {std::pair{&pair.left, plain.left}, {&pair.right, plain.right}}) {
        if (*view && (view->width() != shown.width || view->height() != shown.height)) {
            view->reset();  // brought to another size behind the warp
        } else if (*view && warp.cropp_output == setting::cropp_output::blanked) {
            blank_as_in(shown, warp.passe_colour, *view);
        }
    }
    warp.deep_left = std::move(pair.left);
    warp.deep_right = std::move(pair.right);
}

bool wants_deep(const WarpState& warp, const std::string& file) {
    return warp.parameters.output_format == setting::output_format::tif_16_bits && !warp.eight_bits_only &&
           is_tiff_name(file);
}

}  // namespace

DeepPair make_deep_pair(const WarpState& warp, const SourceFiles& sources) {
    const int layout = warp.parameters.stereo_image_input;
    const bool has_two_files = layout == setting::stereo_image_input::two_files;
    if (!has_two_files && layout != setting::stereo_image_input::side_by_side) {
        return {};  // the views are not what the files show
    }
    std::array<Bitmap, 2> files = load_sources(sources, has_two_files);
    std::array parts = {SourcePart::whole, SourcePart::whole};
    if (!has_two_files) {
        parts = {SourcePart::left_half, SourcePart::right_half};
        if (sources.halves_exchanged) {
            std::swap(parts[0], parts[1]);
        }
        files[1] = files[0] ? files[0].clone() : Bitmap();
    }
    DeepPair pair;
    if (files[0]) {
        const Bitmap view = prepare_source(warp, std::move(files[0]), warp.left_record, parts[0]);
        pair.left = warp_deep(warp, view, View::left, sources.views.left);
    }
    if (files[1]) {
        const Bitmap view = prepare_source(warp, std::move(files[1]), warp.right_record, parts[1]);
        pair.right = warp_deep(warp, view, View::right, sources.views.right);
    }
    return pair;
}

DeepViews find_deep_views(WarpState& warp, const SourceFiles& sources, const std::string& file) {
    if (!wants_deep(warp, file)) {
        return {};
    }
    if (!warp.has_looked_for_deep) {
        make_deep_outputs(warp, sources);
        warp.has_looked_for_deep = true;
    }
    return {warp.deep_left ? &warp.deep_left : nullptr, warp.deep_right ? &warp.deep_right : nullptr};
}

Bitmap deepened(const Bitmap& canvas, std::span<const PlacedDeepView> views) {
    Bitmap deep = widened(canvas.picture());
    if (deep) {
        for (const PlacedDeepView& placed : views) {
            copy_deep(deep_picture(*placed.view), deep_picture(deep), placed.column, placed.row);
        }
    }
    return deep;
}

}  // namespace zemora
