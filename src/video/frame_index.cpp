#include "video/frame_index.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace zemora {

void put_in_order(std::vector<PacketFacts>& packets, const std::vector<bool>& shown_at_once) {
    std::int64_t place = 0;
    PacketFacts* waiting = nullptr;
    for (std::size_t i = 0; i < packets.size(); ++i) {
        if (shown_at_once[i]) {
            packets[i].place = place++;
            continue;
        }
        if (waiting != nullptr) {
            waiting->place = place++;
        }
        waiting = &packets[i];
    }
    if (waiting != nullptr) {
        waiting->place = place;
    }
}

FrameIndex::FrameIndex(std::vector<PacketFacts> packets) : packets_(std::move(packets)) {
    bool has_places = true;
    has_pts_ = true;
    for (int i = 0; i < static_cast<int>(packets_.size()); ++i) {
        const PacketFacts& packet = packets_[static_cast<std::size_t>(i)];
        has_pts_ = has_pts_ && (packet.is_discarded || packet.pts != kNoTime);
        has_places = has_places && (packet.is_discarded || packet.place != kNoTime);
        if (packet.position >= 0) {
            by_position_.emplace(packet.position, i);
        }
        if (packet.dts != kNoTime) {
            by_dts_.emplace(packet.dts, i);
        }
    }
    is_ordered_ = has_pts_ || has_places;
    picture_of_.assign(packets_.size(), kUnknown);
    pictures_ = static_cast<int>(
        std::count_if(packets_.begin(), packets_.end(), [](const auto& p) { return !p.is_discarded; }));
    packet_of_.assign(static_cast<std::size_t>(pictures_), kUnknown);
    if (is_ordered_) {
        number_by_order();
    }
}

std::int64_t FrameIndex::place_of(int packet) const {
    const PacketFacts& facts = packets_[static_cast<std::size_t>(packet)];
    return has_pts_ ? facts.pts : facts.place;
}

void FrameIndex::number_by_order() {
    packet_of_.clear();
    for (int i = 0; i < static_cast<int>(packets_.size()); ++i) {
        if (!packets_[static_cast<std::size_t>(i)].is_discarded) {
            packet_of_.push_back(i);
        }
    }
    std::stable_sort(packet_of_.begin(), packet_of_.end(),
                     [this](int a, int b) { return place_of(a) < place_of(b); });
    pictures_ = static_cast<int>(packet_of_.size());
    std::fill(picture_of_.begin(), picture_of_.end(), kUnknown);
    for (int picture = 0; picture < pictures_; ++picture) {
        picture_of_[static_cast<std::size_t>(packet_of_[static_cast<std::size_t>(picture)])] = picture;
    }
}

std::vector<std::int64_t> FrameIndex::times() const {
    std::vector<std::int64_t> times;
    for (const PacketFacts& packet : packets_) {
        const std::int64_t time = has_pts_ ? packet.pts : packet.dts;
        if (!packet.is_discarded && time == kNoTime) {
            return {};
        }
        if (!packet.is_discarded) {
            times.push_back(time);
        }
    }
    std::sort(times.begin(), times.end());
    return times;
}

int FrameIndex::picture_of(int packet) const {
    return packet >= 0 && packet < static_cast<int>(packets_.size())
               ? picture_of_[static_cast<std::size_t>(packet)]
               : kUnknown;
}

void FrameIndex::learn(int packet, int picture) {
    if (packet < 0 || packet >= static_cast<int>(packets_.size()) || picture < 0 || picture >= pictures_ ||
        picture_of_[static_cast<std::size_t>(packet)] != kUnknown ||
        packet_of_[static_cast<std::size_t>(picture)] != kUnknown) {
        return;
    }
    picture_of_[static_cast<std::size_t>(packet)] = picture;
    packet_of_[static_cast<std::size_t>(picture)] = packet;
}

void FrameIndex::start_with(int packet) {
    const int first = picture_of(packet);
    if (!is_ordered_ || first <= 0) {
        return;
    }
    for (int picture = 0; picture < first; ++picture) {
        packets_[static_cast<std::size_t>(packet_of_[static_cast<std::size_t>(picture)])].is_discarded = true;
    }
    number_by_order();
}

int FrameIndex::start_for(int picture, int keys_back) const {
    if (picture < 0 || picture >= pictures_) {
        return 0;
    }
    const int own = packet_of_[static_cast<std::size_t>(picture)];
    // The picture of a key that stands behind the wanted one is of no use: pictures that are decoded after a
    // key and shown before it may refer to what lies before the key.
    const auto is_start = [&](int packet) {
        const PacketFacts& facts = packets_[static_cast<std::size_t>(packet)];
        if (is_ordered_) {
            return facts.is_key && place_of(packet) != kNoTime && place_of(packet) <= place_of(own);
        }
        const int shown = picture_of_[static_cast<std::size_t>(packet)];
        return facts.is_key && shown != kUnknown && shown <= picture;
    };
    int packet = is_ordered_ ? own : static_cast<int>(packets_.size()) - 1;
    while (packet > 0 && !(is_start(packet) && keys_back-- == 0)) {
        --packet;
    }
    return packet;
}

