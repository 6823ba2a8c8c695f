/// Writes the comfort calculator in both languages and a report with awkward texts into a folder: write_pages
/// FOLDER

#include <cstdio>

#include "config/html_text.h"
#include "report/comfort_calculator.h"
#include "report/pair_report.h"
#include "report/run_report.h"

namespace {

using namespace zemora;

/// Names as they may stand in a user's folder.
constexpr const char* kNames[] = {
    "a & b.jpg",
    "<b>bold.jpg",
    "\"quoted\" and 'single'.jpg",
    "&amp;.jpg",
    "Gr\xC3\xBC\xC3\x9F"
    "e.jpg",
    "\xE7\xAB\x8B\xE4\xBD\x93.jpg",
    "\x80uro \xFC.jpg",
    "</script>.jpg",
    "javascript:alert(1).jpg",
    "--><!-- comment.jpg",
    "\xEF\xBB\xBFmark \xC2\x81\x07.jpg",
};

bool write_report(const std::string& folder) {
    ParameterSet settings;
    settings.verbose_mode = 2;
    settings.stop_at_error = 0;
    ReportOptions options;
    options.projection_ratio = setting::projection_ratio::ratio_16_10;
    ImageReport pair;
    pair.status = StatusCode::success;
    pair.width = 4000;
    pair.height = 3000;
    pair.near_px = -12.0;
    pair.far_px = 120.0;
    Console console;
    MessageCatalogue messages(Language::english);
    RunReport report(messages);
    Voice voice(console, messages, settings);
    voice.set_report(&report);
    if (!report.open({folder + "/zemora_report.txt", folder + "/zemora_report.html", false}, true).empty()) {
        return false;
    }
    for (const char* name : kNames) {
        voice.report_html("<div class=\"pair\">\n<p><b>" + html_text(name) + "</b></p>\n");
        write_image_report(options, pair, voice);
        voice.report_html("</div>\n");
        voice.end_report_section();
    }
    return report.close().empty();
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        return 1;
    }
    const std::string folder = arguments[1];
    for (const Language language : {Language::english, Language::german}) {
        const std::string page = folder + '/' + calculator_file_name(language);
        if (const std::string reason = write_comfort_calculator(page, language); !reason.empty()) {
            std::fprintf(stderr, "%s: %s\n", page.c_str(), reason.c_str());
            return 1;
        }
    }
    return write_report(folder) ? 0 : 1;
}
