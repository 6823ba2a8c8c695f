#include "driver/failure.h"

#include "platform/process_end.h"

namespace zemora {

void conclude_failure(const Failure& failure, Voice& voice) {
    if (failure.no_memory) {
        end_run_without_picture_memory(voice.console(), failure.note.text, failure.advice);
    }
    voice.add(failure.note);
    end_process(kExitFailure);
}

}  // namespace zemora
