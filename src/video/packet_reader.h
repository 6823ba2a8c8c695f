#pragma once
/// The packets of one video stream of a file, by number and in any order.

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "numerics/rational.h"
#include "numerics/result.h"
#include "video/frame_index.h"
#include "video/libav_handles.h"
#include "video/video_file.h"

struct AVStream;

namespace zemora {

/// What only the packets tell.
struct PacketSums {
    std::int64_t bytes = 0;
    bool has_more_views = false;  ///< Further eyes or layers that the decoder cannot give.
    bool is_cut_off = false;      ///< Reading ended with an error and not with the end of the file.
};

class PacketReader {
public:
    /// Opens the file, chooses the stream and reads the index of all its packets. Fails for the run.
    [[nodiscard]] static Result<std::unique_ptr<PacketReader>> open(const std::string& path,
                                                                    VideoStream stream,
                                                                    const MessageCatalogue& messages);

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] AVFormatContext& file() const { return *file_; }
    [[nodiscard]] AVStream& stream() const;
    [[nodiscard]] Rational time_base() const;
    /// Another stream of the same size behind the first one.
    [[nodiscard]] bool has_second_stream() const { return has_second_stream_; }
    [[nodiscard]] FrameIndex& index() { return index_; }
    [[nodiscard]] const FrameIndex& index() const { return index_; }
    [[nodiscard]] const PacketSums& sums() const { return sums_; }

    /// The next packet of the stream, with its number in the index. False at the end.
    [[nodiscard]] bool next(AVPacket& packet, int& number);
    [[nodiscard]] int next_packet() const { return next_; }
    /// The packet that is given next is this one. False where it cannot be reached.
    [[nodiscard]] bool go_to(int number);

private:
    PacketReader(std::string path, const MessageCatalogue& messages)
        : path_(std::move(path)), messages_(messages) {}
    [[nodiscard]] Result<void> open_file();
    [[nodiscard]] Result<void> choose_stream(VideoStream stream);
    [[nodiscard]] Result<void> read_index();
    struct IndexScan;
    void look_into(const AVPacket& packet, IndexScan& scan);
    [[nodiscard]] Failure failure(const std::string& text) const;
    [[nodiscard]] bool read_packet(AVPacket& packet);
    [[nodiscard]] bool jump(int number, std::int64_t bytes_back);
    [[nodiscard]] bool reopen();
    /// Passes over packets until that one waits; `place` is the number of the next one where that is known.
    /// False where the packets are not those of the index.
    [[nodiscard]] bool skip_to(int number, std::optional<int> place);

    std::string path_;
    const MessageCatalogue& messages_;
    InputFile file_;
    Packet waiting_;  ///< A packet that was read while its place was looked for.
    bool has_waiting_ = false;
    int stream_ = -1;
    bool has_second_stream_ = false;
    bool jumps_by_byte_ = false;
    FrameIndex index_;
    PacketSums sums_;
    int next_ = 0;  ///< Number of the packet that is read next.
};

}  // namespace zemora
