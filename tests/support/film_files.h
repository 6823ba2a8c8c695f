#pragma once
/// Videos of generated films, made with the program ffmpeg.

#include <cstdio>
#include <string>

#include "film.h"

namespace zemora::test {

/// How the words for the encoder stand when a test does not care: without loss.
inline constexpr const char* kLosslessVideo = "-c:v libx264 -qp 0 -preset ultrafast -pix_fmt yuv420p";

class FilmPipe {
public:
    /// Starts ffmpeg with pictures of that size on its input; `words` follow.
    FilmPipe(int width, int height, const std::string& rate, const std::string& words) {
        const std::string size = std::to_string(width) + 'x' + std::to_string(height);
        const std::string input = "-f rawvideo -pix_fmt bgr24 -s " + size + " -r " + rate + " -i - ";
        pipe_ = popen(("ffmpeg -v error -nostdin -y " + input + words).c_str(), "w");
    }
    FilmPipe(const FilmPipe&) = delete;
    FilmPipe& operator=(const FilmPipe&) = delete;
    ~FilmPipe() { (void)end(); }

    /// Row by row from the top, of both views where `beside` is set.
    void add_rows(ConstPicture picture, const ConstPicture* beside = nullptr) {
        const auto bytes = static_cast<std::size_t>(picture.width) * kPixelBytes;
        for (int row = picture.height - 1; row >= 0 && pipe_ != nullptr; --row) {
            well_ = std::fwrite(picture.row(row), 1, bytes, pipe_) == bytes && well_;
            if (beside != nullptr) {
                well_ = std::fwrite(beside->row(row), 1, bytes, pipe_) == bytes && well_;
            }
        }
    }
    /// Whether ffmpeg took everything and ended well.
    [[nodiscard]] bool end() {
        const bool ended = pipe_ != nullptr && pclose(pipe_) == 0;
        pipe_ = nullptr;
        return ended && well_;
    }

private:
    std::FILE* pipe_ = nullptr;
    bool well_ = true;
};

/// Writes each view into a video of its own. The names may hold blanks, but no quotation marks.
[[nodiscard]] inline bool write_film(Film& film, const std::string& left, const std::string& right,
                                     const std::string& encoder = kLosslessVideo,
                                     const std::string& rate = "25") {
    const std::string size = std::to_string(film.width()) + ':' + std::to_string(film.height());
    const std::string views = "-filter_complex '[0]crop=" + size + ":0:0[l];[0]crop=" + size +
                              ":0:" + std::to_string(film.height()) + "[r]' ";
    FilmPipe pipe(
        film.width(), 2 * film.height(), rate,
        views + "-map '[l]' " + encoder + " '" + left + "' -map '[r]' " + encoder + " '" + right + '\'');
    for (int frame = 0; frame < film.frames(); ++frame) {
        const Film::Views pair = film.render(frame);
        pipe.add_rows(pair.left.picture());
        pipe.add_rows(pair.right.picture());
    }
    return pipe.end();
}

/// Writes both views side by side into one video, the left one at the left.
[[nodiscard]] inline bool write_film_side_by_side(Film& film, const std::string& path,
                                                  const std::string& encoder = kLosslessVideo,
                                                  const std::string& rate = "25") {
    FilmPipe pipe(2 * film.width(), film.height(), rate, encoder + " '" + path + '\'');
    for (int frame = 0; frame < film.frames(); ++frame) {
        const Film::Views pair = film.render(frame);
        const ConstPicture right = pair.right.picture();
        pipe.add_rows(pair.left.picture(), &right);
    }
    return pipe.end();
}

}  // namespace zemora::test
