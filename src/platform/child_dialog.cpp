#include "platform/child_dialog.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the system's, with kill
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace zemora {

namespace {

/// In the child: the pipes in place of its standard streams, and the program; `failure` closes when it
/// runs and gets a byte when it cannot. Only calls that are allowed between fork and exec.
[[noreturn]] void become_program(char** arguments, int input, int output, int failure) {
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGINT);  // the polite signal: programs clean up behind it
#endif
    signal(SIGPIPE, SIG_DFL);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    execvp(arguments[0], arguments);
    [[maybe_unused]] const ssize_t count = write(failure, "x", 1);
    _exit(127);
}

/// The two ends of a pipe that no other program inherits; -1 when there is none.
struct Pipe {
    std::array<int, 2> ends{-1, -1};
    Pipe() {
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            ends = {-1, -1};
        }
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        close_end(0);
        close_end(1);
    }
    [[nodiscard]] bool is_open() const { return ends[0] >= 0; }
    void close_end(std::size_t end) {
        if (ends[end] >= 0) {
            ::close(ends[end]);
        }
        ends[end] = -1;
    }
    [[nodiscard]] int take(std::size_t end) { return std::exchange(ends[end], -1); }
};

/// Waits until the child runs its program; false when it could not.
bool has_become_program(Pipe& failure) {
    failure.close_end(1);
    char byte = 0;
    ssize_t count = 0;
    do {
        count = read(failure.ends[0], &byte, 1);
    } while (count < 0 && errno == EINTR);
    return count == 0;
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

ChildDialog::~ChildDialog() {
    close();
}

bool ChildDialog::start(const std::vector<std::string>& arguments, std::string goodbye) {
    Pipe input;
    Pipe output;
    Pipe failure;
    if (arguments.empty() || !input.is_open() || !output.is_open() || !failure.is_open()) {
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
        become_program(vector.data(), input.ends[0], output.ends[1], failure.ends[1]);
    }
    if (child < 0) {
        return false;
    }
    child_ = child;
    to_child_ = input.take(1);
    from_child_ = output.take(0);
    goodbye_ = std::move(goodbye);
    if (!has_become_program(failure)) {
        close();
        return false;
    }
    return true;
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
    std::size_t searched = 0;  // no answer ends before it
    for (;;) {
        const auto start = received_.begin() + static_cast<std::ptrdiff_t>(searched);
        const auto found =
            std::search(start, received_.end(), end.begin(), end.end(),
                        [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); });
        if (found != received_.end()) {
            // What follows belongs to the next answer.
            const auto next = found + static_cast<std::ptrdiff_t>(end.size());
            output.assign(received_.begin(), next);
            received_.erase(received_.begin(), next);
            return true;
        }
        searched = received_.size() - std::min(received_.size(), end.size());
        const ssize_t count = read(from_child_, block.data(), block.size());
        if (count > 0) {
            received_.insert(received_.end(), block.begin(), block.begin() + count);
        } else if (count == 0 || errno != EINTR) {
            output = std::move(received_);
            close();
            return false;
        }
    }
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
    received_.clear();
}

}  // namespace zemora
