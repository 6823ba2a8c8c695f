/// Sound that is encoded anew.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "video/libav_handles.h"
#include "video/picture_encoder.h"
#include "video/sound_decoder.h"
#include "video/sound_output.h"

namespace zemora {

namespace {

/// What every AAC decoder plays without further description (ISO/IEC 14496-3, channel configurations 1 to 7),
/// by the number of channels.
constexpr std::uint64_t kAacLayouts[] = {
    AV_CH_LAYOUT_MONO,         AV_CH_LAYOUT_STEREO,       AV_CH_LAYOUT_SURROUND, AV_CH_LAYOUT_4POINT0,
    AV_CH_LAYOUT_5POINT0_BACK, AV_CH_LAYOUT_5POINT1_BACK, AV_CH_LAYOUT_7POINT1,
};

/// The first one that has room for as many channels; what has more goes into the largest.
std::uint64_t aac_layout(int channels) {
    const auto* found = std::find_if(std::begin(kAacLayouts), std::end(kAacLayouts),
                                     [&](std::uint64_t mask) { return std::popcount(mask) >= channels; });
    return found != std::end(kAacLayouts) ? *found : AV_CH_LAYOUT_7POINT1;
}

/// The rate of the encoder's list that loses nothing: the lowest one not below, else the highest.
int aac_rate(const AVCodec& encoder, int rate) {
    int best = 0;
    for (const int* listed = encoder.supported_samplerates; listed != nullptr && *listed != 0; ++listed) {
        const bool is_nearer = best < rate ? *listed > best : *listed >= rate && *listed < best;
        best = is_nearer ? *listed : best;
    }
    return best != 0 ? best : rate;
}

AVChannelLayout layout_of(const SoundFormat& format) {
    AVChannelLayout layout = {};
    if (format.layout == 0 || av_channel_layout_from_mask(&layout, format.layout) < 0 ||
        layout.nb_channels != format.channels) {
        layout = {};
        av_channel_layout_default(&layout, format.channels);
    }
    return layout;
}

struct FifoFreer {
    void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
};
using WaitingSamples = std::unique_ptr<AVAudioFifo, FifoFreer>;

constexpr std::size_t kMostChannels = 8;  // of the layouts above

/// As the library's queue takes planes.
std::array<void*, kMostChannels> untyped(const std::array<std::uint8_t*, kMostChannels>& planes) {
    std::array<void*, kMostChannels> same{};
    std::copy(planes.begin(), planes.end(), same.begin());
    return same;
}

class AacSound : public SoundOutput {
public:
    explicit AacSound(PlannedSound sound, FilmOutput& output) : sound_(std::move(sound)), output_(output) {}

    [[nodiscard]] std::string open();
    [[nodiscard]] std::string write_until(std::int64_t frames, Rational rate) override;
    [[nodiscard]] std::string finish() override;

private:
    [[nodiscard]] std::string open_encoder();
    [[nodiscard]] std::string open_converter();
    [[nodiscard]] std::string open_frame();
    [[nodiscard]] std::string take_samples(int count);
    [[nodiscard]] std::string convert(const std::uint8_t* from, int count);
    [[nodiscard]] std::string encode_waiting(bool also_the_rest);
    [[nodiscard]] std::string encode_frame(int samples);

