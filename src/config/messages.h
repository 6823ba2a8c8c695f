#pragma once
/// The message catalogue: every text for the user that exists in two languages.
///
/// A text is named by its row: `catalogue.text<Msg::warpimage_...>(values...)`. The values are
/// checked against the placeholders of the row when the program is compiled.

#include <array>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

namespace zemora {

/// The modules that number their texts.
enum class MessageModule {
    main,
    parameters,
    files_input,
    img_input,
    stereo_analyse,
    warpimage,
    create_movie,
    video_source,
    video_previewer,
};

/// The language selector.
enum class Language { german = 0, english = 1 };

/// One name per row of the table: the module, an underscore and the row's name.
enum class Msg : int {
#define ROW(module, number, name, english, german) module##_##name,
#include "config/message_table.inc"
#undef ROW
};

/// A text in both languages.
struct MessageRow {
    MessageModule module;
    int number;  ///< Unique within the module.
    const char* english;
    const char* german;
};

inline constexpr MessageRow kMessageTable[] = {
#define ROW(module, number, name, english, german) {MessageModule::module, number, english, german},
#include "config/message_table.inc"
#undef ROW
};

/// The values that a printf-like text takes, by their letters in its order: "sd" for "%s: %3d"; a long
/// integer "%ld" is "l", "%%" takes none.
struct Placeholders {
    std::array<char, 16> kinds{};
    int count = 0;
    friend constexpr bool operator==(const Placeholders&, const Placeholders&) = default;
};

[[nodiscard]] constexpr Placeholders placeholders_of(std::string_view text) {
    Placeholders found;
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != '%') {
            continue;
        }
        ++i;
        if (text[i] == '%') {
            continue;
        }
        while (i < text.size() &&
               std::string_view("-+ #0123456789.").find(text[i]) != std::string_view::npos) {
            ++i;
        }
        if (i < text.size() && found.count < static_cast<int>(found.kinds.size())) {
            found.kinds[static_cast<std::size_t>(found.count++)] = text[i] == 'x' ? 'd' : text[i];
            i += text[i] == 'l' ? 1 : 0;
        }
    }
    return found;
}

/// The letter of a text's value of type T.
template <class T>
[[nodiscard]] constexpr char placeholder_kind() {
    using V = std::decay_t<T>;
    if constexpr (std::is_same_v<V, char>) {
        return 'c';
    } else if constexpr (std::is_floating_point_v<V>) {
        return 'f';
    } else if constexpr (std::is_same_v<V, long>) {
        return 'l';
    } else if constexpr (std::is_integral_v<V>) {
        return 'd';
    } else {
        return 's';
    }
}

/// Formats like printf into a string of any length.
[[nodiscard]] std::string format_text(const char* format, ...) __attribute__((format(printf, 1, 2)));

namespace detail {
[[nodiscard]] std::string format_unchecked(const char* format, ...);
inline const char* plain(const std::string& text) {
    return text.c_str();
}
inline const char* plain(const char* text) {
    return text;
}
template <class T>
requires std::is_arithmetic_v<T> T plain(T value) {
    return value;
}
}  // namespace detail

/// A text in both languages. One whose placeholders differ does not compile.
struct BothTexts {
    consteval BothTexts(const char* in_english, const char* in_german)
        : english(in_english), german(in_german) {
        if (!(placeholders_of(in_english) == placeholders_of(in_german))) {
            throw "the two languages take different values";
        }
    }
    const char* english;
    const char* german;
};

/// Gives the texts in the current language.
class MessageCatalogue {
public:
    explicit MessageCatalogue(Language language) : language_(language) {}

    void set_language(Language language) { language_ = language; }
    [[nodiscard]] Language language() const { return language_; }
    [[nodiscard]] bool is_german() const { return language_ == Language::german; }

    /// The row's text with its placeholders filled.
    template <Msg message, class... Values>
    [[nodiscard]] std::string text(const Values&... values) const {
        constexpr const MessageRow& row = kMessageTable[static_cast<int>(message)];
        constexpr Placeholders wanted = placeholders_of(row.english);
        static_assert(wanted == Placeholders{{placeholder_kind<Values>()...}, sizeof...(Values)},
                      "the values do not fit the placeholders of this message");
        return detail::format_unchecked(raw(row), detail::plain(values)...);
    }

    /// The row's unfilled text, for tables of messages.
    [[nodiscard]] const char* raw(Msg message) const { return raw(kMessageTable[static_cast<int>(message)]); }
    [[nodiscard]] const char* raw(const MessageRow& row) const {
        return is_german() ? row.german : row.english;
    }

    /// Look-up by module and number; an unknown number gives "Message not found, please report error
    /// number %d\n" filled with it, in the current language.
    [[nodiscard]] std::string find(MessageModule module, int number) const;

    /// A text that is no catalogue row but exists in both languages.
    [[nodiscard]] const char* either(const BothTexts& text) const {
        return is_german() ? text.german : text.english;
    }

private:
    Language language_;
};

}  // namespace zemora
