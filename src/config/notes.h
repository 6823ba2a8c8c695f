#pragma once
/// What the user is to know of a run, as values. The modules add it to a `Notes`; whoever hands that in
/// decides where it is shown, when and how often.

#include <string>
#include <string_view>
#include <vector>

#include "config/messages.h"
#include "numerics/result.h"

namespace zemora {

class Notes {
public:
    Notes(const MessageCatalogue& messages, const int& verbosity)
        : messages_(messages), verbosity_(verbosity) {}
    virtual ~Notes() = default;

    /// Takes a note; when it is shown is up to the listener.
    virtual void add(Note note) = 0;
    /// One state of a running step, 0 to 100 percent.
    virtual void progress(std::string_view step, double percent) = 0;

    /// The texts in the language of the user.
    [[nodiscard]] const MessageCatalogue& messages() const { return messages_; }
    /// `VerboseMode`, so that a text nobody asked for need not be made.
    [[nodiscard]] int verbose() const { return verbosity_; }
    /// The same, for listeners of the same extent.
    [[nodiscard]] const int& verbosity() const { return verbosity_; }
    /// Returns when all that was added is reported, so that the run may end.
    virtual void await_listener() {}

    // Short forms of `add`.

    /// For the console.
    void print(std::string_view text) { add(Note{.text = std::string(text)}); }
    /// A catalogue row for the console.
    template <Msg message, class... Values>
    void say(const Values&... values) {
        print(messages_.text<message>(values...));
    }
    /// What a pair, or the run, may come to many times.
    void print_once(std::string_view text, Repeat repeat = Repeat::once_a_pair) {
        add(Note{.text = std::string(text), .repeat = repeat});
    }
    template <Msg message, class... Values>
    void say_once(const Values&... values) {
        print_once(messages_.text<message>(values...));
    }
    void report_text(std::string_view text) {
        add(Note{.text = std::string(text), .audience = Audience::text_report});
    }
    void report_html(std::string_view html) {
        add(Note{.text = std::string(html), .audience = Audience::html_report});
    }
    void print_and_report(std::string_view text) {
        add(Note{.text = std::string(text), .audience = Audience::console_and_text_report});
    }
    /// Console and both reports; a paragraph in the HTML report.
    void tell_everywhere(std::string_view text) {
        add(Note{.text = std::string(text), .audience = Audience::everywhere});
    }
    /// Asks for Enter where `StopAtError` wants that for `severity`.
    void wait(Severity severity) { add(Note{.severity = severity, .waits = true}); }
    /// The same, but once in a run for the same `matter`.
    void wait_once(Severity severity, std::string_view matter) {
        add(Note{.severity = severity,
                 .repeat = Repeat::once_a_run,
                 .waits = true,
                 .matter = std::string(matter)});
    }

private:
    const MessageCatalogue& messages_;
    const int& verbosity_;
};

/// Keeps what is added, to be passed on later in the same order. Progress is not kept.
class KeptNotes : public Notes {
public:
    using Notes::Notes;
    void add(Note note) override { notes_.push_back(std::move(note)); }
    void progress(std::string_view /*step*/, double /*percent*/) override {}
    /// For texts in the language and of the extent that `listener` has.
    [[nodiscard]] static KeptNotes for_listener(const Notes& listener) {
        return {listener.messages(), listener.verbosity()};
    }
    /// Passes all of it on to `listener` and forgets it.
    void tell(Notes& listener);

private:
    std::vector<Note> notes_;
};

}  // namespace zemora
