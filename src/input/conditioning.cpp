#include "input/conditioning.h"

#include "codec/encode.h"
#include "input/cut_edges.h"
#include "input/passepartout.h"
#include "input/picture_file.h"
#include "platform/console.h"
#include "platform/paths.h"

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

namespace frame = setting::passepartout;

/// The conditioning of one view.
class Conditioner {
public:
    Conditioner(const RecordedView& target, const SideTexts& texts, const std::string& mask_stem,
                const FrameOptions& options, Notes& notes)
        : target_(target), texts_(texts), mask_stem_(mask_stem), options_(options), notes_(notes) {}

    [[nodiscard]] Result<void> run() const {
        const Picture picture = target_.view.picture();
        switch (options_.passepartout) {
            case frame::own_colour_painted:
            case frame::measured_painted: return paint(picture);
            case frame::own_colour_cut:
            case frame::measured_cut: return cut();
            case frame::by_masks:
                protect_from_colour(picture, options_.colour);
                return paint_by_mask_file(picture);
            default: protect_from_colour(picture, options_.colour); return {};
        }
    }

private:
    [[nodiscard]] Result<void> paint(Picture picture) const {
        paint_frame(picture, options_.colour, options_.passepartout == frame::measured_painted,
                    options_.tolerance);
        if (!options_.writes_masks) {
            return {};
        }
        const Bitmap mask = Bitmap::create(picture.width, picture.height);
        if (!mask) {
            return Failure::out_of_memory(texts_.no_memory_for_paint_mask);
        }
        draw_mask(picture, options_.colour, mask.picture());
        write_mask(mask);
        return {};
    }

    [[nodiscard]] Result<void> cut() const {
        CutRule rule;
        rule.tolerance = options_.tolerance;
        if (options_.passepartout == frame::own_colour_cut) {
            rule.frame = options_.colour;
        }
        LoadedView& view = target_.view;
        const auto kept = find_inside_of_frame(view, rule);
        if (!kept) {
            return Failure::out_of_memory(texts_.no_memory_for_cut);
        }
        if (options_.writes_masks) {
            constexpr Colour kWhite{255, 255, 255};
            const Bitmap mask = Bitmap::create(view.width, view.height);
            if (!mask) {
                return Failure::out_of_memory(texts_.no_memory_for_cut);
            }
            fill(mask.picture().part(kept->x, kept->y, kept->width, kept->height), kWhite);
            write_mask(mask);
        }
        keep(*kept);
        protect_from_colour(view.picture(), options_.colour);
        return {};
    }

    void keep(const KeptRegion& kept) const {
        LoadedView& view = target_.view;
        if (notes_.verbose() >= 2) {
            notes_.print(texts_.cropped_in_height(notes_.messages(), view.height, kept.height));
            notes_.print(texts_.cropped_in_width(notes_.messages(), view.width, kept.width));
        }
        keep_region(view, kept.x, kept.y, kept.width, kept.height);
        InputGeometry& geometry = target_.geometry;
        geometry.crop_x += kept.x;
        geometry.crop_y += kept.y;
        geometry.crop_width = kept.width;
        geometry.crop_height = kept.height;
    }

    [[nodiscard]] Result<void> paint_by_mask_file(Picture picture) const {
        const MessageCatalogue& messages = notes_.messages();
        const std::string file = mask_stem_ + "_pass_in.bmp";
        if (!file_exists(file)) {
            return Failure::of_run(messages.text<Msg::img_input_file_cannot_be_opened>(printable(file)));
        }
        const LoadedPicture mask = load_picture(file);
        if (mask.status != LoadStatus::done || mask.bitmap.width() != picture.width ||
            mask.bitmap.height() != picture.height) {
            return Failure::of_run(messages.text<Msg::img_input_error_in_file>(printable(file)) +
                                   messages.text<Msg::img_input_must_have_size_of_originals>());
        }
        paint_by_mask(picture, mask.bitmap.picture(), options_.colour);
        return {};
    }

    void write_mask(const Bitmap& mask) const {
        const std::string file = mask_stem_ + "_pass_out.bmp";
        const std::string reason = encode_and_write(mask, {PictureFormat::bmp}, file);
        if (!reason.empty()) {
            notes_.print(format_text(
                notes_.messages().either({"The mask file %s couldn't be written: %s\n",
                                          "Die Maskendatei %s konnte nicht geschrieben werden: %s\n"}),
                printable(file).c_str(), reason.c_str()));
            notes_.wait(Severity::error);
        }
    }

    const RecordedView& target_;
    const SideTexts& texts_;
    const std::string& mask_stem_;
    const FrameOptions& options_;
    Notes& notes_;
};

}  // namespace

Result<void> condition_views(const RecordedView& left, const RecordedView& right, const MaskStems& mask_stems,
                             const FrameOptions& options, Notes& notes) {
    if (auto done = Conditioner(left, kLeftTexts, mask_stems.left, options, notes).run(); !done) {
        return done;
    }
    return Conditioner(right, kRightTexts, mask_stems.right, options, notes).run();
}

}  // namespace zemora
