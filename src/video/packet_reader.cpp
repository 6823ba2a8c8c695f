#include "video/packet_reader.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avstring.h>
}

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "platform/console.h"
#include "platform/paths.h"
#include "video/coded_pictures.h"
#include "video/coded_views.h"

namespace zemora {

namespace {

/// Files with films in them, and nothing that leads to other files or to the net.
constexpr const char* kFormats =
    "avi,mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,mpegts,mpeg,asf,flv,mxf,nut,ogg,dv,ivf";
constexpr const char* kProtocols = "file";
/// Formats that are jumped in by bytes: their times are not to be trusted for that.
constexpr std::array kByteJumps = {"mpegts", "mpeg"};
/// Formats of lists that name other files.
constexpr std::array kPlaylists = {"hls", "concat", "dash", "imf", "rtsp", "sdp"};

constexpr int kShortestSide = 16;                            // pixels
constexpr std::int64_t kMostPixels = std::int64_t{1} << 27;  // of a picture: 16384 x 8192
/// Packets that fail one behind the other before a file counts as ended.
constexpr int kMostFailures = 100;

/// A list of options for the library.
class Options {
public:
    Options() = default;
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    ~Options() { av_dict_free(&values_); }
    void set(const char* key, const char* value) { av_dict_set(&values_, key, value, 0); }
    [[nodiscard]] AVDictionary** get() { return &values_; }

private:
    AVDictionary* values_ = nullptr;
};

[[nodiscard]] bool is_one_of(const char* names, const auto& wanted) {
    return std::any_of(wanted.begin(), wanted.end(),
                       [names](const char* name) { return av_match_name(name, names) != 0; });
}

/// What the library takes the content for; empty where it knows nothing of the kind.
std::string kind_of_content(const std::string& url) {
    AVIOContext* content = nullptr;
    const AVInputFormat* format = nullptr;
    if (avio_open(&content, url.c_str(), AVIO_FLAG_READ) >= 0) {
        av_probe_input_buffer(content, &format, url.c_str(), nullptr, 0, 0);
        avio_closep(&content);
    }
    return format != nullptr ? format->name : "";
}

[[nodiscard]] bool is_film(const AVStream& stream) {
    constexpr int kStills =
        AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS | AV_DISPOSITION_STILL_IMAGE;
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && (stream.disposition & kStills) == 0;
}

[[nodiscard]] PacketFacts facts_of(const AVPacket& packet) {
    const auto time = [](std::int64_t value) { return value == AV_NOPTS_VALUE ? kNoTime : value; };
    PacketFacts facts;
    facts.position = packet.pos;
    facts.pts = time(packet.pts);
    facts.dts = time(packet.dts);
    facts.size = packet.size;
    facts.is_key = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    facts.is_discarded = (packet.flags & AV_PKT_FLAG_DISCARD) != 0;
    return facts;
}

}  // namespace

/// What is collected of the packets while they are read for the first time.
struct PacketReader::IndexScan {
    explicit IndexScan(const AVCodecParameters& coded)
        : pictures(coded),
          views(coded.codec_id, coded.extradata, static_cast<std::size_t>(coded.extradata_size)) {}
    CodedPictures pictures;
    ViewsInCode views;
    std::vector<PacketFacts> facts;
    std::vector<bool> shown_at_once;
};

AVStream& PacketReader::stream() const {
    return *file_->streams[stream_];
}

Rational PacketReader::time_base() const {
    return {stream().time_base.num, stream().time_base.den};
}

Failure PacketReader::failure(const std::string& text) const {
    Failure failure = Failure::of_run(text + take_libav_log());
    failure.file = path_;
    return failure;
}

Result<std::unique_ptr<PacketReader>> PacketReader::open(const std::string& path, VideoStream stream,
                                                         const MessageCatalogue& messages) {
    keep_libav_log();
    std::unique_ptr<PacketReader> reader(new PacketReader(path, messages));
    if (const auto done = reader->open_file(); !done) {
        return done.failure();
    }
    if (const auto done = reader->choose_stream(stream); !done) {
        return done.failure();
    }
    if (const auto done = reader->read_index(); !done) {
        return done.failure();
    }
    return reader;
}

Result<void> PacketReader::open_file() {
    const std::string name = printable(path_);
    if (const std::string reason = why_unreadable(path_); !reason.empty()) {
        return failure(messages_.text<Msg::video_source_movie_read_failed>(name) + "  " + reason + '\n');
    }
    const std::string url = "file:" + path_;
    Options options;
    options.set("format_whitelist", kFormats);
    options.set("protocol_whitelist", kProtocols);
    AVFormatContext* file = nullptr;
    const int opened = avformat_open_input(&file, url.c_str(), nullptr, options.get());
    file_.reset(file);
    if (opened < 0) {
        const std::string kind = kind_of_content(url);
        std::string reason = "  " + libav_reason(opened) + '\n';
        if (!kind.empty() && is_one_of(kind.c_str(), kPlaylists)) {
            reason =
                messages_.either({"  This is no film but a list that names other files.\n",
                                  "  Das ist kein Film, sondern eine Liste, die andere Dateien nennt.\n"});
        } else if (!kind.empty() && !is_one_of(kFormats, std::array{kind.c_str()})) {
            reason = format_text(
                messages_.either({"  Its content is of the kind \"%s\", which is not read here.\n",
                                  "  Ihr Inhalt ist von der Art \"%s\", die hier nicht gelesen wird.\n"}),
                kind.c_str());
        }
        return failure(messages_.text<Msg::video_source_movie_read_failed>(name) + reason);
    }
    jumps_by_byte_ = is_one_of(file_->iformat->name, kByteJumps);
    if (const int found = avformat_find_stream_info(file_.get(), nullptr); found < 0) {
        return failure(messages_.text<Msg::video_source_movie_read_failed>(name) + "  " +
                       libav_reason(found) + '\n');
    }
    return {};
}

Result<void> PacketReader::choose_stream(VideoStream stream) {
    int first = -1;
    int second = -1;
    for (int i = 0; i < static_cast<int>(file_->nb_streams); ++i) {
        const AVStream& candidate = *file_->streams[i];
        if (!is_film(candidate)) {
            continue;
        }
        if (first < 0) {
            first = i;
        } else if (second < 0 && candidate.codecpar->width == file_->streams[first]->codecpar->width &&
                   candidate.codecpar->height == file_->streams[first]->codecpar->height) {
            second = i;
        }
    }
    has_second_stream_ = second >= 0;
    stream_ = stream == VideoStream::first ? first : second;
    if (stream_ < 0) {
        return failure(messages_.text<Msg::video_source_no_video_stream>(printable(path_)));
    }
    for (int i = 0; i < static_cast<int>(file_->nb_streams); ++i) {
        file_->streams[i]->discard = i == stream_ ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    const AVCodecParameters& coded = *this->stream().codecpar;
    const std::int64_t pixels = std::int64_t{coded.width} * coded.height;
    if (coded.width < kShortestSide || coded.height < kShortestSide || pixels > kMostPixels) {
        return failure(
            messages_.text<Msg::video_source_movie_read_failed>(printable(path_)) +
            format_text(
                messages_.either({"  Its pictures have %d x %d pixels, which cannot be mounted.\n",
                                  "  Ihre Bilder haben %d x %d Pixel, die nicht montiert werden koennen.\n"}),
                coded.width, coded.height));
    }
    return {};
}

bool PacketReader::read_packet(AVPacket& packet) {
    for (int failures = 0; failures < kMostFailures;) {
        av_packet_unref(&packet);
        const int read = av_read_frame(file_.get(), &packet);
        if (read == AVERROR_EOF || (read < 0 && file_->pb != nullptr && file_->pb->eof_reached != 0)) {
            sums_.is_cut_off = sums_.is_cut_off || read != AVERROR_EOF;
            return false;
        }
        if (read < 0) {
            ++failures;
            continue;
        }
        if (packet.stream_index == stream_) {
            return true;
        }
    }
    sums_.is_cut_off = true;
    return false;
}

void PacketReader::look_into(const AVPacket& packet, IndexScan& scan) {
    constexpr std::size_t kPacketsLookedAt = 30;  // for further views, at the start
    if (scan.facts.size() < kPacketsLookedAt &&
        scan.views.are_several(packet.data, static_cast<std::size_t>(packet.size))) {
        sums_.has_more_views = true;
    }
    sums_.bytes += packet.size;
    PacketFacts facts = facts_of(packet);
    const CodedPicture picture = scan.pictures.read(packet);
    if (scan.pictures.can_read()) {
        // Where a picture is renewed piece by piece there is no packet that shows all of it at once.
        facts.is_key = facts.is_key && picture.is_intra && !picture.is_second_field;
        facts.is_discarded = facts.is_discarded || picture.is_second_field;
    }
    // In AVI the B pictures of MPEG-4 may be packed with those before them: only from the start on do they
    // keep their number.
    const bool may_be_packed = stream().codecpar->codec_id == AV_CODEC_ID_MPEG4 && facts.pts == kNoTime;
    facts.is_key = facts.is_key && (!may_be_packed || scan.facts.empty());
    scan.facts.push_back(facts);
    scan.shown_at_once.push_back(picture.is_shown_at_once);
}

Result<void> PacketReader::read_index() {
    const Packet packet(av_packet_alloc());
    waiting_.reset(av_packet_alloc());
    if (!packet || !waiting_) {
        return Failure::out_of_memory("425: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (LEFT/RIGHT)\n");
    }
    IndexScan scan(*stream().codecpar);
    while (read_packet(*packet)) {
        look_into(*packet, scan);
    }
    if (scan.pictures.are_in_simple_order()) {
        put_in_order(scan.facts, scan.shown_at_once);
    }
    index_ = FrameIndex(std::move(scan.facts));
    next_ = static_cast<int>(index_.packets().size());
    if (index_.pictures() == 0) {
        return failure(messages_.text<Msg::video_source_frame_count_invalid>(printable(path_), 0));
    }
    return {};
}

bool PacketReader::next(AVPacket& packet, int& number) {
    if (next_ >= static_cast<int>(index_.packets().size())) {
        return false;
    }
    if (has_waiting_) {
        av_packet_unref(&packet);
        av_packet_move_ref(&packet, waiting_.get());
        has_waiting_ = false;
    } else if (!read_packet(packet)) {
        return false;
    }
    number = next_++;
    return true;
}

bool PacketReader::go_to(int number) {
    constexpr int kBytesBack = 1 << 20;
    if (number == next_) {
        return true;
    }
    const bool is_start = number == 0;
    if (!is_start && ((jump(number, 0) && skip_to(number, {})) ||
                      (jumps_by_byte_ && jump(number, kBytesBack) && skip_to(number, {})))) {
        return true;
    }
    return reopen() && skip_to(number, 0);
}

bool PacketReader::skip_to(int number, std::optional<int> place) {
    int at = place.value_or(0) - 1;
    bool is_placed = place.has_value();
    while (read_packet(*waiting_)) {
        if (is_placed) {
            ++at;
        } else {
            // Behind a jump by bytes the first packets may be pieces.
            at = index_.find(facts_of(*waiting_));
            is_placed = at != FrameIndex::kUnknown;
        }
        if (is_placed && at >= number) {
            has_waiting_ = at == number;
            next_ = number;
            return has_waiting_;
        }
    }
    return false;
}

bool PacketReader::jump(int number, std::int64_t bytes_back) {
    const PacketFacts& facts = index_.packets()[static_cast<std::size_t>(number)];
    has_waiting_ = false;
    next_ = FrameIndex::kUnknown;
    if (jumps_by_byte_) {
        const std::int64_t place = std::max<std::int64_t>(facts.position - bytes_back, 0);
        return facts.position >= 0 && av_seek_frame(file_.get(), stream_, place, AVSEEK_FLAG_BYTE) >= 0;
    }
    const std::int64_t time = facts.dts != kNoTime ? facts.dts : facts.pts;
    return time != kNoTime && av_seek_frame(file_.get(), stream_, time, AVSEEK_FLAG_BACKWARD) >= 0;
}

/// Opens the file anew: the only way to the start that every format has.
bool PacketReader::reopen() {
    const int stream = stream_;
    has_waiting_ = false;
    if (!open_file() || stream >= static_cast<int>(file_->nb_streams)) {
        return false;
    }
    for (int i = 0; i < static_cast<int>(file_->nb_streams); ++i) {
        file_->streams[i]->discard = i == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    next_ = 0;
    return true;
}

}  // namespace zemora
