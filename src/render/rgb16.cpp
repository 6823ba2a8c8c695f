#include "render/rgb16.h"

#include <algorithm>
#include <array>
#include <utility>

#include "config/setting_values.h"
#include "input/picture_file.h"
#include "numerics/turn.h"
#include "render/deep_rows.h"
#include "render/framing.h"
#include "render/save_picture.h"

namespace zemora {

namespace {

/// Which part of a source file is the view.
enum class SourcePart { whole, left_half, right_half };

/// Empty when the memory is not there, as what follows.
Bitmap turned(Bitmap view, int mode) {
    if (mode <= 0 || mode >= kTurnModes) {
        return view;
    }
    const bool exchanged = exchanges_sides(mode);
    const int width = view.width();
    const int height = view.height();
    Bitmap result = create_deep(exchanged ? height : width, exchanged ? width : height);
    if (result) {
        turn_pixels({view.bits(), view.pitch()}, width, height, kDeepBytes, mode,
                    {result.bits(), result.pitch()});
    }
    return result;
}

/// The view in a larger size, its corner pixels at the corners, as `rescale` does it.
Bitmap enlarged(const Bitmap& view, int width, int height, Colour background) {
    Bitmap result = create_deep(width, height);
    if (!result) {
        return result;
    }
    const DeepPicture target = deep_picture(result);
    const Sampler sampler(Kernel::bicubic, 1, 1.0F, background);
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

/// The view cut from its file.
Bitmap cut_from_file(Bitmap file, const InputGeometry& record, SourcePart part) {
    const int half = file.width() / 2;
    const int first = part == SourcePart::right_half ? half : 0;
    const int width = part == SourcePart::left_half ? half : file.width() - first;
    const bool cropped = record.crop_width > 0 && record.crop_height > 0;
    const int kept_width = cropped ? std::min(record.crop_width, width) : width;
    const int kept_height = cropped ? std::min(record.crop_height, file.height()) : file.height();
    if (kept_width == file.width() && kept_height == file.height()) {
        return file;
    }
    Bitmap kept = create_deep(kept_width, kept_height);
    if (kept) {
        copy_deep(deep_picture(file), deep_picture(kept), -first - (cropped ? record.crop_x : 0),
                  cropped ? -record.crop_y : 0);
    }
    return kept;
}

/// The view in its place of the common canvas.
Bitmap placed(Bitmap view, const InputGeometry& record) {
    const bool is_placed = record.frame_width > 0 && record.frame_height > 0;
    if (!is_placed || (record.frame_x == 0 && record.frame_y == 0 && record.frame_width == view.width() &&
                       record.frame_height == view.height())) {
        return view;
    }
    Bitmap canvas = create_deep(record.frame_width, record.frame_height);
    if (canvas) {
        copy_deep(deep_picture(view), deep_picture(canvas), record.frame_x, record.frame_y);
    }
    return canvas;
}

/// The view cut from its file, turned, enlarged and placed as the input did it with the 8-bit picture.
Bitmap prepare_source(Bitmap file, const InputGeometry& record, SourcePart part, Colour background) {
    Bitmap view = cut_from_file(std::move(file), record, part);
    view = view ? turned(std::move(view), record.rot_mir) : Bitmap();
    if (view && record.scaled_width > 0 && record.scaled_height > 0) {
        view = enlarged(view, record.scaled_width, record.scaled_height, background);
    }
    return view ? placed(std::move(view), record) : Bitmap();
}

/// The kept part of the warped frame.
Bitmap warp_deep(const WarpedPair& warp, const Bitmap& source, View view, ConstPicture plain,
                 const ColourChange* colours) {
    const bool is_left = view == View::left;
    const WarpPlan& plan = warp.plan;
    const PixelRectangle& kept = warp.kept;
    Bitmap result = create_deep(kept.width(), kept.height());
    if (!result || !source) {
        return {};
    }
    const PairTransform pair = make_transforms(plan, warp.correction);
    const Sampler sampler(kernel_of(plan.interpolation.kernel), plan.interpolation.tent_radius, plan.gamma,
                          plan.background);
    const bool fits = plain.width == source.width() && plain.height == source.height();
    DeepRows rows(pair[is_left ? 0 : 1], sampler, deep_picture(source), fits ? plain : ConstPicture());
    const TonePlan& tone = plan.tone;
    const int mode = !tone.is_applied ? 0 : (is_left ? tone.mode_left : tone.mode_right);
    for (int channel = 0; channel < kPixelBytes; ++channel) {
        rows.tone[static_cast<std::size_t>(kPixelBytes - 1 - channel)] =
            tone_plane(is_left ? tone.left : tone.right, mode, channel);
    }
    rows.rows.colours = colours;
    rows.rows.is_left = is_left;
    const DeepPicture target = deep_picture(result);
#pragma omp parallel for schedule(dynamic, 8)
    for (int y = 0; y < kept.height(); ++y) {
        warp_deep_row(rows, kept.bottom + y, kept.left, kept.width(), target.pixel(0, y));
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

Failure no_memory() {
    return Failure::out_of_memory(kNoMemoryDeep);
}

/// What the warp and the steps behind it made of a view; one of another size counts as not there.
void fit_to_shown(Bitmap& deep, ConstPicture shown, const WarpPlan& plan) {
    if (deep && (deep.width() != shown.width || deep.height() != shown.height)) {
        deep.reset();  // brought to another size behind the warp
    } else if (deep && plan.crop.cropp_output == setting::cropp_output::blanked) {
        blank_as_in(shown, plan.background, deep);
    }
}

}  // namespace

bool has_deep_form(const Finished& pair, const SaveOptions& options, const std::string& file) {
    return options.output_format == setting::output_format::tif_16_bits && !pair.eight_bits_only &&
           is_tiff_name(file);
}

Result<DeepPair> make_deep_pair(const WarpedPair& warp, const DeepInput& input) {
    const SourceFiles& sources = input.sources;
    if (sources.layout == SourceLayout::other) {
        return DeepPair();  // the views are not what the files show
    }
    const bool has_two_files = sources.layout == SourceLayout::two_files;
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
    for (const View view : {View::left, View::right}) {
        const bool is_left = view == View::left;
        const std::size_t i = is_left ? 0 : 1;
        if (!files[i]) {
            continue;
        }
        const Bitmap source = prepare_source(std::move(files[i]), is_left ? input.left : input.right,
                                             parts[i], warp.plan.background);
        Bitmap& result = is_left ? pair.left : pair.right;
        result =
            warp_deep(warp, source, view, is_left ? sources.views.left : sources.views.right, input.colours);
        if (!result) {
            return no_memory();
        }
    }
    return {std::move(pair)};
}

Result<DeepPair> make_deep_outputs(const WarpedPair& warp, const Finished& finished, const DeepInput& input) {
    Result<DeepPair> made = make_deep_pair(warp, input);
    if (!made) {
        return made;
    }
    DeepPair pair = std::move(*made);
    for (const auto& [view, mode] :
         {std::pair{&pair.left, finished.left_turn}, {&pair.right, finished.right_turn}}) {
        if (*view) {
            *view = turned(std::move(*view), mode);
            if (!*view) {
                return no_memory();
            }
        }
    }
    if (finished.is_exchanged) {
        std::swap(pair.left, pair.right);
    }
    fit_to_shown(pair.left, finished.left.picture, warp.plan);
    fit_to_shown(pair.right, finished.right.picture, warp.plan);
    return {std::move(pair)};
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
