#include "report/pair_report.h"

#include <algorithm>
#include <cmath>

#include "numerics/rounding.h"
#include "report/analysis_rows.h"
#include "report/comfort_calculator.h"
#include "report/height_judgement.h"
#include "report/window_judgement.h"

namespace zemora {

namespace {

constexpr int kManyIterations = 20;     // `IterativeWarp` that needs no enlarging
constexpr double kPresetShown = 0.001;  // degrees; smaller preselections are none
constexpr double kPerMille = 1000.0;
constexpr double kLeastDeviation = 0.1;  // pixels; smaller ones have the share of this one

constexpr CorrectionWords kMeasuredWords = {
    {Msg::stereo_analyse_error_of_height, Msg::stereo_analyse_error_of_size,
     Msg::stereo_analyse_error_of_rotation, Msg::stereo_analyse_error_of_vergence_v,
     Msg::stereo_analyse_error_of_vergence_h},
    Msg::stereo_analyse_unit_pixel,
    Msg::stereo_analyse_unit_percent,
    Msg::stereo_analyse_unit_degree};

constexpr CorrectionWords kUsedWords = {
    {Msg::stereo_analyse_used_for_height, Msg::stereo_analyse_used_for_size,
     Msg::stereo_analyse_used_for_rotation, Msg::stereo_analyse_used_for_vergence,
     Msg::stereo_analyse_used_for_vergence},
    Msg::stereo_analyse_unit_pixel,
    Msg::stereo_analyse_unit_percent,
    Msg::stereo_analyse_unit_degree};

const CorrectionWords& words_for(int mode) {
    return counts_as_measured(mode) ? kMeasuredWords : kUsedWords;
}

/// What the rows of a pair are made from.
struct PairFacts {
    const ReportOptions& options;
    const ImageReport& report;
    const WindowJudgement& judgement;
    const MessageCatalogue& messages;
    int verbosity;

