#include "render/rgb16.h"

#include <FreeImage.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "input/picture_file.h"
#include "numerics/turn.h"
#include "render/sample_pixel.h"
#include "render/save_picture.h"
#include "render/tone.h"
#include "render/warp_plan.h"

namespace zemora {

namespace {

constexpr int kDeepBytes = 6;  ///< Bytes of a pixel: red, green, blue of 16 bits each.

// Values of `StereoImageInput` whose files hold the views as they are.
constexpr int kSideBySide = 1;
constexpr int kTwoFiles = 2;

Bitmap create_deep(int width, int height) {
    return width > 0 && height > 0 ? Bitmap(FreeImage_AllocateT(FIT_RGB16, width, height)) : Bitmap();
}

std::uint8_t* deep_pixel(const Bitmap& bitmap, int x, int y) {
    return bitmap.bits() + y * bitmap.pitch() + static_cast<std::ptrdiff_t>(x) * kDeepBytes;
}

/// Copies the part of `source` from (source_x, source_y) on to (x, y) of `target`, as far as both reach.
void copy_deep(const Bitmap& source, int source_x, int source_y, int width, int height, const Bitmap& target,
               int x, int y) {
    const int left = std::max({0, -source_x, -x});
    const int bottom = std::max({0, -source_y, -y});
    const int right = std::min({width, source.width() - source_x, target.width() - x});
    const int top = std::min({height, source.height() - source_y, target.height() - y});
    for (int row = bottom; row < top && left < right; ++row) {
        std::memcpy(deep_pixel(target, x + left, y + row),
                    deep_pixel(source, source_x + left, source_y + row),
                    static_cast<std::size_t>(right - left) * kDeepBytes);
    }
}

/// Blue, green, red in 16 bits.
using DeepValues = std::array<std::uint16_t, kPixelBytes>;

void store_deep(const DeepValues& values, std::uint8_t* pixel) {
    const DeepValues in_file_order = {values[2], values[1], values[0]};
    std::memcpy(pixel, in_file_order.data(), kDeepBytes);
}

/// What the final warp does to the colours of a view.
class DeepTone {
public:
    DeepTone(const WarpState& warp, View view)
        : colours_(warp.colours ? &*warp.colours : nullptr), is_left_(view == View::left) {
        const ToneTables& tables = is_left_ ? warp.left_tone : warp.right_tone;
        const int mode = is_left_ ? warp.left_record.tone_mode : warp.right_record.tone_mode;
        for (int channel = 0; channel < kPixelBytes; ++channel) {
            planes_[static_cast<std::size_t>(channel)] = tone_plane(tables, mode, channel);
        }
    }
    void change(DeepValues& values) const {
        for (std::size_t c = 0; c < values.size(); ++c) {
            if (planes_[c] != nullptr) {
                values[c] = apply_tone(*planes_[c], values[c]);
            }
        }
        if (colours_ != nullptr) {
            colours_->change(is_left_, values);
        }
    }

private:
    std::array<const std::array<std::uint16_t, ToneTables::kLevels>*, kPixelBytes> planes_{};
    const ColourChange* colours_;
    bool is_left_;
};

std::uint16_t deep_channel(const std::uint8_t* pixel, int channel) {
    std::uint16_t value = 0;
    std::memcpy(&value, pixel + 2 * channel, sizeof(value));
    return value;
}

/// A deep view with the knowledge of what in it is no picture.
struct DeepSource {
    const Bitmap& bitmap;
    ConstPicture plain;  ///< The view with 8 bits; empty, or of the same size.
    Colour passe_colour;

