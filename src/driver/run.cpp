#include "driver/run.h"

#include <algorithm>

#include "config/consistency_rules.h"
#include "config/help_text.h"
#include "config/options.h"
#include "config/parameter_file.h"
#include "config/parameter_listing.h"
#include "config/parameter_table.h"
#include "depth/depth_masks.h"
#include "driver/exiftool.h"
#include "driver/failure.h"
#include "driver/invocation.h"
#include "driver/pipeline.h"
#include "driver/post_run.h"
#include "driver/settings_input.h"
#include "driver/settings_report.h"
#include "driver/video_run.h"
#include "driver/viewers.h"
#include "input/file_selection.h"
#include "platform/paths.h"
#include "platform/process_end.h"
#include "platform/user_language.h"
#include "render/picture_texts.h"
#include "report/comfort_calculator.h"
#include "report/run_report.h"
#include "report/value_rows.h"

namespace zemora {

namespace {

/// Everything of a run, in the order of its making.
struct Run {
    Run() {
        set_last_action([this] { close(); });
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() { set_last_action({}); }

    Console console;
    MessageCatalogue messages{user_speaks_german() ? Language::german : Language::english};
    ParameterSet parameters;
    Voice voice{console, messages, parameters};
    RunReport report{messages};
    RunContext context;
    ExifTool exiftool{parameters};
    ImageList list;
    bool all_mounted = true;

    [[noreturn]] static void end(int exit_code) { end_run(exit_code); }
    /// What is left to do wherever the run ends.
    void close() {
        (void)report.close();
        console.end_progress();
    }
    void wait(Severity level) { voice.wait(level); }
};

/// Help, version and calls that cannot be meant end here.
void answer_simple_calls(Run& run, const CommandLine& line) {
    if (line.wants_help) {
        run.console.print(help_text(run.messages.language()));
        run.end(kExitDone);
    }
    if (line.wants_version) {
        run.console.print(version_text());
        run.end(kExitDone);
    }
    if (line.error != CallError::none) {
        run.console.print(call_error_text(line, run.messages));
        if (early_settings(line).stop_at_error.value_or(run.parameters.stop_at_error) > 0) {
            run.console.wait_for_enter();
        }
        run.end(kExitFailure);
    }
}

/// A path on another system's drive can only be a mistake here.
[[noreturn]] void refuse_drive(Run& run, const std::string& what, bool waits) {
    run.console.print(
        printable(what) +
        run.messages.either({": a drive letter has no meaning here. Please give a path of this system.\n",
                             ": ein Laufwerksbuchstabe hat hier keine Bedeutung. Bitte einen Pfad dieses "
                             "Systems angeben.\n"}));
    if (waits) {
        run.console.wait_for_enter();
    }
    run.end(kExitFailure);
}

void refuse_drives(Run& run) {
    if (const ParameterRow* row = find_path_with_drive(run.parameters)) {
        refuse_drive(run, std::string(row->key) + " = " + value_text(*row, run.parameters),
                     run.parameters.stop_at_error > 0);
    }
}

/// The whole command line, for the usage.
struct WholeCall {
    std::vector<std::string> words;
    bool waits;  ///< What of the settings is known at the time says so.
};

WholeCall whole_call(const Run& run, const std::string& program, const std::vector<std::string>& arguments,
                     const CommandLine& line) {
    WholeCall call{{program}, early_settings(line).stop_at_error.value_or(run.parameters.stop_at_error) > 0};
    call.words.insert(call.words.end(), arguments.begin(), arguments.end());
    return call;
}

void refuse_missing(Run& run, const WholeCall& call, const std::string* word) {
    if (word != nullptr) {
        const bool is_something = !word->empty() && identity_of(join_path(working_directory(), *word));
        const char* reason =
            is_something ? run.messages.either({"%s: this is no file.\n", "%s: das ist keine Datei.\n"})
                         : run.messages.either(
                               {"%s: there is no such file or directory.\n",
                                "%s: eine solche Datei oder ein solches Verzeichnis gibt es nicht.\n"});
        const std::string shown = word->empty() ? "\"\"" : printable(*word);
        end_with_usage(run.voice, call.words, format_text(reason, shown.c_str()), call.waits);
    }
}

/// Whether a parameter file that the user did not name may bring commands: it and its folder belong
/// to the user, and nobody else can write them.
bool is_trusted(const std::string& file) {
    return is_private_to_user(file) && is_private_to_user(folder_of(join_path(working_directory(), file)));
}

void drop_untrusted_commands(Run& run, const Invocation& invocation, const ParameterSet& before_options) {
    const ParameterSet standard;
    ParameterSet& p = run.parameters;
    const bool brings_batch = !post_run_batch(before_options).empty();
    const bool brings_converter = before_options.path_of_irfanview != standard.path_of_irfanview;
    if (invocation.parameter_file_named || (!brings_batch && !brings_converter) ||
        is_trusted(invocation.parameter_file)) {
        return;
    }
    if (p.do_post_zemora == before_options.do_post_zemora) {
        p.do_post_zemora = standard.do_post_zemora;
    }
    if (p.path_of_irfanview == before_options.path_of_irfanview) {
        p.path_of_irfanview = standard.path_of_irfanview;
    }
    run.console.print(format_text(
        run.messages.either(
            {"DoPostZemora and PathofIrfanView of %s are left out: others can write that file.\n",
             "DoPostZemora und PathofIrfanView aus %s bleiben weg: andere koennen die Datei schreiben.\n"}),
        printable(invocation.parameter_file).c_str()));
}

void read_settings(Run& run, const Invocation& invocation, const CommandLine& line) {
    (void)value_or_end(run.voice, read_parameter_file(invocation.parameter_file, run.parameters, run.voice,
                                                      early_settings(line)));
    const ParameterSet before_options = run.parameters;
    apply_options(line, run.parameters, run.voice);
    drop_untrusted_commands(run, invocation, before_options);
    use_slashes_in_paths(run.parameters);
    FolderLayout layout{};
    if (invocation.form == InvocationForm::folder) {
        layout = choose_layout(invocation, run.parameters, run.voice);
    }
    if (invocation.form == InvocationForm::two_folders) {
        run.voice.say<Msg::main_two_directories_will_be_processed>();
    }
    force_values(invocation, run.parameters, layout);
    refuse_drives(run);
}

void find_directories(Run& run, const Invocation& invocation) {
    RunContext& context = run.context;
    ParameterSet& p = run.parameters;
    context.form = invocation.form;
    context.parameter_file = invocation.parameter_file;
    context.run_start = current_seconds();
    context.program_directory = program_directory();
    context.working_directory = working_directory();
    const std::string parameter_directory =
        invocation.parameter_file.empty()
            ? context.working_directory
            : folder_of(join_path(context.working_directory, invocation.parameter_file));
    const std::string& root = p.root_directory == 2   ? context.working_directory
                              : p.root_directory == 1 ? context.program_directory
                                                      : parameter_directory;
    p.path_of_images = join_path(root, p.path_of_images);
}

/// From this value of `GraphicalInterface` on a front end asks for the calibration image.
constexpr int kCalibrationImage = 1000;

void look_for_exiftool(Run& run) {
    const ParameterSet& p = run.parameters;
    const bool shows_headline = wants_headline(p.image_text) || wants_headline(p.caption_text);
    if (p.meta_transfer != 0 || !p.exif_copyright.empty() || uses_record(p.estimate_geometry) ||
        shows_headline || p.graphical_interface >= kCalibrationImage) {
        run.exiftool.require(run.voice);
    }
}

/// Pictures of each single frame are for those alone who ask for them, and a film that nobody says a word
/// about becomes one with its views side by side.
void settle_film_outputs(Run& run) {
    ParameterSet& p = run.parameters;
    if (derived_video_mode(p) != setting::video_mode::video) {
        return;
    }
    const auto drop = [&p](int& output, const char* key) {
        if (!p.given.contains(key)) {
            output = 0;
        }
    };
    drop(p.left_right_output, "LeftRightOutput");
    drop(p.stereo_output, "StereoOutput");
    drop(p.anaglyph_output, "AnaglyphOutput");
    drop(p.extra_output, "ExtraOutput");
    const bool has_stills =
        p.left_right_output != 0 || p.stereo_output != 0 || p.anaglyph_output != 0 || p.extra_output != 0;
    if (!has_stills && p.html_images != 0 && !p.given.contains("HtmlImages")) {
        p.html_images = setting::html_images::thumbnails;
    }
    if (p.given.contains("VideoOutput") || has_stills) {
        return;
    }
    p.video_output = setting::video_output::side_by_side;
    if (run.voice.verbose() > 0) {
        run.voice.print(run.messages.either(
            {"The film is written with its views side by side (VideoOutput = 2). Pictures of its frames are "
             "written where LeftRightOutput, StereoOutput, AnaglyphOutput or ExtraOutput ask for them.\n",
             "Der Film wird mit nebeneinander liegenden Teilbildern geschrieben (VideoOutput = 2). Bilder "
             "seiner Frames werden geschrieben, wo LeftRightOutput, StereoOutput, AnaglyphOutput oder "
             "ExtraOutput sie verlangen.\n"}));
    }
}

void settle_parameters(Run& run) {
    RuleSurroundings surroundings;
    surroundings.program_folder = run.context.program_directory;
    surroundings.parameter_file = run.context.parameter_file;
    surroundings.can_ask = run.console.can_ask();
    settle_film_outputs(run);
    succeed_or_end(run.voice, apply_consistency_rules(run.parameters, surroundings, run.voice));
}

[[noreturn]] void refuse_run(Run& run, const BothTexts& text) {
    run.console.print(run.messages.either(text));
    run.wait(Severity::error);
    run.end(kExitFailure);
}

/// The calibration image and nothing else.
void make_calibration_image(Run& run) {
    constexpr int kLeastWidth = 1800;  // pixels
    const ParameterSet& p = run.parameters;
    if (p.graphical_interface < kCalibrationImage) {
        return;
    }
    succeed_if_possible(
        run.voice, write_anaglyph_test_image(
                       std::max(p.output_width, kLeastWidth), p.path_of_images,
                       p.graphical_interface - kCalibrationImage, run.voice,
                       [&](const std::string& file) { run.exiftool.add_standard_profile(file, run.voice); }));
    run.console.wait_for_enter();
    run.end(kExitFailure);
}

/// Lists of image sequences are written; they are not made into videos.
void refuse_sequence(Run& run) {
    if (run.parameters.video_mode == setting::video_mode::images_as_video) {
        refuse_run(run, {"Image sequences are not made into videos by this version.\n",
                         "Bildfolgen werden von dieser Version nicht zu Videos gemacht.\n"});
    }
}

/// The page that the pairs of the report hand their values to.
void write_calculator(Run& run) {
    const Language language = run.messages.language();
    const std::string page = join_path(run.parameters.path_of_images, calculator_file_name(language));
    if (const std::string reason = write_comfort_calculator(page, language); !reason.empty()) {
        run.voice.tell_everywhere(
            format_text(run.messages.either({"The comfort calculator could not be written: %s\n",
                                             "Der Comfort Calculator konnte nicht geschrieben werden: %s\n"}),
                        printable(reason).c_str()));
    }
}

void open_reports(Run& run) {
    run.context.stamp = stamp_text(run.context.run_start);
    if (run.parameters.report_mode <= 0) {
        return;
    }
    const ParameterSet& p = run.parameters;
    const bool links_calculator = p.verbose_mode > 1 && p.video_mode == 0;
    const std::string failed =
        run.report.open(report_names(report_source(p, run.context.stamp)), links_calculator);
    if (!failed.empty()) {
        run.console.print("Zemora: " + printable(failed) +
                          run.messages.text<Msg::main_report_cannot_be_opened>());
        run.wait(Severity::error);
        run.end(kExitFailure);
    }
    run.voice.set_report(&run.report);
    if (links_calculator) {
        write_calculator(run);
    }
}

/// The hint that goes with an empty list, by the way the input was looked for.
std::string empty_list_hint(const Run& run) {
    const ParameterSet& p = run.parameters;
    const MessageCatalogue& messages = run.messages;
    const bool two = takes_two_files(p.stereo_image_input);
    switch (p.input_mode) {
        case setting::input_mode::single: return {};
        case setting::input_mode::by_names:
        case setting::input_mode::by_names_in_tree:
            return two ? messages.text<Msg::main_searches_l_and_r_files>()
                       : messages.text<Msg::main_searches_s_files>();
        case setting::input_mode::from_list:
            return collect_options(p).applies_stored_values
                       ? messages.text<Msg::main_no_correction_values_in_list>()
                       : messages.text<Msg::main_marks_in_list_prevent_mounting>();
        default:
            return messages.text<Msg::main_searched_files_with_ending>() + printable(p.image_type) + '\n';
    }
}

void collect_input(Run& run) {
    const ParameterSet& p = run.parameters;
    const auto make_depth_masks = [&run](const DepthGapPlan& plan, const auto& photos, const auto& masks) {
        return fill_depth_gaps(plan, photos, masks, run.voice);
    };
    run.list = value_or_end(run.voice, build_image_list(collect_options(p), run.voice, make_depth_masks));
    if (p.write_data_base == setting::write_data_base::list_only && run.list.count() > 0) {
        run.voice.say<Msg::main_only_list_written>();
        run.wait(Severity::error);
        run.end(kExitDone);
    }
    if (run.list.count() == 0) {
        run.voice.tell_everywhere(run.messages.text<Msg::main_no_images_to_mount>() +
                                  printable(p.path_of_images) + '\n');
        // What a list lacks is said on the console alone.
        const std::string hint = empty_list_hint(run);
        if (p.input_mode == setting::input_mode::from_list) {
            run.console.print(hint);
        } else if (!hint.empty()) {
            run.voice.tell_everywhere(hint);
        }
        run.wait(Severity::error);
        run.end(kExitFailure);
    }
}

/// Without what surrounds it on the console: equal signs, blanks, line ends.
std::string without_rule(const std::string& text) {
    constexpr const char* kSurroundings = "= \n";
    const std::size_t first = text.find_first_not_of(kSurroundings);
    return first == std::string::npos ? std::string()
                                      : text.substr(first, text.find_last_not_of(kSurroundings) - first + 1);
}

void tell_end(Run& run, int processed) {
    const MessageCatalogue& messages = run.messages;
    const std::string rule = messages.text<Msg::main_separator>();
    const std::string count = messages.text<Msg::main_finished_processed_images>() +
                              format_text("%d/%d\n", processed, run.list.count());
    const std::string banner = messages.text<Msg::main_report_end_banner>();
    run.voice.print_and_report(rule + count + rule + '\n' + rule + banner + rule);
    run.voice.report_html("<hr>\n" + html_paragraph(without_rule(count)) +
                          html_paragraph(without_rule(banner)));
    const std::string broken = run.report.close();
    run.voice.set_report(nullptr);
    if (!broken.empty()) {
        run.console.print(format_text(
            run.messages.either({"The report %s could not be written completely.\n",
                                 "Der Bericht %s konnte nicht vollstaendig geschrieben werden.\n"}),
            printable(broken).c_str()));
    }
}

/// Nobody shall wait for a video that does not come.
void tell_missing_shows(Run& run) {
    if (run.parameters.make_av != 0) {
        run.voice.tell_everywhere(run.messages.either(
            {"MakeAV: this version makes no video show of the images; they are stored as pictures.\n",
             "MakeAV: diese Version macht keine Bilderschau als Video; die Bilder werden einzeln "
             "gespeichert.\n"}));
    }
}

void mount_all(Run& run) {
    provide_colour_file(run.parameters, run.context, run.voice);
    Pipeline pipeline(run.parameters, run.context, run.list, run.exiftool, run.voice);
    if (run.parameters.video_mode == setting::video_mode::video) {
        run_video(pipeline);
    } else {
        run_image_pipeline(pipeline);
    }
    run.all_mounted = pipeline.mounted == run.list.count();
    if (const std::string batch = post_run_batch(run.parameters); !batch.empty()) {
        start_batch(batch_script(batch, pipeline.last_stored), run.voice);
    }
    tell_end(run, pipeline.processed);
    run.wait(Severity::information);
}

/// From the words of the call to the end of the run; its exit code.
int run_through(Run& run, const std::string& program, const std::vector<std::string>& arguments) {
    const CommandLine line = read_command_line(
        arguments, [](const std::string& path) { return file_exists(path) || is_directory(path); });
    if (const EarlySettings early = early_settings(line); early.language) {
        run.messages.set_language(*early.language);
    }
    answer_simple_calls(run, line);
    const auto invocation = classify_call(line.positional);
    const WholeCall call = whole_call(run, program, arguments, line);
    if (!invocation) {
        end_with_usage(run.voice, call.words, "", call.waits);
    }
    if (const std::string* word = find_word_with_drive(*invocation)) {
        refuse_drive(run, *word, call.waits);
    }
    refuse_missing(run, call, find_missing_parameter_file(*invocation));
    announce_call(*invocation, run.voice);
    read_settings(run, *invocation, line);
    find_directories(run, *invocation);
    refuse_missing(run, call, find_missing_picture(*invocation, run.parameters));
    look_for_exiftool(run);
    make_calibration_image(run);
    settle_parameters(run);
    list_parameters(run.parameters, run.voice);
    open_reports(run);
    report_parameters(run.parameters, run.voice);
    if (run.parameters.auto_ghost_bust != 0) {
        succeed_if_possible(run.voice, write_alignment_image(alignment_options(run.parameters), run.voice));
    }
    collect_input(run);
    refuse_sequence(run);
    tell_missing_shows(run);
    mount_all(run);
    return run.parameters.exit_status != 0 && !run.all_mounted ? kExitNotAllMounted : kExitDone;
}

}  // namespace

int run_zemora(const std::string& program, const std::vector<std::string>& arguments) {
    Run run;
    try {
        return run_through(run, program, arguments);
    } catch (const EndOfRun& end) {
        run.close();
        return end.exit_code;
    }
}

}  // namespace zemora
