#include "platform/console.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace zemora {

namespace {

constexpr double kDone = 100.0;  // percent

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

void Console::progress(std::string_view step, double percent) {
    if (is_terminal_) {
        std::printf("\r%.*s  %5.1f %% ", static_cast<int>(step.size()), step.data(), percent);
        std::fflush(stdout);
        line_open_ = true;
    } else if (percent >= kDone) {
        std::printf("%.*s  %5.1f %%\n", static_cast<int>(step.size()), step.data(), percent);
    }
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
