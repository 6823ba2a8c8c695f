#include "video/sound_decoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <algorithm>

#include "video/first_picture.h"
#include "video/open_input.h"

namespace zemora {

namespace {

std::uint64_t layout_of(const AVFrame& frame) {
    return frame.ch_layout.order == AV_CHANNEL_ORDER_NATIVE ? frame.ch_layout.u.mask : 0;
}

/// The layout, or the usual one of that number of channels.
AVChannelLayout layout_for(std::uint64_t mask, int channels) {
    AVChannelLayout layout = {};
    if (mask == 0 || av_channel_layout_from_mask(&layout, mask) < 0 || layout.nb_channels != channels) {
        layout = {};
        av_channel_layout_default(&layout, channels);
    }
    return layout;
}

bool is_lossless(AVCodecID codec) {
    const AVCodecDescriptor* about = avcodec_descriptor_get(codec);
    return about != nullptr && (about->props & AV_CODEC_PROP_LOSSLESS) != 0;
}

}  // namespace

void SwrFreer::operator()(SwrContext* converter) const {
    swr_free(&converter);
}

std::string SoundDecoder::open(const std::string& path) {
    path_ = path;
    packet_.reset(av_packet_alloc());
    frame_.reset(av_frame_alloc());
    if (!packet_ || !frame_) {
        return libav_reason(AVERROR(ENOMEM));
    }
    std::string reason = open_file();
    if (!reason.empty()) {
        return reason;
    }
    const auto picture = time_of_first_picture(path);
    if (picture) {
        first_picture_sample_ =
            av_rescale_q(picture->count, {picture->base.num, picture->base.den}, {1, format_.sample_rate});
    }
    return {};
}

std::string SoundDecoder::open_file() {
    at_end_ = false;
    has_first_ = false;
    if (const int error = open_input(path_, file_); error < 0) {
        return libav_reason(error);
    }
    std::string reason = choose_stream();
    if (reason.empty()) {
        read_only_stream(*file_, stream_);
        has_first_ = receive();
        if (!has_first_) {
            return libav_reason(AVERROR_INVALIDDATA);
        }
        settle_format();
    }
    return reason;
}

std::string SoundDecoder::choose_stream() {
    stream_ = first_sound_stream(*file_);
    if (stream_ < 0) {
        return libav_reason(AVERROR_STREAM_NOT_FOUND);
    }
    const AVStream& stream = *file_->streams[stream_];
    const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    codec_.reset(avcodec_alloc_context3(decoder));
    int error = codec_ ? avcodec_parameters_to_context(codec_.get(), stream.codecpar) : AVERROR(ENOMEM);
    if (error >= 0) {
        codec_->pkt_timebase = stream.time_base;
        error = avcodec_open2(codec_.get(), decoder, nullptr);
    }
    return error < 0 ? libav_reason(error) : std::string();
}

void SoundDecoder::settle_format() {
    if (format_.sample_rate != 0) {
        return;  // opened anew
    }
    format_.sample_rate = frame_->sample_rate;
    format_.channels = frame_->ch_layout.nb_channels;
    format_.layout = layout_of(*frame_);
    const int stored_bits = file_->streams[stream_]->codecpar->bits_per_raw_sample;
    const int frame_bits = 8 * av_get_bytes_per_sample(static_cast<AVSampleFormat>(frame_->format));
    format_.bits = !is_lossless(codec_->codec_id) ? 0 : stored_bits != 0 ? stored_bits : frame_bits;
}

std::int64_t SoundDecoder::sample_of(std::int64_t time) const {
    return av_rescale_q(time, file_->streams[stream_]->time_base, {1, format_.sample_rate});
}

bool SoundDecoder::has_exact_times() const {
    const AVRational base = file_->streams[stream_]->time_base;
    return static_cast<std::int64_t>(base.num) * format_.sample_rate % base.den == 0;
}

/// Reads packets until one of the stream went to the decoder; false at the end.
bool SoundDecoder::feed() {
    while (!at_end_) {
        const int error = av_read_frame(file_.get(), packet_.get());
        if (error >= 0 && packet_->stream_index != stream_) {
            av_packet_unref(packet_.get());
            continue;
        }
        at_end_ = error < 0;
        (void)avcodec_send_packet(codec_.get(),
                                  at_end_ ? nullptr : packet_.get());  // a damaged one is left out
        av_packet_unref(packet_.get());
        return true;
    }
    return false;
}

bool SoundDecoder::receive() {
    for (;;) {
        const int error = avcodec_receive_frame(codec_.get(), frame_.get());
        if (error >= 0) {
            return true;
        }
        if (error == AVERROR_EOF || !feed()) {
            return false;
        }
    }
}

bool SoundDecoder::next(SoundPart& part) {
    if (!has_first_ && !receive()) {
        return false;
    }
    has_first_ = false;
    const std::int64_t time = frame_->pts != AV_NOPTS_VALUE ? frame_->pts : frame_->best_effort_timestamp;
    part.has_time = time != AV_NOPTS_VALUE;
    part.time = part.has_time ? time : 0;
    part.byte = frame_->pkt_pos;
    convert(*frame_, part);
    return true;
}

bool SoundDecoder::prepare_converter(const AVFrame& frame) {
    const std::uint64_t layout = layout_of(frame);
    if (converter_ && layout == frame_layout_ && frame.sample_rate == frame_rate_ &&
        frame.format == frame_format_) {
        return true;
    }
    frame_layout_ = layout;
    frame_rate_ = frame.sample_rate;
    frame_format_ = frame.format;
    AVChannelLayout from = layout_for(layout, frame.ch_layout.nb_channels);
    AVChannelLayout to = layout_for(format_.layout, format_.channels);
    SwrContext* made = nullptr;
    const int error =
        swr_alloc_set_opts2(&made, &to, AV_SAMPLE_FMT_FLT, format_.sample_rate, &from,
                            static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    converter_.reset(made);
    if (error < 0 || swr_init(made) < 0) {
        converter_.reset();
    }
    return converter_ != nullptr;
}

void SoundDecoder::convert(const AVFrame& frame, SoundPart& part) {
    const auto channels = static_cast<std::size_t>(format_.channels);
    part.samples.clear();
    if (frame.nb_samples <= 0 || !prepare_converter(frame)) {
        return;
    }
    const int room = swr_get_out_samples(converter_.get(), frame.nb_samples);
    part.samples.resize(static_cast<std::size_t>(std::max(room, 0)) * channels);
    auto* into = reinterpret_cast<std::uint8_t*>(part.samples.data());    // NOLINT: as the library wants it
    auto** from = const_cast<const std::uint8_t**>(frame.extended_data);  // NOLINT: as the library wants it
    const int count = swr_convert(converter_.get(), &into, room, from, frame.nb_samples);
    part.samples.resize(static_cast<std::size_t>(std::max(count, 0)) * channels);
}

bool SoundDecoder::go_to(const SoundPlace& place) {
    const int flags = file_->iformat->flags;
    // Times are looked for by guesses where they may jump.
    const bool by_byte = (flags & AVFMT_TS_DISCONT) != 0 && (flags & AVFMT_NO_BYTE_SEEK) == 0;
    if (by_byte && place.byte < 0) {
        return false;
    }
    const int error = by_byte ? av_seek_frame(file_.get(), -1, place.byte, AVSEEK_FLAG_BYTE)
                              : av_seek_frame(file_.get(), stream_, place.time, AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(codec_.get());
    at_end_ = false;
    has_first_ = false;
    return error >= 0;
}

bool SoundDecoder::restart() {
    codec_.reset();
    return open_file().empty();
}

}  // namespace zemora
