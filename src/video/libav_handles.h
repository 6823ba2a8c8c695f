#pragma once
/// Owners of the objects of the film library, and its log.

#include <memory>
#include <string>

struct AVFormatContext;
struct AVCodecContext;
struct AVPacket;
struct AVFrame;
struct SwsContext;

namespace zemora {

struct LibavFreer {
    void operator()(AVFormatContext* file) const;  ///< Of a file that is read.
    void operator()(AVCodecContext* codec) const;
    void operator()(AVPacket* packet) const;
    void operator()(AVFrame* frame) const;
    void operator()(SwsContext* scaler) const;
};

using InputFile = std::unique_ptr<AVFormatContext, LibavFreer>;
using Codec = std::unique_ptr<AVCodecContext, LibavFreer>;
using Packet = std::unique_ptr<AVPacket, LibavFreer>;
using Frame = std::unique_ptr<AVFrame, LibavFreer>;
using Scaler = std::unique_ptr<SwsContext, LibavFreer>;

/// What the number of an error of the library means.
[[nodiscard]] std::string libav_reason(int error);

/// From the first call on nothing of the library's log goes to the console; its last warnings and errors are
/// kept instead, of all threads together. Forgets what was kept before.
void keep_libav_log();
/// The lines that were kept since the last call, each once and indented, for the end of a failure's text;
/// empty without any.
[[nodiscard]] std::string take_libav_log();

}  // namespace zemora
