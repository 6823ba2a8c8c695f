#include "video/picture_queue.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <utility>

namespace zemora {

namespace {

/// A frame of limited-range 4:2:0 with memory; null without it.
Frame make_picture(PictureSize size, const ColourTags& tags) {
    Frame frame(av_frame_alloc());
    if (frame == nullptr) {
        return nullptr;
    }
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = size.width;
    frame->height = size.height;
    frame->color_primaries = static_cast<AVColorPrimaries>(tags.primaries);
    frame->color_trc = static_cast<AVColorTransferCharacteristic>(tags.transfer);
    frame->colorspace = static_cast<AVColorSpace>(tags.matrix);
    frame->color_range = AVCOL_RANGE_MPEG;
    frame->chroma_location = AVCHROMA_LOC_LEFT;
    return av_frame_get_buffer(frame.get(), 0) < 0 ? nullptr : std::move(frame);
}

}  // namespace

bool PictureQueue::reserve(int count, PictureSize size, const ColourTags& tags, bool has_two) {
    for (int i = 0; i < count; ++i) {
        QueuedPictures pictures{make_picture(size, tags), has_two ? make_picture(size, tags) : nullptr};
        if (pictures.first == nullptr || (has_two && pictures.second == nullptr)) {
            return false;
        }
        empty_.push_back(std::move(pictures));
    }
    return true;
}

QueuedPictures PictureQueue::take_empty() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !empty_.empty(); });
    QueuedPictures pictures = std::move(empty_.back());
    empty_.pop_back();
    return pictures;
}

void PictureQueue::put_filled(QueuedPictures pictures) {
    const std::lock_guard lock(mutex_);
    filled_.push_back(std::move(pictures));
    changed_.notify_all();
}

void PictureQueue::end() {
    const std::lock_guard lock(mutex_);
    has_ended_ = true;
    changed_.notify_all();
}

bool PictureQueue::take_filled(QueuedPictures& pictures) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !filled_.empty() || has_ended_; });
    if (filled_.empty()) {
        return false;
    }
    pictures = std::move(filled_.front());
    filled_.pop_front();
    return true;
}

void PictureQueue::put_empty(QueuedPictures pictures) {
    const std::lock_guard lock(mutex_);
    empty_.push_back(std::move(pictures));
    changed_.notify_all();
}

}  // namespace zemora
