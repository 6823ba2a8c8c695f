#include "driver/viewers.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <thread>
#include <utility>

#include "codec/encode.h"
#include "driver/failure.h"
#include "driver/pair_records.h"
#include "driver/settings_render.h"
#include "driver/viewer_exchange.h"
#include "driver/viewer_preview.h"
#include "input/file_selection.h"
#include "input/list_line.h"
#include "platform/child_process.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

// Names of the exchange files in the image folder.
constexpr const char* kPreviewerResult = "zemora_image_preview.txt";
constexpr const char* kPostViewerResult = "zemora_shift.txt";

// Exit codes of the viewers.
constexpr int kAnswered = 0;
constexpr int kAnsweredAndRepeat = 97;
constexpr int kAbandoned = 98;
constexpr int kAbandonedAndMove = 99;
constexpr int kSwap = 100;

enum class Program { previewer, post_viewer, colour_script };

struct HelpLine {
    Program program;
    BothTexts line;
};

constexpr HelpLine kHelpLines[] = {
#define TEXT(program, english, german) {Program::program, {english, german}},
#include "driver/viewer_texts.inc"
#undef TEXT
};

/// Shows the keys of a program before it covers the console.
void show_help(Voice& voice, Program program) {
    for (const HelpLine& line : kHelpLines) {
        if (line.program == program) {
            voice.print(voice.messages().either(line.line));
        }
    }
    voice.console().flush();
}

std::string in_program_folder(const RunContext& run, const std::string& name) {
    return join_path(run.program_directory, "32/" + name);
}

/// The first of the names that is there, else the last.
std::string find_in_program_folder(const RunContext& run, std::initializer_list<const char*> names) {
    std::string path;
    for (const char* name : names) {
        path = in_program_folder(run, name);
        if (file_exists(path)) {
            break;
        }
    }
    return path;
}

std::string in_image_folder(const Pipeline& pipeline, const std::string& name) {
    return join_path(pipeline.parameters.path_of_images, name);
}

/// What an earlier run may have left under a name of the exchange; a link goes, not what it leads to.
void remove_exchange_file(const Pipeline& pipeline, const std::string& name) {
    const std::filesystem::path path = in_image_folder(pipeline, name);
    std::error_code error;
    if (!std::filesystem::is_directory(std::filesystem::symlink_status(path, error))) {
        std::filesystem::remove(path, error);
    }
}

/// Runs a viewer on the pair to its end; its exit code, or -1 with the reason reported.
int run_viewer(const Pipeline& pipeline, const PairRun& pair, const std::string& program,
               const std::vector<std::string>& numbers) {
    std::vector<std::string> call{program, pipeline.parameters.path_of_images, pair.left_relative,
                                  pair.right_relative};
    call.insert(call.end(), numbers.begin(), numbers.end());
    const ChildResult result = run_beside_console(call);
    if (!result.error.empty()) {
        pipeline.voice.tell_everywhere("   " + printable(program) + ": " + result.error + '\n');
    }
    return result.exit_code;
}

/// The answer in a result file, which may come late; nothing, with a word, when none comes.
template <class Answer>
std::optional<Answer> await_answer(const Pipeline& pipeline, const char* name,
                                   std::optional<Answer> (*parse)(std::string_view)) {
    constexpr std::chrono::milliseconds kPause{500};
    constexpr int kPauses = 20;  // ten seconds in all
    constexpr int kSettled = 4;  // pauses without change: the file is whole
    const std::string path = in_image_folder(pipeline, name);
    std::vector<std::uint8_t> latest;
    int unchanged = 0;
    for (int pauses = 0; pauses <= kPauses && unchanged < kSettled; ++pauses) {
        if (pauses > 0) {
            std::this_thread::sleep_for(kPause);
        }
        std::string reason;
        const auto bytes = read_file_whole(path, reason);
        if (!bytes || bytes->empty()) {
            continue;
        }
        if (auto answer = parse(std::string(bytes->begin(), bytes->end()))) {
            return answer;
        }
        unchanged = *bytes == latest ? unchanged + 1 : 0;
        latest = *bytes;
    }
    Voice& voice = pipeline.voice;
    voice.tell_everywhere(format_text(voice.messages().either({"%s holds no answer that can be used.\n",
                                                               "%s enthaelt keine brauchbare Antwort.\n"}),
                                      printable(path).c_str()));
    return std::nullopt;
}

void abandon(const Pipeline& pipeline, PairRun& pair, int exit_code) {
    pipeline.voice.tell_everywhere(pipeline.voice.messages().text<Msg::main_abandoned_by_user>());
    pair.status = StatusCode::abandoned;
    pair.viewer_exit_code = exit_code;
}

