#include "video/film_output.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/stereo3d.h>
}

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "video/libav_handles.h"

namespace zemora {

/// One place in the file that the library reads or writes at, and a buffer before it.
class FilmOutput::Bytes {
public:
    Bytes(NewFile& file, bool writes) : file_(file) {
        auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
        if (buffer != nullptr) {
            context_ = avio_alloc_context(buffer, kBufferBytes, writes ? 1 : 0, this, read, write, seek);
        }
        if (context_ == nullptr) {
            av_free(buffer);
        }
    }
    ~Bytes() {
        if (context_ != nullptr) {
            av_freep(&context_->buffer);
            avio_context_free(&context_);
        }
    }
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;

    [[nodiscard]] AVIOContext* context() const { return context_; }
    /// The system's number of the first write that failed; 0 without one.
    [[nodiscard]] int error() const { return error_; }

private:
    static constexpr int kBufferBytes = 1 << 20;

    static int read(void* opaque, std::uint8_t* into, int size) {
        auto& self = *static_cast<Bytes*>(opaque);
        const auto count = self.file_.read_at(self.place_, {into, static_cast<std::size_t>(size)});
        if (count <= 0) {
            return count == 0 ? AVERROR_EOF : AVERROR(errno);
        }
        self.place_ += count;
        return static_cast<int>(count);
    }
    static int write(void* opaque, std::uint8_t* bytes, int size) {
        auto& self = *static_cast<Bytes*>(opaque);
        if (!self.file_.write_at(self.place_, {bytes, static_cast<std::size_t>(size)})) {
            self.error_ = self.error_ == 0 ? errno : self.error_;
            return AVERROR(errno);
        }
        self.place_ += size;
        return size;
    }
    static std::int64_t seek(void* opaque, std::int64_t place, int whence) {
        auto& self = *static_cast<Bytes*>(opaque);
        if ((whence & AVSEEK_SIZE) != 0) {
            return self.file_.size();
        }
        const int kind = whence & ~AVSEEK_FORCE;
        if (kind != SEEK_SET && kind != SEEK_CUR && kind != SEEK_END) {
            return AVERROR(EINVAL);
        }
        self.place_ = place + (kind == SEEK_CUR ? self.place_ : kind == SEEK_END ? self.file_.size() : 0);
        return self.place_;
    }

    NewFile& file_;
    std::int64_t place_ = 0;
    int error_ = 0;
    AVIOContext* context_ = nullptr;

    friend class FilmOutput;
    /// The library opens the file a second time, to read, when it moves its index to the front.
    static int open_again(AVFormatContext* format, AVIOContext** into, const char* /*url*/, int flags,
                          AVDictionary** /*options*/) {
        if (flags != AVIO_FLAG_READ) {
            return AVERROR(EACCES);
        }
        auto reader = std::make_unique<Bytes>(static_cast<FilmOutput*>(format->opaque)->file_, false);
        *into = reader->context();
        return reader.release()->context() != nullptr ? 0 : AVERROR(ENOMEM);
    }
    static int close_again(AVFormatContext* /*format*/, AVIOContext* reader) {
        if (reader != nullptr) {
            const std::unique_ptr<Bytes> closed(static_cast<Bytes*>(reader->opaque));
        }
        return 0;
    }
};

FilmOutput::FilmOutput(const std::string& path) : file_(path, NewFile::Kind::lasting) {}

FilmOutput::~FilmOutput() {
    if (context_ != nullptr) {
        context_->pb = nullptr;
        avformat_free_context(context_);
    }
}

std::string FilmOutput::create(const std::string& path, const char* format,
                               std::unique_ptr<FilmOutput>& into) {
    std::string reason;
    (void)permissions_to_keep(path, reason);
    if (!reason.empty()) {
        return reason;
    }
    remove_left_overs(folder_with_slash(path));
    std::unique_ptr<FilmOutput> output(new FilmOutput(path));
    if (!output->file_.is_open()) {
        return system_reason(errno);
    }
    output->written_ = std::make_unique<Bytes>(output->file_, true);
    const int error = avformat_alloc_output_context2(&output->context_, nullptr, format, "file:film");
    if (error < 0 || output->written_->context() == nullptr) {
        return libav_reason(error < 0 ? error : AVERROR(ENOMEM));
    }
    AVFormatContext& context = *output->context_;
    context.pb = output->written_->context();
    context.flags |= AVFMT_FLAG_CUSTOM_IO;
    context.opaque = output.get();
    context.io_open = Bytes::open_again;
    context.io_close2 = Bytes::close_again;
    into = std::move(output);
    return {};
}

bool FilmOutput::wants_global_header() const {
    return (context_->oformat->flags & AVFMT_GLOBALHEADER) != 0;
}

std::string FilmOutput::add_stream(const AVCodecContext& encoder, AVStream*& stream) {
    stream = avformat_new_stream(context_, nullptr);
    if (stream == nullptr) {
        return libav_reason(AVERROR(ENOMEM));
    }
    stream->id = static_cast<int>(context_->nb_streams) - 1;
    stream->time_base = encoder.time_base;
    const int error = avcodec_parameters_from_context(stream->codecpar, &encoder);
    return error < 0 ? libav_reason(error) : std::string();
}

std::string FilmOutput::put_stereo_flag(AVStream& stream, StereoPacking packing) {
    AVStereo3D* told = av_stereo3d_alloc();
    auto* side_data = av_stream_new_side_data(&stream, AV_PKT_DATA_STEREO3D, sizeof *told);
    if (told == nullptr || side_data == nullptr) {
        av_free(told);
        return libav_reason(AVERROR(ENOMEM));
    }
    told->type = packing == StereoPacking::side_by_side ? AV_STEREO3D_SIDEBYSIDE : AV_STEREO3D_TOPBOTTOM;
    std::memcpy(side_data, told, sizeof *told);
    av_free(told);
    context_->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    return {};
}

std::string FilmOutput::reason_of(int error) const {
    return written_->error() != 0 ? system_reason(written_->error()) : libav_reason(error);
}

std::string FilmOutput::write_header(const std::vector<LibraryOption>& options) {
    AVDictionary* values = nullptr;
    for (const LibraryOption& option : options) {
        av_dict_set(&values, option.name, option.value.c_str(), 0);
    }
    const int error = avformat_write_header(context_, &values);
    av_dict_free(&values);
    return error < 0 ? reason_of(error) : std::string();
}

std::string FilmOutput::write(AVPacket& packet) {
    const int error = av_interleaved_write_frame(context_, &packet);
    return error < 0 || written_->error() != 0 ? reason_of(error) : std::string();
}

std::string FilmOutput::finish(const std::string& path) {
    int error = av_write_trailer(context_);
    avio_flush(context_->pb);
    error = error < 0 ? error : context_->pb->error;
    if (error < 0 || written_->error() != 0) {
        return reason_of(error);
    }
    return publish_whole(file_, path);
}

}  // namespace zemora
