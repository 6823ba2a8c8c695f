#include "video/open_input.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace zemora {

namespace {

constexpr const char* kKnownFormats =
    "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,mpegts,mpeg,mpegvideo,asf,flv,ogg,mxf,gxf,dv,nut,rm,wtv,ivf,"
    "h264,hevc,m4v,wav,aac,mp3,flac";

}  // namespace

int open_input(const std::string& path, InputFile& file) {
    keep_libav_log();
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", kKnownFormats, 0);
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    AVFormatContext* opened = nullptr;
    int error = avformat_open_input(&opened, ("file:" + path).c_str(), nullptr, &options);
    av_dict_free(&options);
    file.reset(opened);
    if (error >= 0) {
        error = avformat_find_stream_info(opened, nullptr);
    }
    return error < 0 ? error : 0;
}

int first_picture_stream(const AVFormatContext& file) {
    constexpr int kNoFilm = AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS;
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        const AVStream& stream = *file.streams[i];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && (stream.disposition & kNoFilm) == 0) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

int first_sound_stream(const AVFormatContext& file) {
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        const AVCodecParameters& about = *file.streams[i]->codecpar;
        if (about.codec_type == AVMEDIA_TYPE_AUDIO && about.sample_rate > 0 &&
            avcodec_find_decoder(about.codec_id) != nullptr) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

void read_only_stream(AVFormatContext& file, int stream) {
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        file.streams[i]->discard = static_cast<int>(i) == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
}

}  // namespace zemora
