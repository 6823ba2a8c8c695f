#include "driver/exiftool.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "config/text_lines.h"
#include "input/mpo_sizes.h"
#include "input/tiff_directory.h"
#include "platform/child_process.h"
#include "platform/console.h"
#include "platform/file_times.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "platform/temp_folder.h"
#include "render/cmyk.h"
#include "render/mpo_profile.h"

namespace zemora {

namespace {

/// Follows each answer of the dialog, on its output with the exit status of the command before it.
constexpr std::string_view kAnswerMark = "{zemora-status ";
constexpr std::string_view kErrorsMark = "{zemora-errors";
constexpr std::string_view kAnswerEnd = " zemora-end}\n";

/// A name that cannot be taken for an option.
std::string plain_name(const std::string& path) {
    return path.empty() || path.front() != '-' ? path : "./" + path;
}

/// A name for arguments that take "%d" and the like for parts of another name, and know no way to
/// write the sign itself.
std::string pattern_name(const std::string& path) {
    return path.find('%') == std::string::npos
               ? plain_name(path)
               : alias_in_temporary_folder(join_path(working_directory(), path));
}

std::string first_line(const std::vector<std::uint8_t>& output) {
    const auto end = std::find(output.begin(), output.end(), '\n');
    return {output.begin(), end};
}

/// The line of an error, else the first one of all, without the name of the file behind it.
std::string sentence_of(const std::string& text, const std::string& path) {
    const std::size_t error = text.find("Error: ");
    const std::size_t start = error == std::string::npos ? text.find_first_not_of('\n') : error;
    if (start == std::string::npos) {
        return {};
    }
    std::string line = text.substr(start, text.find('\n', start) - start);
    const std::string tail = " - " + path;
    if (line.size() > tail.size() && line.compare(line.size() - tail.size(), tail.size(), tail) == 0) {
        line.resize(line.size() - tail.size());
    }
    return line;
}

/// Where exiftool writes the new form of a file.
std::string left_over_name(const std::string& path) {
    return path + "_exiftool_tmp";
}

constexpr const char* kStandardProfile = "sRGB.icc";
constexpr const char* kWideProfile = "AdobeCompatible.icc";

/// Asks for the colour profile and, behind it, for what Exif says of the colours.
std::vector<std::string> profile_request(const std::string& source) {
    return {"-icc_profile", "-EXIF:InteropIndex", "-EXIF:ColorSpace", "-n", "-b", plain_name(source)};
}

/// The colours of a picture's pixels.
struct SourceColours {
    std::vector<std::uint8_t> profile;             ///< Of red, green and blue; empty without one.
    const char* known_profile = kStandardProfile;  ///< Stands in for it; null where nobody knows the space.
};

/// From the answer to `profile_request`. Exif knows sRGB ("R98", 1) and Adobe RGB ("R03"; some cameras write
/// 2 as the colour space). A colour space without calibration (65535) and without "R03" can be any.
SourceColours source_colours(const std::vector<std::uint8_t>& answer) {
    constexpr std::size_t kProfileHead = 128;
    constexpr std::size_t kSpacePlace = 16;
    constexpr std::size_t kSignPlace = 36;
    const std::string_view text(reinterpret_cast<const char*>(answer.data()), answer.size());
    if (answer.size() < kProfileHead || text.substr(kSignPlace, 4) != "acsp") {
        const bool is_wide = text.starts_with("R03") || text == "2" || text == "R982";
        return {{}, is_wide ? kWideProfile : text == "65535" ? nullptr : kStandardProfile};
    }
    std::size_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        size = size << 8U | answer[i];
    }
    size = std::min(size, answer.size());
    if (text.substr(kSpacePlace, 4) != "RGB ") {
        return {};
    }
    return {{answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(size)}};
}

/// Whether a stored file has the colours of a printer.
bool holds_inks(const std::string& path) {
    std::string reason;
    const auto file = read_file_whole(path, reason);
    return file && tiff_layout(*file).inks;
}

const char* record_tag(InputClass input_class) {
    return input_class == InputClass::tiff ? "-IPTC:SpecialInstructions" : "-comment";
}

}  // namespace

