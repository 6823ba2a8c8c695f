#include "video/film_metadata.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/mem.h>
#include <libavutil/timecode.h>
}

#include <algorithm>
#include <array>
#include <cmath>

#include "video/libav_handles.h"
#include "video/open_input.h"

namespace zemora {

namespace {

struct TagRow {
    const char* name;
    const char* written_name;
};
// clang-format off
constexpr TagRow kKeptTags[] = {
    {"creation_time",                        "creation_time"},
    {"title",                                "title"},
    {"date",                                 "date"},
    {"artist",                               "artist"},
    {"copyright",                            "copyright"},
    {"location",                             "location"},
    {"com.apple.quicktime.location.ISO6709", "location"},
};
// clang-format on

const char* tag_of(const AVDictionary* tags, const char* name) {
    const AVDictionaryEntry* entry = av_dict_get(tags, name, nullptr, 0);
    return entry != nullptr ? entry->value : nullptr;
}

std::string time_code_of(const AVFormatContext& file) {
    if (const char* told = tag_of(file.metadata, "timecode")) {
        return told;
    }
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        if (const char* told = tag_of(file.streams[i]->metadata, "timecode")) {
            return told;
        }
    }
    return {};
}

std::vector<FilmChapter> chapters_in(const AVFormatContext& file) {
    std::vector<FilmChapter> chapters;
    for (unsigned i = 0; i < file.nb_chapters; ++i) {
        const AVChapter& chapter = *file.chapters[i];
        const double base = av_q2d(chapter.time_base);
        const char* title = tag_of(chapter.metadata, "title");
        chapters.push_back({static_cast<double>(chapter.start) * base,
                            static_cast<double>(chapter.end) * base, title != nullptr ? title : ""});
    }
    return chapters;
}

}  // namespace

FilmMetadata read_film_metadata(const std::string& path) {
    FilmMetadata found;
    InputFile file;
    if (path.empty() || open_input(path, file) != 0) {
        return found;
    }
    for (const TagRow& row : kKeptTags) {
        const char* value = tag_of(file->metadata, row.name);
        const bool is_known = std::any_of(found.tags.begin(), found.tags.end(),
                                          [&](const auto& tag) { return tag.first == row.written_name; });
        if (value != nullptr && !is_known) {
            found.tags.emplace_back(row.written_name, value);
        }
    }
    found.time_code = time_code_of(*file);
    if (const int stream = first_picture_stream(*file); stream >= 0) {
        const AVRational rate = file->streams[stream]->avg_frame_rate;
        found.rate = {rate.num, rate.den};
    }
    found.chapters = chapters_in(*file);
    return found;
}

std::string advanced_time_code(const std::string& time_code, Rational rate, int frames,
                               Rational output_rate) {
    AVTimecode start;
    AVTimecode moved;
    if (time_code.empty() || !rate.is_positive() || !output_rate.is_positive() ||
        av_timecode_init_from_string(&start, {rate.num, rate.den}, time_code.c_str(), nullptr) < 0) {
        return {};
    }
    const bool drops = (start.flags & AV_TIMECODE_FLAG_DROPFRAME) != 0;
    const double ratio = rate == output_rate ? 1.0 : output_rate.value() / rate.value();
    const auto number = static_cast<int>(std::lround((start.start + frames) * ratio));
    const int flags = AV_TIMECODE_FLAG_24HOURSMAX | (drops ? AV_TIMECODE_FLAG_DROPFRAME : 0);
    if (av_timecode_init(&moved, {output_rate.num, output_rate.den}, flags, number, nullptr) < 0) {
        return {};
    }
    std::array<char, AV_TIMECODE_STR_SIZE> text{};
    return av_timecode_make_string(&moved, text.data(), 0);
}

std::vector<FilmChapter> chapters_of_walk(const FilmMetadata& source, const FrameWalk& walk, int frames,
                                          Rational output_rate) {
    const double seconds = frames / output_rate.value();
    const auto written_time = [&](double time) {
        const double frame = time * source.rate.value();
        const double passed = walk.step < 0 ? walk.end - frame : frame - walk.first;
        return std::clamp(passed / walk.stride() / output_rate.value(), 0.0, seconds);
    };
    std::vector<FilmChapter> chapters;
    for (const FilmChapter& chapter : source.chapters) {
        const auto [start, end] = std::minmax({written_time(chapter.start_s), written_time(chapter.end_s)});
        if (start < end) {
            chapters.push_back({start, end, chapter.title});
        }
    }
    if (walk.step < 0) {
        std::reverse(chapters.begin(), chapters.end());
    }
    return chapters;
}

void put_tags(AVFormatContext& film, const FilmMetadata& source, const std::string& time_code) {
    for (const auto& [name, value] : source.tags) {
        av_dict_set(&film.metadata, name.c_str(), value.c_str(), 0);
    }
    if (!time_code.empty()) {
        av_dict_set(&film.metadata, "timecode", time_code.c_str(), 0);
    }
}

void put_chapters(AVFormatContext& film, const std::vector<FilmChapter>& chapters) {
    constexpr AVRational kMillisecond = {1, 1000};
    film.chapters = static_cast<AVChapter**>(av_calloc(chapters.size(), sizeof(AVChapter*)));
    for (const FilmChapter& chapter : chapters) {
        auto* made = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
        if (film.chapters == nullptr || made == nullptr) {
            av_free(made);
            return;
        }
        made->id = film.nb_chapters;
        made->time_base = kMillisecond;
        made->start = std::llround(chapter.start_s * kMillisecond.den);
        made->end = std::llround(chapter.end_s * kMillisecond.den);
        av_dict_set(&made->metadata, "title", chapter.title.c_str(), 0);
        film.chapters[film.nb_chapters++] = made;
    }
}

}  // namespace zemora
