#pragma once
/// Writes one video file: pictures, and a sound track that keeps in step.

#include <memory>
#include <string>

#include "config/notes.h"
#include "numerics/bitmap.h"
#include "numerics/result.h"
#include "video/frame_walk.h"
#include "video/video_facts.h"

namespace zemora {

/// Where the sound of a written video comes from.
struct SoundWish {
    enum class Source { none, silence, file };
    Source source = Source::none;
    std::string file;     ///< A video; its first sound stream.
    FrameWalk walk;       ///< Frames of that file which the pictures stand for.
    Rational input_rate;  ///< Frames of that file a second.
};

struct VideoWriterOptions {
    std::string path;             ///< Final name, with ".mp4"; the file gets it when it is whole.
    PictureSize size;             ///< Both sides multiples of 4.
    Rational rate;                ///< Frames a second.
    int quality = 3;              ///< `VideoQuality`, 0 to 6.
    std::string preset = "slow";  ///< `VideoPreset`.
    bool has_two_streams = false;
    StereoFlag stereo;   ///< What the pictures hold; told in stream and container where that can be.
    ColourTags colours;  ///< Of the input; unspecified ones are settled by the height.
    SoundWish sound;
    std::string metadata_source;  ///< The video whose title, time and place go over; empty for none.
    FrameWalk metadata_walk;      ///< Its frames the pictures stand for; time codes start at the first.
};

/// Pictures are handed to a thread of its own.
class VideoWriter {
public:
    /// Opens a hidden file beside the final name. Fails for the run, with the reason and the name.
    [[nodiscard]] static Result<std::unique_ptr<VideoWriter>> open(const VideoWriterOptions& options,
                                                                   Notes& notes);
    /// A writer that was not closed leaves nothing.
    virtual ~VideoWriter() = default;

    /// Takes the next picture, and of the second stream another one. The pictures may change when it returns.
    /// Fails for the run where an earlier or this one could not be written.
    [[nodiscard]] virtual Result<void> add(ConstPicture first, const ConstPicture* second) = 0;
    /// Ends the file and gives it its name.
    [[nodiscard]] virtual Result<void> close() = 0;
    /// Ends the file where it stands, as playable as it can be, under a name with "-part"; gives that name,
    /// an empty one with nothing left behind where there is no picture yet.
    [[nodiscard]] virtual Result<std::string> close_part() = 0;
};

}  // namespace zemora
