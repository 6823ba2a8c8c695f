#include "report/analysis_rows.h"
#include "report/pair_report.h"

namespace zemora {

namespace {

constexpr CorrectionWords kMeasuredWords = {
    {Msg::main_sequence_error_of_height, Msg::main_sequence_error_of_size,
     Msg::main_sequence_error_of_rotation, Msg::main_sequence_error_of_vergence_v,
     Msg::main_sequence_error_of_vergence_h},
    Msg::main_unit_pixel,
    Msg::main_unit_percent,
    Msg::main_unit_degree};

constexpr CorrectionWords kUsedWords = {
    {Msg::main_sequence_used_for_height, Msg::main_sequence_used_for_size,
     Msg::main_sequence_used_for_rotation, Msg::main_sequence_used_for_vergence,
     Msg::main_sequence_used_for_vergence},
    Msg::main_unit_pixel,
    Msg::main_unit_percent,
    Msg::main_unit_degree};

RowBlock mean_block(const SequenceReport& report, bool measured, const MessageCatalogue& messages) {
    RowBlock block = {
        messages.raw(Msg::main_sequence_mean_heading) + std::string("\n"), messages.raw(Msg::main_separator),
        correction_rows(report.correction, measured ? kMeasuredWords : kUsedWords, measured, messages)};
    const Msg label = measured ? Msg::main_sequence_near_point_shift : Msg::main_sequence_used_for_window;
    block.rows.push_back({messages.raw(label), measured_number(report.near_shift_px),
                          messages.raw(Msg::main_unit_pixel),
                          measured ? remark_on(Remark::near_point, report.near_shift_px, messages) : ""});
    return block;
}

}  // namespace

void write_sequence_report(const SequenceReport& report, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    const std::string rule = messages.raw(Msg::main_separator);
    const RowBlock block = mean_block(report, counts_as_measured(report.mode), messages);
    const std::string text = rule + text_of(block) + rule + messages.raw(Msg::main_consumed_cpu_time) +
                             std::to_string(report.seconds) + messages.raw(Msg::main_unit_seconds) + '\n';
    if (notes.verbose() > 0) {
        notes.print(text);
    }
    notes.report_text(text);
    notes.report_html("<br><table border=\"0\" cellspacing=\"5\">\n" + html_of(block, true) +
                      "</table><br>\n");
}

}  // namespace zemora