void list_answer(Voice& voice, const PreSelection& selection) {
    struct Row {
        BothTexts label;
        const BothTexts* unit;
        float PreSelection::*value;
    };
    static constexpr BothTexts kDegrees = {"degree", "Grad"};
    static constexpr BothTexts kPercent = {"percent", "Prozent"};
    // clang-format off
    static constexpr Row kRows[] = {
        {{"Rotation left:     ", "Drehung links:     "}, &kDegrees, &PreSelection::rotation_left},
        {{"Rotation right:    ", "Drehung rechts:    "}, &kDegrees, &PreSelection::rotation_right},
        {{"Vergence:          ", "Vergenz:           "}, &kDegrees, &PreSelection::vergence_v},
        {{"LeftImageStartx:   ", "LeftImageStartx:   "}, &kPercent, &PreSelection::left_start_x},
        {{"LeftImageWidth:    ", "LeftImageWidth:    "}, &kPercent, &PreSelection::left_width},
        {{"LeftImageStarty:   ", "LeftImageStarty:   "}, &kPercent, &PreSelection::left_start_y},
        {{"LeftImageHeight:   ", "LeftImageHeight:   "}, &kPercent, &PreSelection::left_height},
        {{"RightImageStartx:  ", "RightImageStartx:  "}, &kPercent, &PreSelection::right_start_x},
        {{"RightImageWidth:   ", "RightImageWidth:   "}, &kPercent, &PreSelection::right_width},
        {{"RightImageStarty:  ", "RightImageStarty:  "}, &kPercent, &PreSelection::right_start_y},
        {{"RightImageHeight:  ", "RightImageHeight:  "}, &kPercent, &PreSelection::right_height},
    };
    // clang-format on
    const MessageCatalogue& messages = voice.messages();
    voice.print(messages.either({"\nThe following values will be taken from the Zemora Image PreViewer:\n",
                                 "\nDie folgenden Werte werden vom Zemora Image PreViewer uebernommen:\n"}));
    for (const Row& row : kRows) {
        voice.print(format_text("%s%5.1f %s\n", messages.either(row.label),
                                static_cast<double>(selection.*row.value), messages.either(*row.unit)));
    }
}

/// The exchange, the pre-selection and the scale of the previewer go to the input.
void take_answer(Pipeline& pipeline, PairRun& pair, const PreviewerAnswer& answer) {
    ViewOrders& orders = pair.orders;
    const bool two = exchanges_files(pipeline);
    const bool has_mask = holds_depth_mask(pipeline.parameters.stereo_image_input);
    orders.has_pre_selection = true;
    orders.pre_selection = answer.selection;
    orders.left_zoom = orders.right_zoom = answer.scale;
    if (answer.swaps_views) {
        pair.swap_views = two;
        pair.inverse_input = two ? pair.inverse_input : 1 - pair.inverse_input;
        if (!has_mask) {
            orders.pre_selection = with_views_swapped(answer.selection, !two);
            std::swap(orders.rot_mir_left, orders.rot_mir_right);  // a view keeps the turn it was shown with
        }
    }
    if (pipeline.voice.verbose() > 1) {
        list_answer(pipeline.voice, orders.pre_selection);
    }
}

std::vector<std::string> previewer_numbers(const Pipeline& pipeline, const PairRun& pair) {
    ParameterSet shown = pipeline.parameters;
    const ViewOrders& orders = pair.orders;
    shown.inverse_input = pair.inverse_input;
    std::vector<std::string> numbers;
    for (const std::uint32_t word :
         previewer_words(shown, orders.pre_selection, orders.rot_mir_left, orders.rot_mir_right)) {
        numbers.push_back(format_text("%u", static_cast<unsigned>(word)));
    }
    return numbers;
}

/// Values that come from storage would only be spoilt by new ones.
bool has_stored_values(int mode) {
    return mode == 2 || std::abs(mode) == 4 || std::abs(mode) == 5;
}

/// The sides of a ratio that the user chose. A cut takes them as they are; a size stays inside what was
/// wanted of it.
void take_ratio(Pipeline& pipeline, PairRun& pair, const RatioSides& ratio) {
    const RatioSides sides = pipeline.parameters.cropp_output >= setting::cropp_output::ratio
                                 ? ratio
                                 : fit_ratio(ratio, {pair.target.work_height, pair.target.work_width});
    pair.wish.height = sides.height;
    pair.wish.width = sides.width;
}