    PlannedSound sound_;
    FilmOutput& output_;
    Codec codec_;
    SoundConverter converter_;
    Frame frame_;
    Packet packet_;
    AVStream* stream_ = nullptr;
    std::vector<float> samples_;  ///< As they come from the source.
    std::vector<float> converted_;
    WaitingSamples waiting_;    ///< As the encoder takes them.
    std::int64_t taken_ = 0;    ///< Samples of the source.
    std::int64_t encoded_ = 0;  ///< Samples of the encoder.
    std::int64_t limit_ = 0;    ///< Samples of the encoder that there are pictures for.
};

std::string AacSound::open() {
    for (const auto step : {&AacSound::open_encoder, &AacSound::open_converter, &AacSound::open_frame}) {
        if (std::string reason = (this->*step)(); !reason.empty()) {
            return reason;
        }
    }
    return {};
}

std::string AacSound::open_encoder() {
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
    codec_.reset(encoder != nullptr ? avcodec_alloc_context3(encoder) : nullptr);
    if (!codec_) {
        return libav_reason(encoder == nullptr ? AVERROR_ENCODER_NOT_FOUND : AVERROR(ENOMEM));
    }
    codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
    codec_->sample_rate = aac_rate(*encoder, sound_.format().sample_rate);
    av_channel_layout_from_mask(&codec_->ch_layout, aac_layout(sound_.format().channels));
    codec_->bit_rate = aac_bit_rate(codec_->ch_layout.nb_channels, codec_->sample_rate);
    codec_->time_base = {1, codec_->sample_rate};
    codec_->flags |= output_.wants_global_header() ? AV_CODEC_FLAG_GLOBAL_HEADER : 0;
    const int error = avcodec_open2(codec_.get(), encoder, nullptr);
    return error < 0 ? libav_reason(error) : output_.add_stream(*codec_, stream_);
}

std::string AacSound::open_converter() {
    AVChannelLayout from = layout_of(sound_.format());
    SwrContext* made = nullptr;
    int error = swr_alloc_set_opts2(&made, &codec_->ch_layout, codec_->sample_fmt, codec_->sample_rate, &from,
                                    AV_SAMPLE_FMT_FLT, sound_.format().sample_rate, 0, nullptr);
    converter_.reset(made);
    error = error < 0 ? error : swr_init(made);
    waiting_.reset(
        av_audio_fifo_alloc(codec_->sample_fmt, codec_->ch_layout.nb_channels, codec_->frame_size));
    error = waiting_ == nullptr ? AVERROR(ENOMEM) : error;
    return error < 0 ? libav_reason(error) : std::string();
}

std::string AacSound::open_frame() {
    frame_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (!frame_ || !packet_) {
        return libav_reason(AVERROR(ENOMEM));
    }
    frame_->format = codec_->sample_fmt;
    frame_->sample_rate = codec_->sample_rate;
    frame_->nb_samples = codec_->frame_size;
    av_channel_layout_copy(&frame_->ch_layout, &codec_->ch_layout);
    const int error = av_frame_get_buffer(frame_.get(), 0);
    return error < 0 ? libav_reason(error) : std::string();
}

std::string AacSound::write_until(std::int64_t frames, Rational rate) {
    const AVRational picture = {rate.den, rate.num};
    limit_ = av_rescale_q(frames, picture, {1, codec_->sample_rate});
    const std::int64_t wanted = av_rescale_q(frames, picture, {1, sound_.format().sample_rate});
    while (taken_ < wanted) {
        const auto count = static_cast<int>(std::min<std::int64_t>(wanted - taken_, codec_->frame_size));
        std::string reason = take_samples(count);
        reason = reason.empty() ? encode_waiting(false) : reason;
        if (!reason.empty()) {
            return reason;
        }
    }
    return {};
}

/// Moves samples from the source through the converter to where they wait.
std::string AacSound::take_samples(int count) {
    samples_.resize(static_cast<std::size_t>(count) * sound_.format().channels);
    sound_.read(count, samples_.data());
    // The encoder refuses numbers that are none; some files hold them.
    constexpr float kLoudest = 16.0F;
    for (float& sample : samples_) {
        sample = std::isfinite(sample) ? std::clamp(sample, -kLoudest, kLoudest) : 0.0F;
    }
    taken_ += count;
    return convert(reinterpret_cast<const std::uint8_t*>(samples_.data()), count);  // NOLINT: its own type
}

/// Null instead of samples brings out the end of the converter.
std::string AacSound::convert(const std::uint8_t* from, int count) {
    const auto room = static_cast<std::size_t>(std::max(swr_get_out_samples(converter_.get(), count), 0));
    converted_.resize(room * static_cast<std::size_t>(codec_->ch_layout.nb_channels));
    std::array<std::uint8_t*, kMostChannels> planes{};
    for (std::size_t i = 0; i < static_cast<std::size_t>(codec_->ch_layout.nb_channels); ++i) {
        planes[i] = reinterpret_cast<std::uint8_t*>(converted_.data() + i * room);  // NOLINT: its own type
    }
    const int made = swr_convert(converter_.get(), planes.data(), static_cast<int>(room),
                                 from != nullptr ? &from : nullptr, count);
    const int error = made < 0 ? made : av_audio_fifo_write(waiting_.get(), untyped(planes).data(), made);
    return error < 0 ? libav_reason(error) : std::string();
}

/// Encodes whole frames; the rest too when nothing comes behind it.
std::string AacSound::encode_waiting(bool also_the_rest) {
    for (;;) {
        const auto waiting = std::min<std::int64_t>(av_audio_fifo_size(waiting_.get()), limit_ - encoded_);
        const auto samples = static_cast<int>(std::min<std::int64_t>(waiting, codec_->frame_size));
        if (samples <= 0 || (samples < codec_->frame_size && !also_the_rest)) {
            return {};
        }
        if (std::string reason = encode_frame(samples); !reason.empty()) {
            return reason;
        }
    }
}

std::string AacSound::encode_frame(int samples) {
    int error = av_frame_make_writable(frame_.get());
    frame_->nb_samples = samples;
    std::array<std::uint8_t*, kMostChannels> planes{};
    std::copy_n(frame_->extended_data, codec_->ch_layout.nb_channels, planes.begin());
    error = error < 0 ? error : av_audio_fifo_read(waiting_.get(), untyped(planes).data(), samples);
    if (error < 0) {
        return libav_reason(error);
    }
    frame_->pts = encoded_;
    encoded_ += samples;
    return encode_into(*codec_, frame_.get(), *packet_, *stream_, output_);
}

std::string AacSound::finish() {
    std::string reason = convert(nullptr, 0);
    reason = reason.empty() ? encode_waiting(true) : reason;
    return reason.empty() ? encode_into(*codec_, nullptr, *packet_, *stream_, output_) : reason;
}

}  // namespace

std::string add_aac_sound(PlannedSound sound, FilmOutput& output, std::unique_ptr<SoundOutput>& into) {
    auto made = std::make_unique<AacSound>(std::move(sound), output);
    std::string reason = made->open();
    into = std::move(made);
    return reason;
}

}  // namespace zemora
