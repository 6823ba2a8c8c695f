#pragma once
/// Three stations that work at the same time, each on another object of a sequence.

#include <functional>

namespace zemora {

/// What is done to object `index`; each station is called in the order of the objects, from one thread.
struct Stations {
    std::function<void(int index)> read;
    std::function<void(int index)> mount;  ///< On the thread of the caller.
    std::function<void(int index)> store;
    /// Whether `read` of an object has to wait as long as an earlier one is not stored. Asked again whenever
    /// a station is done with an object; the stations wait for the answer.
    std::function<bool(int index, int earlier)> must_wait_for;
    /// Called from any thread when a station has thrown; whoever waits outside of this is to give up, with
    /// `RunStopped`.
    std::function<void()> stop;
};

/// At most so many objects are between the start of `read` and the end of `store`.
inline constexpr int kObjectsAtWork = 3;
/// At most so many are between the start of `mount` and the end of `store`.
inline constexpr int kObjectsMounted = 2;

/// Sends `count` objects through the stations. What a station throws ends the run and is thrown again when
/// all stations rest. False, with nothing done, when the system has no threads for it.
[[nodiscard]] bool run_stations(int count, const Stations& stations);

}  // namespace zemora
