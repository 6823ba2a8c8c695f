#include "video/video_file.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <utility>

#include "platform/console.h"
#include "video/packet_reader.h"
#include "video/picture_converter.h"
#include "video/picture_decoder.h"
#include "video/stream_facts.h"

namespace zemora {

namespace {

/// One stream with all that it takes to get its pictures.
class LibraryVideoFile : public VideoFile {
public:
    LibraryVideoFile(std::unique_ptr<PacketReader> reader, std::unique_ptr<PictureDecoder> decoder)
        : reader_(std::move(reader)), decoder_(std::move(decoder)) {}

    [[nodiscard]] Result<void> prepare(const MessageCatalogue& messages);
    [[nodiscard]] const VideoFacts& facts() const override { return facts_; }
    [[nodiscard]] Result<void> read(int number, LoadedView& into, Notes& notes) override;
    void watch_cuts(SceneCuts* cuts) override;

private:
    [[nodiscard]] Failure failure(Failure failure) const;

    std::unique_ptr<PacketReader> reader_;
    std::unique_ptr<PictureDecoder> decoder_;
    PictureConverter converter_;
    FrameGrid grid_;
    VideoFacts facts_;
    bool has_told_damage_ = false;
};

Failure LibraryVideoFile::failure(Failure failure) const {
    failure.file = reader_->path();
    return failure;
}

Result<void> LibraryVideoFile::prepare(const MessageCatalogue& messages) {
    const AVFrame* first = decoder_->find_first();
    if (first == nullptr) {
        return failure(Failure::of_run(printable(reader_->path()) + ": " +
                                       messages.text<Msg::video_source_frame_decompression_failed>() +
                                       messages.text<Msg::video_source_try_avisynth_script>() +
                                       take_libav_log()));
    }
    facts_ = stream_facts(*reader_, *first);
    grid_ = even_grid(reader_->index().times(), reader_->time_base(), facts_.rate);
    facts_.rate = grid_.rate;
    facts_.frames =
        grid_.pictures.empty() ? reader_->index().pictures() : static_cast<int>(grid_.pictures.size());
    facts_.repeated_frames = grid_.repeated;
    facts_.dropped_frames = grid_.dropped;
    return {};
}

void LibraryVideoFile::watch_cuts(SceneCuts* cuts) {
    if (cuts == nullptr) {
        decoder_->watch({});
        return;
    }
    decoder_->watch([cuts](int number, const AVFrame& frame) {
        FrameSketch sketch;
        if (sketch_of(frame, sketch)) {
            cuts->add(number, sketch);
        }
    });
}

Result<void> LibraryVideoFile::read(int number, LoadedView& into, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    if (number < 0 || number >= facts_.frames) {
        return failure(Failure::of_pair(
            format_text(messages.either({"%s: there is no frame %d\n", "%s: es gibt kein Bild %d\n"}),
                        printable(reader_->path()).c_str(), number)));
    }
    const int picture = grid_.pictures.empty() ? number : grid_.pictures[static_cast<std::size_t>(number)];
    const FoundPicture found = decoder_->find(picture);
    if (found.frame == nullptr) {
        return failure(Failure::of_pair(messages.text<Msg::video_source_frame_decompression_failed>()));
    }
    if (found.frame->width != facts_.coded_size.width || found.frame->height != facts_.coded_size.height) {
        return failure(Failure::of_run(messages.text<Msg::main_frames_differ_in_size>()));
    }
    if (found.is_damaged && !std::exchange(has_told_damage_, true)) {
        notes.print(format_text(
            messages.either({"%s: frame %d is damaged and shows the one before it; so will others.\n",
                             "%s: Bild %d ist beschaedigt und zeigt das Bild davor; weitere ebenso.\n"}),
            printable(reader_->path()).c_str(), number));
    }
    if (const auto done = converter_.convert(*found.frame, facts_.size, into); !done) {
        return failure(done.failure());
    }
    return {};
}

}  // namespace

Result<std::unique_ptr<VideoFile>> VideoFile::open(const std::string& path, VideoStream stream,
                                                   Notes& notes) {
    if (stream == VideoStream::first) {
        notes.say<Msg::video_source_opening_takes_time>(printable(path));
    }
    auto reader = PacketReader::open(path, stream, notes.messages());
    if (!reader) {
        return reader.failure();
    }
    auto decoder = PictureDecoder::open(**reader, notes.messages());
    if (!decoder) {
        return decoder.failure();
    }
    auto file = std::make_unique<LibraryVideoFile>(*std::move(reader), *std::move(decoder));
    if (const auto done = file->prepare(notes.messages()); !done) {
        return done.failure();
    }
    return std::unique_ptr<VideoFile>(std::move(file));
}

}  // namespace zemora
