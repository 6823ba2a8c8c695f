#include "config/text_lines.h"

#include <algorithm>

namespace zemora {

namespace {

constexpr unsigned char kContinuationMask = 0xC0;
constexpr unsigned char kContinuation = 0x80;

/// Sequences of UTF-8 by their first byte (Unicode 15, table 3-7), with the range of the second byte.
struct LeadByte {
    unsigned char first;
    unsigned char last;
    unsigned char second_low;
    unsigned char second_high;
    int length;
};
constexpr LeadByte kLeadBytes[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

/// Length of the valid sequence at the beginning of the text; 0 when there is none.
std::size_t sequence_length(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (const LeadByte& lead : kLeadBytes) {
        if (byte(0) < lead.first || byte(0) > lead.last) {
            continue;
        }
        const auto length = static_cast<std::size_t>(lead.length);
        if (length > text.size() ||
            (length > 1 && (byte(1) < lead.second_low || byte(1) > lead.second_high))) {
            return 0;
        }
        for (std::size_t i = 2; i < length; ++i) {
            if ((byte(i) & kContinuationMask) != kContinuation) {
                return 0;
            }
        }
        return length;
    }
    return 0;
}

bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = sequence_length(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

/// Windows-1252 from 0x80 on, up to where it meets Latin-1; unused places keep their number.
constexpr char16_t kWindows1252[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

std::string from_windows_1252(std::string_view text) {
    std::string utf8;
    for (const char c : text) {
        unsigned code = static_cast<unsigned char>(c);
        if (code >= 0x80 && code < 0xA0) {
            code = kWindows1252[code - 0x80];
        }
        if (code < 0x80) {
            utf8 += static_cast<char>(code);
        } else if (code < 0x800) {
            utf8 += static_cast<char>(0xC0 | (code >> 6));
            utf8 += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            utf8 += static_cast<char>(0xE0 | (code >> 12));
            utf8 += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            utf8 += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return utf8;
}

TextLine make_line(std::string_view raw) {
    std::string text;
    std::copy_if(raw.begin(), raw.end(), std::back_inserter(text), [](char c) { return c != '\r'; });
    std::replace(text.begin(), text.end(), '\t', ' ');
    const std::size_t length = text.size();
    return {utf8_text(text), length};
}

}  // namespace

std::vector<TextLine> text_lines(std::span<const std::uint8_t> bytes) {
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        text.remove_prefix(kByteOrderMark.size());
    }
    std::vector<TextLine> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        lines.push_back(make_line(text.substr(0, end)));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}

std::string utf8_text(std::string_view raw) {
    return is_utf8(raw) ? std::string(raw) : from_windows_1252(raw);
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

std::size_t del_str_blanks(std::string& text) {
    std::erase(text, ' ');
    return text.size();
}

}  // namespace zemora
