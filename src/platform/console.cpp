#include "platform/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <iostream>
#include <utility>

namespace zemora {

namespace {

constexpr double kDone = 100.0;  // percent

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

bool is_control(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

}  // namespace

std::string printable(std::string_view text) {
    std::string shown(text);
    for (char& c : shown) {
        if (is_control(c)) {
            c = '?';
        }
    }
    return shown;
}

Console::Console() : is_terminal_(isatty(STDOUT_FILENO) == 1) {}

void Console::print(std::string_view text) {
    end_progress();
    std::string shown(text);
    for (char& c : shown) {
        if (is_control(c) && c != '\n' && c != '\t') {
            c = '?';
        }
    }
    std::fwrite(shown.data(), 1, shown.size(), stdout);
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
    std::string line = before_ + std::string(step) + number.data();
    if (is_terminal_) {
        line = before_ + std::string(step.substr(0, step.find_last_not_of(' ') + 1)) + number.data();
        // A line that reached the last column would start a new one each time.
        line = first_columns(line + "  " + behind_, terminal_columns() - 1);
        std::printf("\r%s\033[K", line.c_str());
        std::fflush(stdout);
        line_open_ = true;
    } else {
        std::printf("%s\n", line.c_str());
    }
}

bool Console::can_ask() const {
    return is_terminal_ && isatty(STDIN_FILENO) == 1;
}

void Console::end_progress() {
    if (line_open_) {
        std::fputc('\n', stdout);
        line_open_ = false;
    }
}

void Console::bell() {
    if (is_terminal_) {
        std::fputc('\a', stdout);
    }
}

void Console::flush() { std::fflush(stdout); }

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