    [[nodiscard]] bool is_background(int x, int y) const {
        return plain.bits != nullptr && is_colour(plain.pixel(x, y), passe_colour);
    }
};

/// Bicubic sample round (column, row), the nearest pixel; taps beyond the border are those at the border,
/// taps in the background are the nearest pixel.
DeepValues sample_deep(const DeepSource& view, const Position& p, int centre_column, int centre_row) {
    const Bitmap& source = view.bitmap;
    const auto& across = bicubic_weights()[static_cast<std::size_t>(p.x & 127)];
    const auto& up = bicubic_weights()[static_cast<std::size_t>(p.y & 127)];
    std::array<std::int64_t, kPixelBytes> sum{};
    for (int j = 0; j < 4; ++j) {
        const int row = std::clamp(static_cast<int>(p.y >> 7) - 1 + j, 0, source.height() - 1);
        for (int i = 0; i < 4; ++i) {
            const int column = std::clamp(static_cast<int>(p.x >> 7) - 1 + i, 0, source.width() - 1);
            const std::uint8_t* pixel = view.is_background(column, row)
                                            ? deep_pixel(source, centre_column, centre_row)
                                            : deep_pixel(source, column, row);
            const std::int64_t weight = across[static_cast<std::size_t>(i)] * up[static_cast<std::size_t>(j)];
            for (int c = 0; c < kPixelBytes; ++c) {
                sum[static_cast<std::size_t>(c)] += weight * deep_channel(pixel, kPixelBytes - 1 - c);
            }
        }
    }
    DeepValues values;
    for (std::size_t c = 0; c < sum.size(); ++c) {
        values[c] = static_cast<std::uint16_t>(std::clamp<std::int64_t>(sum[c] >> 14, 0, 65535));
    }
    return values;
}

/// The view in a larger size, its corner pixels at the corners, as `rescale` does it.
Bitmap enlarge_deep(const Bitmap& view, int width, int height) {
    Bitmap result = create_deep(width, height);
    if (!result) {
        return result;
    }
    const DeepSource source{view, {}, {}};
    constexpr std::int64_t kOne = 128;  // steps of a position in a pixel
    const auto place = [](int to, int size, int from_size) {
        return size > 1 ? kOne * to * (from_size - 1) / (size - 1) : 0;
    };
#pragma omp parallel for schedule(static)
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Position p{place(x, width, view.width()), place(y, height, view.height())};
            store_deep(sample_deep(source, p, static_cast<int>(p.x / kOne), static_cast<int>(p.y / kOne)),
                       deep_pixel(result, x, y));
        }
    }
    return result;
}

/// The view in the frame that both views share.
Bitmap place_deep(Bitmap view, const ViewGeometry& record) {
    const bool placed = record.frame_width > 0 && record.frame_height > 0;
    if (!placed || (record.frame_x == 0 && record.frame_y == 0 && record.frame_width == view.width() &&
                    record.frame_height == view.height())) {
        return view;
    }
    Bitmap canvas = create_deep(record.frame_width, record.frame_height);
    if (canvas) {
        copy_deep(view, 0, 0, view.width(), view.height(), canvas, record.frame_x, record.frame_y);
    }
    return canvas;
}

/// The view cut from its file, turned, enlarged and placed as the input did it with the 8-bit picture.
Bitmap prepare_source(const Bitmap& file, const ViewGeometry& record, SourcePart part) {
    const int half = file.width() / 2;
    const int first = part == SourcePart::right_half ? half : 0;
    const int width = part == SourcePart::left_half ? half : file.width() - first;
    const bool cropped = record.crop_width > 0 && record.crop_height > 0;
    const int kept_width = cropped ? std::min(record.crop_width, width) : width;
    const int kept_height = cropped ? std::min(record.crop_height, file.height()) : file.height();
    Bitmap view = create_deep(kept_width, kept_height);
    if (!view) {
        return view;
    }
    copy_deep(file, first + (cropped ? record.crop_x : 0), cropped ? record.crop_y : 0, kept_width,
              kept_height, view, 0, 0);
    if (record.rot_mir > 0 && record.rot_mir < kTurnModes) {
        const bool exchanged = exchanges_sides(record.rot_mir);
        Bitmap turned =
            create_deep(exchanged ? kept_height : kept_width, exchanged ? kept_width : kept_height);
        if (turned) {
            turn_pixels({view.bits(), view.pitch()}, kept_width, kept_height, kDeepBytes, record.rot_mir,
                        {turned.bits(), turned.pitch()});
        }
        view = std::move(turned);
    }
    if (view && record.scaled_width > 0 && record.scaled_height > 0) {
        view = enlarge_deep(view, record.scaled_width, record.scaled_height);
    }
    return view ? place_deep(std::move(view), record) : Bitmap();
}

/// The kept part of the warped frame.
Bitmap warp_deep(const WarpState& warp, const Bitmap& source, View view, ConstPicture plain) {
    const ViewGeometry& record = view == View::left ? warp.left_record : warp.right_record;
    Bitmap result = create_deep(record.kept_width, record.kept_height);
    if (!result) {
        return result;
    }
    const PairTransform pair = make_transforms(warp, warp.latest_correction, record.height, record.width);
    const ViewTransform& transform = pair[view == View::left ? 0 : 1];
    const DeepTone tone(warp, view);
    const int width = source.width();
    const int height = source.height();
    const bool fits = plain.width == width && plain.height == height;
    const DeepSource deep{source, fits ? plain : ConstPicture(), warp.passe_colour};
#pragma omp parallel for schedule(dynamic, 8)
    for (int y = 0; y < record.kept_height; ++y) {
        for (int x = 0; x < record.kept_width; ++x) {
            const Position p = transform.map(record.kept_x + x, record.kept_y + y);
            const std::int64_t near_x = (p.x + 64) >> 7;
            const std::int64_t near_y = (p.y + 64) >> 7;
            if (near_x < 0 || near_y < 0 || near_x >= width || near_y >= height) {
                continue;
            }
            const auto column = static_cast<int>(near_x);
            const auto row = static_cast<int>(near_y);
            if (!deep.is_background(column, row)) {
                DeepValues values = sample_deep(deep, p, column, row);
                tone.change(values);
                store_deep(values, deep_pixel(result, x, y));
            }
        }
    }
    return result;
}

