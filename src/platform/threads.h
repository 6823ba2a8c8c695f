#pragma once
/// The threads that share the work of the hot loops.

namespace zemora {

/// Starts the threads of the parallel regions, once, before the first region. They wait passively: a thread
/// that waits for work leaves its core to others, which costs nothing on a quiet machine. The environment's
/// OMP_WAIT_POLICY is obeyed. Signals go to the calling thread alone. Where the system gives fewer threads
/// than asked for, the run goes on with those; results do not depend on it. No region asks for a number of
/// its own: a smaller team ends the threads beyond it, which had to be started again. Returns their number,
/// with the caller's.
int start_worker_threads();

}  // namespace zemora
