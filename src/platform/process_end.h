#pragma once
/// The one place that ends the process before the end of `main`.

namespace zemora {

inline constexpr int kExitDone = 0;
inline constexpr int kExitFailure = 1;

/// Flushes the console, removes what the run keeps in its temporary folder and ends the process.
[[noreturn]] void end_process(int exit_code);

}  // namespace zemora