int rot_mir_of_orientation(int orientation) {
    static constexpr std::array kCodes{0, 0, 4, 2, 6, 7, 3, 5, 1};  // orientation 0 (none) to 8
    return orientation >= 1 && orientation < static_cast<int>(kCodes.size())
               ? kCodes[static_cast<std::size_t>(orientation)]
               : 0;
}

ExifTool::ExifTool(const ParameterSet& parameters)
    : parameters_(parameters), run_start_(std::time(nullptr)) {}

void ExifTool::require(Notes& notes) {
    // Started now, it is ready when the first picture is stored.
    if (!is_available()) {
        notes.say<Msg::main_exiftool_missing>();
        notes.wait(Severity::warning);
    }
}

bool ExifTool::is_available() {
    const std::lock_guard lock(mutex_);
    return find();
}

bool ExifTool::find() {
    if (!looked_for_) {
        looked_for_ = true;
        program_ = find_program("exiftool.exe");
        if (!program_.empty()) {
            (void)dialog_.start({program_, "-stay_open", "True", "-@", "-"}, "-stay_open\nFalse\n");
        }
    }
    return !program_.empty();
}

bool ExifTool::send(const std::vector<std::string>& arguments) {
    const auto has_line_end = [](const std::string& text) { return text.find('\n') != std::string::npos; };
    if (!dialog_.is_running() || std::any_of(arguments.begin(), arguments.end(), has_line_end)) {
        return false;
    }
    std::string request;
    for (const std::string& argument : arguments) {
        request += argument + '\n';
    }
    request += "-q\n-q\n-echo3\n" + std::string(kAnswerMark) + "${status}" + std::string(kAnswerEnd);
    request += "-echo4\n" + std::string(kErrorsMark) + std::string(kAnswerEnd) + "-execute\n";
    return dialog_.write(request);
}

std::optional<ExifTool::Answer> ExifTool::receive() {
    Answer answer;
    std::vector<std::uint8_t> errors;
    if (!dialog_.read_until(kAnswerEnd, answer.output, &errors)) {
        return std::nullopt;
    }
    const auto mark =
        std::find_end(answer.output.begin(), answer.output.end(), kAnswerMark.begin(), kAnswerMark.end());
    const std::string status(mark, answer.output.end());
    answer.exit_code = std::atoi(status.c_str() + kAnswerMark.size());
    answer.output.erase(mark, answer.output.end());
    answer.errors.assign(errors.begin(), errors.end());
    answer.errors.resize(std::min(answer.errors.rfind(kErrorsMark), answer.errors.size()));
    return answer;
}

ExifTool::Answer ExifTool::run_alone(const std::vector<std::string>& arguments) const {
    std::vector<std::string> call{program_};
    call.insert(call.end(), arguments.begin(), arguments.end());
    ChildResult result = run_child_and_keep_errors(call);
    return {result.exit_code, std::move(result.output),
            result.error + std::string(result.errors.begin(), result.errors.end())};
}

ExifTool::Answer ExifTool::run(const std::vector<std::string>& arguments) {
    finish();
    flush_console();
    if (send(arguments)) {
        if (auto answer = receive()) {
            return *answer;
        }
    }
    return run_alone(arguments);  // also when the process has gone
}

void ExifTool::start(const std::vector<std::string>& arguments, std::function<void(const Answer&)> done) {
    if (send(arguments)) {
        pending_.push_back({arguments, std::move(done)});
    } else {
        finish();
        done(run_alone(arguments));
    }
}

void ExifTool::finish() {
    while (!pending_.empty()) {
        const Pending next = std::move(pending_.front());
        pending_.pop_front();
        const auto answer = receive();
        next.done(answer ? *answer : run_alone(next.arguments));
    }
}

ExifTool::Answer ExifTool::read(const std::string& path, const std::vector<std::string>& arguments,
                                Notes& notes) {
    if (!find()) {
        return {};
    }
    Answer answer = run(arguments);
    tell_unreadable(path, answer, notes);
    return answer;
}

