#include "video/sound_track.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <utility>

#include "video/sound_decoder.h"

namespace zemora {

namespace {

/// A part of the stream that was decoded once, as a place to start from again.
struct Anchor {
    SoundPlace place;
    std::int64_t first = 0;  ///< Sample of the stream.
};

constexpr double kAnchorSeconds = 0.25;  // between two anchors
/// Decoded before the samples that are wanted: overlap, bit reservoir, rare headers.
constexpr double kLeadSeconds = 1.0;
/// Decoded beyond that, for whoever reads backwards.
constexpr double kFurtherBackSeconds = 2.0;
constexpr double kKeptSeconds = 4.0;  // at least; twice that at most
/// Times that lie off the count of samples by less are only rounded.
constexpr double kJumpSeconds = 0.02;

constexpr std::int64_t kStart = std::numeric_limits<std::int64_t>::min();

class DecodedTrack : public SoundTrack {
public:
    [[nodiscard]] std::string start(const std::string& path) {
        std::string reason = decoder_.open(path);
        return reason;
    }
    [[nodiscard]] const SoundFormat& format() const override { return decoder_.format(); }
    void read(std::int64_t first, int count, float* samples) override;

private:
    [[nodiscard]] std::int64_t samples_in(double seconds) const {
        return std::llround(seconds * format().sample_rate);
    }
    [[nodiscard]] std::size_t channels() const { return static_cast<std::size_t>(format().channels); }
    [[nodiscard]] std::int64_t kept_end() const {
        return kept_first_ + static_cast<std::int64_t>(kept_.size() / channels());
    }

    void reach(std::int64_t first, std::int64_t end);
    void go_back_to(std::int64_t first);
    [[nodiscard]] bool decode();
    [[nodiscard]] std::optional<std::int64_t> place_of(const SoundPart& part);
    [[nodiscard]] std::optional<std::int64_t> place_by_anchor(const SoundPart& part) const;
    void note_anchor(const SoundPart& part, std::int64_t first);
    void keep(std::int64_t first);

