#include "video/picture_decoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <thread>
#include <utility>

#include "platform/console.h"

namespace zemora {

namespace {

/// More threads than this gain nothing on pictures of films and take memory.
constexpr unsigned kMostThreads = 8;

[[nodiscard]] bool is_whole(const AVFrame& frame) {
    return (frame.flags & AV_FRAME_FLAG_CORRUPT) == 0 && frame.decode_error_flags == 0;
}

}  // namespace

Result<std::unique_ptr<PictureDecoder>> PictureDecoder::open(PacketReader& reader,
                                                             const MessageCatalogue& messages) {
    std::unique_ptr<PictureDecoder> decoder(new PictureDecoder(reader));
    const AVStream& stream = reader.stream();
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    decoder->codec_.reset(codec != nullptr ? avcodec_alloc_context3(codec) : nullptr);
    AVCodecContext* context = decoder->codec_.get();
    decoder->packet_.reset(av_packet_alloc());
    decoder->whole_.frame.reset(av_frame_alloc());
    decoder->ahead_.frame.reset(av_frame_alloc());
    bool is_open = context != nullptr && avcodec_parameters_to_context(context, stream.codecpar) >= 0;
    if (is_open) {
        context->pkt_timebase = stream.time_base;
        context->thread_count =
            static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads));
        is_open = avcodec_open2(context, codec, nullptr) >= 0;
    }
    if (!is_open) {
        const std::string name = printable(reader.path());
        Failure failure =
            Failure::of_run(messages.text<Msg::video_source_no_decompressor>(name) +
                            messages.text<Msg::video_source_install_codec_german>() + take_libav_log());
        failure.file = reader.path();
        return failure;
    }
    return decoder;
}

bool PictureDecoder::start_at(int packet) {
    avcodec_flush_buffers(codec_.get());
    drains_ = false;
    whole_.number = ahead_.number = FrameIndex::kUnknown;
    first_trusted_ = packet == 0 ? 0 : std::max(reader_.index().picture_of(packet), 0);
    last_number_ = packet == 0 ? FrameIndex::kUnknown : first_trusted_ - 1;
    runs_ = reader_.go_to(packet);
    return runs_;
}

/// Gives the decoder the next packet, under its number instead of a time: so the pictures say which packet
/// they are from, however the decoder puts them in order.
void PictureDecoder::feed() {
    int number = 0;
    if (!reader_.next(*packet_, number)) {
        drains_ = true;
        avcodec_send_packet(codec_.get(), nullptr);
        return;
    }
    packet_->pts = number;
    avcodec_send_packet(codec_.get(), packet_.get());  // what cannot be decoded gives no picture
    av_packet_unref(packet_.get());
}

bool PictureDecoder::receive() {
    for (;;) {
        const int received = avcodec_receive_frame(codec_.get(), ahead_.frame.get());
        if (received == 0) {
            return true;
        }
        if (received == AVERROR_EOF || (drains_ && received == AVERROR(EAGAIN))) {
            return false;
        }
        if (received == AVERROR(EAGAIN)) {
            feed();
        }
    }
}

int PictureDecoder::number_of(const AVFrame& frame) {
    FrameIndex& index = reader_.index();
    const int packet = frame.pts == AV_NOPTS_VALUE ? FrameIndex::kUnknown : static_cast<int>(frame.pts);
    const int known = index.picture_of(packet);
    if (known == FrameIndex::kUnknown && !index.is_ordered()) {
        index.learn(packet, last_number_ + 1);
        return last_number_ + 1;
    }
    return known;
}

/// The next picture comes to `ahead_`, a whole one that stood there to `whole_`. False at the end.
bool PictureDecoder::advance() {
    if (ahead_.is_there() && is_whole(*ahead_.frame)) {
        std::swap(whole_, ahead_);
    }
    ahead_.number = FrameIndex::kUnknown;
    while (receive()) {
        const int number = number_of(*ahead_.frame);
        if (number == FrameIndex::kUnknown || number < first_trusted_) {
            continue;
        }
        ahead_.number = last_number_ = number;
        if (watcher_ && is_whole(*ahead_.frame)) {
            watcher_(number, *ahead_.frame);
        }
        return true;
    }
    return false;
}

bool PictureDecoder::can_go_on_to(int number) const {
    if (!runs_ || number < first_trusted_) {
        return false;
    }
    if (ahead_.is_there() && ahead_.number <= number) {
        // Where another key lies between, a jump is the shorter way.
        return ahead_.number == number || reader_.index().start_for(number) < reader_.next_packet();
    }
    return whole_.is_there() && whole_.number <= number;
}

/// Goes on until `ahead_` has that number, or one behind it, or the end is there; true when there is a whole
/// picture at or before it.
bool PictureDecoder::search(int number) {
    while (!ahead_.is_there() || ahead_.number < number) {
        if (!advance()) {
            break;
        }
    }
    return (ahead_.number == number && is_whole(*ahead_.frame)) || whole_.is_there();
}

FoundPicture PictureDecoder::find(int number) {
    bool found = can_go_on_to(number) && search(number);
    for (int keys_back = 0; !found; keys_back = 2 * keys_back + 1) {
        const int start = reader_.index().start_for(number, keys_back);
        found = start_at(start) && search(number);
        if (start == 0) {
            break;
        }
    }
    if (!found) {
        return {};
    }
    const bool is_own = ahead_.number == number && is_whole(*ahead_.frame);
    const Numbered& shown = is_own ? ahead_ : whole_;
    return {shown.frame.get(), shown.number != number};
}

const AVFrame* PictureDecoder::find_first() {
    const bool started = start_at(0);
    runs_ = false;  // the numbers change below
    while (started && receive()) {
        reader_.index().start_with(static_cast<int>(ahead_.frame->pts));
        if (number_of(*ahead_.frame) != FrameIndex::kUnknown) {
            return ahead_.frame.get();
        }
    }
    return nullptr;
}

}  // namespace zemora
