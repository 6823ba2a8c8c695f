#include "video/first_picture.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include "video/libav_handles.h"
#include "video/open_input.h"

namespace zemora {

namespace {

/// A decoder of the stream with one thread, which gives its first picture as soon as it can.
Codec decoder_of(const AVStream& stream) {
    const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    Codec codec(decoder != nullptr ? avcodec_alloc_context3(decoder) : nullptr);
    if (codec == nullptr || avcodec_parameters_to_context(codec.get(), stream.codecpar) < 0) {
        return nullptr;
    }
    codec->pkt_timebase = stream.time_base;
    codec->thread_count = 1;
    return avcodec_open2(codec.get(), decoder, nullptr) < 0 ? nullptr : std::move(codec);
}

/// Decodes until the first picture; its time, or none told.
std::int64_t first_time(AVFormatContext& file, AVCodecContext& codec, int stream) {
    const Packet packet(av_packet_alloc());
    const Frame frame(av_frame_alloc());
    while (avcodec_receive_frame(&codec, frame.get()) < 0) {
        const int error = av_read_frame(&file, packet.get());
        if (error >= 0 && packet->stream_index == stream) {
            (void)avcodec_send_packet(&codec, packet.get());
        } else if (error < 0 && avcodec_send_packet(&codec, nullptr) < 0) {
            return AV_NOPTS_VALUE;
        }
        av_packet_unref(packet.get());
    }
    return frame->best_effort_timestamp;
}

}  // namespace

std::optional<FilmTime> time_of_first_picture(const std::string& path) {
    InputFile file;
    const int stream = open_input(path, file) == 0 ? first_picture_stream(*file) : -1;
    if (stream < 0) {
        return std::nullopt;
    }
    read_only_stream(*file, stream);
    const AVRational base = file->streams[stream]->time_base;
    FilmTime time{0, {base.num, base.den}};
    if (const Codec codec = decoder_of(*file->streams[stream])) {
        const std::int64_t count = first_time(*file, *codec, stream);
        time.count = count != AV_NOPTS_VALUE ? count : 0;
    }
    return time;
}

}  // namespace zemora
