#include "video/libav_handles.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <array>
#include <cstdarg>
#include <deque>
#include <mutex>

#include "platform/console.h"

namespace zemora {

namespace {

constexpr std::size_t kLinesKept = 4;
constexpr int kLineLength = 400;  // bytes; longer lines are cut

/// The last lines of the library.
class LibraryLog {
public:
    void add(const std::string& line) {
        const std::lock_guard lock(mutex_);
        if (line.empty() || std::find(lines_.begin(), lines_.end(), line) != lines_.end()) {
            return;
        }
        lines_.push_back(line);
        if (lines_.size() > kLinesKept) {
            lines_.pop_front();
        }
    }
    void forget() {
        const std::lock_guard lock(mutex_);
        lines_.clear();
    }
    [[nodiscard]] std::string take() {
        const std::lock_guard lock(mutex_);
        std::string text;
        for (const std::string& line : lines_) {
            text += "  " + printable(line) + '\n';
        }
        lines_.clear();
        return text;
    }

private:
    std::mutex mutex_;
    std::deque<std::string> lines_;
};

LibraryLog& library_log() {
    static LibraryLog log;
    return log;
}

void keep_line(void* context, int level, const char* format, va_list values) {
    if (level > AV_LOG_WARNING) {
        return;
    }
    std::array<char, kLineLength> line{};
    int starts_line = 1;
    av_log_format_line2(context, level, format, values, line.data(), kLineLength, &starts_line);
    std::string text(line.data());
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    // The name of an object of the library has its address behind it, which says nothing to anybody.
    const auto address = text.find(" @ 0x");
    const auto end = text.find(']', address);
    if (address != std::string::npos && end != std::string::npos) {
        text.erase(address, end - address);
    }
    library_log().add(text);
}

}  // namespace

void LibavFreer::operator()(AVFormatContext* file) const {
    avformat_close_input(&file);
}
void LibavFreer::operator()(AVCodecContext* codec) const {
    avcodec_free_context(&codec);
}
void LibavFreer::operator()(AVPacket* packet) const {
    av_packet_free(&packet);
}
void LibavFreer::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}
void LibavFreer::operator()(SwsContext* scaler) const {
    sws_freeContext(scaler);
}

std::string libav_reason(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

void keep_libav_log() {
    av_log_set_callback(keep_line);
    library_log().forget();
}

std::string take_libav_log() {
    return library_log().take();
}

}  // namespace zemora
