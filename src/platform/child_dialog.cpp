#include "platform/child_dialog.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

extern char** environ;  // NOLINT: the name is the system's

namespace zemora {

ChildDialog::~ChildDialog() { close(); }

bool ChildDialog::start(const std::vector<std::string>& arguments) {
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
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<char*> vector;
    for (const std::string& argument : arguments) {
        vector.push_back(const_cast<char*>(argument.c_str()));  // NOLINT: the call does not write
    }
    vector.push_back(nullptr);
    pid_t child = 0;
    const bool started = posix_spawnp(&child, vector[0], &actions, nullptr, vector.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    to_child_ = input[1];
    from_child_ = output[0];
    child_ = started ? child : 0;
    if (!started) {
        close();
    }
    return started;
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
    for (int* end : {&to_child_, &from_child_}) {
        if (*end >= 0) {
            ::close(*end);
            *end = -1;
        }
    }
    if (child_ > 0) {
        int status = 0;
        while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
        }
        child_ = 0;
    }
}

}  // namespace zemora
