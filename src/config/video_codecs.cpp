#include "config/video_codecs.h"

#include <algorithm>

#include "config/text_lines.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr std::size_t kCodeLength = 4;  // characters

constexpr bool codes_have_four_characters() {
    return std::all_of(std::begin(kVideoCodecs), std::end(kVideoCodecs),
                       [](const VideoCodecRow& row) { return row.code.size() == kCodeLength; });
}
static_assert(codes_have_four_characters());

/// The name between blanks, so that no part of another name is taken for it.
std::string between_blanks(std::string_view name) {
    return ' ' + lower_case(trimmed(name)) + ' ';
}

}  // namespace

bool is_video_preset(std::string_view name) {
    return std::find(std::begin(kVideoPresets), std::end(kVideoPresets), name) != std::end(kVideoPresets);
}

const VideoCodecRow* find_video_codec(std::string_view name) {
    const std::string_view word = trimmed(name);
    if (word.empty() || word.find(' ') != std::string_view::npos) {
        return nullptr;
    }
    const std::string wanted = between_blanks(word);
    for (const VideoCodecRow& row : kVideoCodecs) {
        if (between_blanks(row.code) == wanted ||
            between_blanks(row.aliases).find(wanted) != std::string::npos) {
            return &row;
        }
    }
    return nullptr;
}

std::string codec_code_of(std::string_view codec_text) {
    std::string code(codec_text.substr(0, std::min(codec_text.find('|'), kCodeLength)));
    code.resize(kCodeLength, ' ');
    return code;
}

}  // namespace zemora
