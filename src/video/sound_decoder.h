#pragma once
/// Decodes a sound stream from some place on, as parts in the order of the file.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "video/libav_handles.h"
#include "video/sound_track.h"

struct AVStream;
struct SwrContext;

namespace zemora {

struct SwrFreer {
    void operator()(SwrContext* converter) const;
};
using SoundConverter = std::unique_ptr<SwrContext, SwrFreer>;

/// What one frame of the stream gives.
struct SoundPart {
    bool has_time = false;
    std::int64_t time = 0;       ///< In the time base of the stream, as the file tells it.
    std::int64_t byte = -1;      ///< Place of its packet in the file; -1 unknown.
    std::vector<float> samples;  ///< All channels in turn.
};

/// A place from which decoding can go on.
struct SoundPlace {
    std::int64_t time = 0;
    std::int64_t byte = -1;
};

class SoundDecoder {
public:
    /// Opens the first sound stream that can be decoded. Gives an empty text, or the reason of a failure.
    [[nodiscard]] std::string open(const std::string& path);

    [[nodiscard]] const SoundFormat& format() const { return format_; }
    /// Sample of the stream's own time 0 to which a time of the stream belongs, rounded.
    [[nodiscard]] std::int64_t sample_of(std::int64_t time) const;
    /// Sample that is heard when the first picture of the first video stream is seen; 0 without one.
    [[nodiscard]] std::int64_t first_picture_sample() const { return first_picture_sample_; }
    /// Whether times of the stream are whole samples.
    [[nodiscard]] bool has_exact_times() const;

    /// The next part; false at the end.
    [[nodiscard]] bool next(SoundPart& part);
    /// Goes to the place, or to one before it; false where the file does not let that be.
    [[nodiscard]] bool go_to(const SoundPlace& place);
    /// Goes to the start of the file.
    [[nodiscard]] bool restart();

private:
    [[nodiscard]] std::string open_file();
    [[nodiscard]] std::string choose_stream();
    [[nodiscard]] bool receive();
    [[nodiscard]] bool feed();
    void settle_format();
    void convert(const AVFrame& frame, SoundPart& part);
    [[nodiscard]] bool prepare_converter(const AVFrame& frame);

    std::string path_;
    InputFile file_;
    Codec codec_;
    Packet packet_;
    Frame frame_;
    SoundConverter converter_;
    std::uint64_t frame_layout_ = 0;  ///< Of the frames that the converter takes, with the two below.
    int frame_rate_ = 0;
    int frame_format_ = -1;
    SoundFormat format_;
    int stream_ = -1;
    bool at_end_ = false;
    bool has_first_ = false;  ///< A frame that was decoded to learn the format waits.
    std::int64_t first_picture_sample_ = 0;
};

}  // namespace zemora
