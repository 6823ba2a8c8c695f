#pragma once
/// The console: standard output, progress lines, the bell and the waiting for Enter.

#include <optional>
#include <string>
#include <string_view>

namespace zemora {

/// Writes to standard output, each line as soon as it is whole. Overwritten lines and the bell appear only on
/// a terminal; in a pipe or a file each step is one plain line.
class Console {
public:
    Console();

    /// Prints the text; control characters other than line ends and tabs are shown as "?".
    void print(std::string_view text);
    /// Shows one state of a running step: overwrites the line on a terminal, where the name of the step is
    /// cut to its width. Elsewhere the line appears once, when `percent` has reached 100.
    void progress(std::string_view step, double percent);
    /// What stands round the steps in those lines: before them which pair of how many is at work, behind
    /// them, on a terminal, the time that the rest will take.
    void set_course(std::string before, std::string behind);
    /// Ends an overwritten line, so that the next text starts on a line of its own.
    void end_progress();
    /// Rings the bell of a terminal.
    void bell();
    /// Writes out a begun line.
    void flush();

    /// Prints the waiting line and reads one whole line; returns at once at the end of input.
    void wait_for_enter();
    /// Reads one line without its end; nothing at the end of input.
    [[nodiscard]] std::optional<std::string> read_line();

    /// Whether somebody can answer: input and output are terminals.
    [[nodiscard]] bool can_ask() const;

private:
    bool is_terminal_;
    std::string before_;
    std::string behind_;
    bool line_open_ = false;  ///< An overwritten progress line is on the screen.
};

/// "Please hit Enter // Bitte Enter Taste...", the same in both languages.
inline constexpr std::string_view kWaitingLine = "Please hit Enter // Bitte Enter Taste...";

/// Writes out a begun line; before an outside program, and at every end.
void flush_console();
/// The same from a signal handler, unless a thread is just writing.
void flush_console_in_handler();

/// Why something printed could not be written, e.g. a full disk; empty when all was. A reader of a pipe that
/// has gone is no error.
[[nodiscard]] std::string console_error();

/// The text with control characters shown as "?", for names on the console and in reports.
[[nodiscard]] std::string printable(std::string_view text);

}  // namespace zemora
