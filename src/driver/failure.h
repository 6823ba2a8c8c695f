#pragma once
/// The one place where a failure that ends the run ends it.

#include "config/voice.h"
#include "numerics/result.h"

namespace zemora {

/// Tells the failure, waits where it asks for that, and ends the process with code 1. Without memory the
/// advice for that is told too.
[[noreturn]] void conclude_failure(const Failure& failure, Voice& voice);

/// The value of a result that ends the run without one.
template <class T>
[[nodiscard]] T value_or_end(Result<T> result, Voice& voice) {
    if (!result) {
        conclude_failure(result.failure(), voice);
    }
    return std::move(result).value();
}

}  // namespace zemora
