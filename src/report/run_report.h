#pragma once
/// The two report files of a run.

#include <cstdio>
#include <memory>
#include <string>

#include "config/setting_values.h"
#include "config/voice.h"

namespace zemora {

/// Names of the report files in the folder of the images.
struct ReportNames {
    std::string text;
    std::string html;
    bool append = false;
};

/// What the names of the reports are made of.
struct ReportSource {
    int report_mode = setting::report_mode::overwritten;
    std::string folder;  ///< Of the images.
    std::string time_stamp;
    bool is_sequence = false;     ///< A video or a sequence of frames.
    std::string video_file = {};  ///< Left or stereo file of a video, else empty.
};

/// By `ReportMode`: base names, with the time stamp, or with the name of the folder or video.
[[nodiscard]] ReportNames report_names(const ReportSource& source);

/// What Zemora is and where there is more to read, below the heading of a page.
[[nodiscard]] std::string title_block_html(const MessageCatalogue& messages);

/// A file that grows by whole sections in front of a fixed end; whoever reads it meanwhile finds it whole.
class GrowingFile {
public:
    /// A file that closes with `end`, which may be empty.
    explicit GrowingFile(std::string_view end) : end_(end) {}

    /// Opens a file that is there, empty, or to go on in front of its end or, when that is missing, behind
    /// its last byte.
    [[nodiscard]] bool open(const std::string& name, bool append);
    [[nodiscard]] bool is_open() const { return file_ != nullptr; }
    /// Whether contents stand in front of what is added.
    [[nodiscard]] bool goes_on() const { return position_ > 0; }
    void add(std::string_view text) { section_ += text; }
    /// Writes what was added and the end at once. What could not be written is kept for the next time.
    void write_section();
    /// Writes the last section and closes; whether everything stands in the file.
    [[nodiscard]] bool close();

private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    [[nodiscard]] bool write_at_position(const std::string& text);
    [[nodiscard]] long end_of_contents() const;
    /// After a failed write: the file as it was; its end has its place on a full disk too.
    void restore();

    std::string end_;
    std::string name_;
    std::unique_ptr<std::FILE, CloseFile> file_;
    std::string section_;
    long position_ = 0;  ///< Where the next section goes, bytes.
};

/// Text and HTML report; what comes while they are not open is dropped. Lines are kept until their section
/// ends and then written at once: both files can be read while the run goes on, the HTML file as a whole
/// page, and a run that is killed loses the section at work alone. The HTML file is in Latin-1, the lines are
/// in UTF-8.
class RunReport : public ReportSink {
public:
    explicit RunReport(const MessageCatalogue& messages);

    /// Opens both files and writes their heads. A page that is appended to goes on in front of its end.
    /// The name of the file that could not be opened, else an empty text.
    [[nodiscard]] std::string open(const ReportNames& names, bool links_calculator);
    /// Writes the section at work and closes both. The name of a file that was not written whole, else
    /// an empty text.
    [[nodiscard]] std::string close();
    [[nodiscard]] bool is_open() const { return text_.is_open(); }

    void text_line(std::string_view text) override;
    void html_line(std::string_view html) override;
    void begin_section() override;
    void end_section() override;

private:
    void write_text_head();
    void write_html_head(bool links_calculator);

    const MessageCatalogue& messages_;
    ReportNames names_;
    GrowingFile text_;
    GrowingFile html_;
    bool in_block_ = false;  ///< The section has a block of its own on the page.
};

}  // namespace zemora
