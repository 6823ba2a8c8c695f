#pragma once
/// Frames that are read while earlier ones are worked on.

#include <memory>

#include "video/frame_source.h"
#include "video/frame_walk.h"

namespace zemora {

class FrameReader {
public:
    /// Starts to read the frames of `walk`, at most `ahead` before the one that is taken. `listener` gives
    /// the language and the extent of the texts. The source belongs to the reader until it ends.
    FrameReader(FrameSource& source, FrameWalk walk, int ahead, const Notes& listener);
    /// Waits for the frame at work and forgets the rest.
    ~FrameReader();
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    /// The next frame of the walk; what was said while it was read is told to `notes`. Only while there are
    /// frames left.
    [[nodiscard]] Result<RawViews> next(Notes& notes);
    /// Memory of a frame that is done with.
    void give_back(RawViews&& used);

private:
    class Work;
    std::unique_ptr<Work> work_;
};

}  // namespace zemora
