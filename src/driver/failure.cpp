#include "driver/failure.h"

namespace zemora {

namespace {

void report_missing_memory(Notes& notes, const Failure& failure) {
    notes.print(failure.note.text);
    notes.print("TRY TO CLOSE OTHER APPLICATIONS OR REBOOT SYSTEM AND START ONLY ZEMORA\n");
    notes.print(failure.advice);
    notes.wait(Severity::must_be_seen);
}

}  // namespace

void end_run(int exit_code) {
    throw EndOfRun{exit_code};
}

void conclude_failure(Notes& notes, const Failure& failure) {
    if (failure.no_memory || failure.ends_run) {
        end_with(notes, failure);
    }
    notes.add(failure.note);
}

void end_with(Notes& notes, const Failure& failure) {
    if (failure.no_memory) {
        report_missing_memory(notes, failure);
    } else {
        notes.add(failure.note);
    }
    notes.await_listener();
    end_run(kExitFailure);
}

}  // namespace zemora
