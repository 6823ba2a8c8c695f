#pragma once
/// Films that are read in a test, and what is said of them.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/speech.h"
#include "tests/video/clips.h"
#include "video/video_file.h"

namespace zemora::test {

/// Keeps the text of all notes.
class HeardNotes : public Notes {
public:
    explicit HeardNotes(const Speech& speech) : Notes(speech.messages, speech.parameters.verbose_mode) {}
    void add(Note note) override {
        text_ += note.text;
        waits_ += note.waits ? 1 : 0;
    }
    void progress(std::string_view /*step*/, double /*percent*/) override {}
    [[nodiscard]] const std::string& text() const { return text_; }
    [[nodiscard]] bool has(const std::string& part) const { return text_.find(part) != std::string::npos; }
    [[nodiscard]] int waits() const { return waits_; }

private:
    std::string text_;
    int waits_ = 0;
};

/// A sum that tells pictures apart (FNV-1a).
inline std::uint64_t sum_of(ConstPicture picture) {
    std::uint64_t sum = 14695981039346656037U;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* row = picture.row(y);
        for (int i = 0; i < picture.width * kPixelBytes; ++i) {
            sum = (sum ^ row[i]) * 1099511628211U;
        }
    }
    return sum;
}

struct FilmRig : Speech {
    TestFolder folder;
    HeardNotes notes{*this};

    /// Null, with a failed test, where the file cannot be opened.
    std::unique_ptr<VideoFile> open(const std::string& path, VideoStream stream = VideoStream::first) {
        auto file = VideoFile::open(path, stream, notes);
        EXPECT_TRUE(file) << (file ? "" : file.failure().note.text);
        return file ? *std::move(file) : nullptr;
    }
    /// Why the file cannot be opened; empty where it can.
    std::string refusal(const std::string& path) {
        auto file = VideoFile::open(path, VideoStream::first, notes);
        return file ? "" : file.failure().note.text;
    }
    std::uint64_t sum(VideoFile& file, int frame) {
        LoadedView view;
        const auto done = file.read(frame, view, notes);
        EXPECT_TRUE(done) << (done ? "" : done.failure().note.text);
        return done ? sum_of(view.picture()) : 0;
    }
    std::vector<std::uint64_t> sums(VideoFile& file) {
        std::vector<std::uint64_t> sums;
        for (int frame = 0; frame < file.facts().frames; ++frame) {
            sums.push_back(sum(file, frame));
        }
        return sums;
    }
};

}  // namespace zemora::test