void take_answer(Pipeline& pipeline, PairRun& pair, const PostViewerAnswer& answer,
                 const PreviewSize& shown) {
    const auto rounded = [](double value) { return static_cast<double>(static_cast<float>(value)); };
    pair.located.geometry.shape = {rounded(answer.phantogram),
                                   rounded(answer.edge_warp),
                                   answer.vertical_ax == 0.0 ? 0.0 : rounded(-answer.vertical_ax),
                                   rounded(answer.common_trapez),
                                   rounded(answer.sym_trapez),
                                   rounded(answer.trapez_scale)};
    if (const auto ratio = ratio_of_code(answer.ratio_code, shown, answer.box)) {
        take_ratio(pipeline, pair, *ratio);
    }
    take_selection(answer, pair.located.selection);
    // In the digits of a list, so that a later run that applies them gives the very same picture.
    take_selection_and_shape(as_listed(record_of(pipeline, pair)), pair.located);
    pair.inverse_output =
        answer.swaps_output ? 1 - pipeline.parameters.inverse_output : pipeline.parameters.inverse_output;
}

/// The pair ends without stores; its files are not to blame and stay where they are.
ViewerDecision end_without_answer(const Pipeline& pipeline, PairRun& pair) {
    pipeline.voice.tell_everywhere(pipeline.voice.messages().text<Msg::main_postviewer_call_failed>());
    pair.status = StatusCode::failed;
    pair.failure_told = true;
    return ViewerDecision::failed;
}

int call_post_viewer(const Pipeline& pipeline, const PairRun& pair, const ViewerPreview& preview) {
    const ParameterSet& p = pipeline.parameters;
    if (p.post_viewer_active == setting::post_viewer_active::with_bell) {
        pipeline.voice.console().bell();
    }
    show_help(pipeline.voice, Program::post_viewer);
    const RatioSides wanted =
        pair.target.free_size_below_crop_3 ? RatioSides{} : RatioSides{pair.wish.height, pair.wish.width};
    const ViewerFrame frame =
        viewer_frame(p.cropp_output, wanted, preview.shown, box_of_selection(pair.located.selection));
    const double warped_over_preview = static_cast<double>(pair.located.working.width) / preview.frame.width;
    return run_viewer(
        pipeline, pair,
        find_in_program_folder(pipeline.run, {"zemora_image_postview", "zemora_image_postview.exe"}),
        post_viewer_numbers(p, frame, preview.shown, warped_over_preview, pair.located.selection,
                            pair.mounted.deviation, pair.located.geometry.shape));
}

/// Both views side by side in the program's folder, where the script finds them.
std::string save_side_by_side(const Pipeline& pipeline, const StereoPicture& pair) {
    const int width = pair.left.width;
    const int height = pair.left.height;
    const Bitmap both = Bitmap::create(2 * width, height);
    if (!both) {
        conclude_failure(
            pipeline.voice,
            Failure::out_of_memory("7043: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (ANAGLYPH)\n"));
    }
    copy(pair.left, both.picture().part(0, 0, width, height));
    copy(pair.right, both.picture().part(width, 0, width, height));
    const std::string folder = join_path(state_directory(), "32");
    std::string reason;
    if (!make_folders(folder, reason)) {
        return folder + ": " + reason;
    }
    const std::string path = folder + "/currentpreview_cs.jpg";
    reason = encode_and_write(both, {PictureFormat::jpeg}, path);
    return reason.empty() ? reason : path + ": " + reason;
}

/// The script with its interpreter, or a program of its name; empty when there is neither.
std::vector<std::string> colour_script(const RunContext& run) {
    const std::string interpreter = find_in_program_folder(run, {"AutoIt3.exe"});
    const std::string script = find_in_program_folder(run, {"zemora_anamatrix.a3x"});
    if (file_exists(interpreter) && file_exists(script)) {
        return {interpreter, script};
    }
    const std::string program =
        find_in_program_folder(run, {"zemora_anamatrix", "zemora_anamatrix.exe", "zemora_anamatrix.a3x"});
    return file_exists(program) ? std::vector<std::string>{program} : std::vector<std::string>{};
}

}  // namespace

bool run_previewer(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    Voice& voice = pipeline.voice;
    if (p.pre_viewer_active == 0 || p.video_mode != 0 || pipeline.previewer_is_off) {
        return true;
    }
    if (has_stored_values(pair.mode)) {
        pipeline.previewer_is_off = true;
        if (voice.verbose() > 1) {
            voice.say<Msg::main_previewer_without_sense>();
        }
        return true;
    }
    remove_exchange_file(pipeline, kPreviewerResult);
    show_help(voice, Program::previewer);
    const int exit_code =
        run_viewer(pipeline, pair,
                   find_in_program_folder(pipeline.run, {"zemora_image_preview", "zemora_image_preview.exe"}),
                   previewer_numbers(pipeline, pair));
    if (exit_code == kAbandoned || exit_code == kAbandonedAndMove) {
        abandon(pipeline, pair, exit_code);
        return false;
    }
    const auto answer = exit_code == kAnswered
                            ? await_answer(pipeline, kPreviewerResult, parse_previewer_answer)
                            : std::nullopt;
    remove_exchange_file(pipeline, kPreviewerResult);
    if (answer) {
        take_answer(pipeline, pair, *answer);
    } else {
        voice.tell_everywhere(voice.messages().text<Msg::main_previewer_call_failed>());
    }
    return true;
}

