#include "report/picture_tags.h"

#include <string_view>

#include "config/messages.h"
#include "platform/paths.h"

namespace zemora {

namespace {

/// Characters that stand for themselves in an address (RFC 3986, unreserved), and the separator.
bool is_plain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("-._~/").find(c) != std::string_view::npos;
}

}  // namespace

std::string page_address(const std::string& path, const std::string& page_folder) {
    std::string address;
    for (const char c : relative_to(path, page_folder)) {
        address += is_plain(c) ? std::string(1, c)
                               : format_text("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    return address;
}

std::string pair_tag(const std::string& left, const std::string& right, const std::string& page_folder) {
    return R"(<img src=")" + page_address(left, page_folder) +
           R"(" alt="left thumb" width=267>&nbsp;&nbsp;<img src=")" + page_address(right, page_folder) +
           "\" alt=\"right thumb\" width=267></p>\n";
}

std::string thumb_tag(const std::string& left, const std::string& right, const std::string& page_folder) {
    return R"(<img src=")" + page_address(left, page_folder) +
           R"(" alt="left thumb missing">&nbsp;&nbsp;<img src=")" + page_address(right, page_folder) +
           "\" alt=\"right thumb missing\"></p>\n";
}

std::string preview_tag(const std::string& path, const std::string& page_folder) {
    return R"(<img src=")" + page_address(path, page_folder) + "\" alt=\"anaglyph-preview\" width=560></p>\n";
}

}  // namespace zemora