int FrameIndex::find(const PacketFacts& packet) const {
    const bool by_position = packet.position >= 0;
    const auto [first, last] =
        by_position ? by_position_.equal_range(packet.position) : by_dts_.equal_range(packet.dts);
    int found = kUnknown;
    int candidates = 0;
    for (auto it = first; it != last; ++it) {
        const PacketFacts& known = packets_[static_cast<std::size_t>(it->second)];
        if (known.size != packet.size) {
            continue;
        }
        const bool is_same_time = known.pts == packet.pts && known.dts == packet.dts;
        if (is_same_time) {
            return it->second;
        }
        found = it->second;
        ++candidates;
    }
    return candidates == 1 ? found : kUnknown;
}

namespace {

/// Rates that cameras and films have, frames a second.
constexpr Rational kUsualRates[] = {{12, 1},  {25, 2},  {15000, 1001},  {15, 1},  {24000, 1001},
                                    {24, 1},  {25, 1},  {30000, 1001},  {30, 1},  {48, 1},
                                    {50, 1},  {60, 1},  {60000, 1001},  {72, 1},  {90, 1},
                                    {100, 1}, {120, 1}, {120000, 1001}, {240, 1}, {240000, 1001}};
/// Largest share by which a rate differs from the usual one that it stands for.
constexpr double kSameRate = 0.01;
/// A film whose grid would have more frames than this for each picture has holes instead.
constexpr int kMostFramesPerPicture = 4;

/// In frames of `rate` from the first picture.
double place_of(std::int64_t time, std::int64_t first, Rational time_base, Rational rate) {
    return static_cast<double>(time - first) * time_base.value() * rate.value();
}

bool lie_evenly(const std::vector<std::int64_t>& times, Rational time_base, Rational rate) {
    for (std::size_t n = 0; n < times.size(); ++n) {
        if (std::abs(place_of(times[n], times.front(), time_base, rate) - static_cast<double>(n)) > 0.5) {
            return false;
        }
    }
    return true;
}

/// The usual distance between two pictures: the mean of those that are near the median, so that neither holes
/// nor the rounding of times matter.
double usual_step(const std::vector<std::int64_t>& times) {
    constexpr double kNear = 0.3;
    std::vector<std::int64_t> steps;
    for (std::size_t n = 1; n < times.size(); ++n) {
        steps.push_back(times[n] - times[n - 1]);
    }
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    const auto median = static_cast<double>(*middle);
    double sum = 0.0;
    double count = 0.0;
    for (const std::int64_t step : steps) {
        if (std::abs(static_cast<double>(step) - median) <= kNear * median) {
            sum += static_cast<double>(step);
            count += 1.0;
        }
    }
    return sum / count;
}

/// The rate that the usual distance between two pictures stands for.
Rational nominal_rate(const std::vector<std::int64_t>& times, Rational time_base, Rational fallback) {
    const double step = usual_step(times);
    const double found = step > 0.0 ? 1.0 / (step * time_base.value()) : 0.0;
    const auto distance = [found](Rational rate) { return std::abs(rate.value() - found); };
    const Rational* nearest =
        std::min_element(std::begin(kUsualRates), std::end(kUsualRates),
                         [&](Rational a, Rational b) { return distance(a) < distance(b); });
    return distance(*nearest) <= kSameRate * found ? *nearest : fallback;
}

}  // namespace

FrameGrid even_grid(const std::vector<std::int64_t>& times, Rational time_base, Rational rate) {
    FrameGrid grid;
    grid.rate = rate;
    if (times.size() < 2 || !time_base.is_positive() || !rate.is_positive() ||
        lie_evenly(times, time_base, rate)) {
        return grid;
    }
    const Rational nominal = nominal_rate(times, time_base, rate);
    const auto frame_of = [&](std::int64_t time) {
        return std::floor(place_of(time, times.front(), time_base, nominal) + 0.5);
    };
    const double last = frame_of(times.back());
    if (last >= static_cast<double>(times.size()) * kMostFramesPerPicture) {
        return grid;
    }
    grid.rate = nominal;
    grid.pictures.assign(static_cast<std::size_t>(last) + 1, FrameIndex::kUnknown);
    for (std::size_t n = 0; n < times.size(); ++n) {
        int& shown = grid.pictures[static_cast<std::size_t>(frame_of(times[n]))];
        grid.dropped += shown != FrameIndex::kUnknown ? 1 : 0;
        shown = static_cast<int>(n);
    }
    for (std::size_t i = 1; i < grid.pictures.size(); ++i) {
        if (grid.pictures[i] == FrameIndex::kUnknown) {
            grid.pictures[i] = grid.pictures[i - 1];
            ++grid.repeated;
        }
    }
    if (grid.repeated == 0 && grid.dropped == 0) {
        grid.pictures.clear();
    }
    return grid;
}

}  // namespace zemora
