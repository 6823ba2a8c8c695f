#include "render/anaglyph.h"

#include "render/canvas.h"
#include "render/dome.h"
#include "render/framing.h"

namespace zemora {

namespace {

/// The result of storing `file`.
StoreResult stored(const std::string& file, const std::string& reason) {
    constexpr int kStoreFailed = 2;
    return reason.empty() ? StoreResult{} : StoreResult{kStoreFailed, file + ": " + reason};
}

/// The settings, with what the mix needs from its file.
Result<AnaglyphSettings> settings_of(const AnaglyphOptions& options, MixNeeds needs, Notes& notes) {
    AnaglyphSettings settings = options.mix;
    switch (needs) {
        case MixNeeds::monitor:
            settings.monitor = read_monitor_calibration(options.calibration_folder, notes);
            break;
        case MixNeeds::print:
            settings.print = read_print_calibration(options.calibration_folder, notes);
            break;
        case MixNeeds::colours: {
            Result<ColorManagement> colours = read_colour_file(options.colour_file, notes.messages());
            if (!colours) {
                return colours.failure();
            }
            settings.colours = std::move(*colours);
            break;
        }
        case MixNeeds::nothing: break;
    }
    return settings;
}

Failure unstable_calibration(const MessageCatalogue& messages) {
    Failure failure = Failure::of_run(messages.either(
        {"Calibration values not stable!\n"
         "Please send the 14 calibration values of the test image to the makers of Zemora.\n",
         "Die Kalibrierungswerte sind nicht stabil!\n"
         "Bitte senden Sie die 14 Kalibrierungswerte des Testbildes an die Hersteller von Zemora.\n"}));
    failure.note.severity = Severity::must_be_seen;
    return failure;
}

Failure no_memory() {
    return Failure::out_of_memory("w9226: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (ANAGLYPH)\n");
}

/// Views that other products want for mirrors and projectors make no anaglyph for the usual glasses.
void warn_of_views(const Finished& pair, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    if (pair.left_turn != pair.right_turn) {
        notes.print_once(
            messages.either({"Warning: the views are turned differently (RotMirOutputLeft, "
                             "RotMirOutputRight): they do not match in the anaglyph.\n",
                             "Warnung: Die Ansichten sind verschieden gedreht (RotMirOutputLeft, "
                             "RotMirOutputRight): im Anaglyphen passen sie nicht zusammen.\n"}),
            Repeat::once_a_run);
    }
    if (pair.is_exchanged) {
        notes.print_once(
            messages.either(
                {"Warning: the views are exchanged (InverseOutput): turn the glasses of the anaglyph.\n",
                 "Warnung: Die Ansichten sind vertauscht (InverseOutput): fuer den Anaglyphen die "
                 "Brille umdrehen.\n"}),
            Repeat::once_a_run);
    }
}

/// The canvas with its frame and the texts on it.
Bitmap draw_frame(const Finished& pair, const CanvasLayout& layout, Notes& notes) {
    Bitmap canvas = framed_canvas(layout.width, layout.height, layout.frame.colour);
    if (canvas) {
        const CaptionPlace caption =
            caption_place(pair, layout.frame, layout.left_picture_column, View::left);
        draw_cell_texts(pair.texts, layout.frame, pair.height(), canvas.picture(), {&caption, 1}, notes);
    }
    return canvas;
}

Result<StoreResult> save_as_dome(const Bitmap& canvas, const std::string& file) {
    const Bitmap dome = dome_picture(canvas.picture());
    if (!dome) {
        return Failure::out_of_memory("w10107: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (PLANETARIUM)\n");
    }
    return stored(file, save_dome(dome, file));
}

}  // namespace

Result<Bitmap> compose_anaglyph(const Finished& pair, const FrameSettings& frame,
                                const AnaglyphOptions& options, Notes& notes) {
    const CanvasLayout layout = anaglyph_layout(pair, frame);
    tell_frame_faults(layout.faults, notes);
    Bitmap canvas = draw_frame(pair, layout, notes);
    if (!canvas) {
        return no_memory();
    }
    const AnaglyphMixRow& mix = anaglyph_mix_row(options.mix.type);
    const Result<AnaglyphSettings> settings = settings_of(options, mix.needs, notes);
    if (!settings) {
        return settings.failure();
    }
    if (!merge_views(*mix.make(*settings), pair.views(), canvas.picture(),
                     {layout.picture_row, layout.left_picture_column, layout.right_picture_column})) {
        return unstable_calibration(notes.messages());
    }
    return {std::move(canvas)};
}

Result<StoreResult> write_anaglyph(const Finished& pair, const FrameSettings& frame, const std::string& file,
                                   const AnaglyphOptions& options, Notes& notes) {
    warn_of_views(pair, notes);
    const Result<Bitmap> canvas = compose_anaglyph(pair, frame, options, notes);
    if (!canvas) {
        return canvas.failure();
    }
    return options.is_dome ? save_as_dome(*canvas, file)
                           : stored(file, save_picture(*canvas, file, options.save));
}

}  // namespace zemora
