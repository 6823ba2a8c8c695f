/// Sound that goes over as it is stored.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "video/first_picture.h"
#include "video/libav_handles.h"
#include "video/open_input.h"
#include "video/sound_output.h"

namespace zemora {

namespace {

/// What players expect in an MP4 file.
constexpr AVCodecID kMp4Codecs[] = {AV_CODEC_ID_AAC, AV_CODEC_ID_MP3, AV_CODEC_ID_AC3, AV_CODEC_ID_EAC3,
                                    AV_CODEC_ID_ALAC};

/// Times that lie off the count of samples by less are only rounded.
constexpr std::int64_t kJumpsASecond = 50;

class CopiedSound : public SoundOutput {
public:
    explicit CopiedSound(FilmOutput& output) : output_(output) {}

    [[nodiscard]] std::string open(const std::string& path, bool& fits);
    [[nodiscard]] std::string write_until(std::int64_t frames, Rational rate) override;
    [[nodiscard]] std::string finish() override;

private:
    [[nodiscard]] bool read_packet();
    void place_packet();
    [[nodiscard]] std::string write_packet();
    [[nodiscard]] const AVCodecParameters& about() const { return *file_->streams[source_]->codecpar; }
    [[nodiscard]] AVRational sample_time() const { return {1, about().sample_rate}; }

    FilmOutput& output_;
    InputFile file_;
    Packet packet_;
    int source_ = -1;
    AVStream* stream_ = nullptr;
    std::int64_t zero_ = 0;    ///< Sample of the source that is heard with the first picture.
    std::int64_t place_ = 0;   ///< Sample of the film that the waiting packet starts with.
    std::int64_t length_ = 0;  ///< Samples of it.
    std::int64_t limit_ = 0;   ///< Samples that there are pictures for.
    bool has_place_ = false;   ///< Of a packet before.
    bool is_waiting_ = false;
    bool is_at_end_ = false;
};

std::string CopiedSound::open(const std::string& path, bool& fits) {
    packet_.reset(av_packet_alloc());
    source_ = packet_ && open_input(path, file_) == 0 ? first_sound_stream(*file_) : -1;
    fits = source_ >= 0 && about().sample_rate > 0 &&
           std::find(std::begin(kMp4Codecs), std::end(kMp4Codecs), about().codec_id) != std::end(kMp4Codecs);
    if (!fits) {
        return {};
    }
    read_only_stream(*file_, source_);
    if (const auto picture = time_of_first_picture(path)) {
        zero_ = av_rescale_q(picture->count, {picture->base.num, picture->base.den}, sample_time());
    }
    stream_ = avformat_new_stream(&output_.context(), nullptr);
    const int error =
        stream_ != nullptr ? avcodec_parameters_copy(stream_->codecpar, &about()) : AVERROR(ENOMEM);
    if (error < 0) {
        return libav_reason(error);
    }
    stream_->id = static_cast<int>(output_.context().nb_streams) - 1;
    stream_->codecpar->codec_tag = 0;
    stream_->time_base = sample_time();
    return {};
}

/// The next packet of the stream that has a time; false at the end.
bool CopiedSound::read_packet() {
    while (!is_at_end_ && !is_waiting_) {
        is_at_end_ = av_read_frame(file_.get(), packet_.get()) < 0;
        const bool is_ours = !is_at_end_ && packet_->stream_index == source_;
        if (is_ours && (has_place_ || packet_->pts != AV_NOPTS_VALUE)) {
            place_packet();
            // One packet before the first picture is kept, as decoders need it.
            is_waiting_ = place_ + length_ > -length_;
        }
        if (!is_waiting_) {
            av_packet_unref(packet_.get());
        }
    }
    return is_waiting_;
}

/// By the count of samples, unless the file tells a jump.
void CopiedSound::place_packet() {
    const AVRational base = file_->streams[source_]->time_base;
    const std::int64_t before = place_;
    const std::int64_t expected = place_ + length_;
    const int known = av_get_audio_frame_duration2(file_->streams[source_]->codecpar, packet_->size);
    length_ = known > 0 ? known : av_rescale_q(packet_->duration, base, sample_time());
    place_ = expected;
    if (packet_->pts != AV_NOPTS_VALUE) {
        const std::int64_t told = av_rescale_q(packet_->pts, base, sample_time()) - zero_;
        const bool jumps = std::abs(told - expected) > about().sample_rate / kJumpsASecond;
        place_ = !has_place_ || (jumps && told > before) ? told : expected;
    }
    has_place_ = true;
}

std::string CopiedSound::write_until(std::int64_t frames, Rational rate) {
    limit_ = av_rescale_q(frames, {rate.den, rate.num}, sample_time());
    while (read_packet() && place_ + length_ <= limit_) {
        if (std::string reason = write_packet(); !reason.empty()) {
            return reason;
        }
    }
    return {};
}

/// The last packet is told to end with the pictures.
std::string CopiedSound::finish() {
    length_ = std::min(length_, limit_ - place_);
    return is_waiting_ && length_ > 0 ? write_packet() : std::string();
}

std::string CopiedSound::write_packet() {
    is_waiting_ = false;
    packet_->stream_index = stream_->index;
    packet_->pts = packet_->dts = av_rescale_q(place_, sample_time(), stream_->time_base);
    packet_->duration = av_rescale_q(length_, sample_time(), stream_->time_base);
    packet_->pos = -1;
    packet_->flags = AV_PKT_FLAG_KEY;
    return output_.write(*packet_);
}

}  // namespace

std::string add_copied_sound(const std::string& path, FilmOutput& output,
                             std::unique_ptr<SoundOutput>& into) {
    auto made = std::make_unique<CopiedSound>(output);
    bool fits = false;
    std::string reason = made->open(path, fits);
    if (fits && reason.empty()) {
        into = std::move(made);
    }
    return reason;
}

}  // namespace zemora