ViewerDecision run_post_viewer(Pipeline& pipeline, PairRun& pair) {
    if (pipeline.parameters.post_viewer_active == 0) {
        return ViewerDecision::go_on;
    }
    for (const char* name : {kPostViewerResult, "zemora_pl.bmp.tmp", "zemora_pr.bmp.tmp"}) {
        remove_exchange_file(pipeline, name);
    }
    const auto preview = make_preview(pipeline, pair);
    if (!preview) {
        fail_to_mount(pipeline, pair, StatusCode::failed);
        return ViewerDecision::failed;
    }
    if (const std::string reason = save_preview(pipeline); !reason.empty()) {
        pipeline.voice.tell_everywhere("   " + printable(reason) + '\n');
        return end_without_answer(pipeline, pair);
    }
    const int exit_code = call_post_viewer(pipeline, pair, *preview);
    pair.stamp = stamp_text(current_seconds());
    const bool repeats = exit_code == kAnsweredAndRepeat;
    const auto answer = exit_code == kAnswered || repeats
                            ? await_answer(pipeline, kPostViewerResult, parse_post_viewer_answer)
                            : std::nullopt;
    remove_exchange_file(pipeline, kPostViewerResult);
    if (repeats) {
        pipeline.stamps_time = true;  // so that a repeat has a name of its own
    }
    if (exit_code == kAbandoned || exit_code == kAbandonedAndMove) {
        abandon(pipeline, pair, exit_code);
        return ViewerDecision::abandon;
    }
    if (exit_code == kSwap) {
        return ViewerDecision::swap;
    }
    if (!answer) {
        return end_without_answer(pipeline, pair);
    }
    take_answer(pipeline, pair, *answer, preview->shown);
    return repeats ? ViewerDecision::repeat : ViewerDecision::go_on;
}

bool calls_colour_script(const ParameterSet& p) {
    return p.anaglyph_type == setting::anaglyph_type::by_matrices && p.video_mode == 0;
}

void adjust_anaglyph_colours(Pipeline& pipeline, const StereoPicture& views) {
    const ParameterSet& p = pipeline.parameters;
    Voice& voice = pipeline.voice;
    if (!calls_colour_script(p)) {
        return;
    }
    std::vector<std::string> call = colour_script(pipeline.run);
    if (call.empty()) {
        voice.tell_everywhere(
            format_text(voice.messages().either(
                            {"   zemora_anamatrix is missing: the colours of %s are taken as they are.\n",
                             "   zemora_anamatrix fehlt: die Farben aus %s gelten, wie sie sind.\n"}),
                        printable(p.ecm_file_name).c_str()));
        return;
    }
    std::string reason = save_side_by_side(pipeline, views);
    if (reason.empty()) {
        show_help(voice, Program::colour_script);
        call.insert(call.end(), {format_text("%d", p.language), in_image_folder(pipeline, p.ecm_file_name)});
        const ChildResult result = run_beside_console(call);
        reason = result.error.empty() ? result.error : call[0] + ": " + result.error;
        pipeline.settings.colours = value_or_end(voice, read_colour_change(p, voice.messages()));
    }
    if (!reason.empty()) {
        voice.tell_everywhere("   " + printable(reason) + '\n');
    }
}

void provide_colour_file(const ParameterSet& parameters, const RunContext& run, Voice& voice) {
    const std::string file = join_path(parameters.path_of_images, parameters.ecm_file_name);
    const bool is_called = parameters.anaglyph_output != 0 && calls_colour_script(parameters);
    if (!is_called || file_exists(file) || colour_script(run).empty()) {
        return;
    }
    std::string reason;
    const auto example = read_file_whole(find_data_file("resource/zemora_colors.txt"), reason);
    if (!example || !write_file_whole(file, *example).empty()) {
        return;  // the reader tells that the file is missing
    }
    voice.tell_everywhere(
        format_text(voice.messages().either({"   %s was missing: zemora_anamatrix starts from the example.\n",
                                             "   %s fehlte: zemora_anamatrix beginnt mit dem Beispiel.\n"}),
                    printable(file).c_str()));
}

bool exchanges_files(const Pipeline& pipeline) {
    return pipeline.list.two_files && !holds_depth_mask(pipeline.parameters.stereo_image_input);
}

bool has_exchanged_views(const Pipeline& pipeline, const PairRun& pair) {
    return exchanges_files(pipeline) ? pair.exchanged != pair.swap_views
                                     : pair.inverse_input != pipeline.parameters.inverse_input;
}

}  // namespace zemora
