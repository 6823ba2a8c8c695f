#pragma once
/// Shows notes to the user at once, on the console and in the reports.

#include <set>
#include <string>
#include <string_view>

#include "config/notes.h"
#include "config/parameter_set.h"
#include "platform/console.h"

namespace zemora {

/// Where report lines go; the run's reports implement it.
class ReportSink {
public:
    virtual ~ReportSink() = default;
    virtual void text_line(std::string_view text) = 0;  ///< As it stands into the text report.
    virtual void html_line(std::string_view html) = 0;  ///< As it stands into the HTML report.
    virtual void begin_section() {}  ///< A section begins that belongs together, as a pair.
    virtual void end_section() {}    ///< What was written so far is whole.
};

class Voice : public Notes {
public:
    Voice(Console& console, MessageCatalogue& messages, const ParameterSet& parameters)
        : Notes(messages, parameters.verbose_mode),
          console_(console),
          catalogue_(messages),
          parameters_(parameters) {}

    [[nodiscard]] Console& console() const { return console_; }
    void set_language(Language language) { catalogue_.set_language(language); }

    void set_report(ReportSink* report) { report_ = report; }

    void add(Note note) override;
    /// Shown when `VerboseMode` is above 0.
    void progress(std::string_view step, double percent) override;

    /// A pair's section begins; the section at work is whole.
    void begin_report_section();
    void end_report_section();

private:
    [[nodiscard]] bool is_news(const Note& note);
    void report(const Note& note);

    Console& console_;
    MessageCatalogue& catalogue_;
    const ParameterSet& parameters_;
    ReportSink* report_ = nullptr;
    std::set<std::string, std::less<>> shown_in_section_;
    std::set<std::string, std::less<>> shown_in_run_;
};

/// For pictures that do not fit into memory: prints `reason`, the advice to close other applications and the
/// waiting line, and waits for Enter. `advice` is one more line behind the advice.
void tell_missing_memory(Console& console, std::string_view reason, std::string_view advice);

}  // namespace zemora
