#include "video/frame_source.h"

#include <algorithm>
#include <utility>

#include "input/file_selection.h"

namespace zemora {

namespace {

/// Two files, or two streams of one: each view is a picture of its own.
class TwoFileSource : public FrameSource {
public:
    TwoFileSource(std::unique_ptr<VideoFile> left, std::unique_ptr<VideoFile> right)
        : left_(std::move(left)), right_(std::move(right)) {
        left_->watch_cuts(&cuts_);
    }

    [[nodiscard]] Result<RawViews> read(int number, Notes& notes) override;
    [[nodiscard]] int count() const override {
        return std::min(left_->facts().frames, right_->facts().frames);
    }
    void set_offset(int frames) override { offset_ = frames; }
    [[nodiscard]] const VideoFacts& left_facts() const override { return left_->facts(); }
    [[nodiscard]] const VideoFacts& right_facts() const override { return right_->facts(); }
    [[nodiscard]] std::vector<int> scene_starts() const override { return cuts_.starts(); }
    void take_back(RawViews&& used) override { spare_ = std::move(used); }

private:
    std::unique_ptr<VideoFile> left_;
    std::unique_ptr<VideoFile> right_;
    SceneCuts cuts_;
    RawViews spare_;
    int offset_ = 0;
};

Result<RawViews> TwoFileSource::read(int number, Notes& notes) {
    RawViews views = std::exchange(spare_, {});
    KeptNotes right_notes = KeptNotes::for_listener(notes);
    Result<void> left_done;
    Result<void> right_done;
#pragma omp parallel sections
    {
#pragma omp section
        left_done = left_->read(number, views.left, notes);
#pragma omp section
        right_done = right_->read(number + offset_, views.right, right_notes);
    }
    right_notes.tell(notes);
    for (const Result<void>* done : {&left_done, &right_done}) {
        if (!*done) {
            return done->failure();
        }
    }
    return views;
}

}  // namespace

Result<std::unique_ptr<FrameSource>> FrameSource::open(const FilmFiles& files, Notes& notes) {
    auto left = VideoFile::open(files.left, VideoStream::first, notes);
    if (!left) {
        return left.failure();
    }
    auto right = VideoFile::open(files.right, VideoStream::first, notes);
    if (!right) {
        return right.failure();
    }
    return std::unique_ptr<FrameSource>(std::make_unique<TwoFileSource>(*std::move(left), *std::move(right)));
}

}  // namespace zemora
