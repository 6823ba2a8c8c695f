#pragma once
/// The views of each frame, however they lie in one or two videos.

#include <memory>
#include <string>

#include "input/view_source.h"
#include "video/video_file.h"

namespace zemora {

/// Where the views of a film are.
struct FilmFiles {
    std::string left;            ///< Absolute; of one file for both views that one.
    std::string right;           ///< Empty for one file.
    int stereo_image_input = 0;  ///< `StereoImageInput`: how the files hold the views.

    [[nodiscard]] bool is_one_file() const { return right.empty(); }
};

class FrameSource : public ViewSource {
public:
    /// Fails for the run as `VideoFile::open`, and where the file does not hold the views as told.
    [[nodiscard]] static Result<std::unique_ptr<FrameSource>> open(const FilmFiles& files, Notes& notes);

    /// Of the shorter file, without regard to the offset.
    [[nodiscard]] virtual int count() const = 0;
    /// The right view of frame i comes from its frame i + offset.
    virtual void set_offset(int frames) = 0;
    [[nodiscard]] virtual const VideoFacts& left_facts() const = 0;
    [[nodiscard]] virtual const VideoFacts& right_facts() const = 0;  ///< Of one file the same.
    /// The first frames of the scenes in what was decoded so far.
    [[nodiscard]] virtual std::vector<int> scene_starts() const = 0;
    /// Memory for the next frame that is read.
    virtual void take_back(RawViews&& used) = 0;
};

/// Tells on the console what a video is; `VerboseMode` above 1.
void tell_video_facts(const std::string& path, const VideoFacts& facts, Notes& notes);

}  // namespace zemora
