#pragma once
/// The container of a film that is written: a file that nobody sees before it is whole. Functions give an
/// empty text, or the reason of a failure.

#include <memory>
#include <string>
#include <vector>

#include "platform/new_file.h"
#include "video/video_facts.h"

struct AVCodecContext;
struct AVFormatContext;
struct AVIOContext;
struct AVPacket;
struct AVStream;

namespace zemora {

/// A value for the library by its name.
struct LibraryOption {
    const char* name;
    std::string value;
};

class FilmOutput {
public:
    /// `format` as the library names it. Options that the format does not know are a failure.
    [[nodiscard]] static std::string create(const std::string& path, const char* format,
                                            std::unique_ptr<FilmOutput>& into);
    ~FilmOutput();
    FilmOutput(const FilmOutput&) = delete;
    FilmOutput& operator=(const FilmOutput&) = delete;

    /// For metadata, streams and chapters, until they are written.
    [[nodiscard]] AVFormatContext& context() { return *context_; }
    /// Whether encoders have to put what holds for the whole stream beside it.
    [[nodiscard]] bool wants_global_header() const;
    /// A stream of what the opened encoder gives.
    [[nodiscard]] std::string add_stream(const AVCodecContext& encoder, AVStream*& stream);

    /// Says on a stream that its pictures hold two views.
    [[nodiscard]] std::string put_stereo_flag(AVStream& stream, StereoPacking packing);

    [[nodiscard]] std::string write_header(const std::vector<LibraryOption>& options);
    /// Takes the packet's contents; its times count in the time base of the stream.
    [[nodiscard]] std::string write(AVPacket& packet);
    /// Ends the file and gives it the name.
    [[nodiscard]] std::string finish(const std::string& path);

private:
    class Bytes;
    explicit FilmOutput(const std::string& path);
    [[nodiscard]] std::string reason_of(int error) const;

    NewFile file_;
    std::unique_ptr<Bytes> written_;
    AVFormatContext* context_ = nullptr;
};

}  // namespace zemora
