#include "config/parameter_table.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

#include "config/number_scan.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr bool keys_are_unique() {
    for (int i = 0; i < kParameterCount; ++i) {
        for (int j = 0; j < i; ++j) {
            const std::string_view a = kParameterRows[i].key;
            const std::string_view b = kParameterRows[j].key;
            if (a.size() == b.size() && a.back() == b.back() && a == b) {
                return false;
            }
        }
    }
    return true;
}

/// These codes set two fields each.
constexpr std::string_view kDoubleOptions[] = {"RO", "FL"};

constexpr int rows_with_option(std::string_view option) {
    int count = 0;
    for (const ParameterRow& row : kParameterRows) {
        count += row.option.size() == 2 && row.option[0] == option[0] && row.option[1] == option[1] ? 1 : 0;
    }
    return count;
}

constexpr bool options_are_unique() {
    return std::all_of(std::begin(kParameterRows), std::end(kParameterRows), [](const ParameterRow& row) {
        const bool twice = row.option == kDoubleOptions[0] || row.option == kDoubleOptions[1];
        return row.option.empty() ||
               (row.option.size() == 2 && rows_with_option(row.option) == (twice ? 2 : 1));
    });
}

/// The same key with letters behind it would be taken for a faulty line when it stands first.
constexpr bool longer_keys_stand_behind() {
    for (int i = 0; i < kParameterCount; ++i) {
        for (int j = 0; j < i; ++j) {
            if (kParameterRows[j].key.substr(0, kParameterRows[i].key.size()) == kParameterRows[i].key) {
                return false;
            }
        }
    }
    return true;
}

template <class Default>
constexpr bool within(double low, const Default& value, double high) {
    if constexpr (std::is_arithmetic_v<Default>) {
        return low <= static_cast<double>(value) && static_cast<double>(value) <= high;
    } else {
        return true;
    }
}

static_assert(keys_are_unique());
static_assert(options_are_unique());
static_assert(longer_keys_stand_behind());

using detail::unlimited_high;
using detail::unlimited_low;
#define ROW(type, field, key, low, high, standard, missing, option, english, german, ...)         \
    static_assert(within(low, standard, high), "the default of " key " lies outside its limits"); \
    static_assert((english)[0] != '\0' && (german)[0] != '\0', key " has no meaning");
#include "config/parameter_table.inc"
#undef ROW

std::string without_blanks(std::string_view text) {
    std::string left;
    std::copy_if(text.begin(), text.end(), std::back_inserter(left),
                 [](char c) { return c != ' ' && c != '\n'; });
    return left;
}

}  // namespace

const ParameterSet& default_parameters() {
    static const ParameterSet defaults;
    return defaults;
}

std::string value_text(const ParameterRow& row, const ParameterSet& parameters) {
    return std::visit(
        [&parameters](auto field) -> std::string {
            const auto& value = parameters.*field;
            if constexpr (std::is_same_v<decltype(field), std::string ParameterSet::*>) {
                return value;
            } else {
                return number_text(value);
            }
        },
        row.field);
}

void use_slashes_in_paths(ParameterSet& parameters) {
    for (const ParameterRow& row : kParameterRows) {
        if (row.type == ParameterType::path) {
            std::string& path = parameters.*std::get<std::string ParameterSet::*>(row.field);
            path = has_drive(path) ? path : with_slashes(path);
        }
    }
}

const ParameterRow* find_path_with_drive(const ParameterSet& parameters) {
    for (const ParameterRow& row : kParameterRows) {
        if (row.type == ParameterType::path && has_drive(value_text(row, parameters)) &&
            value_text(row, parameters) != value_text(row, default_parameters())) {
            return &row;
        }
    }
    return nullptr;
}

std::string post_run_batch(const ParameterSet& parameters) {
    const std::string settled = without_blanks(parameters.do_post_zemora);
    const bool is_default = settled == without_blanks(default_parameters().do_post_zemora);
    return settled.empty() || is_default ? std::string() : parameters.do_post_zemora;
}

}  // namespace zemora
