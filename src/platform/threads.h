#pragma once
/// The threads that share the work of the hot loops, and those that work beside the first one.

#include <functional>
#include <thread>

namespace zemora {

/// Starts the threads of the parallel regions, once, before the first region. They wait passively: a thread
/// that waits for work leaves its core to others, which costs nothing on a quiet machine. The environment's
/// OMP_WAIT_POLICY is obeyed. Signals go to the calling thread alone. Where the system gives fewer threads
/// than asked for, the run goes on with those; results do not depend on it. No region asks for a number of
/// its own: a smaller team ends the threads beyond it, which had to be started again. Returns their number,
/// with the caller's.
int start_worker_threads();

/// Whether the system gives `teams` more threads with as many workers each as the caller has.
[[nodiscard]] bool has_room_for_teams(int teams);

/// A thread beside the caller's whose parallel regions have workers of their own, as many as the caller's. No
/// signal goes to any of them.
[[nodiscard]] std::thread start_team(std::function<void()> work);

}  // namespace zemora