    [[nodiscard]] double deviation_px() const { return report.far_px - report.near_px; }
    [[nodiscard]] HeightJudgement heights() const {
        return judge_heights(*report.heights, deviation_px() / report.width);
    }
    [[nodiscard]] ValueRow row(Msg label, std::string number, Msg unit) const {
        return {messages.raw(label), std::move(number), messages.raw(unit)};
    }
};

WindowFigures figures_of(const ReportOptions& options, const ImageReport& report) {
    return {report.near_px,           report.far_px,           report.left_edge_px, report.right_edge_px,
            report.left_curtain_px,   report.right_curtain_px, report.width,        report.height,
            options.projection_ratio, options.estimate_window};
}

void add_preset_rows(const PairFacts& facts, std::vector<ValueRow>& rows) {
    const ImageReport& report = facts.report;
    const Msg degree = Msg::stereo_analyse_unit_degree;
    if (std::abs(report.pre_rotation_left) > kPresetShown ||
        std::abs(report.pre_rotation_right) > kPresetShown) {
        rows.push_back(facts.row(Msg::stereo_analyse_preset_rotation_left,
                                 measured_number(report.pre_rotation_left), degree));
        rows.push_back(facts.row(Msg::stereo_analyse_preset_rotation_right,
                                 measured_number(report.pre_rotation_right), degree));
    }
    if (std::abs(report.pre_vergence_v) > kPresetShown) {
        rows.push_back(
            facts.row(Msg::stereo_analyse_preset_vergence_v, measured_number(report.pre_vergence_v), degree));
        rows.back().remark = remark_on(Remark::preset_vergence_v, report.pre_vergence_v, facts.messages);
    }
}

RowBlock error_block(const PairFacts& facts) {
    const ImageReport& report = facts.report;
    const Msg pixel = Msg::stereo_analyse_unit_pixel;
    const bool measured = counts_as_measured(report.mode);
    RowBlock block = {facts.messages.raw(Msg::stereo_analyse_error_analysis_heading),
                      facts.messages.raw(Msg::stereo_analyse_error_analysis_rule),
                      {}};
    add_preset_rows(facts, block.rows);
    for (ValueRow& row :
         correction_rows(report.correction, words_for(report.mode), measured, facts.messages)) {
        block.rows.push_back(std::move(row));
    }
    const std::string near_point = measured_number(report.original_near_px);
    if (!measured) {
        block.rows.push_back(facts.row(Msg::stereo_analyse_used_for_window, near_point, pixel));
        return block;
    }
    block.rows.push_back(facts.row(Msg::stereo_analyse_input_near_point_disparity, near_point, pixel));
    block.rows.back().remark = remark_on(Remark::near_point, report.original_near_px, facts.messages);
    block.rows.push_back(facts.row(Msg::stereo_analyse_input_far_point_disparity,
                                   measured_number(report.original_far_px), pixel));
    block.rows.back().remark = remark_on(Remark::far_point, report.original_far_px, facts.messages);
    return block;
}

RowBlock last_iteration_block(const PairFacts& facts) {
    return {facts.messages.raw(Msg::stereo_analyse_last_iteration_heading),
            facts.messages.raw(Msg::stereo_analyse_last_iteration_rule),
            correction_rows(facts.report.remaining, words_for(facts.report.mode), false, facts.messages)};
}

/// What the correction has left.
RowBlock check_block(const PairFacts& facts) {
    const MessageCatalogue& messages = facts.messages;
    const HeightCheck& check = *facts.report.heights;
    const HeightVerdict verdict = facts.heights().verdict;
    const double shown = verdict == HeightVerdict::unchecked ? std::nan("") : check.median_input_px;
    return {messages.either({"Check of the result:\n", "Pruefung des Ergebnisses:\n"}),
            messages.either({"--------------------\n", "-------------------------\n"}),
            {{messages.either({"Remaining error of height   ", "Verbliebener Hoehenfehler   "}),
              measured_number(shown), messages.raw(Msg::stereo_analyse_unit_pixel),
              height_remark(check, verdict, messages)}}};
}

/// A row that goes on with the value above it, in another measure.
ValueRow continued(const PairFacts& facts, std::string number, const BothTexts& measure) {
    return {facts.messages.raw(Msg::stereo_analyse_label_blank), std::move(number),
            facts.messages.either(measure)};
}

ValueRow image_based(const PairFacts& facts, double value_px) {
    return continued(facts, rounded_number(value_px * kPerMille / facts.report.width),
                     {" Promille (image based)", " Promille (bildbezogen)"});
}

void add_deviation_rows(const PairFacts& facts, std::vector<ValueRow>& rows) {
    const double deviation_px = facts.deviation_px();
    const double shares = facts.report.width / std::max(deviation_px, kLeastDeviation);
    rows.push_back(facts.row(Msg::stereo_analyse_absolute_deviation, rounded_number(deviation_px),
                             Msg::stereo_analyse_unit_pixel));
    rows.push_back(facts.row(Msg::stereo_analyse_relative_image_deviation, share_number(shares),
                             Msg::stereo_analyse_of_the_image_width));
    rows.back().is_share = true;
    rows.push_back(image_based(facts, deviation_px));
    if (facts.options.projection_ratio == setting::projection_ratio::none) {
        return;
    }
    rows.push_back(continued(facts, share_number(shares / facts.judgement.picture_share),
                             {" of the projection width", " der Projektionsbreite"}));
    rows.back().is_share = true;
    rows.push_back(continued(facts, rounded_number(facts.judgement.deviation * kPerMille),
                             {" Promille (projection based)", " Promille (projektionsbezogen)"}));
}

RowBlock window_block(const PairFacts& facts) {
    const ImageReport& report = facts.report;
    const Msg pixel = Msg::stereo_analyse_unit_pixel;
    RowBlock block = {facts.messages.raw(Msg::stereo_analyse_window_heading),
                      facts.messages.raw(Msg::stereo_analyse_window_rule),
                      {}};
    const auto add = [&](Msg label, double value_px) {
        block.rows.push_back(facts.row(label, rounded_number(value_px), pixel));
    };
    add(Msg::stereo_analyse_far_point_disparity, report.far_px);
    block.rows.push_back(image_based(facts, report.far_px));
    add(Msg::stereo_analyse_near_point_disparity, report.near_px);
    block.rows.push_back(image_based(facts, report.near_px));
    if (facts.options.auto_frame_floating >= setting::auto_frame_floating::curtains_alike) {
        add(Msg::stereo_analyse_curtain_left, report.left_curtain_px);
        add(Msg::stereo_analyse_curtain_right, report.right_curtain_px);
    }
    add_deviation_rows(facts, block.rows);
    return block;
}

RowBlock output_block(const PairFacts& facts) {
    const Msg pixel = Msg::stereo_analyse_unit_pixel;
    return {facts.messages.raw(Msg::stereo_analyse_output_image_heading),
            facts.messages.raw(Msg::stereo_analyse_output_image_rule),
            {facts.row(Msg::stereo_analyse_output_width, rounded_number(facts.report.width), pixel),
             facts.row(Msg::stereo_analyse_output_height, rounded_number(facts.report.height), pixel),
             {facts.messages.raw(Msg::stereo_analyse_output_width_to_height),
              ratio_number(static_cast<double>(facts.report.width) / facts.report.height)}}};
}

std::vector<RowBlock> blocks_of(const PairFacts& facts) {
    std::vector<RowBlock> blocks = {error_block(facts)};
    if (facts.report.is_analysed) {
        const bool has_iterated = counts_as_measured(facts.report.mode) && facts.options.iterative_warp > 0;
        if (facts.verbosity > 1 && has_iterated) {
            blocks.push_back(last_iteration_block(facts));
        }
        if (facts.report.heights) {
            blocks.push_back(check_block(facts));
        }
        blocks.push_back(window_block(facts));
        blocks.push_back(output_block(facts));
    }
    return blocks;
}

std::string exchange_warning(const MessageCatalogue& messages) {
    return messages.either(
        {"Attention: left and right view may be exchanged, near and far look turned round (InverseInput "
         "exchanges the views).\n",
         "Achtung: linke und rechte Ansicht sind vielleicht vertauscht, nah und fern wirken verkehrt "
         "(InverseInput vertauscht die Ansichten).\n"});
}

/// The judgement, and the advice for a pair that has not quite converged.
std::vector<std::string> sentences_of(const PairFacts& facts) {
    std::vector<std::string> sentences =
        judgement_texts(facts.judgement, facts.options.projection_ratio, facts.messages);
    if (facts.report.heights && facts.heights().cause != HeightCause::none) {
        sentences.push_back(height_remedy(facts.heights().cause, facts.messages));
    }
    if (facts.report.looks_exchanged) {
        sentences.push_back(exchange_warning(facts.messages));
    }
    if (!facts.report.doubt.empty()) {
        sentences.push_back(facts.report.doubt);
    }
    if (facts.report.status == StatusCode::usable) {
        sentences.emplace_back(facts.messages.raw(Msg::stereo_analyse_written_under_reserve));
        if (facts.options.iterative_warp < kManyIterations) {
            sentences.emplace_back(facts.messages.raw(Msg::stereo_analyse_to_enhance_enlarge_iterative_warp));
        }
    }
    return sentences;
}

/// Blocks and judgement, parted by empty lines.
std::string text_of(const std::vector<RowBlock>& blocks, const std::vector<std::string>& sentences) {
    std::string text;
    for (const RowBlock& block : blocks) {
        text += (text.empty() ? "" : "\n") + text_of(block);
    }
    text += sentences.empty() ? "" : "\n";
    for (const std::string& sentence : sentences) {
        text += sentence;
    }
    return text;
}

std::string calculator_link(const PairFacts& facts) {
    const ImageReport& report = facts.report;
    return R"(<hr width="640" align="left"><hr width="640" align="left">)"
           "\n<p><a href=\"" +
           calculator_address(facts.messages.language(), round_half_up(report.far_px),
                              round_half_up(facts.deviation_px()), report.width, report.height,
                              facts.options.projection_ratio) +
           "\" onclick=\"OpenComCalc(this.href); return false\">" +
           facts.messages.raw(Msg::stereo_analyse_pass_values_to_comfort_calculator_html);
}

std::string html_of(const std::vector<RowBlock>& blocks, const std::vector<std::string>& sentences) {
    std::string html = "<table border=\"0\" cellspacing=\"5\">\n";
    for (const RowBlock& block : blocks) {
        html += html_of(block, &block == &blocks.front());
    }
    html += "</table><br>\n";
    for (const std::string& sentence : sentences) {
        html += html_paragraph(sentence);
    }
    return html;
}

/// What the console shows of a pair whose report it leaves out.
std::string quiet_text(const PairFacts& facts) {
    if (!facts.report.heights) {
        return {};
    }
    const RowBlock check = check_block(facts);
    return text_of(RowBlock{{}, {}, check.rows}) +
           (facts.report.looks_exchanged ? exchange_warning(facts.messages) : "") + facts.report.doubt;
}

/// The mount failure and what can be tried against it.
void tell_failure(Notes& notes, const std::string& advice, bool on_console) {
    const MessageCatalogue& messages = notes.messages();
    const std::string text = messages.raw(Msg::stereo_analyse_cannot_be_mounted) + ('\n' + advice);
    if (on_console) {
        notes.print(text);
    }
    notes.report_text(text);
    notes.report_html(messages.raw(Msg::stereo_analyse_cannot_be_mounted_html));
    if (!advice.empty()) {
        notes.report_html(html_paragraph(advice));
    }
}

/// Time spent on the pair, for console and text report.
std::string time_text(const PairFacts& facts) {
    const MessageCatalogue& messages = facts.messages;
    return messages.raw(Msg::stereo_analyse_separator) +
           std::string(messages.raw(Msg::stereo_analyse_consumed_cpu_time)) +
           std::to_string(facts.report.seconds) + messages.raw(Msg::stereo_analyse_unit_seconds);
}

}  // namespace

void report_mount_failure(Notes& notes) {
    tell_failure(notes, {}, true);
}

void write_image_report(const ReportOptions& options, const ImageReport& report, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    const bool on_console = notes.verbose() > 0;
    if (!is_written(report.status)) {
        const Msg advice = Msg::stereo_analyse_if_correct_enlarge_iterative_warp;
        tell_failure(notes, options.iterative_warp < kManyIterations ? messages.raw(advice) : "", on_console);
        if (on_console) {
            notes.wait(Severity::information);
        }
        return;
    }
    const WindowJudgement judgement = judge_window(figures_of(options, report));
    const PairFacts facts = {options, report, judgement, messages, notes.verbose()};
    const std::vector<RowBlock> blocks = blocks_of(facts);
    std::vector<std::string> sentences;
    if (report.is_analysed) {
        sentences = sentences_of(facts);
    }
    const std::string text = text_of(blocks, sentences);
    notes.print(on_console ? text + time_text(facts) : quiet_text(facts));
    notes.report_text(report.is_analysed ? text + time_text(facts) : text);
    notes.report_html(html_of(blocks, sentences));
    if (report.is_analysed && notes.verbose() > 1 && options.links_calculator) {
        notes.report_html(calculator_link(facts));
    }
}

}  // namespace zemora
