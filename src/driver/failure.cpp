#include "driver/failure.h"

#include "platform/process_end.h"

namespace zemora {

void conclude_failure(Voice& voice, const Failure& failure) {
    if (failure.no_memory) {
        end_run_without_picture_memory(voice.console(), failure.note.text, failure.advice);
    }
    voice.add(failure.note);
    if (failure.ends_run) {
        end_process(kExitFailure);
    }
}

}  // namespace zemora
