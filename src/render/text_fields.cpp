#include <algorithm>
#include <climits>
#include <optional>
#include <string_view>

#include "config/number_scan.h"
#include "config/text_lines.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "render/font_search.h"
#include "render/picture_texts.h"

namespace zemora {

namespace {

constexpr std::string_view kFieldMark = "__";

struct SizePrefix {
    std::string_view mark;
    float size;  ///< Picture height over font size.
};
/// A longer one stands before the shorter ones that it begins with.
constexpr SizePrefix kSizePrefixes[] = {
    {"---", 87.6F}, {"--", 50.0F}, {"-", 35.3F}, {"+++", 8.85F}, {"++", 12.5F}, {"+", 17.5F}, {"", 25.0F},
};

const SizePrefix& prefix_of(std::string_view setting) {
    return *std::find_if(std::begin(kSizePrefixes), std::end(kSizePrefixes),
                         [setting](const SizePrefix& row) { return setting.starts_with(row.mark); });
}

/// The name of the folder above the one that holds the file.
std::string directory_name(const std::string& file) {
    return bare_name_of(folder_of(folder_of(file)));
}

std::string headline_text(const TextSource& source, Notes& /*notes*/) {
    return source.headline;
}

std::string file_text(const TextSource& source, Notes& /*notes*/) {
    return bare_name_of(source.file);
}

std::string directory_text(const TextSource& source, Notes& /*notes*/) {
    return directory_name(source.file);
}

std::string date_text(const TextSource& source, Notes& /*notes*/) {
    return source.date_text.empty() ? std::string() : source.date_text.substr(1);
}

/// The number of an entry: that of the folder and the place of the pair in it.
std::string award_text(const TextSource& source, Notes& notes) {
    const std::string name = directory_name(source.file);
    const int number = scan_integer(name).value_or(0);
    if (number == 0) {
        notes.say<Msg::warpimage_directory_name_must_be_digits>();
        notes.print('\'' + printable(name) + "'\n");
        notes.wait(Severity::warning);
    }
    const long long entry = static_cast<long long>(number) + source.index;
    return number_text(static_cast<int>(std::clamp<long long>(entry, INT_MIN, INT_MAX)));
}

struct Keyword {
    std::string_view mark;
    std::string_view word;  ///< What is left of it before the fields.
    std::string (*text)(const TextSource& source, Notes& notes);
};
/// In the order in which they are looked for.
constexpr Keyword kKeywords[] = {
    {"__IPTC__", "IPTC", headline_text},
    {"__FILENAME__", "FILENAME", file_text},
    {"__DIRECTORY__", "DIRECTORY", directory_text},
    {"__DATE__", "DATE", date_text},
    {"__AWARD__", "AWARD", award_text},
};

const Keyword* keyword_of(std::string_view text) {
    const auto* const found =
        std::find_if(std::begin(kKeywords), std::end(kKeywords),
                     [text](const Keyword& row) { return text.find(row.mark) != std::string_view::npos; });
    return found == std::end(kKeywords) ? nullptr : found;
}

/// A text taken apart by "head__font__size__style".
struct Fields {
    std::string_view head;
    std::string_view font;
    float size = 0.0F;
    int style = 0;
};

/// Takes the piece behind the last mark off the text.
std::optional<std::string_view> take_last(std::string_view& text) {
    const std::size_t at = text.rfind(kFieldMark);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view piece = text.substr(at + kFieldMark.size());
    text = text.substr(0, at);
    return piece;
}

/// Nothing when a field is missing or no number stands where one belongs.
std::optional<Fields> split_fields(std::string_view text) {
    if (text.ends_with(kFieldMark)) {
        text.remove_suffix(kFieldMark.size());
    }
    const auto style = take_last(text);
    const auto size = style ? take_last(text) : std::nullopt;
    const auto font = size ? take_last(text) : std::nullopt;
    if (!font) {
        return std::nullopt;
    }
    const auto pixels = scan_real(*size);
    const auto number = scan_integer(*style);
    if (!pixels || !number) {
        return std::nullopt;
    }
    return Fields{text, *font, static_cast<float>(std::clamp(*pixels, -1e6, 1e6)), *number};
}

}  // namespace

TextSpec resolve_text(const std::string& setting, const TextSource& source, Notes& notes) {
    const SizePrefix& prefix = prefix_of(setting);
    const std::string text = utf8_text(std::string_view(setting).substr(prefix.mark.size()));
    const Keyword* const keyword = keyword_of(text);
    std::optional<Fields> fields = split_fields(text);
    if (keyword != nullptr && fields && fields->head.find(keyword->word) == std::string_view::npos) {
        fields.reset();
    }
    TextSpec spec;
    spec.size = prefix.size;
    spec.text = keyword != nullptr ? keyword->text(source, notes)
                                   : std::string(fields ? fields->head : std::string_view(text));
    if (!spec) {
        return spec;
    }
    if (fields) {
        spec.size = -fields->size;
        spec.style = fields->style;
    }
    if (fields && !fields->font.empty()) {
        const ChosenFont font = choose_font(std::string(fields->font), fields->style, notes);
        spec.font_path = font.file;
        spec.style = font.style;
    } else {
        spec.font_path = default_font();
    }
    return spec;
}

bool wants_headline(const std::string& setting) {
    const Keyword* const keyword = keyword_of(setting);
    return keyword != nullptr && keyword->text == headline_text;
}

}  // namespace zemora
