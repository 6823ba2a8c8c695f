// The finished views before they are written: floating windows, final size, turning.

#include <algorithm>
#include <cmath>

#include "driver/dressing.h"
#include "driver/failure.h"
#include "driver/outside_steps.h"
#include "driver/pipeline.h"
#include "driver/product_names.h"
#include "input/picture_file.h"
#include "numerics/rounding.h"
#include "platform/process_end.h"
#include "render/cmyk.h"
#include "render/final_size.h"
#include "render/framing.h"
#include "render/turn_outputs.h"
#include "render/view_effects.h"

namespace zemora {

namespace {

/// A picture that was interpolated softly for its scale is sharpened without being asked to. Whether it was.
bool sharpen_views(Pipeline& pipeline) {
    constexpr int kSoftKernel = 3;  // what it chose
    constexpr int kUsualIntensity = 40;
    constexpr int kRowsPerRound = 640;
    Voice& voice = pipeline.voice;
    WarpedPair& warp = pipeline.warped;
    int intensity = pipeline.parameters.sharpen_intensity;
    if (intensity == 0 &&
        pipeline.parameters.interpolation_mode == setting::interpolation_mode::by_scale_sharpened &&
        warp.plan.interpolation.kernel == kSoftKernel) {
        intensity = kUsualIntensity;
        if (voice.verbose() > 1) {
            voice.say<Msg::warpimage_sharpen_intensity_set>();
            voice.print(format_text("%d\n", intensity));
        }
    }
    if (intensity == 0) {
        return false;
    }
    succeed_or_end(voice, sharpen(warp.views(), intensity, warp.height / kRowsPerRound + 1));
    return true;
}

/// Curtains that the selection brings, else those of `AutoFrameFloating` 3 to 6.
Curtains find_curtains(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const WarpedPair& warp = pipeline.warped;
    const SelectionBox& selection = pair.selection;
    if (selection.band_left != 0.0F || selection.band_right != 0.0F) {
        return {round_half_up(selection.band_left * static_cast<double>(warp.width)),
                round_half_up(selection.band_right * static_cast<double>(warp.width))};
    }
    const double target_px =
        pixels_from_reference(p.floating_target, p.win_off_reference, warp.height, warp.width);
    const DisparityStatistics& d = pair.result;
    const auto width_for = [&](double edge_px) { return std::max(round_half_up(target_px - edge_px), 0); };
    switch (p.auto_frame_floating) {
        case 3:
        case 4: {
            const int width = width_for(
                std::min({d.left_edge_near, d.right_edge_near, d.top_edge_near, d.bottom_edge_near}));
            return {width, width};
        }
        case 5:
        case 6: return {width_for(d.left_edge_near), width_for(d.right_edge_near)};
        default: return {};
    }
}

void hang_curtains(Pipeline& pipeline, PairRun& pair) {
    Voice& voice = pipeline.voice;
    const MessageCatalogue& messages = voice.messages();
    WarpedPair& warp = pipeline.warped;
    pair.curtains = find_curtains(pipeline, pair);
    if (pair.curtains.left == 0 && pair.curtains.right == 0) {
        return;
    }
    pair.curtains.left = std::min(pair.curtains.left, warp.width / 2);
    pair.curtains.right = std::min(pair.curtains.right, warp.width / 2);
    floating_bands(warp.views(), pair.curtains, pipeline.parameters.auto_frame_floating);
    const auto per_mille = [&](int width_px) { return round_half_up(width_px * 1000.0 / warp.width); };
    voice.tell_everywhere(messages.text<Msg::main_floating_windows_included>(per_mille(pair.curtains.left),
                                                                             per_mille(pair.curtains.right)) +
                          '\n');
    if (voice.verbose() > 0) {
        voice.tell_everywhere(
            messages.text<Msg::main_original_width_per_mille>(warp.width, warp.width / 1000.0));
    }
}

/// One value of `ExtraOutput` has never had a product.
void refuse_unknown_extra_output(const Pipeline& pipeline) {
    constexpr int kWithoutProduct = 8;
    if (pipeline.parameters.extra_output == kWithoutProduct) {
        pipeline.voice.print("Sorry - not implemented - nicht implementiert!\n");
        pipeline.voice.console().wait_for_enter();
        end_run(kExitFailure);
    }
}

std::string eight_bits_text(const MessageCatalogue& messages, const char* what) {
    return format_text(messages.either({"   8 bits are saved: %s has no form with 16 bits.\n",
                                        "   8 Bit werden gespeichert: %s gibt es nicht mit 16 Bit.\n"}),
                       what);
}

/// Products that are stored with 8 bits beside others with 16, told once a run.
void tell_shallow_products(const Pipeline& pipeline) {
    const ParameterSet& p = pipeline.parameters;
    const MessageCatalogue& messages = pipeline.voice.messages();
    const bool is_shallow_extra = p.extra_output == 4 || p.extra_output == 6 || p.extra_output == 7;
    if (p.anaglyph_output != 0) {
        const char* what = messages.either({"the anaglyph", "das Anaglyphenbild"});
        pipeline.voice.print_once(eight_bits_text(messages, what), Repeat::once_a_run);
    }
    if (is_shallow_extra) {
        const char* what = messages.either({"the extra format", "das weitere Format"});
        pipeline.voice.print_once(eight_bits_text(messages, what), Repeat::once_a_run);
    }
}

/// The 16-bit output repeats the warp from the source file, not what is done to the finished views.
[[nodiscard]] bool has_eight_bits_only(const Pipeline& pipeline, const PairRun& pair, bool sharpened) {
    struct Step {
        bool taken;
        BothTexts what;
    };
    const ParameterSet& p = pipeline.parameters;
    // Camera raw and the converter give 8 bits.
    const bool from_elsewhere =
        p.output_format == setting::output_format::tif_16_bits &&
        is_loaded_upright(pipeline.list.two_files ? pair.files.left : pair.files.stereo);
    const Step steps[] = {
        {from_elsewhere, {"developing or converting the input", "das Entwickeln oder Umwandeln der Eingabe"}},
        {p.auto_ghost_bust != 0, {"ghost reduction", "die Geisterbildminderung"}},
        {sharpened, {"sharpening", "das Schaerfen"}},
        {pair.curtains.left != 0 || pair.curtains.right != 0,
         {"the floating window", "das schwebende Fenster"}},
        {static_cast<bool>(pair.finished.texts.image_text), {"the text in the picture", "den Text im Bild"}},
        {pair.target.final_rescale != FinalRescale::none,
         {"scaling below 250 pixels", "das Skalieren unter 250 Pixel"}},
    };
    bool eight_bits_only = false;
    for (const Step& step : steps) {
        if (p.output_format == setting::output_format::tif_16_bits && step.taken) {
            eight_bits_only = true;
            const MessageCatalogue& messages = pipeline.voice.messages();
            pipeline.voice.tell_everywhere(eight_bits_text(messages, messages.either(step.what)));
        }
    }
    if (p.output_format == setting::output_format::tif_16_bits && !eight_bits_only) {
        tell_shallow_products(pipeline);
    }
    return eight_bits_only;
}

/// Without a usable profile for print the run stores plain TIFF pictures.
void check_print_profile(Pipeline& pipeline) {
    const ParameterSet& p = pipeline.parameters;
    if (p.output_format != setting::output_format::cmyk_by_profile || pipeline.stores_plain_tiff) {
        return;
    }
    const Bitmap probe = Bitmap::create(1, 1);
    std::string reason;
    if (!cmyk_by_profile(probe.picture(), p.cmyk_profile, reason)) {
        pipeline.voice.tell_everywhere(
            "   " + printable(reason) +
            pipeline.voice.messages().either({"; RGB is saved.\n", "; RGB wird gespeichert.\n"}));
        pipeline.voice.wait(Severity::warning);
        pipeline.stores_plain_tiff = true;
    }
}

/// Deviation against the projection, for stamps and reports.
void project_deviation(const Pipeline& pipeline, PairRun& pair) {
    const WarpedPair& warp = pipeline.warped;
    pair.projected_deviation = projected_deviation(
        pipeline.parameters, static_cast<double>(warp.width) / warp.height, pair.deviation);
}

/// Brings the pair to its final size. What was measured is told in the pixels of that size.
void take_final_size(Pipeline& pipeline, PairRun& pair) {
    WarpedPair& warp = pipeline.warped;
    succeed_or_end(pipeline.voice, rescale_to_final(warp, pair.target));
    if (warp.width == pair.output_width && warp.height == pair.output_height) {
        return;
    }
    const double factor = static_cast<double>(warp.width) / pair.output_width;
    DisparityStatistics& d = pair.result;
    for (float* value_px : {&d.near_point, &d.far_point, &d.centre_disparity, &d.left_edge_near,
                            &d.right_edge_near, &d.top_edge_near, &d.bottom_edge_near}) {
        *value_px = static_cast<float>(*value_px * factor);
    }
    pair.curtains = {round_half_up(pair.curtains.left * factor), round_half_up(pair.curtains.right * factor)};
    pair.output_width = warp.width;
    pair.output_height = warp.height;
}

}  // namespace

void finish_pictures(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    WarpedPair& warp = pipeline.warped;
    pipeline.processed += pair.counted ? 0 : 1;
    pair.counted = true;
    Finished& finished = pair.finished = Finished();
    if (p.auto_ghost_bust != 0) {
        reduce_ghosts(warp.views(), p.auto_ghost_bust);
    }
    const bool sharpened = sharpen_views(pipeline);
    hang_curtains(pipeline, pair);
    refuse_unknown_extra_output(pipeline);
    finished.texts = dress_with_texts(pipeline, pair);
    finished.eight_bits_only = has_eight_bits_only(pipeline, pair, sharpened);
    check_print_profile(pipeline);
    make_thumbnails(pipeline, pair);
    write_progress_result(pipeline);
    project_deviation(pipeline, pair);
    take_final_size(pipeline, pair);
    finished.frame = pair.frame;
    const bool turns = p.left_right_output != 0 || p.extra_output != 0;
    succeed_or_end(pipeline.voice, turn_outputs(finished, warp, turns ? p.rot_mir_output_left : 0,
                                                turns ? p.rot_mir_output_right : 0));
    if (pair.inverse_output == 1) {
        exchange_outputs(finished);
    }
}

}  // namespace zemora
