#include "driver/failure.h"

namespace zemora {

void end_run(int exit_code) {
    throw EndOfRun{exit_code};
}

void conclude_failure(Voice& voice, const Failure& failure) {
    if (failure.no_memory) {
        tell_missing_memory(voice.console(), failure.note.text, failure.advice);
        end_run(kExitFailure);
    }
    voice.add(failure.note);
    if (failure.ends_run) {
        end_run(kExitFailure);
    }
}

}  // namespace zemora
