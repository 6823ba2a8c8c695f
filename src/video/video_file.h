#pragma once
/// One stream of a video file, its pictures by number. Frame n is the n-th picture that the decoder gives
/// from the start of the file, whether it is reached in order or by a jump.

#include <functional>
#include <memory>
#include <string>

#include "config/notes.h"
#include "input/loaded_view.h"
#include "numerics/result.h"
#include "video/scene_cuts.h"
#include "video/video_facts.h"

namespace zemora {

enum class VideoStream { first, second };

class VideoFile {
public:
    /// Opens the file and reads its index. Fails for the run, with the reason and the name of the file: not
    /// there, no video, no decoder, no frame, a playlist, several views that the decoder cannot give.
    [[nodiscard]] static Result<std::unique_ptr<VideoFile>> open(const std::string& path, VideoStream stream,
                                                                 Notes& notes);
    virtual ~VideoFile() = default;

    [[nodiscard]] virtual const VideoFacts& facts() const = 0;
    /// Decodes frame `number` into `into`, whose bitmap is reused where it has the size. A frame that is
    /// damaged shows the picture before it, which is told once. Fails for the frame where there is none at
    /// all, for the run when the size changes in the stream and without memory.
    [[nodiscard]] virtual Result<void> read(int number, LoadedView& into, Notes& notes) = 0;
    /// From now on each decoded picture, also one that is only passed on the way, goes into `cuts`.
    virtual void watch_cuts(SceneCuts* cuts) = 0;
};

}  // namespace zemora
