#pragma once
/// How the failure of a stage ends the run.

#include <utility>

#include "config/notes.h"
#include "numerics/result.h"
#include "platform/process_end.h"

namespace zemora {

/// Thrown below `run_zemora`, which takes it: the reports are closed, and the process ends with this code.
struct EndOfRun {
    int exit_code;
};
[[noreturn]] void end_run(int exit_code);

/// Reports the failure; where it ends the run, this does so.
void conclude_failure(Notes& notes, const Failure& failure);

/// Reports the failure, behind what the pairs before have to report, and ends the run.
[[noreturn]] void end_with(Notes& notes, const Failure& failure);

/// The value of a result without which the run cannot go on, whatever its failure says.
template <class T>
[[nodiscard]] T value_or_end(Notes& notes, Result<T> result) {
    if (!result) {
        end_with(notes, result.failure());
    }
    return std::move(*result);
}
inline void succeed_or_end(Notes& notes, const Result<void>& result) {
    if (!result) {
        end_with(notes, result.failure());
    }
}
/// For what the run can do without.
inline void succeed_if_possible(Notes& notes, const Result<void>& result) {
    if (!result) {
        conclude_failure(notes, result.failure());
    }
}

}  // namespace zemora
