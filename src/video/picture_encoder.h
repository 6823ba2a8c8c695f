#pragma once
/// The encoder of one stream of pictures. Functions give an empty text, or the reason of a failure.

#include <functional>
#include <string>

#include "numerics/rational.h"
#include "video/encoder_settings.h"
#include "video/film_output.h"
#include "video/libav_handles.h"
#include "video/video_facts.h"

namespace zemora {

/// What the pictures of a stream have in common.
struct PictureStream {
    PictureSize size;
    Rational rate;       ///< Frames a second.
    ColourTags colours;  ///< Settled.
};

class PictureEncoder {
public:
    [[nodiscard]] std::string open(const EncoderSettings& settings, const PictureStream& pictures,
                                   FilmOutput& output);
    /// The stream of the output.
    [[nodiscard]] AVStream& stream() const { return *stream_; }
    [[nodiscard]] const AVCodecContext& context() const { return *codec_; }
    /// Gives the next picture to the encoder, or null after the last one, and what comes out to the output.
    [[nodiscard]] std::string encode(const AVFrame* picture);

private:
    FilmOutput* output_ = nullptr;
    Codec codec_;
    Packet packet_;
    AVStream* stream_ = nullptr;
};

/// Gives a frame to the encoder, or null after the last one, and its packets to the stream of the output.
[[nodiscard]] std::string encode_into(AVCodecContext& encoder, const AVFrame* frame, AVPacket& packet,
                                      const AVStream& stream, FilmOutput& output);

}  // namespace zemora
