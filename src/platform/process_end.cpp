#include "platform/process_end.h"

#include <cstdio>
#include <cstdlib>

namespace zemora {

void end_process(int exit_code) {
    std::fflush(nullptr);
    std::exit(exit_code);  // the temporary folder goes with the exit handlers
}

}  // namespace zemora
