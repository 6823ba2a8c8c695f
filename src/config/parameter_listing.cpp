#include "config/parameter_listing.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "config/parameter_table.h"

namespace zemora {

namespace {

struct ListingLine {
    Parameter on_console;
    Parameter in_report;

    [[nodiscard]] constexpr Parameter in(ListingForm form) const {
        return form == ListingForm::console ? on_console : in_report;
    }
};

constexpr ListingLine kOrder[] = {
#define BOTH(setting) {Parameter::setting, Parameter::setting},
#define EITHER(console, report) {Parameter::console, Parameter::report},
#include "config/listing_order.inc"
};

/// Both forms list each setting whose absence from a file is reported, and no other, once.
constexpr bool lists_every_setting_once(ListingForm form) {
    for (int i = 0; i < kParameterCount; ++i) {
        const auto lines = std::count_if(
            std::begin(kOrder), std::end(kOrder),
            [form, i](const ListingLine& line) { return static_cast<int>(line.in(form)) == i; });
        if (lines != (kParameterRows[i].missing == MissingKey::noted ? 1 : 0)) {
            return false;
        }
    }
    return true;
}
static_assert(lists_every_setting_once(ListingForm::console));
static_assert(lists_every_setting_once(ListingForm::report));

/// Control characters as "?", line ends as they are.
std::string printable_lines(std::string_view text) {
    std::string shown;
    for (;;) {
        const std::size_t end = text.find('\n');
        shown += printable(text.substr(0, end));
        if (end == std::string_view::npos) {
            return shown;
        }
        shown += '\n';
        text.remove_prefix(end + 1);
    }
}

std::string shown_value(const ParameterRow& row, const ParameterSet& parameters) {
    return std::visit(
        [&parameters](auto field) -> std::string {
            const auto& value = parameters.*field;
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, std::string>) {
                return printable(value);
            } else if constexpr (std::is_same_v<Value, int>) {
                return format_text("%6d", value);
            } else {
                return format_text("%6.2f", static_cast<double>(value));
            }
        },
        row.field);
}

std::string label(const ParameterRow& row) {
    return format_text("%-21s= ", std::string(row.key).c_str());
}

/// The batch, which may run over lines, ends the listing.
std::string last_lines(const ParameterSet& parameters, ListingForm form) {
    std::string text = label(row_of(Parameter::do_post_zemora));
    text += form == ListingForm::console ? "\n" : "";
    text += printable_lines(parameters.do_post_zemora);
    return text + (text.ends_with('\n') ? "\n" : "\n\n");
}

}  // namespace

std::string parameter_listing(const ParameterSet& parameters, const MessageCatalogue& messages,
                              ListingForm form) {
    std::string text =
        messages.text<Msg::parameters_listing_heading>() + messages.text<Msg::parameters_listing_rule>();
    for (const ListingLine& line : kOrder) {
        const Parameter parameter = line.in(form);
        if (parameter == Parameter::do_post_zemora) {
            return text + last_lines(parameters, form);
        }
        text += label(row_of(parameter)) + shown_value(row_of(parameter), parameters) + '\n';
        text += parameter == Parameter::list_of_images ? "\n" : "";
    }
    return text;
}

void list_parameters(const ParameterSet& parameters, Voice& voice) {
    if (voice.verbose() > 1) {
        voice.print(parameter_listing(parameters, voice.messages(), ListingForm::console));
        voice.wait(Severity::information);
    }
}

void report_parameters(const ParameterSet& parameters, Voice& voice) {
    if (voice.verbose() > 1) {
        voice.report_text(parameter_listing(parameters, voice.messages(), ListingForm::report));
    }
}

}  // namespace zemora
