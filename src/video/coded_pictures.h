#pragma once
/// What the head of a coded picture says, without decoding it.

#include <memory>

struct AVCodecParameters;
struct AVCodecContext;
struct AVCodecParserContext;
struct AVPacket;

namespace zemora {

struct CodedPicture {
    bool is_intra = false;          ///< It refers to no other picture.
    bool is_shown_at_once = false;  ///< Others wait until the next one of their kind is decoded.
    bool is_second_field = false;   ///< It makes the picture of the packet before it whole.
};

/// Reads the packets of one stream in their order.
class CodedPictures {
public:
    explicit CodedPictures(const AVCodecParameters& stream);
    ~CodedPictures();
    CodedPictures(const CodedPictures&) = delete;
    CodedPictures& operator=(const CodedPictures&) = delete;

    /// Whether the stream is of a kind that is looked into; of others `read` says nothing that holds.
    [[nodiscard]] bool can_read() const { return parser_ != nullptr; }
    /// Whether the order of the pictures follows from their kinds alone, as in MPEG-1 and MPEG-2.
    [[nodiscard]] bool are_in_simple_order() const { return are_in_simple_order_; }
    [[nodiscard]] CodedPicture read(const AVPacket& packet);

private:
    AVCodecContext* codec_ = nullptr;
    AVCodecParserContext* parser_ = nullptr;
    bool are_in_simple_order_ = false;
    int open_field_ = 0;  ///< Kind of a field that waits for its second one; 0: none.
};

}  // namespace zemora
