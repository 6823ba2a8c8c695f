#include "report/video_charts.h"

#include <cstdint>
#include <optional>
#include <vector>

#include "config/text_file.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "report/page_texts.h"

namespace zemora {

namespace {

constexpr const char* kScriptFolder = "javascript";
constexpr const char* kScripts[] = {"jquery.min.js", "jquery.flot.min.js"};

constexpr std::string_view kCharts =
#include "report/video_charts.inc"
    ;

Failure no_scripts(const std::string& name, const std::string& reason, const MessageCatalogue& messages) {
    return Failure::of_run(
        format_text(messages.either({"The charts of the report stay empty, %s is missing: %s\n",
                                     "Die Diagramme des Berichts bleiben leer, %s fehlt: %s\n"}),
                    name.c_str(), reason.c_str()));
}

}  // namespace

Result<void> write_chart_scripts(const std::string& report_folder, const MessageCatalogue& messages) {
    const std::string folder = join_path(report_folder, kScriptFolder);
    std::string reason;
    if (!make_folders(folder, reason)) {
        return no_scripts(kScriptFolder, reason, messages);
    }
    for (const std::string name : kScripts) {
        const std::string source = "resource/" + name;
        const std::optional<std::vector<std::uint8_t>> script =
            read_file_whole(find_data_file(source), reason);
        if (!script) {
            return no_scripts(source, reason, messages);
        }
        const std::string_view text(reinterpret_cast<const char*>(script->data()), script->size());
        if (Result<void> written = write_text_file(join_path(folder, name), text, messages); !written) {
            return written;
        }
    }
    return {};
}

std::string report_charts_html(Language language) {
    return filled_page(kCharts, language);
}

}  // namespace zemora
