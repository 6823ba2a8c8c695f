#pragma once
/// The places that end the process before the end of `main`: a decision of the program, a signal, and memory
/// or threads that are not to be had.

#include <functional>

namespace zemora {

/// The exit codes of the process.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitNotAllMounted = 3;  ///< With `ExitStatus` 1.

/// What `end_process` does first, wherever in the program the end is called for: files of the run are
/// closed. An empty function takes it back.
void set_last_action(std::function<void()> action);

/// Does the last action, flushes the console, removes what the run keeps in its temporary folder and ends the
/// process. Output that could not be written, as on a full disk, is reported on standard error and turns code
/// 0 into 1.
[[noreturn]] void end_process(int exit_code);

/// From here on SIGINT, SIGTERM and SIGHUP write out a begun line of the console and remove the temporary
/// folder before they end the process, whose parent sees the signal (a shell: 130 after Ctrl-C). A signal
/// that was ignored at the start stays ignored.
void end_well_at_signals();

/// From here on memory that is not to be had, in whatever place, and an exception that nobody takes end the
/// process as `end_process` does, with a line that says why and code 1.
void end_well_without_memory();

/// Ends the process as `end_process` does, with code 1 and a line that names the work memory that was not to
/// be had; from whatever thread.
[[noreturn]] void end_without_memory(const char* label);

/// No end signal acts on the process as long as one of these lives, in whichever thread: it acts at the end
/// of the last one.
class NoEndSignals {
public:
    NoEndSignals();
    ~NoEndSignals();
    NoEndSignals(const NoEndSignals&) = delete;
    NoEndSignals& operator=(const NoEndSignals&) = delete;
};

/// While one of these lives the first end signal only asks for the end, so that work that takes long can be
/// brought to a good one; a second signal, half a second later or more, acts at once. One that has asked acts
/// when the last of these goes.
class EndRequests {
public:
    EndRequests();
    ~EndRequests();
    EndRequests(const EndRequests&) = delete;
    EndRequests& operator=(const EndRequests&) = delete;
    [[nodiscard]] static bool is_asked();
};

}  // namespace zemora
