#include "driver/stations.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

#include "driver/pair_notes.h"
#include "platform/threads.h"

namespace zemora {

namespace {

/// How many objects each station is done with; the stations wait for each other here.
class StationLine {
public:
    StationLine(int count, const Stations& stations) : count_(count), stations_(stations) {}

    void run_reader() {
        run(stations_.read, read_, [this](int index) {
            for (int earlier = stored_; earlier < index; ++earlier) {
                if (stations_.must_wait_for(index, earlier)) {
                    return false;
                }
            }
            return index - stored_ < kObjectsAtWork;
        });
    }
    void run_mounter() {
        run(stations_.mount, mounted_,
            [this](int index) { return index < read_ && index - stored_ < kObjectsMounted; });
    }
    void run_storer() {
        run(stations_.store, stored_, [this](int index) { return index < mounted_; });
    }

    void throw_again() const {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
    }

    /// Ends the waiting of all stations; the first failure is kept.
    void stop(std::exception_ptr failure) {
        {
            const std::lock_guard lock(mutex_);
            if (!is_stopped_) {
                failure_ = std::move(failure);
            }
            is_stopped_ = true;
            changed_.notify_all();
        }
        stations_.stop();
    }

private:
    /// Works on one object after the other, each as soon as it `may_start`; counts them in `done`.
    template <class MayStart>
    void run(const std::function<void(int)>& work, int& done, const MayStart& may_start) {
        try {
            for (int index = 0; index < count_; ++index) {
                if (!wait_until([&] { return may_start(index); })) {
                    return;
                }
                work(index);
                const std::lock_guard lock(mutex_);
                ++done;
                changed_.notify_all();
            }
        } catch (const RunStopped&) {
            // The station whose failure it was has said so.
        } catch (...) {
            stop(std::current_exception());
        }
    }

    /// False when the run is stopped.
    template <class Condition>
    [[nodiscard]] bool wait_until(const Condition& condition) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return is_stopped_ || condition(); });
        return !is_stopped_;
    }

    const int count_;
    const Stations& stations_;
    std::mutex mutex_;
    std::condition_variable changed_;
    int read_ = 0;
    int mounted_ = 0;
    int stored_ = 0;
    bool is_stopped_ = false;
    std::exception_ptr failure_;
};

}  // namespace

bool run_stations(int count, const Stations& stations) {
    constexpr int kBesideCaller = 2;
    if (!has_room_for_teams(kBesideCaller)) {
        return false;
    }
    StationLine line(count, stations);
    std::thread storer;
    std::thread reader;
    try {
        storer = start_team([&line] { line.run_storer(); });
        reader = start_team([&line] { line.run_reader(); });
    } catch (const std::system_error&) {  // another process has taken the threads; nothing is read yet
        if (storer.joinable()) {
            line.stop({});
            storer.join();
        }
        return false;
    }
    line.run_mounter();
    reader.join();
    storer.join();
    line.throw_again();
    return true;
}

}  // namespace zemora
