#include <csignal>
#include <string>
#include <vector>

#include "driver/run.h"

int main(int count, char** values) {
    std::signal(SIGPIPE, SIG_IGN);  // a reader that has gone is no reason to lose a picture
    std::signal(SIGXFSZ, SIG_IGN);  // a file that may not grow is told like a full disk
    const std::vector<std::string> arguments(values + (count > 0 ? 1 : 0), values + count);
    return zemora::run_zemora(count > 0 ? values[0] : "zemora", arguments);
}
