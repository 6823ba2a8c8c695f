#include "video/frame_reader.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "platform/threads.h"

namespace zemora {

/// The thread that reads, and what lies between it and the one that takes.
class FrameReader::Work {
public:
    Work(FrameSource& source, FrameWalk walk, int ahead, const Notes& listener)
        : source_(source),
          walk_(walk),
          ahead_(ahead < 1 ? 1 : ahead),
          messages_(listener.messages()),
          verbosity_(listener.verbosity()),
          thread_(start_team([this] { run(); })) {}
    ~Work() {
        {
            const std::lock_guard lock(mutex_);
            is_stopped_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    [[nodiscard]] Result<RawViews> next(Notes& notes) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !read_.empty(); });
        ReadFrame frame = std::move(read_.front());
        read_.pop_front();
        lock.unlock();
        changed_.notify_all();
        frame.notes.tell(notes);
        return std::move(frame.views);
    }

    void give_back(RawViews&& used) {
        const std::lock_guard lock(mutex_);
        used_.push_back(std::move(used));
    }

private:
    struct ReadFrame {
        Result<RawViews> views;
        KeptNotes notes;
    };

    void run() {
        for (int i = 0; i < walk_.count() && wait_for_room(); ++i) {
            KeptNotes notes(messages_, verbosity_);
            Result<RawViews> views = source_.read(walk_.at(i), notes);
            {
                const std::lock_guard lock(mutex_);
                read_.push_back({std::move(views), std::move(notes)});
            }
            changed_.notify_all();
        }
    }

    /// Gives the memory of used frames to the source. False when the reading is to end.
    [[nodiscard]] bool wait_for_room() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return is_stopped_ || static_cast<int>(read_.size()) < ahead_; });
        for (RawViews& used : used_) {
            source_.take_back(std::move(used));
        }
        used_.clear();
        return !is_stopped_;
    }

    FrameSource& source_;
    const FrameWalk walk_;
    const int ahead_;
    const MessageCatalogue& messages_;
    const int& verbosity_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<ReadFrame> read_;
    std::vector<RawViews> used_;
    bool is_stopped_ = false;
    std::thread thread_;  ///< The last: it begins when all else is there.
};

FrameReader::FrameReader(FrameSource& source, FrameWalk walk, int ahead, const Notes& listener)
    : work_(std::make_unique<Work>(source, walk, ahead, listener)) {}
FrameReader::~FrameReader() = default;

Result<RawViews> FrameReader::next(Notes& notes) {
    return work_->next(notes);
}

void FrameReader::give_back(RawViews&& used) {
    work_->give_back(std::move(used));
}

}  // namespace zemora
