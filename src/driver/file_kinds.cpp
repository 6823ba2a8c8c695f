#include "driver/file_kinds.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "input/picture_file.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "render/save_picture.h"

namespace zemora {

namespace {

constexpr std::array<std::string_view, 5> kWithExif{".jpg", ".mpo", ".tif", ".arw", ".cr2"};
constexpr std::array<std::string_view, 3> kWithIptc{".jpg", ".tif", ".mpo"};

template <std::size_t kSize>
bool holds(const std::array<std::string_view, kSize>& list, std::string_view suffix) {
    return std::find(list.begin(), list.end(), suffix) != list.end();
}

void warn(const ParameterSet& parameters, Notes& notes, const std::string& text) {
    if (parameters.video_mode == 0) {
        if (notes.verbose() > 0) {
            notes.print(text);
        }
        notes.wait(Severity::warning);
    }
}

bool asks_for_iptc(const std::string& text) {
    return text.find("__IPTC__") != std::string::npos;
}

}  // namespace

std::string checked_suffix(const std::string& name, Notes& notes) {
    const std::string suffix = suffix_of(name);
    std::string text = "Zemora: ";
    if (suffix.empty()) {
        text += notes.messages().text<Msg::main_image_name_needs_ending>();
    } else if (suffix.size() != 4 && suffix.size() != 5) {
        text += notes.messages().text<Msg::main_image_without_valid_ending>();
    } else {
        return usual_suffix(name);
    }
    notes.tell_everywhere(text + printable(name) + '\n');
    return {};
}

std::string output_suffix(const ParameterSet& parameters, const std::string& input_suffix,
                          bool both_multi_picture, Notes& notes) {
    static constexpr std::array<std::string_view, 10> kByFormat{"",     ".jpg", ".tga", ".bmp", ".png",
                                                                ".tif", ".tif", ".tif", ".tif", ".tif"};
    const int format = parameters.output_format;
    if (parameters.video_output < 0) {
        return ".avi";
    }
    if (format > 0 && format < static_cast<int>(kByFormat.size())) {
        return std::string(kByFormat[static_cast<std::size_t>(format)]);
    }
    if (both_multi_picture) {
        return ".jpg";
    }
    if (is_written_suffix(input_suffix)) {
        return input_suffix;
    }
    const bool any_output = parameters.left_right_output != 0 || parameters.stereo_output != 0 ||
                            parameters.anaglyph_output != 0 || parameters.extra_output != 0;
    if (notes.verbose() > 0 && parameters.video_mode == 0 && any_output) {
        notes.tell_everywhere(notes.messages().text<Msg::main_output_type_replaced_by_bmp>(input_suffix));
    }
    notes.wait(Severity::warning);
    return ".bmp";
}

InputClass input_class_of(const std::string& left_suffix, const std::string& right_suffix) {
    if (left_suffix != right_suffix) {
        return InputClass::none;
    }
    if (left_suffix == ".jpg") {
        return InputClass::jpeg;
    }
    return left_suffix == ".tif" ? InputClass::tiff
                                 : (left_suffix == ".mpo" ? InputClass::mpo : InputClass::none);
}

TagPermissions tag_permissions(const ParameterSet& parameters, const std::string& left_input,
                               const std::string& right_input, const std::string& left_output,
                               const std::string& right_output, Notes& notes) {
    const auto both = [&](std::string_view suffix) {
        return left_output == suffix && right_output == suffix;
    };
    TagPermissions permissions;
    permissions.colour_profile_ok = both(".jpg") || both(".tif");
    permissions.exif_ok =
        left_input == right_input && holds(kWithExif, left_input) && permissions.colour_profile_ok;
    permissions.tags_ok = permissions.exif_ok || permissions.colour_profile_ok || both(".mpo");
    const MessageCatalogue& messages = notes.messages();
    if (!permissions.exif_ok && parameters.meta_transfer != 0) {
        warn(parameters, notes, messages.text<Msg::main_meta_transfer_without_exif>());
    }
    if (!permissions.tags_ok && !parameters.exif_copyright.empty()) {
        warn(parameters, notes, messages.text<Msg::main_copyright_without_exif>());
    }
    if (!holds(kWithIptc, left_input)) {
        if (asks_for_iptc(parameters.caption_text)) {
            warn(parameters, notes, messages.text<Msg::main_caption_text_without_iptc>());
        }
        if (asks_for_iptc(parameters.image_text)) {
            warn(parameters, notes, messages.text<Msg::main_image_text_without_iptc>());
        }
    }
    return permissions;
}

}  // namespace zemora
