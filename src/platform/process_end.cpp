#include "platform/process_end.h"

#include <cstdio>
#include <cstdlib>

#include <utility>

namespace zemora {

namespace {

std::function<void()> g_last_action;

}  // namespace

void set_last_action(std::function<void()> action) {
    g_last_action = std::move(action);
}

void end_process(int exit_code) {
    if (const auto action = std::exchange(g_last_action, {})) {
        action();
    }
    std::fflush(nullptr);
    std::exit(exit_code);  // the temporary folder goes with the exit handlers
}

}  // namespace zemora
