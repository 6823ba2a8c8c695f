#include "config/voice.h"

#include <algorithm>

#include "platform/process_end.h"

namespace zemora {

void Voice::report_text(std::string_view text) const {
    if (report_ != nullptr) {
        report_->text_line(text);
    }
}

void Voice::report_html(std::string_view html) const {
    if (report_ != nullptr) {
        report_->html_line(html);
    }
}

bool Voice::print_once(std::string_view text, OnceIn scope) const {
    auto& told = scope == OnceIn::section ? told_in_section_ : told_in_run_;
    const bool is_news = told.emplace(text).second;
    if (is_news) {
        print(text);
    }
    return is_news;
}

void Voice::begin_report_section() const {
    told_in_section_.clear();
    if (report_ != nullptr) {
        report_->begin_section();
    }
}

void Voice::end_report_section() const {
    if (report_ != nullptr) {
        report_->end_section();
    }
}

void Voice::print_and_report(std::string_view text) const {
    print(text);
    report_text(text);
}

void Voice::tell_everywhere(std::string_view text) const {
    print(text);
    report_everywhere(text);
}

bool Voice::tell_everywhere_once(std::string_view text) const {
    const bool is_news = print_once(text);
    if (is_news) {
        report_everywhere(text);
    }
    return is_news;
}

void Voice::report_everywhere(std::string_view text) const {
    report_text(text);
    const std::size_t first = std::min(text.find_first_not_of('\n'), text.size());
    const std::size_t last = text.find_last_not_of('\n') + 1;
    report_html("<p>" + html_text(text.substr(first, last - std::min(first, last))) + "</p>\n");
}

void Voice::wait(WaitAbove level) const {
    if (parameters_.stop_at_error > static_cast<int>(level)) {
        console_.wait_for_enter();
    }
}

void Voice::wait_once(WaitAbove level, std::string_view matter) const {
    if (waited_for_.emplace(matter).second) {
        wait(level);
    }
}

void Voice::progress(std::string_view step, double percent) const {
    if (parameters_.verbose_mode > 0) {
        console_.progress(step, percent);
    }
}

std::string html_text(std::string_view text) {
    std::string html;
    for (const char c : text) {
        switch (c) {
            case '&': html += "&amp;"; break;
            case '<': html += "&lt;"; break;
            case '>': html += "&gt;"; break;
            case '"': html += "&quot;"; break;
            case '\'': html += "&#39;"; break;
            case '\n': html += "<br>\n"; break;
            default: html += c;
        }
    }
    return html;
}

void end_run_without_picture_memory(Console& console, std::string_view reason, std::string_view advice) {
    console.print(reason);
    console.print("TRY TO CLOSE OTHER APPLICATIONS OR REBOOT SYSTEM AND START ONLY ZEMORA\n");
    console.print(advice);
    console.wait_for_enter();
    end_process(kExitFailure);
}

}  // namespace zemora
