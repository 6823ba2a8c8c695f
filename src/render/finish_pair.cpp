#include "render/finish_pair.h"

#include <algorithm>

#include "config/setting_values.h"
#include "numerics/rounding.h"
#include "render/final_size.h"
#include "render/framing.h"
#include "render/turn_outputs.h"
#include "render/view_effects.h"

namespace zemora {

namespace {

/// A picture that was interpolated softly for its scale is sharpened without being asked to.
int sharpen_intensity(const FinishSettings& settings, const Interpolation& interpolation, Notes& notes) {
    constexpr int kSoftKernel = 3;
    constexpr int kUsualIntensity = 40;
    if (settings.sharpen_intensity != 0 || !settings.sharpens_soft_kernel ||
        interpolation.kernel != kSoftKernel) {
        return settings.sharpen_intensity;
    }
    if (notes.verbose() > 1) {
        notes.say<Msg::warpimage_sharpen_intensity_set>();
        notes.print(format_text("%d\n", kUsualIntensity));
    }
    return kUsualIntensity;
}

/// Whether the views were sharpened.
Result<bool> sharpen_views(WarpedPair& warped, const FinishSettings& settings, Notes& notes) {
    constexpr int kRowsPerRound = 640;
    const int intensity = sharpen_intensity(settings, warped.plan.interpolation, notes);
    if (intensity == 0) {
        return false;
    }
    if (Result<void> done = sharpen(warped.views(), intensity, warped.height / kRowsPerRound + 1); !done) {
        return done.failure();
    }
    return true;
}

/// Curtains that the selection brings, else those of `AutoFrameFloating` 3 to 6.
Curtains find_curtains(const WarpedPair& warped, const FinishSettings& settings, const PictureFacts& facts) {
    namespace automatic = setting::auto_frame_floating;
    const SelectionBox& selection = facts.selection;
    if (selection.band_left != 0.0F || selection.band_right != 0.0F) {
        return {round_half_up(selection.band_left * static_cast<double>(warped.width)),
                round_half_up(selection.band_right * static_cast<double>(warped.width))};
    }
    const double target_px = pixels_from_reference(settings.floating_target, settings.win_off_reference,
                                                   warped.height, warped.width);
    const DisparityStatistics& d = facts.disparities;
    const auto width_for = [&](double edge_px) { return std::max(round_half_up(target_px - edge_px), 0); };
    switch (settings.auto_frame_floating) {
        case automatic::curtains_alike:
        case automatic::ramps_alike: {
            if (settings.is_film) {
                return {width_for(d.left_edge_near), width_for(d.right_edge_near)};
            }
            const int width = width_for(
                std::min({d.left_edge_near, d.right_edge_near, d.top_edge_near, d.bottom_edge_near}));
            return {width, width};
        }
        case automatic::curtains:
        case automatic::ramps: return {width_for(d.left_edge_near), width_for(d.right_edge_near)};
        default: return {};
    }
}

Curtains hang_curtains(WarpedPair& warped, const FinishSettings& settings, const PictureFacts& facts,
                       Notes& notes) {
    Curtains curtains = find_curtains(warped, settings, facts);
    if (!curtains) {
        return {};
    }
    curtains = {std::min(curtains.left, warped.width / 2), std::min(curtains.right, warped.width / 2)};
    floating_bands(warped.views(), curtains, settings.auto_frame_floating);
    if (settings.is_film) {
        return curtains;
    }
    const MessageCatalogue& messages = notes.messages();
    const auto per_mille = [&](int width_px) { return round_half_up(width_px * 1000.0 / warped.width); };
    notes.tell_everywhere(messages.text<Msg::main_floating_windows_included>(per_mille(curtains.left),
                                                                             per_mille(curtains.right)) +
                          '\n');
    if (notes.verbose() > 0) {
        notes.tell_everywhere(
            messages.text<Msg::main_original_width_per_mille>(warped.width, warped.width / 1000.0));
    }
    return curtains;
}

/// One value of `ExtraOutput` has never had a product.
Result<void> check_extra_format(ExtraFormat format) {
    if (static_cast<int>(format) != setting::extra_output::unknown) {
        return {};
    }
    Failure failure = Failure::of_run("Sorry - not implemented - nicht implementiert!\n");
    failure.note.severity = Severity::must_be_seen;
    return failure;
}

PictureTexts resolve_texts(const FinishSettings& settings, const TextSource& source, Notes& notes) {
    PictureTexts texts;
    texts.image_text = resolve_text(settings.image_text, source, notes);
    texts.caption = resolve_text(settings.caption, source, notes);
    texts.copyright = resolve_text(settings.copyright, source, notes);
    return texts;
}

std::string eight_bits_text(const MessageCatalogue& messages, const char* what) {
    return format_text(messages.either({"   8 bits are saved: %s has no form with 16 bits.\n",
                                        "   8 Bit werden gespeichert: %s gibt es nicht mit 16 Bit.\n"}),
                       what);
}

/// Names the products that are stored with 8 bits beside others with 16, once a run.
void name_shallow_products(const FinishSettings& settings, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    if (settings.has_anaglyph) {
        const char* what = messages.either({"the anaglyph", "das Anaglyphenbild"});
        notes.print_once(eight_bits_text(messages, what), Repeat::once_a_run);
    }
    if (settings.extra == ExtraFormat::interlaced || settings.extra == ExtraFormat::left_right_left ||
        settings.extra == ExtraFormat::left_right_right_left) {
        const char* what = messages.either({"the extra format", "das weitere Format"});
        notes.print_once(eight_bits_text(messages, what), Repeat::once_a_run);
    }
}

/// The 16-bit output repeats the warp from the source file, not what is done to the finished views.
bool has_eight_bits_only(const FinishSettings& settings, const PictureFacts& facts, const Finished& finished,
                         bool sharpened, Notes& notes) {
    struct Step {
        bool taken;
        BothTexts what;
    };
    const Step steps[] = {
        {facts.is_developed,
         {"developing or converting the input", "das Entwickeln oder Umwandeln der Eingabe"}},
        {settings.ghost_percent != 0, {"ghost reduction", "die Geisterbildminderung"}},
        {sharpened, {"sharpening", "das Schaerfen"}},
        {static_cast<bool>(finished.curtains), {"the floating window", "das schwebende Fenster"}},
        {static_cast<bool>(finished.texts.image_text), {"the text in the picture", "den Text im Bild"}},
        {facts.target.final_rescale != FinalRescale::none,
         {"scaling below 250 pixels", "das Skalieren unter 250 Pixel"}},
    };
    if (!settings.wants_sixteen_bits) {
        return false;
    }
    bool eight_bits_only = false;
    for (const Step& step : steps) {
        if (step.taken) {
            eight_bits_only = true;
            notes.tell_everywhere(eight_bits_text(notes.messages(), notes.messages().either(step.what)));
        }
    }
    if (!eight_bits_only) {
        name_shallow_products(settings, notes);
    }
    return eight_bits_only;
}

/// Final size, turning and exchange of the views.
Result<void> settle_views(WarpedPair& warped, const FinishSettings& settings, const PictureFacts& facts,
                          Finished& finished) {
    const int width = warped.width;
    if (Result<void> done = rescale_to_final(warped, facts.target); !done) {
        return done;
    }
    if (warped.width != width) {
        const double factor = static_cast<double>(warped.width) / width;
        finished.curtains = {round_half_up(finished.curtains.left * factor),
                             round_half_up(finished.curtains.right * factor)};
    }
    if (Result<void> done = turn_outputs(finished, warped, settings.left_turn, settings.right_turn); !done) {
        return done;
    }
    if (facts.is_exchanged) {
        exchange_outputs(finished);
    }
    return {};
}

}  // namespace

Result<Finished> finish_pair(WarpedPair& warped, const FinishSettings& settings, const PictureFacts& facts,
                             Notes& notes) {
    Finished finished;
    if (settings.ghost_percent != 0) {
        reduce_ghosts(warped.views(), settings.ghost_percent);
    }
    const Result<bool> sharpened = sharpen_views(warped, settings, notes);
    if (!sharpened) {
        return sharpened.failure();
    }
    finished.curtains = hang_curtains(warped, settings, facts, notes);
    if (const Result<void> known = check_extra_format(settings.extra); !known) {
        return known.failure();
    }
    finished.texts = resolve_texts(settings, facts.texts, notes);
    if (finished.texts.image_text) {
        draw_image_text(warped.views(), finished.texts.image_text, 0, -finished.curtains.right,
                        settings.image_text_has_ground, notes);
    }
    finished.eight_bits_only = has_eight_bits_only(settings, facts, finished, *sharpened, notes);
    if (facts.wants_thumbnails) {
        Result<Thumbnails> thumbnails = make_thumbnails(warped.pair());
        if (!thumbnails) {
            return thumbnails.failure();
        }
        finished.thumbnails = *std::move(thumbnails);
    }
    finished.frame = facts.frame;
    if (const Result<void> done = settle_views(warped, settings, facts, finished); !done) {
        return done.failure();
    }
    return {std::move(finished)};
}

}  // namespace zemora
