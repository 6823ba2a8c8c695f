#pragma once
/// How a module speaks to the user: console, catalogue, reports, verbosity and waiting level in one.

#include <set>
#include <string>
#include <string_view>

#include "config/messages.h"
#include "config/parameter_set.h"
#include "platform/console.h"

namespace zemora {

/// Where report lines go; the run's reports implement it.
class ReportSink {
public:
    virtual ~ReportSink() = default;
    virtual void text_line(std::string_view text) = 0;  ///< As it stands into the text report.
    virtual void html_line(std::string_view html) = 0;  ///< As it stands into the HTML report.
    virtual void begin_section() {}  ///< A section begins that belongs together, as a pair.
    virtual void end_section() {}    ///< What was told so far is whole.
};

/// Levels of `StopAtError`: what must be confirmed with Enter.
enum class WaitAbove { error = 0, warning = 1, information = 2 };

/// In what a text is told but once.
enum class OnceIn { section, run };

class Voice {
public:
    Voice(Console& console, MessageCatalogue& messages, const ParameterSet& parameters)
        : console_(console), messages_(messages), parameters_(parameters) {}

    [[nodiscard]] Console& console() const { return console_; }
    [[nodiscard]] MessageCatalogue& messages() const { return messages_; }
    [[nodiscard]] int verbose() const { return parameters_.verbose_mode; }

    void set_report(ReportSink* report) { report_ = report; }

    /// Prints a text on the console.
    void print(std::string_view text) const { console_.print(text); }
    /// Prints a catalogue row on the console.
    template <Msg message, class... Values>
    void say(const Values&... values) const {
        console_.print(messages_.text<message>(values...));
    }
    /// Prints a text that a pair, or the run, may come to many times, the first time only; whether it was
    /// that.
    bool print_once(std::string_view text, OnceIn scope = OnceIn::section) const;
    /// The same for a catalogue row.
    template <Msg message, class... Values>
    bool say_once(const Values&... values) const {
        return print_once(messages_.text<message>(values...));
    }
    /// Writes into the reports, if they are open.
    void report_text(std::string_view text) const;
    void report_html(std::string_view html) const;
    /// Console and text report.
    void print_and_report(std::string_view text) const;
    /// Console and both reports; a paragraph in the HTML report.
    void tell_everywhere(std::string_view text) const;
    /// The same for a text that a pair may come to many times, the first time only; whether it was that.
    bool tell_everywhere_once(std::string_view text) const;

    /// A pair's section begins; the section at work is whole.
    void begin_report_section() const;
    void end_report_section() const;

    /// Waits for Enter when `StopAtError` is above the level.
    void wait(WaitAbove level) const;
    /// The same, but once in a run for the same `matter`.
    void wait_once(WaitAbove level, std::string_view matter) const;

    /// Shows the progress of a step when `VerboseMode` is above 0.
    void progress(std::string_view step, double percent) const;

private:
    void report_everywhere(std::string_view text) const;

    Console& console_;
    MessageCatalogue& messages_;
    const ParameterSet& parameters_;
    ReportSink* report_ = nullptr;
    mutable std::set<std::string, std::less<>> told_in_section_;
    mutable std::set<std::string, std::less<>> told_in_run_;
    mutable std::set<std::string, std::less<>> waited_for_;
};

/// The text with the five HTML characters escaped and line ends as "<br>".
[[nodiscard]] std::string html_text(std::string_view text);

/// Prints `reason`, the advice to close other applications and the waiting line, waits for Enter
/// and ends the process with code 1. The one road for pictures that do not fit into memory.
/// `advice` is one more line behind the advice.
[[noreturn]] void end_run_without_picture_memory(Console& console, std::string_view reason,
                                                 std::string_view advice = {});

}  // namespace zemora