void ExifTool::tell_unreadable(const std::string& path, const Answer& answer, Notes& notes) {
    // A form that exiftool does not know has no tags, which is no failure.
    const bool is_known = answer.errors.find("Unknown file type") == std::string::npos;
    if (answer.exit_code != 0 && is_known && unreadable_.insert(path).second) {
        tell_failure(path, answer, notes);
    }
}

bool ExifTool::settle(TransferLog& log, Notes& notes) {
    const std::lock_guard lock(mutex_);
    finish();
    log.notes.tell(notes);
    return !std::exchange(log.has_failure, false);
}

void ExifTool::tell_failure(const std::string& path, const Answer& answer, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    std::string text = messages.text<Msg::main_exiftool_call_failed>() + "   " + printable(path);
    if (const std::string sentence = sentence_of(answer.errors, plain_name(path)); !sentence.empty()) {
        text += ": " + printable(utf8_text(sentence));
    }
    notes.tell_everywhere(text + '\n');
    if (const std::string left_over = left_over_name(path); file_exists(left_over)) {
        notes.tell_everywhere(format_text(
            messages.either(
                {"   Another run was broken off, or is at work: please remove %s when nothing works on it.\n",
                 "   Ein anderer Lauf wurde abgebrochen oder arbeitet noch: bitte %s loeschen, wenn nichts "
                 "damit "
                 "arbeitet.\n"}),
            printable(left_over).c_str()));
    }
}

void ExifTool::remove_left_over(const std::string& path, Notes& notes) const {
    const std::string left_over = left_over_name(path);
    if (is_file_older_than(left_over, run_start_) && std::remove(left_over.c_str()) == 0) {
        notes.tell_everywhere(format_text(
            notes.messages().either({"   %s was left by a run that was broken off, and is removed.\n",
                                     "   %s ist von einem abgebrochenen Lauf uebrig und wird geloescht.\n"}),
            printable(left_over).c_str()));
    }
}

int ExifTool::read_orientation(const std::string& path, Notes& notes) {
    const std::lock_guard lock(mutex_);
    const Answer answer =
        read(path, {"-b", "-exif:Orientation", "-n", "-q", "-q", "-fast", plain_name(path)}, notes);
    const int value = std::atoi(first_line(answer.output).c_str());
    constexpr int kLastOrientation = 8;
    return value >= 1 && value <= kLastOrientation ? value : 0;
}

std::string ExifTool::read_software(const std::string& path, Notes& notes) {
    const std::lock_guard lock(mutex_);
    const Answer answer = read(path, {plain_name(path), "-Exif:Software"}, notes);
    return answer.exit_code == 0 ? first_line(answer.output) : std::string();
}

std::string ExifTool::read_headline(const std::string& path, Notes& notes) {
    const std::lock_guard lock(mutex_);
    // Many programs write UTF-8 without saying so; what is none comes through as it stands in the file.
    const Answer answer =
        read(path, {"-charset", "iptc=UTF8", "-IPTC:Headline", "-fast", "-s", "-s", "-s", plain_name(path)},
             notes);
    return answer.exit_code == 0 ? utf8_text(first_line(answer.output)) : std::string();
}

std::string ExifTool::read_maker(const std::string& path, Notes& notes) {
    const std::lock_guard lock(mutex_);
    const Answer answer =
        read(path, {"-EXIF:Make", "-e", "-s", "-n", plain_name(path), "-q", "-q", "-fast"}, notes);
    return answer.exit_code == 0 ? first_line(answer.output) : std::string();
}

std::vector<std::uint8_t> ExifTool::read_binary(const std::string& path, const std::string& tag,
                                                Notes& notes) {
    const std::lock_guard lock(mutex_);
    Answer answer = read(path, {"-b", '-' + tag, plain_name(path), "-q", "-q"}, notes);
    return answer.exit_code == 0 ? std::move(answer.output) : std::vector<std::uint8_t>();
}

