#include "video/film_writer.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <utility>

#include "platform/console.h"
#include "platform/paths.h"
#include "platform/threads.h"
#include "video/frame_colours.h"

namespace zemora {

namespace {

constexpr int kQueueLength = 4;  // pictures that wait for the encoder
constexpr const char* kIsClosed = "it is closed";
constexpr int kSizeStep = 4;  // pixels, of both sides

std::array<WritablePlane, 3> planes_of(AVFrame& frame) {
    return {{{frame.data[0], frame.linesize[0]},
             {frame.data[1], frame.linesize[1]},
             {frame.data[2], frame.linesize[2]}}};
}

std::string name_of_part(const std::string& path) {
    return without_suffix(path) + "-part" + suffix_of(path);
}

/// The tags that a written film has: those of the input where they are known, and else those of its height.
ColourTags written_tags(const ColourTags& input, int height) {
    constexpr int kUnspecified = 2;
    constexpr int kReserved = 0;
    ColourTags tags = settled_tags(input, height);
    const int usual = settled_tags({}, height).matrix;  // the numbers of BT.709 and BT.601 agree
    for (int* tag : {&tags.primaries, &tags.transfer}) {
        *tag = *tag == kUnspecified || *tag == kReserved ? usual : *tag;
    }
    tags.full_range = false;
    return tags;
}

/// Whether pictures and sound go over in the same pace from the start, so that the sound may stay as it is.
bool keeps_pace(const SoundWish& wish, Rational rate) {
    return wish.walk.first == 0 && wish.walk.step == 1 && wish.input_rate == rate;
}

void set_title(AVStream& stream, const char* title) {
    av_dict_set(&stream.metadata, "title", title, 0);
    av_dict_set(&stream.metadata, "handler_name", title, 0);
}

}  // namespace

FilmWriter::FilmWriter(const VideoWriterOptions& options, const MessageCatalogue& messages)
    : options_(options), messages_(messages), colours_(written_tags(options.colours, options.size.height)) {}

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
    writer->tell_of_opening(notes);
    writer->thread_ = start_team([self = writer.get()] { self->encode_queue(); });
    return std::unique_ptr<VideoWriter>(std::move(writer));
}

std::string FilmWriter::open_film(const ContainerSettings& container) {
    std::string reason = FilmOutput::create(options_.path, container.format, output_);
    reason = reason.empty() ? open_pictures(container) : reason;
    reason = reason.empty() ? open_sound() : reason;
    if (reason.empty()) {
        metadata_ = read_film_metadata(options_.metadata_source);
        put_tags(output_->context(), metadata_, first_time_code());
    }
    return reason.empty() ? output_->write_header(container.options) : reason;
}

/// That of the first picture; none where time runs backwards.
std::string FilmWriter::first_time_code() const {
    const FrameWalk& walk = options_.metadata_walk;
    return walk.step < 0 ? std::string()
                         : advanced_time_code(metadata_.time_code, metadata_.rate, walk.first, options_.rate);
}

std::string FilmWriter::open_pictures(const ContainerSettings& container) {
    const PictureStream pictures{options_.size, options_.rate, colours_};
    std::string reason = first_.open(container.encoder, pictures, *output_);
    if (!reason.empty()) {
        return reason;
    }
    first_.stream().disposition = AV_DISPOSITION_DEFAULT;
    if (container.has_stereo_flag) {
        reason = output_->put_stereo_flag(first_.stream(), options_.stereo.packing);
    }
    return reason.empty() && options_.has_two_streams ? open_second_pictures(container, pictures) : reason;
}

std::string FilmWriter::open_second_pictures(const ContainerSettings& container,
                                             const PictureStream& pictures) {
    std::string reason = second_.open(container.encoder, pictures, *output_);
    if (reason.empty()) {
        set_title(first_.stream(), "left");
        set_title(second_.stream(), "right");
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
    return open_sound_of_file();
}

/// A source without sound that can be read loses the sound, not the film.
std::string FilmWriter::open_sound_of_file() {
    const SoundWish& wish = options_.sound;
    if (keeps_pace(wish, options_.rate)) {
        std::string reason = add_copied_sound(wish.file, *output_, sound_);
        if (!reason.empty() || sound_) {
            return reason;
        }
    }
    std::unique_ptr<SoundTrack> track;
    no_sound_reason_ = open_sound_track(wish.file, track);
    return !no_sound_reason_.empty()
               ? std::string()
               : add_aac_sound(PlannedSound(std::move(track), wish.walk, wish.input_rate), *output_, sound_);
}

void FilmWriter::tell_of_opening(Notes& notes) const {
    const std::string name = printable(options_.path);
    if (!no_sound_reason_.empty()) {
        notes.print(format_text(
            messages_.either({"The video %s gets no sound, as that of %s cannot be read: %s\n",
                              "Das Video %s bekommt keinen Ton, da der von %s nicht lesbar ist: %s\n"}),
            name.c_str(), printable(options_.sound.file).c_str(), no_sound_reason_.c_str()));
    }
    if (options_.stereo.packing != StereoPacking::none && options_.stereo.right_first) {
        notes.print(
            format_text(messages_.either(
                            {"The video %s does not say that it is in 3D: its right view comes first, and "
                             "players would exchange the eyes.\n",
                             "Das Video %s sagt nicht, dass es in 3D ist: seine rechte Ansicht kommt zuerst, "
                             "und Abspielgeraete wuerden die Augen vertauschen.\n"}),
                        name.c_str()));
    }
}

Result<void> FilmWriter::add(ConstPicture first, const ConstPicture* second) {
    if (const std::string told = thread_.joinable() ? reason() : kIsClosed; !told.empty()) {
        return failure(told);
    }
    QueuedPictures pictures = queue_.take_empty();
    bool is_writable = av_frame_make_writable(pictures.first.get()) >= 0;
    is_writable = is_writable && (!pictures.second || av_frame_make_writable(pictures.second.get()) >= 0);
    if (!is_writable) {
        queue_.put_empty(std::move(pictures));
        return Failure::out_of_memory("The pictures of the video do not fit into memory\n");
    }
    yuv_from_bgr(first, colours_, planes_of(*pictures.first));
    if (pictures.second && second != nullptr) {
        yuv_from_bgr(*second, colours_, planes_of(*pictures.second));
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
    stop_thread();
    if (const std::string told = reason(); !told.empty()) {
        return failure(told);
    }
    return finish(options_.path);
}

Result<std::string> FilmWriter::close_part() {
    stop_thread();
    if (encoded_ == 0) {
        return std::string();
    }
    const std::string path = name_of_part(options_.path);
    const Result<void> done = finish(path);
    return done ? Result<std::string>(path) : Result<std::string>(done.failure());
}

Result<void> FilmWriter::finish(const std::string& path) {
    if (!output_) {
        return failure(kIsClosed);
    }
    put_written_chapters();
    const std::string told = output_->finish(path);
    output_.reset();
    return told.empty() ? Result<void>() : Result<void>(failure(told));
}

/// They are told at the end, when it is known how far the film goes.
void FilmWriter::put_written_chapters() {
    const int pictures = static_cast<int>(encoded_);
    put_chapters(output_->context(),
                 chapters_of_walk(metadata_, options_.metadata_walk, pictures, options_.rate));
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
                                    printable(options_.path).c_str(), reason.c_str()) +
                        take_libav_log());
    failure.file = options_.path;
    return failure;
}

}  // namespace zemora
