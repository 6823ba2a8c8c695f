#include "video/picture_encoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace zemora {

namespace {

/// Options of the encoder itself, as the library's dictionary.
AVDictionary* private_options(const EncoderSettings& settings) {
    AVDictionary* options = nullptr;
    if (!settings.preset.empty()) {
        av_dict_set(&options, "preset", settings.preset.c_str(), 0);
    }
    if (settings.rate_factor >= 0.0) {
        av_dict_set(&options, "crf", std::to_string(settings.rate_factor).c_str(), 0);
    }
    if (settings.frame_packing >= 0) {
        const std::string packing = "frame-packing=" + std::to_string(settings.frame_packing);
        av_dict_set(&options, "x264-params", packing.c_str(), 0);
    }
    return options;
}

void describe_pictures(AVCodecContext& codec, const PictureStream& pictures) {
    codec.width = pictures.size.width;
    codec.height = pictures.size.height;
    codec.framerate = {pictures.rate.num, pictures.rate.den};
    codec.time_base = {pictures.rate.den, pictures.rate.num};
    codec.sample_aspect_ratio = {1, 1};
    codec.color_primaries = static_cast<AVColorPrimaries>(pictures.colours.primaries);
    codec.color_trc = static_cast<AVColorTransferCharacteristic>(pictures.colours.transfer);
    codec.colorspace = static_cast<AVColorSpace>(pictures.colours.matrix);
    codec.color_range = pictures.colours.full_range ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    codec.chroma_sample_location = AVCHROMA_LOC_LEFT;
}

}  // namespace

std::string PictureEncoder::open(const EncoderSettings& settings, const PictureStream& pictures,
                                 FilmOutput& output) {
    output_ = &output;
    const AVCodec* encoder = avcodec_find_encoder_by_name(settings.encoder.c_str());
    if (encoder == nullptr) {
        return libav_reason(AVERROR_ENCODER_NOT_FOUND) + " (" + settings.encoder + ')';
    }
    codec_.reset(avcodec_alloc_context3(encoder));
    packet_.reset(av_packet_alloc());
    if (!codec_ || !packet_) {
        return libav_reason(AVERROR(ENOMEM));
    }
    describe_pictures(*codec_, pictures);
    codec_->pix_fmt = av_get_pix_fmt(settings.pixel_format.c_str());
    codec_->bit_rate = settings.bit_rate != 0 ? settings.bit_rate : codec_->bit_rate;
    codec_->gop_size = settings.key_frame_distance != 0 ? settings.key_frame_distance : codec_->gop_size;
    codec_->flags |= output.wants_global_header() ? AV_CODEC_FLAG_GLOBAL_HEADER : 0;
    AVDictionary* options = private_options(settings);
    const int error = avcodec_open2(codec_.get(), encoder, &options);
    av_dict_free(&options);
    if (error < 0) {
        return libav_reason(error);
    }
    if (const std::string reason = output.add_stream(*codec_, stream_); !reason.empty()) {
        return reason;
    }
    stream_->avg_frame_rate = codec_->framerate;
    stream_->sample_aspect_ratio = codec_->sample_aspect_ratio;
    return {};
}

std::string PictureEncoder::encode(const AVFrame* picture) {
    return encode_into(*codec_, picture, *packet_, *stream_, *output_);
}

std::string encode_into(AVCodecContext& encoder, const AVFrame* frame, AVPacket& packet,
                        const AVStream& stream, FilmOutput& output) {
    int error = avcodec_send_frame(&encoder, frame);
    while (error >= 0) {
        error = avcodec_receive_packet(&encoder, &packet);
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) {
            return {};
        }
        if (error >= 0) {
            packet.stream_index = stream.index;
            av_packet_rescale_ts(&packet, encoder.time_base, stream.time_base);
            if (std::string reason = output.write(packet); !reason.empty()) {
                return reason;
            }
        }
    }
    return libav_reason(error);
}

}  // namespace zemora
