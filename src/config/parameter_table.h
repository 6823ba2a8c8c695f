#pragma once
/// The table of parameters: what each key of the parameter file means, allows and sets.

#include <limits>
#include <string>
#include <string_view>
#include <variant>

#include "config/messages.h"
#include "config/parameter_set.h"

namespace zemora {

/// What it means that a parameter file lacks the key.
enum class MissingKey {
    noted,        ///< The default is taken and a line says so.
    silent,       ///< The default is taken without a word.
    option_only,  ///< No key of the file; only an option sets it.
    derived,      ///< Neither key nor option; the program works it out.
};

enum class ParameterType { integer, real, long_real, text, path };

using ParameterField = std::variant<int ParameterSet::*, float ParameterSet::*, double ParameterSet::*,
                                    std::string ParameterSet::*>;

struct ParameterRow {
    ParameterField field;
    std::string_view key;
    double low;  ///< Least and greatest value that a file may give; texts have no limits.
    double high;
    ParameterType type;
    MissingKey missing;
    std::string_view option;  ///< Two letters or digits; empty for keys that no option sets.
    const char* english;
    const char* german;

    [[nodiscard]] constexpr bool is_text() const {
        return type == ParameterType::text || type == ParameterType::path;
    }
    [[nodiscard]] constexpr bool is_in_file() const {
        return missing == MissingKey::noted || missing == MissingKey::silent;
    }
    [[nodiscard]] constexpr bool has_limits() const {
        return !is_text() && high < std::numeric_limits<double>::max();
    }
    [[nodiscard]] const char* meaning(Language language) const {
        return language == Language::german ? german : english;
    }
};

namespace detail {
inline constexpr double unlimited_low = std::numeric_limits<double>::lowest();
inline constexpr double unlimited_high = std::numeric_limits<double>::max();

[[nodiscard]] constexpr ParameterType parameter_type(std::string_view name) {
    return name == "int"      ? ParameterType::integer
           : name == "float"  ? ParameterType::real
           : name == "double" ? ParameterType::long_real
           : name == "path"   ? ParameterType::path
                              : ParameterType::text;
}

inline constexpr auto noted = MissingKey::noted;
inline constexpr auto silent = MissingKey::silent;
inline constexpr auto option_only = MissingKey::option_only;
inline constexpr auto derived = MissingKey::derived;

inline constexpr ParameterRow kParameterRows[] = {
#define ROW(type, field, key, low, high, standard, missing, option, english, german, ...) \
    {&ParameterSet::field, key, low, high, parameter_type(#type), missing, option, english, german},
#include "config/parameter_table.inc"
#undef ROW
};
}  // namespace detail

using detail::kParameterRows;
inline constexpr int kParameterCount = static_cast<int>(std::size(kParameterRows));

/// The rows by name: `row_of(Parameter::output_height)`.
enum class Parameter : int {
#define ROW(type, field, key, low, high, standard, missing, option, english, german, ...) field,
#include "config/parameter_table.inc"
#undef ROW
};

[[nodiscard]] constexpr const ParameterRow& row_of(Parameter parameter) {
    return kParameterRows[static_cast<int>(parameter)];
}

/// Whether a key that nobody sets means more than its default, so that a file need not name it.
[[nodiscard]] constexpr bool acts_when_not_set(const ParameterRow& row) {
    return &row == &row_of(Parameter::rot_mir_input_left) || &row == &row_of(Parameter::rot_mir_input_right);
}

/// One line of a listing: a heading, or the row with the number `row`.
struct ParameterListingItem {
    const char* english_heading;
    const char* german_heading;
    int row;  ///< -1 for a heading.

    [[nodiscard]] constexpr bool is_heading() const { return row < 0; }
    [[nodiscard]] const char* heading(Language language) const {
        return language == Language::german ? german_heading : english_heading;
    }
};

inline constexpr ParameterListingItem kParameterListing[] = {
#define GROUP(english, german) {english, german, -1},
#define ROW(type, field, key, low, high, standard, missing, option, english, german, ...) \
    {nullptr, nullptr, static_cast<int>(Parameter::field)},
#include "config/parameter_table.inc"
#undef ROW
};

/// The settings as they are before any file or option.
[[nodiscard]] const ParameterSet& default_parameters();

/// The row's value as it stands in a listing: integers and reals in the shortest form, texts as they are.
[[nodiscard]] std::string value_text(const ParameterRow& row, const ParameterSet& parameters);

/// Every backslash of a path-valued setting becomes "/". A path with a drive stays as it is, so that
/// it can be refused by name and the default converter is still recognised.
void use_slashes_in_paths(ParameterSet& parameters);

/// The first path-valued setting that names a drive, which has no meaning here; the default of
/// `PathofIrfanView` does not count. Null when there is none.
[[nodiscard]] const ParameterRow* find_path_with_drive(const ParameterSet& parameters);

/// The commands for the end of the run; empty when they are the default text or blank.
[[nodiscard]] std::string post_run_batch(const ParameterSet& parameters);

}  // namespace zemora
