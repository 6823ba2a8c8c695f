#include "config/messages.h"

#include <cstdarg>
#include <iterator>

namespace zemora {

namespace {

#define ROW(module, number, name, english, german)                                             \
    static_assert(placeholders_of(english) == placeholders_of(german),                         \
                  "the placeholders of " #module " " #number " differ between the languages"); \
    static_assert((english)[0] != '\0' && (german)[0] != '\0', #module " " #number " lacks a text");
#include "config/message_table.inc"
#undef ROW

constexpr bool numbers_ascend() {
    for (std::size_t i = 1; i < std::size(kMessageTable); ++i) {
        const MessageRow& before = kMessageTable[i - 1];
        const MessageRow& row = kMessageTable[i];
        if (row.module < before.module || (row.module == before.module && row.number <= before.number)) {
            return false;
        }
    }
    return true;
}
static_assert(numbers_ascend(), "the message rows stand by module, and by number within a module");

std::string format_list(const char* format, std::va_list list) {
    std::va_list copy;
    va_copy(copy, list);
    const int length =
        std::vsnprintf(nullptr, 0, format, copy);  // NOLINT(clang-analyzer-valist.Uninitialized)
    va_end(copy);
    if (length < 0) {
        return {};
    }
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, list);
    return text;
}

}  // namespace

std::string format_text(const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    std::string text = format_list(format, list);
    va_end(list);
    return text;
}

std::string detail::format_unchecked(const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    std::string text = format_list(format, list);
    va_end(list);
    return text;
}

std::string MessageCatalogue::find(MessageModule module, int number) const {
    for (const MessageRow& row : kMessageTable) {
        if (row.module == module && row.number == number) {
            return raw(row);
        }
    }
    return format_text(is_german() ? "Message wurde nicht gefunden, bitte Fehler Nr. %d melden.\n"
                                   : "Message not found, please report error number %d\n",
                       number);
}

}  // namespace zemora