/// Black round the picture, as wide as the frame of the 8-bit output. An exchange of the outputs comes before
/// their frames: `FrameFloating` moves a view by the side where it stands then.
Bitmap frame_deep(const WarpState& warp, Bitmap picture, View view) {
    const FrameSettings& frame = warp.frame;
    const int height = frame.fill_height != 0 ? std::max(frame.fill_height, picture.height())
                                              : picture.height() + frame.top + frame.bottom;
    const int width = frame.fill_width != 0 ? std::max(frame.fill_width, picture.width())
                                            : picture.width() + 2 * frame.left_right;
    const int margin = (width - picture.width()) / 2;
    int share = frame.floating / 2;
    if (std::abs(share) > margin) {
        warp.voice.say<Msg::warpimage_frame_floating_reduced>();
        share = std::clamp(share, -margin, margin);
    }
    if (width == picture.width() && height == picture.height()) {
        return picture;
    }
    const bool stands_left = (view == View::left) != (warp.inverse_output == 1);
    const int excess = height - picture.height();
    const int bottom = frame.fill_height != 0 ? excess - excess / 2 : frame.bottom;
    Bitmap canvas = create_deep(width, height);
    if (canvas) {
        copy_deep(picture, 0, 0, picture.width(), picture.height(), canvas,
                  margin + (stands_left ? -share : share), bottom);
    }
    return canvas;
}

[[noreturn]] void fail_for_memory(const WarpState& warp) {
    end_run_without_picture_memory(warp.voice.console(),
                                   "13668: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (RGB16)\n");
}

}  // namespace

Bitmap make_rgb16(const WarpState& warp, const std::string& file, View view, SourcePart part,
                  ConstPicture plain) {
    LoadedPicture loaded = load_picture(file, true);
    if (!loaded.bitmap || FreeImage_GetImageType(loaded.bitmap.handle()) != FIT_RGB16) {
        return {};
    }
    Bitmap picture =
        prepare_source(loaded.bitmap, view == View::left ? warp.left_record : warp.right_record, part);
    loaded.bitmap.reset();
    if (picture) {
        picture = warp_deep(warp, picture, view, plain);
    }
    if (picture) {
        picture = frame_deep(warp, std::move(picture), view);
    }
    if (!picture) {
        fail_for_memory(warp);
    }
    return picture;
}

DeepPair make_deep_pair(const WarpState& warp, const SourceFiles& sources) {
    const ParameterSet& parameters = warp.parameters;
    const bool single_views = parameters.stereo_image_input == kTwoFiles;
    if (!single_views && parameters.stereo_image_input != kSideBySide) {
        return {};  // the views are not what the files show
    }
    const bool inverse = sources.halves_exchanged;
    const SourcePart left_part =
        single_views ? SourcePart::whole : (inverse ? SourcePart::right_half : SourcePart::left_half);
    const SourcePart right_part =
        single_views ? SourcePart::whole : (inverse ? SourcePart::left_half : SourcePart::right_half);
    DeepPair pair;
    pair.left = make_rgb16(warp, sources.left, View::left, left_part, sources.views.left);
    pair.right = make_rgb16(warp, single_views ? sources.right : sources.left, View::right, right_part,
                            sources.views.right);
    return pair;
}

bool wants_deep(const WarpState& warp, const std::string& file) {
    constexpr int kDeepFormat = 7;
    return warp.parameters.output_format == kDeepFormat && !warp.eight_bits_only && is_tiff_name(file);
}

DeepPair make_deep_outputs(const WarpState& warp, const SourceFiles& sources) {
    DeepPair pair = make_deep_pair(warp, sources);
    if (warp.inverse_output == 1) {
        std::swap(pair.left, pair.right);
    }
    return pair;
}

Bitmap join_deep(const Bitmap& first, const Bitmap& second) {
    Bitmap joined = create_deep(first.width() + second.width(), std::max(first.height(), second.height()));
    if (joined) {
        copy_deep(first, 0, 0, first.width(), first.height(), joined, 0, 0);
        copy_deep(second, 0, 0, second.width(), second.height(), joined, first.width(), 0);
    }
    return joined;
}

Bitmap stack_deep(const Bitmap& upper, const Bitmap& lower) {
    Bitmap stacked = create_deep(std::max(upper.width(), lower.width()), upper.height() + lower.height());
    if (stacked) {
        copy_deep(lower, 0, 0, lower.width(), lower.height(), stacked, 0, 0);
        copy_deep(upper, 0, 0, upper.width(), upper.height(), stacked, 0, lower.height());
    }
    return stacked;
}

}  // namespace zemora
