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

/// Text and HTML report; silent while they are not open.
class RunReport : public ReportSink {
public:
    explicit RunReport(const MessageCatalogue& messages) : messages_(messages) {}

    /// Opens both files and writes their heads. The name of the file that could not be opened, else
    /// an empty text.
    [[nodiscard]] std::string open(const ReportNames& names);
    /// Ends the HTML page and closes both. The name of a file that was not written whole, else an
    /// empty text.
    [[nodiscard]] std::string close();
    [[nodiscard]] bool is_open() const { return text_ != nullptr; }

    void text_line(std::string_view text) override;
    void html_line(std::string_view html) override;

private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, CloseFile>;
    const MessageCatalogue& messages_;
    ReportNames names_;
    File text_;
    File html_;
};

}  // namespace zemora
