#include "input/moved_files.h"

#include <cerrno>
#include <cstring>

#include "config/setting_values.h"
#include "platform/console.h"
#include "platform/directory_walk.h"
#include "platform/move_file.h"
#include "platform/paths.h"

namespace zemora {

namespace {

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

void tell_staying(Notes& notes, const std::string& file, const std::string& reason) {
    notes.tell_everywhere(format_text(notes.messages().either({"The file %s stays where it is: %s\n",
                                                               "Die Datei %s bleibt, wo sie ist: %s\n"}),
                                      printable(file).c_str(), reason.c_str()));
}

void tell_staying_without_folder(Notes& notes, const std::string& file) {
    tell_staying(notes, file,
                 notes.messages().either(
                     {"its folder is none of l, r and s", "ihr Ordner ist keiner von l, r und s"}));
}

struct Move {
    std::string from;
    std::string to;
};

void tell_move(Notes& notes, const Move& move) {
    if (notes.verbose() > 1) {
        notes.tell_everywhere(
            notes.messages().text<Msg::files_input_renaming>(printable(move.from), printable(move.to)));
    }
}

/// Why the move cannot be made, as far as that can be seen before; empty when it can.
std::string obstacle_of(const Move& move) {
    std::string reason;
    if (!make_folders(folder_of(move.to), reason)) {
        return printable(folder_of(move.to)) + ": " + reason;
    }
    return name_is_taken(move.to) ? printable(move.to) + ": " + std::strerror(EEXIST) : std::string();
}

/// Does the moves; the number of those done is smaller than theirs when one has failed, with its `reason`.
std::size_t move_in_turn(const std::vector<Move>& moves, std::string& reason) {
    for (std::size_t done = 0; done < moves.size(); ++done) {
        const MoveOutcome outcome = move_without_replacing(moves[done].from, moves[done].to);
        if (!outcome.is_done()) {
            reason = printable(moves[done].to) + ": " + outcome.reason;
            return done;
        }
    }
    return moves.size();
}

/// Makes all moves or none.
void move_together(Notes& notes, const std::vector<Move>& moves) {
    std::string reason;
    std::size_t failed = 0;
    while (failed < moves.size() && (reason = obstacle_of(moves[failed])).empty()) {
        ++failed;
    }
    if (failed == moves.size()) {
        failed = move_in_turn(moves, reason);
        for (std::size_t i = 0; i < failed && failed < moves.size(); ++i) {
            (void)move_without_replacing(moves[i].to, moves[i].from);
        }
    }
    for (std::size_t i = 0; i < moves.size(); ++i) {
        if (failed == moves.size()) {
            tell_move(notes, moves[i]);
        } else {
            tell_staying(notes, moves[i].from,
                         i == failed
                             ? reason
                             : notes.messages().either({"the other file of the pair cannot move",
                                                        "die andere Datei des Paars kann nicht umziehen"}));
        }
    }
}

void move(Notes& notes, const std::string& from, const std::string& to) {
    move_together(notes, {{from, to}});
}

}  // namespace

void rename_orphan(int rename_orphans, Notes& notes, const std::string& file, FileSide side) {
    constexpr char kOrphan = 'o';
    const char letter = static_cast<char>(side);
    if (rename_orphans != setting::rename_orphans::left_alone && view_folder_letter(file) == '\0') {
        tell_staying_without_folder(notes, file);
        return;
    }
    switch (rename_orphans) {
        case setting::rename_orphans::to_folders:
            move(notes, file, in_sibling_folder(file, letter, kOrphan));
            break;
        case setting::rename_orphans::with_ending:
            move(notes, file, with_marked_name(file, letter, kOrphan));
            break;
        case setting::rename_orphans::with_underscore: move(notes, file, with_name_start(file, "_")); break;
        case setting::rename_orphans::with_z: move(notes, file, with_name_start(file, "z")); break;
        default: break;
    }
}

void rename_refused_files(int rename_refused, Notes& notes, const std::vector<SidedFile>& files) {
    constexpr char kRefused = 'u';
    std::vector<Move> moves;
    for (const auto& [file, side] : files) {
        // With exchanged views the folder, and not the view, says where the file belongs.
        const char folder = view_folder_letter(file);
        const char letter = folder == '\0' ? static_cast<char>(side) : folder;
        if (rename_refused == setting::rename_refused::to_folders && folder == '\0') {
            tell_staying_without_folder(notes, file);
            return;
        }
        if (rename_refused != setting::rename_refused::left_alone) {
            moves.push_back({file, rename_refused == setting::rename_refused::to_folders
                                       ? in_sibling_folder(file, letter, kRefused)
                                       : with_marked_name(file, letter, kRefused)});
        }
    }
    move_together(notes, moves);
}

void move_quit_files(Notes& notes, const std::vector<SidedFile>& files) {
    std::vector<Move> moves;
    for (const auto& [file, side] : files) {
        const std::string folder = path_in(folder_of(file), std::string{static_cast<char>(side), 'q'});
        moves.push_back({file, path_in(folder, bare_name_of(file))});
    }
    move_together(notes, moves);
}

}  // namespace zemora
