#pragma once
/// The videos that a film is written to.

#include <memory>
#include <string>
#include <vector>

#include "driver/video_run.h"

namespace zemora {

/// One `VideoOutput`: one file, or one for each view.
class VideoProducts {
public:
    /// Names the files and tells them.
    explicit VideoProducts(VideoRun& run);

    [[nodiscard]] bool is_wanted() const { return !files_.empty(); }
    /// Gives a finished frame to the writers, which the first one opens. Ends the run where one fails.
    void add(const Finished& finished);
    /// All files get their names.
    void close();

private:
    struct File {
        std::string path;
        std::unique_ptr<VideoWriter> writer;
    };
    /// What the frame shows in each of the files, or in both streams of one.
    [[nodiscard]] std::vector<Bitmap> compose(const Finished& finished);
    void open(File& file, const PictureSize& size);
    [[noreturn]] void fail(const File& file, const Failure& failure);

    VideoRun& run_;
    std::vector<File> files_;
};

}  // namespace zemora
