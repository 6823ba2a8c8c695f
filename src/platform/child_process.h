#pragma once
/// Outside programs, started with an argument vector and never through a shell.

#include <cstdint>
#include <string>
#include <vector>

namespace zemora {

/// What an outside program left behind.
struct ChildResult {
    int exit_code = -1;                ///< -1 when it could not be started or ended by a signal.
    std::vector<std::uint8_t> output;  ///< Standard output.
    std::vector<std::uint8_t> errors;  ///< Standard error, where it was asked for.
    std::string error;                 ///< The system's reason when it could not be started.
    [[nodiscard]] bool succeeded() const { return exit_code == 0; }
};

/// Runs `arguments[0]` (a path, or a name looked for in PATH) and waits for its end. Standard input
/// is empty; standard error is passed on with `pass_errors`, else dropped. `LC_ALL` is "C" for it with
/// `plain_language`, for programs whose words are read by this one.
[[nodiscard]] ChildResult run_child(const std::vector<std::string>& arguments, bool pass_errors = false,
                                    bool plain_language = false);

/// As `run_child`, and keeps what the program says on its standard error.
[[nodiscard]] ChildResult run_child_and_keep_errors(const std::vector<std::string>& arguments);

/// Runs a program that a person works with, as `run_child`, but what it prints goes to the console at once:
/// flush that before. Only its own end is waited for, not that of programs it leaves behind.
[[nodiscard]] ChildResult run_beside_console(const std::vector<std::string>& arguments);

/// Starts a program and does not wait for it. False when it could not be started.
[[nodiscard]] bool start_child(const std::vector<std::string>& arguments);

/// The program of that name: in the program's own folder first (with and without ".exe" where the
/// name has it), then in PATH. Empty when there is none.
[[nodiscard]] std::string find_program(const std::string& name);

}  // namespace zemora