void ExifTool::copy_orientation(const std::string& source, const std::string& target, Notes& notes) {
    const std::lock_guard lock(mutex_);
    remove_left_over(target, notes);
    const Answer answer = run({"-n", "-tagsfromfile", pattern_name(source), "-exif:orientation",
                               "-overwrite_original", "-q", "-q", "-fast", plain_name(target)});
    if (answer.exit_code != 0) {
        tell_failure(target, answer, notes);
    }
}

void ExifTool::add_standard_profile(const std::string& path, Notes& notes) {
    const std::lock_guard lock(mutex_);
    const std::string profile = find_data_file(kStandardProfile);
    if (profile.empty() || !find()) {
        return;
    }
    remove_left_over(path, notes);
    const Answer answer =
        run({"-ICC_Profile<=" + pattern_name(profile), "-overwrite_original", "-q", "-q", plain_name(path)});
    if (answer.exit_code != 0) {
        tell_failure(path, answer, notes);
    }
}

std::optional<std::string> ExifTool::read_record(const std::string& path, InputClass input_class,
                                                 Notes& notes) {
    const std::lock_guard lock(mutex_);
    const Answer answer =
        read(path, {record_tag(input_class), "-fast", "-s", "-s", "-s", plain_name(path)}, notes);
    if (answer.exit_code != 0) {
        return std::nullopt;
    }
    return first_line(answer.output);
}

bool ExifTool::write_record(const std::string& path, InputClass input_class, const std::string& text,
                            Notes& notes) {
    const std::lock_guard lock(mutex_);
    const auto first = input_class == InputClass::tiff ? std::nullopt : first_picture_of(path);
    Answer answer = find() ? run({record_tag(input_class) + ('=' + text), "-fast", "-s", "-s", "-s",
                                  "-overwrite_original", "-q", plain_name(path)})
                           : Answer{};
    if (answer.exit_code == 0 && first) {
        answer.errors = settle_first_size(path, first);
        answer.exit_code = answer.errors.empty() ? 0 : -1;
    }
    if (answer.exit_code != 0) {
        tell_failure(path, answer, notes);
    }
    return answer.exit_code == 0;
}

void ExifTool::keep_profile(const std::string& source, const Answer& answer, Notes& notes) {
    tell_unreadable(source, answer, notes);
    const SourceColours colours = source_colours(answer.output);
    std::string file =
        colours.known_profile == nullptr ? std::string() : find_data_file(colours.known_profile);
    if (!colours.profile.empty()) {
        const std::string fetched = temporary_folder() + format_text("/temp%d.icc", fetched_profiles_++);
        if (write_file_whole(fetched, colours.profile).empty()) {
            file = fetched;
        }
    }
    profile_files_.emplace(source, file);
}

void ExifTool::prefetch_profile(const std::string& source, TransferLog& log) {
    const std::lock_guard lock(mutex_);
    if (find()) {
        start(profile_request(source),
              [this, source, &log](const Answer& answer) { keep_profile(source, answer, log.notes); });
    }
}

std::vector<std::string> ExifTool::profile_arguments(const std::string& source, const std::string& target,
                                                     Notes& notes) {
    constexpr int kCmykByFormula = 8;
    constexpr int kCmykByProfile = 9;
    const int format = parameters_.output_format;
    if ((format == kCmykByFormula || format == kCmykByProfile) && holds_inks(target)) {
        const std::string inks =
            format == kCmykByProfile ? cmyk_profile_path(parameters_.cmyk_profile) : std::string();
        return inks.empty() ? std::vector<std::string>()
                            : std::vector<std::string>{"-ICC_Profile<=" + pattern_name(inks)};
    }
    if (!profile_files_.contains(source)) {
        finish();
    }
    if (!profile_files_.contains(source)) {
        keep_profile(source, run(profile_request(source)), notes);
    }
    const std::string& file = profile_files_[source];
    return file.empty() ? std::vector<std::string>()
                        : std::vector<std::string>{"-ICC_Profile<=" + pattern_name(file)};
}

