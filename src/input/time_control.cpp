#include "input/time_control.h"

#include <cstdlib>

#include "platform/console.h"
#include "platform/paths.h"

namespace zemora {

namespace {

std::string names_of(const std::string& left, const std::string& right) {
    return indented_name(left) + indented_name(right);
}

}  // namespace

std::string indented_name(const std::string& file) {
    return "   " + printable(file) + '\n';
}

void TimeControl::expect(const std::vector<std::string>& files) {
    if (is_on()) {
        clock_.expect(files);
    }
}

TimeComparison TimeControl::compare(const std::string& left, const std::string& right) {
    const auto left_time = clock_.time_of(left);
    const auto right_time = clock_.time_of(right);
    if (!left_time && !left.empty() && !clock_.uses_exiv2()) {
        tell_missing_time(left);
    }
    const int seconds = left_time && right_time ? difference_seconds(*left_time, *right_time) : 0;
    return {seconds, left_time.has_value(), right_time.has_value()};
}

void TimeControl::tell_missing_time(const std::string& left) {
    if (!told_.insert(left).second) {
        return;
    }
    const std::string suffix = suffix_of(left);
    notes_.say<Msg::files_input_format_needs_exiv2>(printable(suffix.empty() ? suffix : suffix.substr(1)));
    notes_.print(notes_.messages().either(
        {"Exiv2 is found on https://exiv2.org and among the packages of most systems.\n",
         "Exiv2 gibt es auf https://exiv2.org und als Paket der meisten Systeme.\n"}));
    notes_.wait(Severity::error);
}

void TimeControl::set_reference(int seconds, const std::string& left, const std::string& right) {
    reference_s_ = seconds;
    has_reference_ = true;
    if (notes_.verbose() > 0) {
        notes_.tell_everywhere(notes_.messages().text<Msg::files_input_time_difference_reset>(seconds) +
                               names_of(left, right));
    }
}

void TimeControl::tell_end_of_pairs(const TimeComparison& times, const std::string& left,
                                    const std::string& right) const {
    notes_.tell_everywhere(
        notes_.messages().either({"\nThe list of pairs ends here, without capture time:\n",
                                  "\nDie Liste der Paare endet hier, ohne Aufnahmezeit:\n"}) +
        (times.left_has_time ? "" : indented_name(left)) +
        (times.right_has_time ? "" : indented_name(right)));
}

bool TimeControl::is_near_reference(int seconds, const std::string& left, const std::string& right) const {
    if (notes_.verbose() < 2) {
        notes_.print(".");
    } else {
        notes_.tell_everywhere(notes_.messages().text<Msg::files_input_time_difference>(seconds) +
                               names_of(left, right));
    }
    const int relative = seconds - reference_s_;
    const bool is_near = std::abs(relative) <= tolerance_s_;
    if (!is_near && notes_.verbose() > 0) {
        notes_.tell_everywhere(notes_.messages().text<Msg::files_input_time_difference_warning>(relative) +
                               names_of(left, right));
    }
    return is_near;
}

}  // namespace zemora
