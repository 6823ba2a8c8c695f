#include "platform/process_end.h"

#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "platform/console.h"
#include "platform/new_file.h"
#include "platform/temp_folder.h"

namespace zemora {

namespace {

std::function<void()> g_last_action;

/// Lives that hold the end signals back, and the signal that came meanwhile.
std::atomic<int> g_holders{0};
std::atomic<int> g_held_signal{0};

/// Lives that take an end signal as a request, the signal that has asked, and when it did, in nanoseconds.
std::atomic<int> g_request_takers{0};
std::atomic<int> g_asking_signal{0};
std::atomic<std::int64_t> g_asking_time{0};

/// Signals this close together are one: programs that run others, such as timeout, send theirs to the process
/// and to its group.
constexpr std::int64_t kSameSignal = 500'000'000;

/// Nanoseconds; async-signal-safe.
std::int64_t now() {
    constexpr std::int64_t kSecond = 1'000'000'000;
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * kSecond + time.tv_nsec;
}

/// True where the signal asks for the end, or says again what was just asked.
bool is_request(int number) {
    if (g_request_takers == 0) {
        return false;
    }
    if (g_asking_signal == 0) {
        g_asking_time = now();
        g_asking_signal = number;
        return true;
    }
    return now() - g_asking_time < kSameSignal;
}

/// What the run keeps for itself alone; async-signal-safe.
void remove_unfinished() {
    remove_hidden_files();
    remove_temporary_folder();
}

extern "C" void on_end_signal(int number) {
    if (g_holders > 0) {
        g_held_signal = number;
        return;
    }
    if (is_request(number)) {
        return;
    }
    flush_console_in_handler();
    remove_unfinished();
    signal(number, SIG_DFL);
    sigset_t alone;
    sigemptyset(&alone);
    sigaddset(&alone, number);
    raise(number);
    pthread_sigmask(SIG_UNBLOCK, &alone, nullptr);  // it is blocked while its handler runs
}

/// Given back when memory has run out, so that the end of the run has some to work with.
constexpr std::size_t kReserveBytes = std::size_t{1} << 20;
std::unique_ptr<char[]> g_reserve;
std::atomic<bool> g_ends{false};

[[noreturn]] void end_with_line(const std::string& line) {
    Console console;
    console.print("\n" + line);
    if (const auto action = std::exchange(g_last_action, {})) {
        action();
    }
    flush_console();
    remove_unfinished();
    // Other threads may be at work in the pictures of the run: nothing of theirs is taken down.
    _exit(kExitFailure);
}

/// Only the first thread ends the process; the others wait for that.
void be_the_one_that_ends() {
    static thread_local bool is_the_one = false;
    if (is_the_one) {
        flush_console();
        remove_unfinished();
        _exit(kExitFailure);
    }
    is_the_one = !g_ends.exchange(true);
    while (!is_the_one) {
        pause();
    }
}

[[noreturn]] void end_for_want_of(const char* label) {
    be_the_one_that_ends();
    g_reserve.reset();
    end_with_line(std::string("Memory allocation error. Not enough memory for allocation: ") + label + '\n');
}

void on_missing_memory() {
    be_the_one_that_ends();
    g_reserve.reset();
    end_with_line(
        "Memory allocation error. Not enough memory for allocation: work memory of the picture\n"
        "TRY TO CLOSE OTHER APPLICATIONS OR REBOOT SYSTEM AND START ONLY ZEMORA\n");
}

[[noreturn]] void on_unexpected_end() {
    be_the_one_that_ends();
    std::string reason = "?";
    try {
        if (const std::exception_ptr error = std::current_exception()) {
            std::rethrow_exception(error);
        }
    } catch (const std::exception& error) {
        reason = error.what();
    } catch (...) {
    }
    end_with_line("Zemora: " + reason + '\n');
}

}  // namespace

void end_without_memory(const char* label) {
    end_for_want_of(label);
}

void set_last_action(std::function<void()> action) {
    g_last_action = std::move(action);
}

void end_process(int exit_code) {
    if (const auto action = std::exchange(g_last_action, {})) {
        action();
    }
    flush_console();
    if (const std::string error = console_error(); !error.empty()) {
        std::fprintf(stderr, "Zemora: standard output: %s\n", error.c_str());
        exit_code = exit_code == kExitDone ? kExitFailure : exit_code;
    }
    std::exit(exit_code);  // the temporary folder goes with the exit handlers
}

void end_well_at_signals() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction old = {};
        if (sigaction(number, nullptr, &old) == 0 && old.sa_handler == SIG_DFL) {
            struct sigaction action = {};
            action.sa_handler = on_end_signal;
            action.sa_flags = SA_RESTART;
            sigaction(number, &action, nullptr);
        }
    }
}

void end_well_without_memory() {
    g_reserve = std::make_unique<char[]>(kReserveBytes);
    std::set_new_handler(on_missing_memory);
    std::set_terminate(on_unexpected_end);
}

NoEndSignals::NoEndSignals() {
    ++g_holders;
}

NoEndSignals::~NoEndSignals() {
    if (--g_holders == 0) {
        if (const int number = g_held_signal.exchange(0); number != 0) {
            kill(getpid(), number);  // this thread may not take signals itself
        }
    }
}

EndRequests::EndRequests() {
    ++g_request_takers;
}

EndRequests::~EndRequests() {
    if (--g_request_takers == 0) {
        if (const int number = g_asking_signal.exchange(0); number != 0) {
            kill(getpid(), number);
        }
    }
}

bool EndRequests::is_asked() {
    return g_asking_signal != 0;
}

}  // namespace zemora
