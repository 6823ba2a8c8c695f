#pragma once
/// Small asymmetric pictures and a ready-made rendering state for the tests of this folder.

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

#include "config/voice.h"
#include "driver/settings_mount.h"
#include "driver/settings_render.h"
#include "render/crop.h"
#include "render/extra_output.h"
#include "render/framing.h"
#include "render/rgb16.h"
#include "render/turn_outputs.h"
#include "render/warp_pair.h"

namespace zemora::testing {

/// Smooth, asymmetric, without a pixel of black.
inline Bitmap textured(int width, int height, unsigned seed = 1) {
    Bitmap bitmap = Bitmap::create(width, height);
    const Picture picture = bitmap.picture();
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = picture.pixel(x, y);
            pixel[0] = static_cast<std::uint8_t>(40 + (x * 5 + y * 3) % 180);
            pixel[1] = static_cast<std::uint8_t>(60 + (x * x / 7 + y * 2) % 150);
            pixel[2] = static_cast<std::uint8_t>(20 + random() % 200);
        }
    }
    return bitmap;
}

/// Full range of bytes, with black and white pixels.
inline Bitmap noisy(int width, int height, unsigned seed) {
    Bitmap bitmap = Bitmap::create(width, height);
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y) {
        for (int i = 0; i < width * kPixelBytes; ++i) {
            const unsigned draw = random();
            bitmap.picture().row(y)[i] = static_cast<std::uint8_t>(
                (draw & 0x300U) == 0 ? ((draw & 0x400U) == 0 ? 0 : 255) : draw & 255U);
        }
    }
    return bitmap;
}

inline Colour colour_at(ConstPicture picture, int x, int y) {
    const std::uint8_t* pixel = picture.pixel(x, y);
    return {pixel[0], pixel[1], pixel[2]};
}

/// Number of pixels that differ between two pictures of equal size.
inline int count_differences(ConstPicture a, ConstPicture b) {
    int different = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            different += colour_at(a, x, y) == colour_at(b, x, y) ? 0 : 1;
        }
    }
    return different;
}

/// Pixels, fractions, radians, in the order of their names.
inline Correction correction(double height, double size, double rotation, double vergence_v,
                             double vergence_h, double shift) {
    return {height, shift, size, rotation, vergence_v, vergence_h};
}

/// A warp and its surroundings, quiet and never waiting. The warped views are the finished ones; products are
/// made with the options of `parameters`, one after the other as in a run.
struct Rig {
    explicit Rig(const ParameterSet& set = {}) : parameters(set) {
        parameters.stop_at_error = -1;
        parameters.verbose_mode = 0;
        frame = frame_settings(parameters);
        const RenderSettings settings = render_settings(parameters);
        usual.crop.cropp_output = settings.cropp_output;
        usual.applied_view = settings.applied_view;
        usual.background = settings.background;
    }

    /// The usual plan without correction at the size of the source.
    WarpPlan plan(const Bitmap& left, const Bitmap& right) {
        source = {left.picture(), right.picture()};
        WarpPlan wanted = usual;
        wanted.frame = {left.width(), left.height()};
        return wanted;
    }

    /// Whether the pair of the latest plan was warped.
    bool run(const WarpPlan& wanted) {
        const bool is_done =
            warp_pair(source, wanted, colours ? &*colours : nullptr, warped, voice).has_value();
        if (is_done) {
            select_kept(warped, selection);
        }
        return is_done;
    }

    /// The finished views as they stand now.
    const Finished& finished() {
        const StereoPicture pair = warped.pair();
        done.left.picture = done.is_exchanged ? pair.right : pair.left;
        done.right.picture = done.is_exchanged ? pair.left : pair.right;
        return done;
    }
    /// Turns and exchanges the views as `parameters` say.
    void arrange() {
        ASSERT_TRUE(
            turn_outputs(done, warped, parameters.rot_mir_output_left, parameters.rot_mir_output_right));
        if (parameters.inverse_output == 1) {
            exchange_outputs(done);
        }
    }

    StoreResult write_stereo(const std::string& file, const SourceFiles& sources = {}) {
        const FrameSettings before = frame;
        frame = side_by_side_layout(finished(), before).frame;
        const DeepPair deep = deep_pair(file, sources);
        return *zemora::write_stereo(*compose_stereo(finished(), before, voice), file, deep.views(),
                                     save_options(parameters));
    }
    StoreResult write_left_right(const std::string& left, const std::string& right,
                                 const SourceFiles& sources = {}) {
        const ViewLayouts layouts = view_layouts(finished(), frame);
        frame = layouts.right.frame;
        const DeepPair deep = deep_pair(left, sources);
        const SaveOptions options = save_options(parameters);
        return joined(*write_view(finished(), layouts, View::left, left, deep.views(), options, voice),
                      *write_view(finished(), layouts, View::right, right, deep.views(), options, voice));
    }
    StoreResult write_extra(const std::string& file, const SourceFiles& sources = {}) {
        const FrameSettings before = frame;
        const ExtraOptions options = extra_options(parameters, false);
        frame = frame_behind_extra(finished(), before, options.format);
        const DeepPair deep = has_deep_form(options.format) ? deep_pair(file, sources) : DeepPair();
        return *zemora::write_extra(finished(), before, file, sources, deep.views(), options, voice);
    }
    Bitmap compose_extra(ExtraFormat format) {
        Bitmap canvas = *zemora::compose_extra(finished(), frame, format, voice);
        frame = frame_behind_extra(finished(), frame, format);
        return canvas;
    }

    [[nodiscard]] DeepInput deep_input(const SourceFiles& sources) const {
        return {sources, left_record, right_record, colours ? &*colours : nullptr};
    }
    DeepPair deep_pair(const std::string& file, SourceFiles sources) {
        sources.layout = source_layout(parameters);
        if (!has_deep_form(finished(), save_options(parameters), file)) {
            return {};
        }
        return *make_deep_outputs(warped, finished(), deep_input(sources));
    }

    ParameterSet parameters;
    InputGeometry left_record;
    InputGeometry right_record;
    Console console;
    MessageCatalogue messages{Language::english};
    Voice voice{console, messages, parameters};
    SelectionBox selection;
    WarpPlan usual;  ///< What the plans of a test have in common.
    StereoPicture source;
    std::optional<ColourChange> colours;
    WarpedPair warped;
    FrameSettings frame;  ///< For the next product.
    Finished done;
};

}  // namespace zemora::testing
