#include "report/run_report.h"

#include <algorithm>
#include <filesystem>

#include "config/html_text.h"
#include "config/text_lines.h"
#include "platform/paths.h"
#include "report/html_page.h"

namespace zemora {

namespace {

/// The name that modes 4 and 5 put behind the base name: the last folder, or the video's base name.
std::string own_name(const ReportSource& source) {
    if (source.video_file.empty()) {
        return bare_name_of(source.folder);
    }
    std::string name = without_suffix(bare_name_of(source.video_file));
    const std::string end = name.size() >= 2 ? lower_case(name.substr(name.size() - 2)) : std::string();
    if (end == "_l" || end == "_s") {
        name.resize(name.size() - 2);
    }
    return name;
}

/// The file that cannot be written; nothing of what stands in either is changed, a missing one is made.
std::string find_unwritable(const ReportNames& names) {
    for (const std::string* name : {&names.text, &names.html}) {
        std::FILE* file = std::fopen(name->c_str(), "ae");
        if (file == nullptr) {
            return *name;
        }
        std::fclose(file);
    }
    return {};
}

/// The catalogue's heading between its equal signs.
std::string plain_heading(const MessageCatalogue& messages) {
    const std::string_view row = messages.raw(Msg::main_report_heading);
    const std::size_t first = row.find_first_not_of("= ");
    return std::string(row.substr(first, row.find_last_not_of("= \n") + 1 - first));
}

/// The call that shows the manual page, and the page on reports where it is installed.
std::string more_information(const MessageCatalogue& messages) {
    const std::string page = find_document("reports.md");
    return messages.either({"man zemora", "man -L de zemora"}) + (page.empty() ? page : ", " + page);
}

}  // namespace

std::string title_block_html(const MessageCatalogue& messages) {
    return "<p>" + html_text(messages.raw(Msg::main_report_what_zemora_is)) + "</p>\n<p>" +
           messages.raw(Msg::main_report_more_information_html) + html_text(more_information(messages)) +
           "</p>\n";
}

ReportNames report_names(const ReportSource& source) {
    namespace mode = setting::report_mode;
    std::string insert;
    bool append = source.report_mode == mode::appended;
    if (source.report_mode == mode::with_time) {
        insert = source.time_stamp;
    } else if (source.report_mode >= mode::named_by_source) {
        insert = '_' + own_name(source);
        append = source.report_mode == mode::named_and_appended && !source.is_sequence;
    }
    const std::string stem = join_path(source.folder, "zemora_report" + insert);
    return {stem + ".txt", stem + ".html", append};
}

bool GrowingFile::open(const std::string& name, bool append) {
    name_ = name;
    section_.clear();
    position_ = 0;
    file_.reset(std::fopen(name.c_str(), append ? "r+e" : "w+e"));
    if (!file_) {
        return false;
    }
    std::setvbuf(file_.get(), nullptr, _IONBF, 0);
    if (append) {
        position_ = end_of_contents();
    }
    return true;
}

long GrowingFile::end_of_contents() const {
    std::FILE* file = file_.get();
    std::fseek(file, 0, SEEK_END);
    const long size = std::max(std::ftell(file), 0L);
    const long contents = size - static_cast<long>(end_.size());
    std::string last(end_.size(), '\0');
    if (contents < 0 || std::fseek(file, contents, SEEK_SET) != 0 ||
        std::fread(last.data(), 1, last.size(), file) != last.size()) {
        return size;
    }
    return last == end_ ? contents : size;
}

bool GrowingFile::write_at_position(const std::string& text) {
    std::FILE* file = file_.get();
    std::clearerr(file);
    return std::fseek(file, position_, SEEK_SET) == 0 &&
           std::fwrite(text.data(), 1, text.size(), file) == text.size();
}

void GrowingFile::write_section() {
    if (!file_ || section_.empty()) {
        return;
    }
    if (write_at_position(section_ + end_)) {
        position_ += static_cast<long>(section_.size());
        section_.clear();
        return;
    }
    restore();
}

void GrowingFile::restore() {
    const bool has_end = goes_on() && write_at_position(end_);
    const auto size = static_cast<std::uintmax_t>(position_) + (has_end ? end_.size() : 0);
    std::error_code unknown;
    const std::uintmax_t present = std::filesystem::file_size(name_, unknown);
    if (!unknown && present > size) {
        std::filesystem::resize_file(name_, size, unknown);
    }
}

bool GrowingFile::close() {
    write_section();
    const bool closed = !file_ || std::fclose(file_.release()) == 0;
    return closed && section_.empty();
}

RunReport::RunReport(const MessageCatalogue& messages) : messages_(messages), text_({}), html_(kPageEnd) {}

std::string RunReport::open(const ReportNames& names, bool links_calculator) {
    if (const std::string unwritable = find_unwritable(names); !unwritable.empty()) {
        return unwritable;
    }
    names_ = names;
    if (!text_.open(names.text, names.append)) {
        return names.text;
    }
    if (!html_.open(names.html, names.append)) {
        (void)text_.close();
        return names.html;
    }
    write_text_head();
    write_html_head(links_calculator);
    end_section();
    return {};
}

void RunReport::write_text_head() {
    if (text_.goes_on()) {
        text_line("\n");
    }
    text_line(messages_.raw(Msg::main_report_heading));
    text_line(messages_.raw(Msg::main_report_what_zemora_is));
    text_line("\n");
    text_line(messages_.raw(Msg::main_report_more_information));
    text_line(more_information(messages_) + "\n\n");
}

void RunReport::write_html_head(bool links_calculator) {
    const std::string heading = plain_heading(messages_);
    const std::string_view script = links_calculator ? open_calculator_script() : "";
    if (!html_.goes_on()) {
        html_.add(page_head(heading, messages_.language(), script));
    } else {
        html_line("<hr>\n");
        if (links_calculator) {  // the page may come from a run without it
            html_line("<script>" + std::string(script) + "</script>\n");
        }
    }
    html_line("<h2>" + html_text(heading) + "</h2>\n" + title_block_html(messages_));
}

std::string RunReport::close() {
    end_section();
    const bool text_whole = text_.close();
    const bool html_whole = html_.close();
    if (!text_whole) {
        return names_.text;
    }
    return html_whole ? std::string() : names_.html;
}

void RunReport::text_line(std::string_view text) {
    if (text_.is_open()) {
        text_.add(utf8_text(text));
    }
}

void RunReport::html_line(std::string_view html) {
    if (html_.is_open()) {
        html_.add(latin1_html(html));
    }
}

void RunReport::begin_section() {
    end_section();
    html_line("<div class=\"pair\">\n");
    in_block_ = true;
}

void RunReport::end_section() {
    if (in_block_) {
        html_line("</div>\n");
        in_block_ = false;
    }
    text_.write_section();
    html_.write_section();
}

}  // namespace zemora
