#include "input/moved_files.h"

#include "platform/directory_walk.h"
#include "platform/move_file.h"
#include "platform/paths.h"

namespace zemora {

namespace {

// Values of `RenameOrphans` and `RenameRefused`.
constexpr int kToFolder = 1;
constexpr int kMarkName = 2;
constexpr int kUnderscoreFirst = 3;
constexpr int kLetterFirst = 4;

/// The letter of the view folder in which the file stands; 0 when it is in none.
char view_folder_letter(const std::string& file) {
    const std::string folder = lower_case(bare_name_of(folder_of(file)));
    const bool is_view = folder == "l" || folder == "r" || folder == "s";
    return is_view ? folder[0] : '\0';
}

/// The folder beside the file's own, called by the view and `kind`.
std::string in_sibling_folder(const std::string& file, char letter, char kind) {
    const std::string folder = path_in(folder_of(folder_of(file)), std::string{letter, kind});
    return path_in(folder, bare_name_of(file));
}

/// "_lo" and the like before the suffix.
std::string with_marked_name(const std::string& file, char letter, char kind) {
    return without_suffix(file) + '_' + letter + kind + suffix_of(file);
}

std::string with_name_start(const std::string& file, const char* start) {
    return path_in(folder_of(file), start + bare_name_of(file));
}

void tell_staying(const Voice& voice, const std::string& file, const std::string& reason) {
    voice.tell_everywhere(format_text(voice.messages().either("The file %s stays where it is: %s\n",
                                                              "Die Datei %s bleibt, wo sie ist: %s\n"),
                                      printable(file).c_str(), reason.c_str()));
}

void tell_staying_without_folder(const Voice& voice, const std::string& file) {
    tell_staying(
        voice, file,
        voice.messages().either("its folder is none of l, r and s", "ihr Ordner ist keiner von l, r und s"));
}

void move(const Voice& voice, const std::string& from, const std::string& to) {
    std::string reason;
    if (!make_folders(folder_of(to), reason)) {
        tell_staying(voice, from, printable(folder_of(to)) + ": " + reason);
        return;
    }
    const MoveOutcome outcome = move_without_replacing(from, to);
    if (!outcome.is_done()) {
        tell_staying(voice, from, printable(to) + ": " + outcome.reason);
    } else if (voice.verbose() > 1) {
        voice.tell_everywhere(
            voice.messages().text<Msg::files_input_renaming>(printable(from), printable(to)));
    }
}

}  // namespace

void rename_orphan(const ParameterSet& parameters, const Voice& voice, const std::string& file,
                   FileSide side) {
    constexpr char kOrphan = 'o';
    const char letter = static_cast<char>(side);
    if (parameters.rename_orphans != 0 && view_folder_letter(file) == '\0') {
        tell_staying_without_folder(voice, file);
        return;
    }
    switch (parameters.rename_orphans) {
        case kToFolder: move(voice, file, in_sibling_folder(file, letter, kOrphan)); break;
        case kMarkName: move(voice, file, with_marked_name(file, letter, kOrphan)); break;
        case kUnderscoreFirst: move(voice, file, with_name_start(file, "_")); break;
        case kLetterFirst: move(voice, file, with_name_start(file, "z")); break;
        default: break;
    }
}

void rename_refused_file(const ParameterSet& parameters, const Voice& voice, const std::string& file,
                         FileSide side) {
    constexpr char kRefused = 'u';
    // With exchanged views the folder, and not the view, says where the file belongs.
    const char folder = view_folder_letter(file);
    const char letter = folder == '\0' ? static_cast<char>(side) : folder;
    if (parameters.rename_refused == kMarkName) {
        move(voice, file, with_marked_name(file, letter, kRefused));
    } else if (parameters.rename_refused == kToFolder && folder == '\0') {
        tell_staying_without_folder(voice, file);
    } else if (parameters.rename_refused == kToFolder) {
        move(voice, file, in_sibling_folder(file, letter, kRefused));
    }
}

void move_quit_file(const ParameterSet& /*parameters*/, const Voice& voice, const std::string& file,
                    FileSide side) {
    const std::string folder = path_in(folder_of(file), std::string{static_cast<char>(side), 'q'});
    move(voice, file, path_in(folder, bare_name_of(file)));
}

}  // namespace zemora
