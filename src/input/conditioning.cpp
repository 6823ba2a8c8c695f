#include "input/conditioning.h"

#include "input/cut_edges.h"
#include "input/passepartout.h"
#include "input/picture_file.h"
#include "numerics/bitmap_file.h"
#include "platform/paths.h"
#include "platform/process_end.h"

namespace zemora {

namespace {

template <Msg message>
std::string cropped_text(const MessageCatalogue& messages, int from, int to) {
    return messages.text<message>(from, to);
}

/// Texts that differ between the views.
struct SideTexts {
    using CroppedText = std::string (*)(const MessageCatalogue& messages, int from, int to);
    const char* no_memory_for_paint_mask;
    const char* no_memory_for_cut;
    CroppedText cropped_in_height;
    CroppedText cropped_in_width;
};

constexpr SideTexts kLeftTexts{"2848: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (PASS LEFT)\n",
                               "2527: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (PASS LEFT)\n",
                               cropped_text<Msg::img_input_left_cropped_in_height>,
                               cropped_text<Msg::img_input_left_cropped_in_width>};
constexpr SideTexts kRightTexts{"2896: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (PASS RIGHT)\n",
                                "2620: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (PASS RIGHT)\n",
                                cropped_text<Msg::img_input_right_cropped_in_height>,
                                cropped_text<Msg::img_input_right_cropped_in_width>};

/// The conditioning of one view.
class Conditioner {
public:
    Conditioner(const ConditionedView& target, const SideTexts& texts, const ParameterSet& parameters,
                Voice& voice)
        : target_(target),
          texts_(texts),
          parameters_(parameters),
          voice_(voice),
          colour_(passe_colour_of(parameters)) {}

    void run() const {
        switch (parameters_.passepartout) {
            case kPaintFrameOfColour:
            case kPaintMeasuredFrame: paint(); break;
            case kCutFrameOfColour:
            case kCutMeasuredFrame:
                cut();
                protect_from_colour(target_.view.picture(), colour_);
                break;
            case kFrameFromMask:
                protect_from_colour(target_.view.picture(), colour_);
                paint_by_mask_file();
                break;
            default: protect_from_colour(target_.view.picture(), colour_);
        }
    }

private:
    void paint() const {
        const Picture picture = target_.view.picture();
        paint_frame(picture, colour_, parameters_.passepartout == kPaintMeasuredFrame,
                    parameters_.passe_tolerance);
        if (parameters_.passe_output == 1) {
            const Bitmap mask = create_mask(texts_.no_memory_for_paint_mask);
            draw_mask(picture, colour_, mask.picture());
            write_mask(mask);
        }
    }

    void cut() const {
        CutRule rule;
        rule.tolerance = parameters_.passe_tolerance;
        if (parameters_.passepartout == kCutFrameOfColour) {
            rule.frame = colour_;
        }
        const auto kept = find_inside_of_frame(target_.view, rule);
        if (!kept) {
            end_run_without_picture_memory(voice_.console(), texts_.no_memory_for_cut);
        }
        if (parameters_.passe_output == 1) {
            constexpr Colour kWhite{255, 255, 255};
            const Bitmap mask = create_mask(texts_.no_memory_for_cut);
            fill(mask.picture().part(kept->x, kept->y, kept->width, kept->height), kWhite);
            write_mask(mask);
        }
        tell_cut(*kept);
        keep_region(target_.view, kept->x, kept->y, kept->width, kept->height);
        ViewGeometry& geometry = target_.geometry;
        geometry.crop_x += kept->x;
        geometry.crop_y += kept->y;
        geometry.crop_width = kept->width;
        geometry.crop_height = kept->height;
    }

    void tell_cut(const KeptRegion& kept) const {
        if (voice_.verbose() >= 2) {
            voice_.print(texts_.cropped_in_height(voice_.messages(), target_.view.height, kept.height));
            voice_.print(texts_.cropped_in_width(voice_.messages(), target_.view.width, kept.width));
        }
    }

    void paint_by_mask_file() const {
        const std::string file = target_.mask_stem + "_pass_in.bmp";
        if (!file_exists(file)) {
            voice_.say<Msg::img_input_file_cannot_be_opened>(printable(file));
            voice_.wait(Severity::error);
            end_process(kExitFailure);
        }
        const LoadedPicture mask = load_picture(file);
        if (mask.status != LoadStatus::done || mask.bitmap.width() != target_.view.width ||
            mask.bitmap.height() != target_.view.height) {
            voice_.say<Msg::img_input_error_in_file>(printable(file));
            voice_.say<Msg::img_input_must_have_size_of_originals>();
            voice_.wait(Severity::error);
            end_process(kExitFailure);
        }
        paint_by_mask(target_.view.picture(), mask.bitmap.picture(), colour_);
    }

    /// A black mask of the view's size.
    [[nodiscard]] Bitmap create_mask(const char* no_memory) const {
        Bitmap mask = Bitmap::create(target_.view.width, target_.view.height);
        if (!mask) {
            end_run_without_picture_memory(voice_.console(), no_memory);
        }
        return mask;
    }

    void write_mask(const Bitmap& mask) const {
        const std::string file = target_.mask_stem + "_pass_out.bmp";
        const std::string reason = encode_and_write(mask.handle(), FIF_BMP, BMP_DEFAULT, file);
        if (!reason.empty()) {
            voice_.print(format_text(
                voice_.messages().either({"The mask file %s couldn't be written: %s\n",
                                          "Die Maskendatei %s konnte nicht geschrieben werden: %s\n"}),
                printable(file).c_str(), reason.c_str()));
            voice_.wait(Severity::error);
        }
    }

    const ConditionedView& target_;
    const SideTexts& texts_;
    const ParameterSet& parameters_;
    Voice& voice_;
    Colour colour_;
};

}  // namespace

void condition_views(const ConditionedView& left, const ConditionedView& right,
                     const ParameterSet& parameters, Voice& voice) {
    Conditioner(left, kLeftTexts, parameters, voice).run();
    Conditioner(right, kRightTexts, parameters, voice).run();
}

}  // namespace zemora
