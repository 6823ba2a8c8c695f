#pragma once
/// Input files that leave their folder: orphans, pairs that cannot be mounted, pairs that the user gave up.
/// No file is ever replaced: on a collision the file stays and one line says so.

#include <string>
#include <vector>

#include "config/notes.h"

namespace zemora {

/// Which view a file holds; the letter of its folder.
enum class FileSide : char { left = 'l', right = 'r', stereo = 's' };

/// A file without partner, by `RenameOrphans`: 1 moves it to the folder lo or ro beside its own, 2 puts
/// _lo or _ro before its suffix, 3 "_" and 4 "z" before its name. Its folder must be called l, r or s,
/// in any case; otherwise it stays and a line says so.
void rename_orphan(int rename_orphans, Notes& notes, const std::string& file, FileSide side);

/// A file of an object, with the view that it holds.
struct SidedFile {
    std::string path;
    FileSide side = FileSide::stereo;
};

/// The files of an object that could not be mounted, by `RenameRefused`: 1 moves them to the folders lu, ru
/// or su beside their own, which must be called l, r or s, 2 puts _lu, _ru or _su before their suffixes. The
/// folder's letter counts before the side: views may be exchanged. Either all files of the object move or
/// none.
void rename_refused_files(int rename_refused, Notes& notes, const std::vector<SidedFile>& files);

/// The files of an object that the user gave up for good move to lq, rq or sq in their own folders, or none.
void move_quit_files(Notes& notes, const std::vector<SidedFile>& files);

}  // namespace zemora
