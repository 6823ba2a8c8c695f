#include "video/coded_pictures.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace zemora {

CodedPictures::CodedPictures(const AVCodecParameters& stream) {
    are_in_simple_order_ =
        stream.codec_id == AV_CODEC_ID_MPEG1VIDEO || stream.codec_id == AV_CODEC_ID_MPEG2VIDEO;
    if (!are_in_simple_order_ && stream.codec_id != AV_CODEC_ID_H264) {
        return;
    }
    codec_ = avcodec_alloc_context3(nullptr);
    parser_ = av_parser_init(stream.codec_id);
    if (codec_ == nullptr || parser_ == nullptr || avcodec_parameters_to_context(codec_, &stream) < 0) {
        av_parser_close(parser_);
        parser_ = nullptr;
        return;
    }
    parser_->flags |= PARSER_FLAG_COMPLETE_FRAMES;
}

CodedPictures::~CodedPictures() {
    av_parser_close(parser_);
    avcodec_free_context(&codec_);
}

CodedPicture CodedPictures::read(const AVPacket& packet) {
    CodedPicture picture;
    if (parser_ == nullptr) {
        return picture;
    }
    std::uint8_t* data = nullptr;
    int size = 0;
    av_parser_parse2(parser_, codec_, &data, &size, packet.data, packet.size, packet.pts, packet.dts,
                     packet.pos);
    picture.is_intra = parser_->pict_type == AV_PICTURE_TYPE_I;
    picture.is_shown_at_once = parser_->pict_type == AV_PICTURE_TYPE_B;
    const int structure = parser_->picture_structure;
    const bool is_field =
        structure == AV_PICTURE_STRUCTURE_TOP_FIELD || structure == AV_PICTURE_STRUCTURE_BOTTOM_FIELD;
    picture.is_second_field = is_field && open_field_ != 0 && open_field_ != structure;
    open_field_ = is_field && !picture.is_second_field ? structure : 0;
    return picture;
}

}  // namespace zemora
