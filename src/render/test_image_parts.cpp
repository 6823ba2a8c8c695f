#include "render/test_image_parts.h"

#include <algorithm>

#include "codec/encode.h"
#include "platform/console.h"
#include "render/font_search.h"

namespace zemora {

namespace {

Failure fault_of(const LetterFont& font, const std::string& file, const MessageCatalogue& messages) {
    Failure failure = Failure::of_pair(
        font.fault() == TextFault::library
            ? messages.text<Msg::main_ttf_init_failed>(font.reason())
            : messages.text<Msg::main_font_load_failed>(font.pixels(), printable(file), font.reason()));
    failure.note.severity = Severity::must_be_seen;
    failure.note.waits = true;
    return failure;
}

}  // namespace

Result<std::vector<LetterMask>> label_masks(const std::vector<std::string>& labels, int font_px,
                                            const MessageCatalogue& messages) {
    constexpr int kAnyWidth = 1 << 14;  // pixels
    const std::string file = default_font();
    LetterFont font({file, font_px, 0});
    std::vector<LetterMask> masks;
    for (const std::string& label : labels) {
        if (font.fault() == TextFault::none) {
            masks.push_back(font.mask(label, kAnyWidth));
        }
    }
    if (font.fault() != TextFault::none) {
        return fault_of(font, file, messages);
    }
    return masks;
}

LabelPart label_part(Picture picture, const LetterMask& mask, int x, int y) {
    const int left = std::clamp(x, 0, picture.width);
    const int bottom = std::clamp(y, 0, picture.height);
    const int right = std::clamp(x + mask.width, left, picture.width);
    const int top = std::clamp(y + mask.height, bottom, picture.height);
    return {picture.part(left, bottom, right - left, top - bottom), left - x, bottom - y};
}

Result<Bitmap> test_bitmap(int width, int height, const char* reason) {
    Bitmap bitmap = Bitmap::create(width, height);
    if (!bitmap) {
        return Failure::out_of_memory(reason);
    }
    return bitmap;
}

Result<void> store_test_image(const Bitmap& picture, const std::string& file,
                              const MessageCatalogue& messages) {
    const std::string reason =
        encode_and_write(picture, {.format = PictureFormat::tiff, .compress = true}, file);
    if (reason.empty()) {
        return {};
    }
    return Failure::of_pair(format_text(messages.either({"The file %s cannot be written: %s\n",
                                                         "Die Datei %s kann nicht geschrieben werden: %s\n"}),
                                        printable(file).c_str(), reason.c_str()));
}

}  // namespace zemora
