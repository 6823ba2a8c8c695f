/// Writes the comfort calculator in both languages, a report with awkward texts, and all that is left of a
/// film, in folders "en" and "de", into a folder: write_pages FOLDER

#include <cmath>
#include <cstdio>

#include "config/html_text.h"
#include "platform/paths.h"
#include "report/comfort_calculator.h"
#include "report/corr_values_plots.h"
#include "report/deep_video_page.h"
#include "report/pair_report.h"
#include "report/run_report.h"
#include "report/video_charts.h"
#include "report/video_data.h"
#include "video/corr_values_file.h"

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

/// A film of 300 frames, each fifth of which was analysed; some failed.
CorrectionSeries film_series() {
    CorrectionSeries series;
    series.analysed = {2, 300, 5};
    series.resize(300);
    for (int i = 0; i < series.analysed.count(); ++i) {
        const auto frame = static_cast<std::size_t>(series.analysed.at(i));
        const auto wave = static_cast<float>(std::sin(i / 6.0));
        series.valid[frame] = i % 9 == 4 ? 0 : 1;
        series.values[frame] = {4.0F * wave, 20.0F + 8.0F * wave, 0.004F * wave,
                                0.008F,      -0.01F * wave,       0.002F};
        series.disparities[frame] = {12.0F - 6.0F * wave, 60.0F + 20.0F * wave, 30.0F, 48.0F + 26.0F * wave,
                                     0.6F + 0.3F * wave};
    }
    return series;
}

bool done(const Result<void>& result) {
    if (!result) {
        std::fputs(result.failure().note.text.c_str(), stderr);
    }
    return result.has_value();
}

/// The report of a film with its charts.
bool write_film_report(const std::string& folder, const MessageCatalogue& messages) {
    RunReport report(messages);
    if (!report.open({folder + "/zemora_report.txt", folder + "/zemora_report.html", false}, false).empty()) {
        return false;
    }
    report.html_line(report_charts_html(messages.language()));
    report.html_line(deep_video_page_link(messages));
    return report.close().empty();
}

bool write_film(const std::string& folder, Language language) {
    constexpr int kWidth = 1920;
    const MessageCatalogue messages(language);
    std::string reason;
    if (!make_folders(folder, reason)) {
        return false;
    }
    CorrectionSeries series = film_series();
    SmoothSettings settings;
    if (!fill_series(series, settings) ||
        !done(write_corr_values(folder + '/' + kRawCorrValuesName, series, messages))) {
        return false;
    }
    smooth_filled_series(series, settings);
    const DeepVideoPage page{folder,
                             {"{{width}} & <b>_l.mp4",
                              "Gr\xC3\xBC\xC3\x9F"
                              "e_r.mp4"},
                             folder + "/ct/l.jpg",
                             folder + "/ct/r.jpg"};
    return done(write_corr_values(folder + '/' + kCorrValuesName, series, messages)) &&
           done(write_corr_values_plots(folder, true, messages)) &&
           done(write_video_data(folder, series, kWidth, messages)) &&
           done(write_chart_scripts(folder, messages)) && done(write_deep_video_page(page, messages)) &&
           write_film_report(folder, messages);
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
    const bool well = write_report(folder) && write_film(folder + "/en", Language::english) &&
                      write_film(folder + "/de", Language::german);
    return well ? 0 : 1;
}
