#pragma once
/// Which picture each packet of a video becomes, and where decoding has to start for it. Pure numbers.

#include <cstdint>
#include <limits>
#include <unordered_map>
#include <vector>

#include "numerics/rational.h"

namespace zemora {

inline constexpr std::int64_t kNoTime = std::numeric_limits<std::int64_t>::min();

/// What the container says of one packet. Times are in the units of its stream.
struct PacketFacts {
    std::int64_t position = -1;    ///< Byte in the file; -1 where it is not known.
    std::int64_t pts = kNoTime;    ///< When its picture is shown.
    std::int64_t dts = kNoTime;    ///< When it is decoded.
    std::int64_t place = kNoTime;  ///< Of its picture among the others, where it has no `pts`.
    int size = 0;                  ///< Bytes.
    bool is_key = false;           ///< Decoding may start here.
    bool is_discarded = false;     ///< It is decoded, but no picture of it is shown.
};

/// Gives packets without a time the order that their kinds have: a picture that is shown at once stands
/// before the one that was decoded before it, others in the order of the packets (ISO/IEC 13818-2, 6.1.1.11).
void put_in_order(std::vector<PacketFacts>& packets, const std::vector<bool>& shown_at_once);

/// Pictures are numbered in the order in which the decoder gives them, packets in the order of the file.
/// Where all packets have a time or a place, that order is theirs; else the number of a picture is known once
/// the decoder was seen to give it.
class FrameIndex {
public:
    static constexpr int kUnknown = -1;

    FrameIndex() = default;
    explicit FrameIndex(std::vector<PacketFacts> packets);

    [[nodiscard]] const std::vector<PacketFacts>& packets() const { return packets_; }
    [[nodiscard]] int pictures() const { return pictures_; }
    /// Whether the order of all pictures is known beforehand.
    [[nodiscard]] bool is_ordered() const { return is_ordered_; }
    /// When each picture is shown, ascending: the `pts`, or else the `dts` in their order, which lie evenly
    /// by the same steps. Empty without either.
    [[nodiscard]] std::vector<std::int64_t> times() const;

    /// The number of the picture that the packet becomes; `kUnknown` also where none of it is shown.
    [[nodiscard]] int picture_of(int packet) const;
    /// The decoder was seen to give the packet's picture under that number. Known ones stay as they are.
    void learn(int packet, int picture);
    /// The decoder gave the packet's picture before all others: what would stand before it is never shown.
    void start_with(int packet);

    /// The packet to start with for a picture: the last key from which the decoder gives it, or one that lies
    /// `keys_back` keys before that. 0, the start of the file, where no key is known to do.
    [[nodiscard]] int start_for(int picture, int keys_back = 0) const;

    /// The packet that lies there, or `kUnknown`: by its position and its size, by its times where several
    /// have the same.
    [[nodiscard]] int find(const PacketFacts& packet) const;

private:
    void number_by_order();
    [[nodiscard]] std::int64_t place_of(int packet) const;

    std::vector<PacketFacts> packets_;
    std::vector<int> picture_of_;  ///< For each packet.
    std::vector<int> packet_of_;   ///< For each picture; `kUnknown` where it is not known yet.
    std::unordered_multimap<std::int64_t, int> by_position_;
    std::unordered_multimap<std::int64_t, int> by_dts_;
    bool is_ordered_ = false;
    bool has_pts_ = false;  ///< All of them.
    int pictures_ = 0;
};

/// Frames at even distances, each with the picture that it shows.
struct FrameGrid {
    std::vector<int> pictures;  ///< For each frame; empty where frame and picture have the same number.
    Rational rate;              ///< Frames a second.
    int repeated = 0;           ///< Frames that show the picture of the frame before them.
    int dropped = 0;            ///< Pictures that no frame shows.
};

/// Brings pictures whose times vary to an even grid: where one lies more than half a frame off n / `rate`,
/// the nominal rate is found from the usual distance of two pictures, each picture goes to the nearest frame,
/// the last of several stays, and frames without one repeat that before them. `times` ascend, in units of
/// `time_base` seconds. Films with holes too large to be filled keep the numbers of their pictures.
[[nodiscard]] FrameGrid even_grid(const std::vector<std::int64_t>& times, Rational time_base, Rational rate);

}  // namespace zemora
