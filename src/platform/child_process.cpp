#include "platform/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>  // NOLINT: the C++ header has no sets of signals
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/console.h"
#include "platform/paths.h"

extern char** environ;  // NOLINT: the name is the system's

namespace zemora {

namespace {

/// Owner of the file actions of a spawn.
class FileActions {
public:
    FileActions() { posix_spawn_file_actions_init(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
    void open(int descriptor, const char* path, int flags) {
        posix_spawn_file_actions_addopen(&actions_, descriptor, path, flags, 0);
    }
    void duplicate(int from, int to) { posix_spawn_file_actions_adddup2(&actions_, from, to); }
    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

/// Makes a child take signals, whichever thread starts it: those beside the first one have all blocked.
class TakesSignals {
public:
    TakesSignals() {
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
    }
    TakesSignals(const TakesSignals&) = delete;
    TakesSignals& operator=(const TakesSignals&) = delete;
    ~TakesSignals() { posix_spawnattr_destroy(&attributes_); }
    [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

/// The environment of this process with another language.
std::vector<char*> environment_with(std::string& language) {
    std::vector<char*> settings{language.data()};
    const std::string name = language.substr(0, language.find('=') + 1);
    for (char** setting = environ; *setting != nullptr; ++setting) {
        if (std::strncmp(*setting, name.c_str(), name.size()) != 0) {
            settings.push_back(*setting);
        }
    }
    settings.push_back(nullptr);
    return settings;
}

int spawn(const std::vector<std::string>& arguments, const FileActions& actions, pid_t& child,
          char* const* environment = environ) {
    std::vector<char*> vector;
    for (const std::string& argument : arguments) {
        vector.push_back(const_cast<char*>(argument.c_str()));  // NOLINT: the call does not write
    }
    vector.push_back(nullptr);
    flush_console();
    const TakesSignals attributes;
    return posix_spawnp(&child, vector[0], actions.get(), attributes.get(), vector.data(), environment);
}

/// Reads what there is; false at the end.
bool read_some(int descriptor, std::vector<std::uint8_t>& bytes) {
    std::array<std::uint8_t, 65536> block;
    const ssize_t count = read(descriptor, block.data(), block.size());
    if (count > 0) {
        bytes.insert(bytes.end(), block.begin(), block.begin() + count);
    }
    return count > 0 || (count < 0 && errno == EINTR);
}

void read_to_end(int descriptor, std::vector<std::uint8_t>& bytes) {
    while (read_some(descriptor, bytes)) {
    }
}

/// Both at once: a program that waits for a reader of the one would never end the other.
void read_both_to_end(int output, std::vector<std::uint8_t>& output_bytes, int errors,
                      std::vector<std::uint8_t>& error_bytes) {
    std::array<pollfd, 2> waiting{{{output, POLLIN, 0}, {errors, POLLIN, 0}}};
    const auto read_ready = [](pollfd& stream, std::vector<std::uint8_t>& bytes) {
        if (stream.revents != 0 && !read_some(stream.fd, bytes)) {
            stream.fd = -1;  // at its end, and passed over from now on
        }
    };
    while (waiting[0].fd >= 0 || waiting[1].fd >= 0) {
        if (poll(waiting.data(), waiting.size(), -1) >= 0) {
            read_ready(waiting[0], output_bytes);
            read_ready(waiting[1], error_bytes);
        } else if (errno != EINTR) {
            return;
        }
    }
}

int wait_for(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

ChildResult run_child(const std::vector<std::string>& arguments, bool pass_errors, bool plain_language) {
    ChildResult result;
    std::array<int, 2> ends{};
    if (arguments.empty() || pipe2(ends.data(), O_CLOEXEC) != 0) {
        result.error = std::strerror(errno);
        return result;
    }
    FileActions actions;
    actions.open(STDIN_FILENO, "/dev/null", O_RDONLY);
    actions.duplicate(ends[1], STDOUT_FILENO);
    if (!pass_errors) {
        actions.open(STDERR_FILENO, "/dev/null", O_WRONLY);
    }
    pid_t child = 0;
    std::string language = "LC_ALL=C";
    const int error = plain_language ? spawn(arguments, actions, child, environment_with(language).data())
                                     : spawn(arguments, actions, child);
    close(ends[1]);
    if (error == 0) {
        read_to_end(ends[0], result.output);
        result.exit_code = wait_for(child);
    } else {
        result.error = std::strerror(error);
    }
    close(ends[0]);
    return result;
}

ChildResult run_child_and_keep_errors(const std::vector<std::string>& arguments) {
    ChildResult result;
    std::array<int, 2> output{};
    std::array<int, 2> errors{};
    if (arguments.empty() || pipe2(output.data(), O_CLOEXEC) != 0) {
        result.error = std::strerror(errno);
        return result;
    }
    if (pipe2(errors.data(), O_CLOEXEC) != 0) {
        result.error = std::strerror(errno);
        close(output[0]);
        close(output[1]);
        return result;
    }
    FileActions actions;
    actions.open(STDIN_FILENO, "/dev/null", O_RDONLY);
    actions.duplicate(output[1], STDOUT_FILENO);
    actions.duplicate(errors[1], STDERR_FILENO);
    pid_t child = 0;
    const int error = spawn(arguments, actions, child);
    close(output[1]);
    close(errors[1]);
    if (error == 0) {
        read_both_to_end(output[0], result.output, errors[0], result.errors);
        result.exit_code = wait_for(child);
    } else {
        result.error = std::strerror(error);
    }
    close(output[0]);
    close(errors[0]);
    return result;
}

ChildResult run_beside_console(const std::vector<std::string>& arguments) {
    ChildResult result;
    FileActions actions;
    actions.open(STDIN_FILENO, "/dev/null", O_RDONLY);
    actions.open(STDERR_FILENO, "/dev/null", O_WRONLY);
    pid_t child = 0;
    const int error = arguments.empty() ? ENOENT : spawn(arguments, actions, child);
    if (error == 0) {
        result.exit_code = wait_for(child);
    } else {
        result.error = std::strerror(error);
    }
    return result;
}

bool start_child(const std::vector<std::string>& arguments) {
    FileActions actions;
    actions.open(STDIN_FILENO, "/dev/null", O_RDONLY);
    pid_t child = 0;
    return !arguments.empty() && spawn(arguments, actions, child) == 0;
}

std::string find_program(const std::string& name) {
    std::vector<std::string> names{name};
    if (lower_case(suffix_of(name)) == ".exe") {
        names.push_back(without_suffix(name));
    }
    const char* path = std::getenv("PATH");
    std::string folders = program_directory() + ':' + (path == nullptr ? "/usr/bin:/bin" : path);
    for (std::size_t start = 0; start <= folders.size();) {
        const std::size_t colon = std::min(folders.find(':', start), folders.size());
        const std::string folder = folders.substr(start, colon - start);
        for (const std::string& candidate : names) {
            const std::string place = folder + '/' + candidate;
            if (!folder.empty() && !is_directory(place) && access(place.c_str(), X_OK) == 0) {
                return place;
            }
        }
        start = colon + 1;
    }
    return {};
}

}  // namespace zemora