void ExifTool::start_transfer(const std::string& source, const std::string& target,
                              const TagPermissions& permissions, const SoftwareTagValues& values,
                              bool is_extra_output, TransferLog& log, Notes& notes) {
    const std::lock_guard lock(mutex_);
    constexpr int kMultiPicture = 5;
    const bool is_multi_picture = is_extra_output && parameters_.extra_output == kMultiPicture;
    const bool wanted = parameters_.meta_transfer != 0;
    std::vector<std::string> arguments;
    const auto add = [&](std::initializer_list<std::string> more) {
        arguments.insert(arguments.end(), more.begin(), more.end());
    };
    const bool has_resolution = parameters_.dots_per_inch_x != 0 || parameters_.dots_per_inch_y != 0;
    const bool has_work = (wanted && (permissions.colour_profile_ok || permissions.exif_ok)) ||
                          (permissions.tags_ok && !parameters_.exif_copyright.empty()) ||
                          (permissions.exif_ok && has_resolution);
    if (!has_work || !find()) {
        return;
    }
    if (wanted && permissions.colour_profile_ok) {
        arguments = profile_arguments(source, target, notes);
    }
    if (wanted && permissions.exif_ok) {
        if (notes.verbose() > 0) {
            notes.print("   - and now EXIF operation... \n");
        }
        add({"-tagsfromfile", pattern_name(source), "-ThumbnailImage=", "-EXIF:All"});
        if (is_multi_picture) {
            add({"--EXIF:ImageWidth", "--EXIF:ImageHeight", "--EXIF:ExifImageWidth", "--EXIF:ExifImageHeight",
                 "-IPTC:All", "-XMP:All="});
        } else {
            add({"-IPTC:All", "-XMP:All"});
        }
        add({"-IPTC:CodedCharacterSet"});  // not among all; without it texts become Latin letters and "?"
        // Where the views were turned upright, the source's orientation would turn any product once more.
        if (!permissions.keeps_orientation) {
            add({"-exif:orientation=1"});
        }
        add({"-n"});
        add({format_text("-exif:software=zemora 0.9i4: nearpoint=%3d, farpoint=%3d, deviation=%3d",
                         values.near_point, values.far_point, values.deviation)});
    }
    if (!parameters_.exif_copyright.empty() && permissions.tags_ok) {
        add({"-Exif:Copyright=" + parameters_.exif_copyright});
    }
    if (permissions.exif_ok && parameters_.dots_per_inch_x != 0) {
        add({format_text("-Exif:XResolution=%d", parameters_.dots_per_inch_x)});
    }
    if (permissions.exif_ok && parameters_.dots_per_inch_y != 0) {
        add({format_text("-Exif:YResolution=%d", parameters_.dots_per_inch_y)});
    }
    if (arguments.empty()) {
        return;
    }
    add({plain_name(target), "-overwrite_original", "-q", "-q", "-fast"});
    remove_left_over(target, notes);
    start(arguments, [target, is_multi_picture, &log](const Answer& answer) {
        std::string reason = is_multi_picture ? settle_first_size(target, std::nullopt) : std::string();
        if (is_multi_picture && reason.empty()) {
            reason = share_profile(target);
        }
        if (answer.exit_code != 0) {
            tell_failure(target, answer, log.notes);
        } else if (!reason.empty()) {
            tell_failure(target, {answer.exit_code, {}, reason}, log.notes);
        }
        log.has_failure = log.has_failure || answer.exit_code != 0 || !reason.empty();
    });
}

void ExifTool::forget_files(std::initializer_list<std::string> sources) {
    const std::lock_guard lock(mutex_);
    finish();
    const std::string fetched = temporary_folder() + "/temp";
    for (const std::string& source : sources) {
        const auto known = profile_files_.find(source);
        if (known == profile_files_.end()) {
            continue;
        }
        if (known->second.starts_with(fetched)) {
            std::remove(known->second.c_str());
        }
        profile_files_.erase(known);
    }
}

}  // namespace zemora
