#pragma once
/// What a function that can fail gives back: its value, or the note for the user that says why there is none.

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace zemora {

/// How serious a note is: a waiting one is confirmed with Enter where `StopAtError` is above its number.
enum class Severity { must_be_seen = -2, error = 0, warning = 1, information = 2 };

/// Who gets to read a note.
enum class Audience {
    console,  ///< Console alone.
    console_and_text_report,
    everywhere,  ///< Console, text report and HTML report.
    text_report,
    html_report,
};

/// How often one and the same text is shown.
enum class Repeat { always, once_a_pair, once_a_run };

/// Something that the user is to know.
struct Note {
    Severity severity = Severity::information;
    std::string text{};  ///< Whole lines with their line ends; of the HTML report alone, its markup.
    Audience audience = Audience::console;
    Repeat repeat = Repeat::always;
    bool waits = false;    ///< Asks for Enter where `StopAtError` wants that for the severity.
    std::string matter{};  ///< What `repeat` goes by; empty: the text.
};

/// Why a function could not do its work.
struct Failure {
    Note note;               ///< Empty text: everything has been said.
    bool ends_run = false;   ///< Nothing that comes later could succeed either.
    bool no_memory = false;  ///< Pictures do not fit into memory; ends the run with the advice for that.
    std::string advice{};    ///< One more line behind that advice.
    std::string file{};      ///< The file that it is about; empty where there is none.

    /// Pictures that do not fit into memory; `reason` with its number and line end.
    [[nodiscard]] static Failure out_of_memory(std::string reason, std::string advice = {}) {
        return {{Severity::error, std::move(reason)}, true, true, std::move(advice)};
    }
    /// Ends the run with these words on the console, confirmed by `StopAtError`.
    [[nodiscard]] static Failure of_run(std::string text) {
        Failure failure{{Severity::error, std::move(text)}, true, false, {}};
        failure.note.waits = true;
        return failure;
    }
    /// Ends the pair with these words on the console.
    [[nodiscard]] static Failure of_pair(std::string text) {
        return {{Severity::error, std::move(text)}, false, false, {}};
    }
};

/// A value, or why there is none.
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : outcome_(std::in_place_index<0>, std::move(value)) {}  // NOLINT: widens freely
    Result(Failure failure) : outcome_(std::in_place_index<1>, std::move(failure)) {}  // NOLINT

    [[nodiscard]] bool has_value() const { return outcome_.index() == 0; }
    [[nodiscard]] explicit operator bool() const { return has_value(); }
    /// Only with a value.
    [[nodiscard]] T& value() & { return *std::get_if<0>(&outcome_); }
    [[nodiscard]] const T& value() const& { return *std::get_if<0>(&outcome_); }
    [[nodiscard]] T&& value() && { return std::move(*std::get_if<0>(&outcome_)); }
    [[nodiscard]] T& operator*() & { return value(); }
    [[nodiscard]] const T& operator*() const& { return value(); }
    [[nodiscard]] T&& operator*() && { return std::move(*this).value(); }
    [[nodiscard]] T* operator->() { return &value(); }
    [[nodiscard]] const T* operator->() const { return &value(); }
    /// Only without one.
    [[nodiscard]] const Failure& failure() const { return *std::get_if<1>(&outcome_); }

private:
    std::variant<T, Failure> outcome_;
};

/// Done, or why not.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Failure failure) : failure_(std::move(failure)) {}  // NOLINT: widens freely

    [[nodiscard]] bool has_value() const { return !failure_; }
    [[nodiscard]] explicit operator bool() const { return has_value(); }
    [[nodiscard]] const Failure& failure() const { return *failure_; }

private:
    std::optional<Failure> failure_;
};

}  // namespace zemora
