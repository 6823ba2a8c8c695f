#include "report/deep_video_page.h"

#include "config/html_text.h"
#include "config/text_file.h"
#include "platform/paths.h"
#include "report/html_page.h"
#include "report/page_texts.h"
#include "report/picture_tags.h"
#include "report/run_report.h"
#include "report/value_rows.h"

namespace zemora {

namespace {

constexpr std::string_view kRules = "<hr>\n<hr>\n";

/// A chart of one series with its words.
struct Section {
    const char* mark;
    const char* series;
    const char* range;
    const char* formatter;
};

constexpr Section kSections[] = {
#define SECTION(mark, series, range, formatter) {mark, series, range, formatter},
#include "report/deep_video_sections.inc"
#undef SECTION
};

constexpr std::string_view kCalculator =
#include "report/deep_video_page.inc"
    ;

constexpr std::string_view kScript =
#include "report/deep_video_page_script.inc"
    ;

std::string heading(const std::string& mark) {
    return "<p class=\"a6\"><b>{{heading_" + mark + "}}</b></p>\n";
}

std::string section_html(const Section& section) {
    const std::string mark = section.mark;
    const std::string quoted = '"' + mark + '"';
    return heading(mark) + "<div id=" + quoted +
           " style=\"width:640px;max-width:100%;height:300px\"></div>\n<script>\ndraw_chart(" + quoted +
           ", [[\"" + section.range + "\", " + section.formatter + "]], [[\"" + section.series +
           "\", \"{{label_" + mark + "}}\", 1]]);\n</script>\n<p>{{about_" + mark + "}}</p>\n" +
           std::string(kRules);
}

std::string disparity_section() {
    std::string html = heading("disparities") + "{{disparity_chart}}<p>{{about_disparities}}</p>\n";
    for (const char* mark : {"about_dispmin", "about_dispmax", "about_dispfix", "about_video_deviation"}) {
        html += "<p>{{" + std::string(mark) + "}}</p>\n";
    }
    return html + std::string(kRules);
}

/// Which video the page is about.
std::string video_html(const DeepVideoPage& page, const MessageCatalogue& messages) {
    std::string html = messages.raw(Msg::main_report_analysed_video_html);
    html += "<p class=\"blue\">";
    for (const std::string& video : page.videos) {
        html += html_text(bare_name_of(video)) + "<br>\n";
    }
    html += "</p>\n";
    if (!page.left_thumb.empty()) {
        html += "<p>" + thumb_tag(page.left_thumb, page.right_thumb, page.folder);
    }
    return html;
}

std::string body_html(const DeepVideoPage& page, const MessageCatalogue& messages) {
    std::string marked = "{{chart_scripts}}";
    for (const Section& section : kSections) {
        marked += section_html(section);
    }
    marked += disparity_section();
    marked += kCalculator;
    // A name of a video is no mark: only what stands in the program is filled.
    return messages.raw(Msg::main_deep_video_analysis_heading) + title_block_html(messages) +
           video_html(page, messages) + filled_page(marked, messages.language());
}

}  // namespace

Result<void> write_deep_video_page(const DeepVideoPage& page, const MessageCatalogue& messages) {
    const Language language = messages.language();
    std::string html = page_head("Deep Zemora Video Analysis", language) +
                       latin1_html(body_html(page, messages)) + filled_page(kScript, language);
    html += html_paragraph(messages.raw(Msg::main_report_end_banner));
    html += kPageEnd;
    return write_text_file(join_path(page.folder, kDeepVideoPageName), html, messages);
}

std::string deep_video_page_link(const MessageCatalogue& messages) {
    return std::string("<p>") + messages.raw(Msg::main_link_to_deep_video_analysis) + "</p>\n";
}

}  // namespace zemora
