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
    /// Gives the frame before once more, for one that could not be mounted: sound and pictures stay together.
    void repeat();
    /// All files get their names.
    void close();
    /// What was written so far becomes playable files beside the final names, which is told.
    void close_parts();

private:
    struct File {
        std::string path;
        std::unique_ptr<VideoWriter> writer;
    };
    /// What the frame shows in each of the files, or in both streams of one.
    [[nodiscard]] std::vector<Bitmap> compose(const Finished& finished);
    void open(File& file, const PictureSize& size);
    void write(const std::vector<Bitmap>& pictures);
    [[noreturn]] void fail(const File& file, const Failure& failure);

    VideoRun& run_;
    std::vector<File> files_;
    std::vector<Bitmap> latest_;  ///< The canvases of the latest frame; views without a frame of the canvas
                                  ///< are windows into the warped pair.
};

}  // namespace zemora
