#include "platform/threads.h"

#include <omp.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cstdlib>
#include <utility>
#include <vector>

namespace zemora {

namespace {

#if defined(__ELF__)
/// The OpenMP library reads its settings when it is loaded, which is before `main` and before all
/// constructors of the program. The functions of this section are called earlier still.
void choose_passive_wait(int /*count*/, char** /*arguments*/, char** /*environment*/) {
    setenv("OMP_WAIT_POLICY", "passive", 0);
}
[[gnu::used, gnu::section(".preinit_array")]] void (*const g_before_libraries)(int, char**,
                                                                               char**) = choose_passive_wait;
#endif

void* wait_for_release(void* gate) {
    auto* lock = static_cast<pthread_mutex_t*>(gate);
    pthread_mutex_lock(lock);
    pthread_mutex_unlock(lock);
    return nullptr;
}

/// How many of `wanted` threads the system gives at the same time.
int threads_to_be_had(int wanted) {
    pthread_mutex_t gate = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&gate);
    std::vector<pthread_t> threads;
    pthread_t thread{};
    while (static_cast<int>(threads.size()) < wanted &&
           pthread_create(&thread, nullptr, wait_for_release, &gate) == 0) {
        threads.push_back(thread);
    }
    pthread_mutex_unlock(&gate);
    for (const pthread_t started : threads) {
        pthread_join(started, nullptr);
    }
    return static_cast<int>(threads.size());
}

/// As long as it lives, threads that are started get no signals: they inherit the mask.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before_{};
};

}  // namespace

int start_worker_threads() {
    const SignalsBlocked blocked;
    const int wanted = omp_get_max_threads();
    const int count = 1 + threads_to_be_had(wanted - 1);
    if (count < wanted) {
        omp_set_num_threads(count);
    }
    std::atomic<int> at_work{0};
#pragma omp parallel num_threads(count)
    ++at_work;
    return at_work;
}

bool has_room_for_teams(int teams) {
    const SignalsBlocked blocked;
    const int wanted = teams * omp_get_max_threads();
    return threads_to_be_had(wanted) == wanted;
}

std::thread start_team(std::function<void()> work) {
    const SignalsBlocked blocked;
    return std::thread([workers = omp_get_max_threads(), work = std::move(work)] {
        omp_set_num_threads(workers);  // each thread has a number of its own
        work();
    });
}

}  // namespace zemora
