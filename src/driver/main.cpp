#include <csignal>
#include <string>
#include <vector>

#include "driver/run.h"
#include "platform/console.h"
#include "platform/process_end.h"
#include "platform/threads.h"

int main(int count, char** values) {
    std::signal(SIGPIPE, SIG_IGN);  // a reader that has gone is no reason to lose a picture
    std::signal(SIGXFSZ, SIG_IGN);  // a file that may not grow is reported like a full disk
    zemora::end_well_at_signals();
    zemora::end_well_without_memory();
    zemora::start_worker_threads();
    const std::vector<std::string> arguments(values + (count > 0 ? 1 : 0), values + count);
    zemora::end_process(zemora::run_zemora(count > 0 ? values[0] : "zemora", arguments));
}
