#include "report/run_report.h"

#include "platform/paths.h"

namespace zemora {

namespace {

/// The name that modes 4 and 5 put behind the base name: the last folder, or the video's base name.
std::string own_name(const ParameterSet& parameters) {
    if (parameters.video_mode != 1) {
        return bare_name_of(parameters.path_of_images);
    }
    const bool two_files = parameters.stereo_image_input == 2 || parameters.stereo_image_input == 5;
    std::string name =
        without_suffix(bare_name_of(two_files ? parameters.left_file_name : parameters.stereo_file_name));
    const std::string end = name.size() >= 2 ? lower_case(name.substr(name.size() - 2)) : std::string();
    if (end == "_l" || end == "_s") {
        name.resize(name.size() - 2);
    }
    return name;
}

constexpr const char* kHtmlHead =
    "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>Zemora</title>\n"
    "<style>\nbody { font-family: sans-serif; margin: 2em; max-width: 60em; }\n.red { color: #c00; }\n"
    "p.a4 { margin-bottom: 0; }\n</style>\n</head>\n<body><div>\n";

}  // namespace

ReportNames report_names(const ParameterSet& parameters, const std::string& time_stamp) {
    std::string insert;
    bool append = parameters.report_mode == 2;
    if (parameters.report_mode == 3) {
        insert = time_stamp;
    } else if (parameters.report_mode >= 4) {
        insert = '_' + own_name(parameters);
        append = parameters.report_mode == 5 && parameters.video_mode == 0;
    }
    const std::string stem = join_path(parameters.path_of_images, "zemora_report" + insert);
    return {stem + ".txt", stem + ".html", append};
}

std::string RunReport::open(const ReportNames& names) {
    names_ = names;
    const char* mode = names.append ? "ae" : "we";
    text_.reset(std::fopen(names.text.c_str(), mode));
    if (!text_) {
        return names.text;
    }
    html_.reset(std::fopen(names.html.c_str(), mode));
    if (!html_) {
        text_.reset();
        return names.html;
    }
    text_line(messages_.raw(Msg::main_report_heading));
    html_line(kHtmlHead);
    html_line("<h2>" + html_text(bare_name_of(names.text)) + "</h2>\n");
    return {};
}

std::string RunReport::close() {
    if (!is_open()) {
        return {};
    }
    html_line("</div></body></html>\n");
    std::string broken;
    for (const auto& [file, name] : {std::pair{&text_, &names_.text}, std::pair{&html_, &names_.html}}) {
        const bool failed = std::fflush(file->get()) != 0 || std::ferror(file->get()) != 0;
        if (std::fclose(file->release()) != 0 || failed) {
            broken = *name;
        }
    }
    return broken;
}

void RunReport::text_line(std::string_view text) {
    if (text_) {
        std::fwrite(text.data(), 1, text.size(), text_.get());
    }
}

void RunReport::html_line(std::string_view html) {
    if (html_) {
        std::fwrite(html.data(), 1, html.size(), html_.get());
    }
}

}  // namespace zemora
