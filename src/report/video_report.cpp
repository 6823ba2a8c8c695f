#include "report/video_report.h"

#include "report/video_charts.h"
#include "report/video_data.h"

namespace zemora {

namespace {

/// Whether it was written; why not is told.
bool is_done(const Result<void>& result, Notes& notes) {
    if (!result) {
        notes.print(result.failure().note.text);
    }
    return result.has_value();
}

}  // namespace

void write_video_charts(const DeepVideoPage& page, const CorrectionSeries& series, int width, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    if (!is_done(write_video_data(page.folder, series, width, messages), notes)) {
        return;
    }
    (void)is_done(write_chart_scripts(page.folder, messages), notes);
    notes.report_html(report_charts_html(messages.language()));
    if (is_done(write_deep_video_page(page, messages), notes)) {
        notes.report_html(deep_video_page_link(messages));
    }
}

}  // namespace zemora
