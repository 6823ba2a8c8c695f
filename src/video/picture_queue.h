#pragma once
/// Pictures on their way from the thread that makes them to the one that encodes them.

#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

#include "numerics/rescale.h"
#include "video/libav_handles.h"
#include "video/video_facts.h"

namespace zemora {

/// What the streams of a film get at one time.
struct QueuedPictures {
    Frame first;
    Frame second;  ///< Null with one stream.
};

class PictureQueue {
public:
    /// Room for so many; false without the memory for it.
    [[nodiscard]] bool reserve(int count, PictureSize size, const ColourTags& tags, bool has_two);

    /// Waits for pictures that may be filled.
    [[nodiscard]] QueuedPictures take_empty();
    void put_filled(QueuedPictures pictures);
    /// Nothing comes any more.
    void end();

    /// Waits for filled pictures; false when there are no more.
    [[nodiscard]] bool take_filled(QueuedPictures& pictures);
    void put_empty(QueuedPictures pictures);

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<QueuedPictures> empty_;
    std::deque<QueuedPictures> filled_;
    bool has_ended_ = false;
};

}  // namespace zemora
