#pragma once
/// What the writers of all containers share: pictures go through a queue to a thread that encodes and writes.

#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "video/encoder_settings.h"
#include "video/film_metadata.h"
#include "video/film_output.h"
#include "video/picture_encoder.h"
#include "video/picture_queue.h"
#include "video/sound_output.h"
#include "video/video_writer.h"

namespace zemora {

/// What sets one container apart from another.
struct ContainerSettings {
    const char* format = "mp4";  ///< As the library names it.
    EncoderSettings encoder;
    std::vector<LibraryOption> options;
    bool has_stereo_flag = false;  ///< A flag of the container itself, beside that in the stream.
};

class FilmWriter : public VideoWriter {
public:
    [[nodiscard]] static Result<std::unique_ptr<VideoWriter>> open(const VideoWriterOptions& options,
                                                                   const ContainerSettings& container,
                                                                   Notes& notes);
    ~FilmWriter() override;

    [[nodiscard]] Result<void> add(ConstPicture first, const ConstPicture* second) override;
    [[nodiscard]] Result<void> close() override;
    [[nodiscard]] Result<std::string> close_part() override;

private:
    FilmWriter(const VideoWriterOptions& options, const MessageCatalogue& messages);
    [[nodiscard]] std::string open_film(const ContainerSettings& container);
    [[nodiscard]] std::string open_pictures(const ContainerSettings& container);
    [[nodiscard]] std::string open_second_pictures(const ContainerSettings& container,
                                                   const PictureStream& pictures);
    [[nodiscard]] std::string open_sound();
    [[nodiscard]] std::string open_sound_of_file();
    void tell_of_opening(Notes& notes) const;
    [[nodiscard]] std::string first_time_code() const;
    void put_written_chapters();

    void encode_queue();
    [[nodiscard]] std::string encode(QueuedPictures& pictures);
    [[nodiscard]] std::string drain();
    [[nodiscard]] Result<void> finish(const std::string& path);
    void stop_thread();

    void set_reason(const std::string& reason);
    [[nodiscard]] std::string reason() const;
    [[nodiscard]] Failure failure(const std::string& reason) const;

    VideoWriterOptions options_;
    const MessageCatalogue& messages_;
    ColourTags colours_;
    FilmMetadata metadata_;
    std::string no_sound_reason_;  ///< Why the source's sound is left out.
    std::unique_ptr<FilmOutput> output_;
    PictureEncoder first_;
    PictureEncoder second_;
    std::unique_ptr<SoundOutput> sound_;
    PictureQueue queue_;
    std::int64_t encoded_ = 0;  ///< Pictures, as the thread counts them.

    mutable std::mutex mutex_;
    std::string reason_;  ///< Why the thread could not go on; empty while it can.
    std::thread thread_;
};

}  // namespace zemora
