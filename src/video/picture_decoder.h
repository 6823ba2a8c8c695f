#pragma once
/// The pictures of a stream by number, as the decoder gives them.

#include <functional>
#include <memory>

#include "video/libav_handles.h"
#include "video/packet_reader.h"

namespace zemora {

/// A picture that was asked for.
struct FoundPicture {
    const AVFrame* frame = nullptr;  ///< Valid until the next picture is asked for; null where there is none.
    bool is_damaged = false;         ///< It is that before the wanted one, which could not be decoded.
};

class PictureDecoder {
public:
    /// Fails for the run where there is no decoder. The reader must outlive this.
    [[nodiscard]] static Result<std::unique_ptr<PictureDecoder>> open(PacketReader& reader,
                                                                      const MessageCatalogue& messages);

    /// Decodes on from where it stands, or from the key before `number`.
    [[nodiscard]] FoundPicture find(int number);
    /// Decodes the first picture of all and tells the index of it; null where there is none.
    [[nodiscard]] const AVFrame* find_first();
    /// Called with each whole picture that is decoded, also on the way to the wanted one.
    void watch(std::function<void(int number, const AVFrame& frame)> watcher) {
        watcher_ = std::move(watcher);
    }

private:
    /// A decoded picture and its number.
    struct Numbered {
        Frame frame;
        int number = FrameIndex::kUnknown;
        [[nodiscard]] bool is_there() const { return number != FrameIndex::kUnknown; }
    };

    explicit PictureDecoder(PacketReader& reader) : reader_(reader) {}
    [[nodiscard]] bool can_go_on_to(int number) const;
    [[nodiscard]] bool start_at(int packet);
    [[nodiscard]] bool search(int number);
    [[nodiscard]] bool advance();
    [[nodiscard]] bool receive();
    void feed();
    [[nodiscard]] int number_of(const AVFrame& frame);

    PacketReader& reader_;
    Codec codec_;
    Packet packet_;
    Numbered whole_;         ///< The last picture without damage that stands before or at the wanted one.
    Numbered ahead_;         ///< The picture that was decoded last.
    bool runs_ = false;      ///< The decoder stands somewhere in the file.
    bool drains_ = false;    ///< All packets were given to it.
    int first_trusted_ = 0;  ///< Pictures before the key that was started with may lack what they refer to.
    int last_number_ = FrameIndex::kUnknown;
    std::function<void(int, const AVFrame&)> watcher_;
};

}  // namespace zemora
