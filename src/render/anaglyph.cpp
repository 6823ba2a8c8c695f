#include "render/anaglyph.h"

#include "platform/process_end.h"
#include "render/anaglyph_mix.h"
#include "render/canvas.h"
#include "render/dome.h"
#include "render/framing.h"
#include "render/save_picture.h"

namespace zemora {

namespace {

constexpr int kStoreFailed = 2;

/// The settings, with what the mix needs from its file.
AnaglyphSettings settings_of(const ParameterSet& p, Voice& voice, MixNeeds needs) {
    AnaglyphSettings settings;
    settings.type = p.anaglyph_type;
    settings.brightness = p.brightness;
    settings.density = p.density_ana;
    settings.gamma_red = p.gamma_red;
    settings.gamma_cyan = p.gamma_cyan;
    settings.balance = {p.red_balance, p.green_balance, p.blue_balance};
    switch (needs) {
        case MixNeeds::monitor: settings.monitor = read_monitor_calibration(p, voice); break;
        case MixNeeds::print: settings.print = read_print_calibration(p, voice); break;
        case MixNeeds::colours: settings.colours = read_color_management_file(p, voice); break;
        case MixNeeds::nothing: break;
    }
    return settings;
}

[[noreturn]] void end_for_unstable_calibration(Voice& voice) {
    voice.print(voice.messages().either(
        {"Calibration values not stable!\n"
         "Please send the 14 calibration values of the test image to the makers of Zemora.\n",
         "Die Kalibrierungswerte sind nicht stabil!\n"
         "Bitte senden Sie die 14 Kalibrierungswerte des Testbildes an die Hersteller von Zemora.\n"}));
    voice.console().wait_for_enter();
    end_process(kExitFailure);
}

/// Views that other products want for mirrors and projectors make no anaglyph for the usual glasses.
void warn_of_views(const WarpState& warp) {
    const MessageCatalogue& messages = warp.voice.messages();
    if (warp.left_turn != warp.right_turn) {
        warp.voice.print_once(
            messages.either({"Warning: the views are turned differently (RotMirOutputLeft, "
                             "RotMirOutputRight): they do not match in the anaglyph.\n",
                             "Warnung: Die Ansichten sind verschieden gedreht (RotMirOutputLeft, "
                             "RotMirOutputRight): im Anaglyphen passen sie nicht zusammen.\n"}),
            Repeat::once_a_run);
    }
    if (warp.inverse_output == 1) {
        warp.voice.print_once(
            messages.either(
                {"Warning: the views are exchanged (InverseOutput): turn the glasses of the anaglyph.\n",
                 "Warnung: Die Ansichten sind vertauscht (InverseOutput): fuer den Anaglyphen die "
                 "Brille umdrehen.\n"}),
            Repeat::once_a_run);
    }
}

/// The frame and the texts on it.
void draw_frame(const WarpState& warp, const CanvasLayout& layout, Picture canvas) {
    // The library hands out black; only another colour has to be filled in.
    if (warp.frame.colour != Colour{}) {
        fill(canvas, warp.frame.colour);
    }
    const CaptionPlace caption = caption_place(warp, layout.left_picture_column, View::left);
    draw_cell_texts(warp, canvas, {&caption, 1});
}

void draw_views(const WarpState& warp, const CanvasLayout& layout, Picture canvas) {
    const AnaglyphMixRow& mix = anaglyph_mix_row(warp.parameters.anaglyph_type);
    const auto mixer = mix.make(settings_of(warp.parameters, warp.voice, mix.needs));
    if (!merge_views(*mixer, warp.pair(), canvas,
                     {layout.picture_row, layout.left_picture_column, layout.right_picture_column})) {
        end_for_unstable_calibration(warp.voice);
    }
}

std::string save_as_dome(const WarpState& warp, const Bitmap& canvas, const std::string& file) {
    const Bitmap dome = dome_picture(canvas.picture());
    if (!dome) {
        end_run_without_picture_memory(warp.voice.console(),
                                       "w10107: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (PLANETARIUM)\n");
    }
    return save_dome(dome, file);
}

}  // namespace

Bitmap compose_anaglyph(WarpState& warp) {
    const CanvasLayout layout = anaglyph_layout(warp);
    Bitmap canvas = Bitmap::create(layout.width, layout.height);
    if (canvas) {
        draw_frame(warp, layout, canvas.picture());
        draw_views(warp, layout, canvas.picture());
    }
    return canvas;
}

StoreResult write_anaglyph(WarpState& warp, const std::string& file) {
    if (warp.parameters.anaglyph_output == 0) {
        return {};
    }
    warn_of_views(warp);
    const Bitmap canvas = compose_anaglyph(warp);
    if (!canvas) {
        end_run_without_picture_memory(warp.voice.console(),
                                       "w9226: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (ANAGLYPH)\n");
    }
    const std::string reason = warp.parameters.planetarium_output == 1
                                   ? save_as_dome(warp, canvas, file)
                                   : save_picture(canvas, file, SaveOptions(warp.parameters));
    return reason.empty() ? StoreResult{} : StoreResult{kStoreFailed, file + ": " + reason};
}

}  // namespace zemora
