#include "report/test_image_parts.h"

#include <algorithm>

#include "numerics/bitmap_file.h"
#include "render/font_search.h"

namespace zemora {

namespace {

void tell_fault(const LetterFont& font, const std::string& file, Voice& voice) {
    if (font.fault() == TextFault::library) {
        voice.say<Msg::main_ttf_init_failed>(font.reason());
    } else {
        voice.say<Msg::main_font_load_failed>(font.pixels(), printable(file), font.reason());
    }
    voice.console().wait_for_enter();
}

}  // namespace

std::vector<LetterMask> label_masks(const std::vector<std::string>& labels, int font_px, Voice& voice) {
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
        tell_fault(font, file, voice);
        masks.clear();
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

Bitmap test_bitmap(int width, int height, const char* reason, Voice& voice) {
    Bitmap bitmap = Bitmap::create(width, height);
    if (!bitmap) {
        end_run_without_picture_memory(voice.console(), reason);
    }
    return bitmap;
}

bool store_test_image(const Bitmap& picture, const std::string& file, Voice& voice) {
    const std::string reason = encode_and_write(picture.handle(), FIF_TIFF, TIFF_LZW, file);
    if (!reason.empty()) {
        voice.print(format_text(voice.messages().either({"The file %s cannot be written: %s\n",
                                                         "Die Datei %s kann nicht geschrieben werden: %s\n"}),
                                printable(file).c_str(), reason.c_str()));
    }
    return reason.empty();
}

}  // namespace zemora
