#include "config/voice.h"

#include <algorithm>

#include "config/html_text.h"

namespace zemora {

namespace {

/// A text as a paragraph of the HTML report, without the line ends round it.
std::string html_paragraph_of(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of('\n'), text.size());
    const std::size_t last = text.find_last_not_of('\n') + 1;
    return "<p>" + html_text(text.substr(first, last - std::min(first, last))) + "</p>\n";
}

}  // namespace

bool Voice::is_news(const Note& note) {
    if (note.repeat == Repeat::always) {
        return true;
    }
    auto& shown = note.repeat == Repeat::once_a_pair ? shown_in_section_ : shown_in_run_;
    return shown.emplace(note.matter.empty() ? note.text : note.matter).second;
}

void Voice::report(const Note& note) {
    if (report_ == nullptr) {
        return;
    }
    if (note.audience == Audience::html_report) {
        report_->html_line(note.text);
    } else if (note.audience != Audience::console) {
        report_->text_line(note.text);
    }
    if (note.audience == Audience::everywhere) {
        report_->html_line(html_paragraph_of(note.text));
    }
}

void Voice::add(Note note) {
    if (!is_news(note)) {
        return;
    }
    if (note.audience != Audience::text_report && note.audience != Audience::html_report &&
        !note.text.empty()) {
        console_.print(note.text);
    }
    report(note);
    if (note.waits && parameters_.stop_at_error > static_cast<int>(note.severity)) {
        console_.wait_for_enter();
    }
}

void Voice::begin_report_section() {
    shown_in_section_.clear();
    if (report_ != nullptr) {
        report_->begin_section();
    }
}

void Voice::end_report_section() {
    if (report_ != nullptr) {
        report_->end_section();
    }
}

void Voice::progress(std::string_view step, double percent) {
    if (verbose() > 0) {
        console_.progress(step, percent);
    }
}

void tell_missing_memory(Console& console, std::string_view reason, std::string_view advice) {
    console.print(reason);
    console.print("TRY TO CLOSE OTHER APPLICATIONS OR REBOOT SYSTEM AND START ONLY ZEMORA\n");
    console.print(advice);
    console.wait_for_enter();
}

}  // namespace zemora
