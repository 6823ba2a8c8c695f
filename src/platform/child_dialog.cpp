#include "platform/child_dialog.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace zemora {

namespace {

/// In the child: the pipes in place of its standard streams, and the program. Only calls that are
/// allowed between fork and exec.
[[noreturn]] void become_program(char** arguments, int input, int output) {
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGTERM);
#endif
    signal(SIGPIPE, SIG_DFL);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    execvp(arguments[0], arguments);
    _exit(127);
}

/// Waits for the end of a child for about `seconds`; true when it has ended.
bool has_ended_within(int child, int seconds) {
    constexpr int kPauseMicroseconds = 5000;
    for (int i = 0; i < seconds * 1000000 / kPauseMicroseconds; ++i) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) != 0) {
            return true;
        }
        usleep(kPauseMicroseconds);
    }
    return false;
}

}  // namespace

ChildDialog::~ChildDialog() { close(); }

bool ChildDialog::start(const std::vector<std::string>& arguments, std::string goodbye) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (arguments.empty() || pipe2(input.data(), O_CLOEXEC) != 0) {
        return false;
    }
    if (pipe2(output.data(), O_CLOEXEC) != 0) {
        ::close(input[0]);
        ::close(input[1]);
        return false;
    }
    signal(SIGPIPE, SIG_IGN);  // a program that has gone is seen at the write
    std::vector<char*> vector;
    for (const std::string& argument : arguments) {
        vector.push_back(const_cast<char*>(argument.c_str()));  // NOLINT: the call does not write
    }
    vector.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        become_program(vector.data(), input[0], output[1]);
    }
    ::close(input[0]);
    ::close(output[1]);
    to_child_ = input[1];
    from_child_ = output[0];
    child_ = child > 0 ? child : 0;
    goodbye_ = std::move(goodbye);
    if (child <= 0) {
        close();
    }
    return child > 0;
}

bool ChildDialog::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(to_child_, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            close();
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

bool ChildDialog::read_until(std::string_view end, std::vector<std::uint8_t>& output) {
    std::array<std::uint8_t, 65536> block;
    const auto ended = [&] {
        return output.size() >= end.size() && std::equal(end.begin(), end.end(), output.end() - static_cast<std::ptrdiff_t>(end.size()),
                                                          [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
    };
    while (!ended()) {
        const ssize_t count = read(from_child_, block.data(), block.size());
        if (count > 0) {
            output.insert(output.end(), block.begin(), block.begin() + count);
        } else if (count == 0 || errno != EINTR) {
            close();
            return false;
        }
    }
    return true;
}

void ChildDialog::close() {
    constexpr int kPatience = 3;  // seconds
    if (child_ > 0 && to_child_ >= 0 && !goodbye_.empty()) {
        [[maybe_unused]] const ssize_t count = ::write(to_child_, goodbye_.data(), goodbye_.size());
    }
    for (int* end : {&to_child_, &from_child_}) {
        if (*end >= 0) {
            ::close(*end);
            *end = -1;
        }
    }
    if (child_ > 0 && !has_ended_within(child_, kPatience)) {
        kill(child_, SIGKILL);
        int status = 0;
        while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
        }
    }
    child_ = 0;
}

}  // namespace zemora
