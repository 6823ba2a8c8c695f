#include "platform/child_dialog.h"

#include <fcntl.h>
#include <poll.h>
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
[[noreturn]] void become_program(char** arguments, int input, int output, int errors, int failure) {
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGINT);  // the polite signal: programs clean up behind it
#endif
    signal(SIGPIPE, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);  // threads beside the first one have all signals blocked
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
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
    Pipe errors;
    Pipe failure;
    if (arguments.empty() || !input.is_open() || !output.is_open() || !errors.is_open() ||
        !failure.is_open()) {
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
        become_program(vector.data(), input.ends[0], output.ends[1], errors.ends[1], failure.ends[1]);
    }
    if (child < 0) {
        return false;
    }
    child_ = child;
    to_child_ = input.take(1);
    output_.descriptor = output.take(0);
    errors_.descriptor = errors.take(0);
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

bool ChildDialog::Stream::take(std::string_view end, std::vector<std::uint8_t>& answer) {
    const auto start = received.begin() + static_cast<std::ptrdiff_t>(searched);
    const auto found = std::search(start, received.end(), end.begin(), end.end(),
                                   [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); });
    if (found == received.end()) {
        searched = received.size() - std::min(received.size(), end.size());
        return false;
    }
    // What follows belongs to the next answer.
    const auto next = found + static_cast<std::ptrdiff_t>(end.size());
    answer.assign(received.begin(), next);
    received.erase(received.begin(), next);
    searched = 0;
    return true;
}

bool ChildDialog::Stream::receive() {
    std::array<std::uint8_t, 65536> block;
    const ssize_t count = read(descriptor, block.data(), block.size());
    if (count > 0) {
        received.insert(received.end(), block.begin(), block.begin() + count);
    }
    return count > 0 || (count < 0 && errno == EINTR);
}

bool ChildDialog::receive_some() {
    if (output_.descriptor < 0) {
        return false;  // nobody is there; waiting would have no end
    }
    std::array<pollfd, 2> waiting{{{output_.descriptor, POLLIN, 0}, {errors_.descriptor, POLLIN, 0}}};
    if (poll(waiting.data(), waiting.size(), -1) < 0) {
        return errno == EINTR;
    }
    if (waiting[1].revents != 0 && !errors_.receive()) {
        ::close(std::exchange(errors_.descriptor, -1));
    }
    return waiting[0].revents == 0 || output_.receive();
}

bool ChildDialog::read_until(std::string_view end, std::vector<std::uint8_t>& output,
                             std::vector<std::uint8_t>* errors) {
    bool has_output = false;
    bool has_errors = errors == nullptr;
    for (;;) {
        has_output = has_output || output_.take(end, output);
        has_errors = has_errors || errors_.take(end, *errors) || (has_output && errors_.descriptor < 0);
        if (has_output && has_errors) {
            return true;
        }
        if (!receive_some()) {
            if (!has_output) {
                output = std::move(output_.received);
            }
            close();
            return has_output;
        }
    }
}

void ChildDialog::close() {
    constexpr int kPatience = 3;  // seconds
    if (child_ > 0 && to_child_ >= 0 && !goodbye_.empty()) {
        [[maybe_unused]] const ssize_t count = ::write(to_child_, goodbye_.data(), goodbye_.size());
    }
    for (int* end : {&to_child_, &output_.descriptor, &errors_.descriptor}) {
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
    output_ = {};
    errors_ = {};
}

}  // namespace zemora
