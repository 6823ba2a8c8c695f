#pragma once
/// The two report files of a run.

#include <cstdio>
#include <memory>
#include <string>

#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

/// Names of the report files in the folder of the images.
struct ReportNames {
    std::string text;
    std::string html;
    bool append = false;
};

/// By `ReportMode`: base names, with the time stamp, or with the name of the folder or video.
[[nodiscard]] ReportNames report_names(const ParameterSet& parameters, const std::string& time_stamp);

/// Text and HTML report; silent while they are not open. What is told is kept until its section ends and then
/// written at once: both files can be read while the run goes on, the HTML file as a whole page, and a run
/// that is killed loses the section at work alone.
class RunReport : public ReportSink {
public:
    explicit RunReport(const MessageCatalogue& messages) : messages_(messages) {}

    /// Opens both files and writes their heads. A page that is appended to goes on in front of its end.
    /// The name of the file that could not be opened, else an empty text.
    [[nodiscard]] std::string open(const ReportNames& names, bool links_calculator);
    /// Writes the section at work and closes both. The name of a file that was not written whole, else
    /// an empty text.
    [[nodiscard]] std::string close();
    [[nodiscard]] bool is_open() const { return text_ != nullptr; }

    void text_line(std::string_view text) override;
    void html_line(std::string_view html) override;
    void end_section() override;

private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, CloseFile>;
    const MessageCatalogue& messages_;
    ReportNames names_;
    File text_;
    File html_;
    std::string text_section_;
    std::string html_section_;
    long html_end_ = 0;  ///< Where the end of the page stands, bytes.
};

}  // namespace zemora
