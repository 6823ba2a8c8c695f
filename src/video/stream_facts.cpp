#include "video/stream_facts.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/stereo3d.h>
}

#include <algorithm>
#include <cmath>

#include "video/picture_converter.h"

namespace zemora {

namespace {

std::string tag_text(unsigned tag) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto byte = static_cast<char>((tag >> shift) & 127U);
        text += byte > ' ' && byte < 127 ? byte : ' ';
    }
    return text;
}

Rational rate_of(const AVFormatContext& file, const AVStream& stream) {
    for (const AVRational rate : {stream.avg_frame_rate, stream.r_frame_rate,
                                  av_guess_frame_rate(const_cast<AVFormatContext*>(&file),
                                                      const_cast<AVStream*>(&stream), nullptr)}) {
        if (rate.num > 0 && rate.den > 0) {
            return {rate.num, rate.den};
        }
    }
    return {25, 1};
}

/// Pixels that are wider than high widen the picture, others heighten it, so that nothing is lost.
PictureSize square_size(PictureSize coded, AVRational aspect) {
    constexpr double kMostUneven = 4.0;
    const double ratio = aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1.0;
    const auto times = [](int side, double factor) {
        return 2 * static_cast<int>(std::lround(side * factor / 2));
    };
    if (ratio > 1.0 && ratio <= kMostUneven) {
        coded.width = times(coded.width, ratio);
    } else if (ratio < 1.0 && ratio >= 1.0 / kMostUneven) {
        coded.height = times(coded.height, 1.0 / ratio);
    }
    return coded;
}

}  // namespace

VideoFacts stream_facts(const PacketReader& reader, const AVFrame& first) {
    const AVStream& stream = reader.stream();
    const AVCodecParameters& coded = *stream.codecpar;
    VideoFacts facts;
    facts.coded_size = {first.width, first.height};
    const AVRational aspect = av_guess_sample_aspect_ratio(&reader.file(), const_cast<AVStream*>(&stream),
                                                           const_cast<AVFrame*>(&first));
    facts.size = square_size(facts.coded_size, aspect);
    facts.rate = rate_of(reader.file(), stream);
    facts.codec = avcodec_get_name(coded.codec_id);
    facts.codec_tag = tag_text(coded.codec_tag);
    facts.colours = tags_of(first);
    facts.has_second_stream = reader.has_second_stream();
    facts.has_sound = av_find_best_stream(&reader.file(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0) >= 0;
    return facts;
}

}  // namespace zemora
