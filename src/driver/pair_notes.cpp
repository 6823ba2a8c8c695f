#include "driver/pair_notes.h"

#include <utility>

namespace zemora {

void PairNotes::hand_on(Event&& event) {
    if (Note* const note = std::get_if<Note>(&event)) {
        listener_.add(std::move(*note));
    } else if (const Step* const step = std::get_if<Step>(&event)) {
        listener_.progress(step->name, step->percent);
    }
}

void PairNotes::add(Note note) {
    const std::lock_guard lock(mutex_);
    if (is_open_) {
        listener_.add(std::move(note));
    } else {
        kept_.emplace_back(std::move(note));
    }
}

void PairNotes::progress(std::string_view step, double percent) {
    constexpr double kDone = 100.0;
    const std::lock_guard lock(mutex_);
    if (is_open_) {
        listener_.progress(step, percent);
    } else if (percent >= kDone) {
        kept_.emplace_back(Step{std::string(step), percent});
    }
}

void PairNotes::await_listener() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return is_open_ || is_stopped_; });
    if (!is_open_) {
        throw RunStopped{};
    }
}

void PairNotes::open() {
    const std::lock_guard lock(mutex_);
    for (Event& event : std::exchange(kept_, {})) {
        hand_on(std::move(event));
    }
    is_open_ = true;
    changed_.notify_all();
}

void PairNotes::stop() {
    const std::lock_guard lock(mutex_);
    is_stopped_ = true;
    changed_.notify_all();
}

}  // namespace zemora