    SoundDecoder decoder_;
    SoundPart part_;
    std::vector<Anchor> anchors_;  ///< Of what was decoded so far, ascending.
    std::vector<float> kept_;      ///< The last samples that were decoded, without a hole.
    std::int64_t kept_first_ = 0;
    std::int64_t sure_from_ = kStart;  ///< Behind a jump, samples before this one may be wrong yet.
    std::optional<std::int64_t> end_;  ///< Behind the part that was decoded last.
    bool is_at_end_ = false;
    bool is_lost_ = false;    ///< Behind a jump, until a part is found again.
    std::int64_t limit_ = 0;  ///< While lost: by then it has to be found.
};

/// The sample that the part starts with; none while it is not known.
std::optional<std::int64_t> DecodedTrack::place_of(const SoundPart& part) {
    if (is_lost_) {
        return place_by_anchor(part);
    }
    if (!part.has_time) {
        return end_.value_or(0);
    }
    const std::int64_t told = decoder_.sample_of(part.time);
    if (!end_ || told > *end_ + samples_in(kJumpSeconds)) {
        return told;
    }
    return end_;
}

std::optional<std::int64_t> DecodedTrack::place_by_anchor(const SoundPart& part) const {
    if (!part.has_time) {
        return std::nullopt;
    }
    const auto behind =
        std::upper_bound(anchors_.begin(), anchors_.end(), part.time,
                         [](std::int64_t time, const Anchor& anchor) { return time < anchor.place.time; });
    if (behind == anchors_.begin()) {
        return std::nullopt;
    }
    const Anchor& anchor = *(behind - 1);
    if (anchor.place.time == part.time) {
        return anchor.first;
    }
    if (decoder_.has_exact_times()) {
        return anchor.first + decoder_.sample_of(part.time) - decoder_.sample_of(anchor.place.time);
    }
    return std::nullopt;
}

void DecodedTrack::note_anchor(const SoundPart& part, std::int64_t first) {
    if (part.has_time && (anchors_.empty() || (first >= anchors_.back().first + samples_in(kAnchorSeconds) &&
                                               part.time > anchors_.back().place.time))) {
        anchors_.push_back({{part.time, part.byte}, first});
    }
}

/// Puts the part behind what is kept, with silence in a hole between them.
void DecodedTrack::keep(std::int64_t first) {
    const auto samples = static_cast<std::int64_t>(part_.samples.size() / channels());
    end_ = first + samples;
    if (*end_ <= sure_from_) {
        return;
    }
    if (kept_.empty() || first > kept_end() + samples_in(kKeptSeconds)) {
        kept_.clear();
        kept_first_ = first;
    }
    kept_.resize(static_cast<std::size_t>(first - kept_first_) * channels());
    kept_.insert(kept_.end(), part_.samples.begin(), part_.samples.end());
    const std::int64_t surplus = kept_end() - kept_first_ - 2 * samples_in(kKeptSeconds);
    if (surplus > 0) {
        const std::int64_t dropped = surplus + samples_in(kKeptSeconds);
        kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(dropped) * format().channels);
        kept_first_ += dropped;
    }
}

/// Decodes one part; false at the end, and where the decoder lost its way.
bool DecodedTrack::decode() {
    if (!decoder_.next(part_)) {
        is_at_end_ = true;
        return false;
    }
    const auto first = place_of(part_);
    if (!first) {
        return !part_.has_time || decoder_.sample_of(part_.time) < limit_;
    }
    if (is_lost_ && *first > limit_) {
        return false;
    }
    if (is_lost_) {
        sure_from_ = *first + samples_in(kLeadSeconds);
        is_lost_ = false;
    }
    note_anchor(part_, *first);
    keep(*first);
    return true;
}

/// Starts to decode some time before that sample.
void DecodedTrack::go_back_to(std::int64_t first) {
    const std::int64_t wanted = first - samples_in(kLeadSeconds + kFurtherBackSeconds);
    const auto behind =
        std::upper_bound(anchors_.begin(), anchors_.end(), wanted,
                         [](std::int64_t sample, const Anchor& anchor) { return sample < anchor.first; });
    kept_.clear();
    end_.reset();
    is_at_end_ = false;
    is_lost_ = behind != anchors_.begin();
    limit_ = first - samples_in(kLeadSeconds);
    if (is_lost_ && decoder_.go_to((behind - 1)->place)) {
        while (is_lost_ && decode()) {
        }
    }
    if (is_lost_ || behind == anchors_.begin()) {
        kept_.clear();
        end_.reset();
        is_lost_ = false;
        sure_from_ = kStart;
        is_at_end_ = !decoder_.restart();
    }
}

/// Decodes until the samples are kept, as far as there are such.
void DecodedTrack::reach(std::int64_t first, std::int64_t end) {
    if (!kept_.empty() && first < kept_first_ && (anchors_.empty() || kept_first_ > anchors_.front().first)) {
        go_back_to(first);
    }
    while (!is_at_end_ && (!end_ || *end_ < end) && decode()) {
    }
}

void DecodedTrack::read(std::int64_t first, int count, float* samples) {
    const std::int64_t start = first + decoder_.first_picture_sample();
    const std::int64_t end = start + count;
    std::fill_n(samples, static_cast<std::size_t>(count) * channels(), 0.0F);
    // What is kept holds a piece of any length that is read at once.
    const auto piece = static_cast<int>(samples_in(kKeptSeconds) / 2);
    if (count > piece) {
        for (int done = 0; done < count; done += piece) {
            read(first + done, std::min(piece, count - done),
                 samples + static_cast<std::size_t>(done) * channels());
        }
        return;
    }
    reach(start, end);
    const std::int64_t from = std::max(start, kept_first_);
    const std::int64_t to = std::min(end, kept_end());
    if (from < to) {
        const auto* source = kept_.data() + static_cast<std::size_t>(from - kept_first_) * channels();
        std::copy_n(source, static_cast<std::size_t>(to - from) * channels(),
                    samples + static_cast<std::size_t>(from - start) * channels());
    }
}

}  // namespace

std::string open_sound_track(const std::string& path, std::unique_ptr<SoundTrack>& into) {
    auto track = std::make_unique<DecodedTrack>();
    std::string reason = track->start(path);
    into = std::move(track);
    return reason;
}

Result<std::unique_ptr<SoundTrack>> SoundTrack::open(const std::string& path, Notes& notes) {
    std::unique_ptr<SoundTrack> track;
    if (const std::string reason = open_sound_track(path, track); !reason.empty()) {
        Failure failure = Failure::of_pair(
            format_text(notes.messages().either({"The sound of the video %s cannot be read: %s\n",
                                                 "Der Ton des Videos %s kann nicht gelesen werden: %s\n"}),
                        path.c_str(), reason.c_str()) +
            take_libav_log());
        failure.file = path;
        return failure;
    }
    return track;
}

}  // namespace zemora
