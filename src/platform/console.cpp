#include "platform/console.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <mutex>
#include <utility>

namespace zemora {

namespace {

constexpr double kDone = 100.0;  // percent

/// The begun line, which waits for its end. A signal handler reads it too.
std::array<char, 8192> g_begun;
std::atomic<std::size_t> g_begun_size{0};
std::atomic<int> g_write_error{0};

/// Threads write one after the other. A signal handler takes it only where it is free: the thread that holds
/// it may be the one that was interrupted.
std::recursive_mutex g_writing;

/// Writes with system calls alone, for a signal may have come in the middle of an allocation.
void write_out(const char* text, std::size_t size) {
    while (size > 0) {
        const ssize_t count = write(STDOUT_FILENO, text, size);
        if (count >= 0) {
            text += count;
            size -= static_cast<std::size_t>(count);
        } else if (errno == EAGAIN) {
            pollfd ready{STDOUT_FILENO, POLLOUT, 0};
            (void)poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            g_write_error = errno;
            return;
        }
    }
}

void write_begun_line() {
    const std::size_t size = g_begun_size.exchange(0);
    write_out(g_begun.data(), size);
}

/// Writes all whole lines and keeps the begun one.
void write_lines(std::string_view text) {
    const std::lock_guard lock(g_writing);
    const std::size_t lines = text.rfind('\n') + 1;  // 0 without a line end
    if (lines > 0 || g_begun_size + text.size() > g_begun.size()) {
        flush_console();
        const std::size_t now = lines > 0 ? lines : text.size();
        write_out(text.data(), now);
        text.remove_prefix(now);
    }
    if (text.size() > g_begun.size()) {
        write_out(text.data(), text.size());
        return;
    }
    std::copy(text.begin(), text.end(), g_begun.begin() + static_cast<std::ptrdiff_t>(g_begun_size.load()));
    g_begun_size += text.size();
}

int terminal_columns() {
    constexpr int kUsual = 80;
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

/// As many characters of UTF-8 text as fill the columns.
std::string first_columns(const std::string& text, int columns) {
    int used = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool starts_character = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
        if (starts_character && ++used > columns) {
            return text.substr(0, i);
        }
    }
    return text;
}

int column_count(const std::string& text) {
    return static_cast<int>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;  // no continuation byte
    }));
}

/// Bytes of the well-formed UTF-8 character that begins the text; 1 for a byte that begins none.
std::size_t character_length(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 1;
    const bool is_whole = length <= text.size() &&
                          std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length),
                                      [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; });
    return is_whole ? length : 1;
}

/// Whether a terminal may obey the character: below the blank, delete, and 80 to 9F, whose UTF-8 form begins
/// with C2 and whose form in older terminals is the byte alone.
bool is_control(std::string_view character) {
    const auto last = static_cast<unsigned char>(character.back());
    const bool is_high = last >= 0x80 && last < 0xA0;
    return character.size() == 1 ? last < 0x20 || last == 0x7F || is_high
                                 : character.size() == 2 && character[0] == '\xC2' && is_high;
}

std::string without_controls(std::string_view text, std::string_view kept) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::string_view character = text.substr(0, character_length(text));
        shown += is_control(character) && kept.find(character) == std::string_view::npos ? "?" : character;
        text.remove_prefix(character.size());
    }
    return shown;
}

}  // namespace

void flush_console() {
    const std::lock_guard lock(g_writing);
    write_begun_line();
}

void flush_console_in_handler() {
    const std::unique_lock lock(g_writing, std::try_to_lock);
    if (lock) {
        write_begun_line();
    }
}

std::string console_error() {
    const int error = g_write_error;
    return error == 0 || error == EPIPE ? std::string() : std::strerror(error);
}

std::string printable(std::string_view text) {
    return without_controls(text, {});
}

Console::Console() : is_terminal_(isatty(STDOUT_FILENO) == 1) {}

void Console::print(std::string_view text) {
    end_progress();
    write_lines(without_controls(text, "\n\t"));
}

void Console::set_course(std::string before, std::string behind) {
    before_ = std::move(before);
    behind_ = std::move(behind);
}

void Console::progress(std::string_view step, double percent) {
    if (!is_terminal_ && percent < kDone) {
        return;
    }
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "  %5.1f %%", percent);
    if (!is_terminal_) {
        write_lines(before_ + std::string(step) + number.data() + '\n');
        return;
    }
    const std::string behind = number.data() + (behind_.empty() ? std::string() : "  " + behind_);
    // A line that reached the last column would start a new one each time. The name of the step gives way.
    const int columns = terminal_columns() - 1 - column_count(before_) - column_count(behind);
    const std::string name(step.substr(0, step.find_last_not_of(' ') + 1));
    const std::string line = "\r" + before_ + first_columns(name, columns) + behind + "\033[K";
    flush_console();
    write_out(line.data(), line.size());
    line_open_ = true;
}

bool Console::can_ask() const {
    return is_terminal_ && isatty(STDIN_FILENO) == 1;
}

void Console::end_progress() {
    if (line_open_) {
        write_lines("\n");
        line_open_ = false;
    }
}

void Console::bell() {
    if (is_terminal_) {
        write_out("\a", 1);
    }
}

void Console::flush() {
    flush_console();
}

void Console::wait_for_enter() {
    print(kWaitingLine);
    flush();
    (void)read_line();
    if (!is_terminal_) {
        print("\n");
    }
}

std::optional<std::string> Console::read_line() {
    std::string line;
    if (!std::getline(std::cin, line)) {
        return std::nullopt;
    }
    return line;
}

}  // namespace zemora
