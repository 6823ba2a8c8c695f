#include "report/pair_report.h"

namespace zemora {

namespace {

constexpr int kUsable = 4;  // the least status that is mounted
constexpr double kDegreesPerRadian = 180.0 / 3.14159265358979323846;

/// The values of the result in one block for the console.
std::string result_block(const ImageReport& report, const MessageCatalogue& messages) {
    const CorrectionValues& c = report.correction;
    std::string text = messages.raw(Msg::main_result_height);
    const auto add = [&](const char* label, double value) { text += label + format_text("%5.2f", value); };
    text += format_text("%5.2f", static_cast<double>(c.height));
    add(messages.raw(Msg::main_label_size), 100.0 * c.size);
    add(messages.raw(Msg::main_label_rotation), c.rotation * kDegreesPerRadian);
    add(messages.raw(Msg::main_label_vergence_v), c.vergence_v * kDegreesPerRadian);
    add(messages.raw(Msg::main_label_vergence_h), c.vergence_h * kDegreesPerRadian);
    return text + '\n';
}

}  // namespace

void report_mount_failure(const Voice& voice) {
    const std::string text = voice.messages().raw(Msg::stereo_analyse_cannot_be_mounted) + std::string("\n");
    voice.print_and_report(text);
    voice.report_html(voice.messages().raw(Msg::stereo_analyse_cannot_be_mounted_html));
}

void report_pair(const ImageReport& report, const Voice& voice) {
    if (report.status < kUsable) {
        if (!report.failure_told && report.status >= 0) {
            report_mount_failure(voice);
        }
        return;
    }
    if (voice.verbose() > 0) {
        const std::string block = result_block(report, voice.messages());
        voice.print_and_report('\n' + block);
        voice.report_html("<p>" + html_text(block) + "</p>\n");
    }
}

}  // namespace zemora
