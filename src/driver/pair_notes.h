#pragma once
/// What happens to one pair of a run in which several pairs are at work: kept until it is the pair's turn.

#include <condition_variable>
#include <mutex>
#include <variant>
#include <vector>

#include "config/notes.h"

namespace zemora {

/// The run is ending; whoever waits for its turn gives up.
struct RunStopped {};

/// Keeps what is added, with the steps that are done, until `open`; from then on it hands everything on at
/// once. May be added to from one thread and opened from another.
class PairNotes : public Notes {
public:
    explicit PairNotes(Notes& listener)
        : Notes(listener.messages(), listener.verbosity()), listener_(listener) {}

    void add(Note note) override;
    void progress(std::string_view step, double percent) override;
    /// Waits for `open`. Throws `RunStopped` where `stop` comes instead.
    void await_listener() override;

    /// All pairs before have been reported.
    void open();
    void stop();

private:
    struct Step {
        std::string name;
        double percent;
    };
    using Event = std::variant<Note, Step>;
    void hand_on(Event&& event);

    Notes& listener_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool is_open_ = false;
    bool is_stopped_ = false;
    std::vector<Event> kept_;
};

}  // namespace zemora
