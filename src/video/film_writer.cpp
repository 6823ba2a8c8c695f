#include "video/film_writer.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <utility>

#include "platform/paths.h"
#include "platform/threads.h"
#include "video/plain_colours.h"

namespace zemora {

namespace {

constexpr int kQueueLength = 4;  // pictures that wait for the encoder
constexpr int kSizeStep = 4;     // pixels, of both sides

std::array<WritablePlane, 3> planes_of(AVFrame& frame) {
    return {{{frame.data[0], frame.linesize[0]},
             {frame.data[1], frame.linesize[1]},
             {frame.data[2], frame.linesize[2]}}};
}

std::string name_of_part(const std::string& path) {
    return without_suffix(path) + "-part" + suffix_of(path);
}

}  // namespace

FilmWriter::FilmWriter(const VideoWriterOptions& options, const MessageCatalogue& messages)
    : options_(options),
      messages_(messages),
      colours_(plain_settled_tags(options.colours, options.size.height)) {
    colours_.full_range = false;
}

FilmWriter::~FilmWriter() {
    set_reason("-");  // what still waits is not encoded
    stop_thread();
}

Result<std::unique_ptr<VideoWriter>> FilmWriter::open(const VideoWriterOptions& options,
                                                      const ContainerSettings& container, Notes& notes) {
    if (options.size.width % kSizeStep != 0 || options.size.height % kSizeStep != 0) {
        return Failure::of_run(notes.messages().text<Msg::create_movie_sizes_should_divide_by_4>());
    }
    keep_libav_log();
    (void)take_libav_log();
    std::unique_ptr<FilmWriter> writer(new FilmWriter(options, notes.messages()));
    std::string reason;
    // The threads of the encoders take their masks of signals from the one that starts them.
    start_team([&] { reason = writer->open_film(container); }).join();
    if (!reason.empty()) {
        return writer->failure(reason);
    }
    if (!writer->queue_.reserve(kQueueLength, options.size, writer->colours_, options.has_two_streams)) {
        return Failure::out_of_memory("The pictures of the video do not fit into memory\n");
    }
    writer->thread_ = start_team([self = writer.get()] { self->encode_queue(); });
    return std::unique_ptr<VideoWriter>(std::move(writer));
}

std::string FilmWriter::open_film(const ContainerSettings& container) {
    std::string reason = FilmOutput::create(options_.path, container.format, output_);
    reason = reason.empty() ? open_pictures(container) : reason;
    reason = reason.empty() ? open_sound() : reason;
    return reason.empty() ? output_->write_header(container.options) : reason;
}

std::string FilmWriter::open_pictures(const ContainerSettings& container) {
    const PictureStream pictures{options_.size, options_.rate, colours_};
    std::string reason = first_.open(container.encoder, pictures, *output_);
    if (!reason.empty()) {
        return reason;
    }
    first_.stream().disposition = AV_DISPOSITION_DEFAULT;
    if (options_.has_two_streams) {
        reason = second_.open(container.encoder, pictures, *output_);
    }
    return reason;
}

std::string FilmWriter::open_sound() {
    const SoundWish& wish = options_.sound;
    if (wish.source == SoundWish::Source::none) {
        return {};
    }
    if (wish.source == SoundWish::Source::silence) {
        return add_aac_sound(PlannedSound(), *output_, sound_);
    }
    std::unique_ptr<SoundTrack> track;
    std::string reason = open_sound_track(wish.file, track);
    return !reason.empty()
               ? reason
               : add_aac_sound(PlannedSound(std::move(track), wish.walk, wish.input_rate), *output_, sound_);
}

Result<void> FilmWriter::add(ConstPicture first, const ConstPicture* second) {
    if (const std::string told = reason(); !told.empty()) {
        return failure(told);
    }
    QueuedPictures pictures = queue_.take_empty();
    bool is_writable = av_frame_make_writable(pictures.first.get()) >= 0;
    is_writable = is_writable && (!pictures.second || av_frame_make_writable(pictures.second.get()) >= 0);
    if (!is_writable) {
        queue_.put_empty(std::move(pictures));
        return Failure::out_of_memory("The pictures of the video do not fit into memory\n");
    }
    plain_yuv_from_bgr(first, colours_, planes_of(*pictures.first));
    if (pictures.second && second != nullptr) {
        plain_yuv_from_bgr(*second, colours_, planes_of(*pictures.second));
    }
    queue_.put_filled(std::move(pictures));
    return {};
}

void FilmWriter::encode_queue() {
    QueuedPictures pictures;
    while (queue_.take_filled(pictures)) {
        if (reason().empty()) {
            set_reason(encode(pictures));
        }
        queue_.put_empty(std::move(pictures));
    }
    if (reason().empty()) {
        set_reason(drain());
    }
}

std::string FilmWriter::encode(QueuedPictures& pictures) {
    pictures.first->pts = encoded_;
    std::string reason = first_.encode(pictures.first.get());
    if (reason.empty() && pictures.second) {
        pictures.second->pts = encoded_;
        reason = second_.encode(pictures.second.get());
    }
    ++encoded_;
    return reason.empty() && sound_ ? sound_->write_until(encoded_, options_.rate) : reason;
}

std::string FilmWriter::drain() {
    std::string reason = first_.encode(nullptr);
    if (reason.empty() && options_.has_two_streams) {
        reason = second_.encode(nullptr);
    }
    return reason.empty() && sound_ ? sound_->finish() : reason;
}

Result<void> FilmWriter::close() {
    return finish(options_.path);
}

Result<std::string> FilmWriter::close_part() {
    const std::string path = name_of_part(options_.path);
    const Result<void> done = finish(path);
    return done ? Result<std::string>(path) : Result<std::string>(done.failure());
}

Result<void> FilmWriter::finish(const std::string& path) {
    stop_thread();
    std::string told = reason();
    told = told.empty() ? output_->finish(path) : told;
    return told.empty() ? Result<void>() : Result<void>(failure(told));
}

void FilmWriter::stop_thread() {
    queue_.end();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void FilmWriter::set_reason(const std::string& reason) {
    const std::lock_guard lock(mutex_);
    reason_ = reason_.empty() ? reason : reason_;
}

std::string FilmWriter::reason() const {
    const std::lock_guard lock(mutex_);
    return reason_;
}

Failure FilmWriter::failure(const std::string& reason) const {
    Failure failure =
        Failure::of_run(format_text(messages_.either({"The video %s could not be written: %s\n",
                                                      "Das Video %s konnte nicht geschrieben werden: %s\n"}),
                                    options_.path.c_str(), reason.c_str()) +
                        take_libav_log());
    failure.file = options_.path;
    return failure;
}

}  // namespace zemora
