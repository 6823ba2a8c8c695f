#pragma once
/// Input files that leave their folder: orphans, pairs that cannot be mounted, pairs that the user gave up.
/// No file is ever replaced: on a collision the file stays and one line says so.

#include <string>

#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

/// Which view a file holds; the letter of its folder.
enum class FileSide : char { left = 'l', right = 'r', stereo = 's' };

/// A file without partner, by `RenameOrphans`: 1 moves it to the folder lo or ro beside its own, 2 puts
/// _lo or _ro before its suffix, 3 "_" and 4 "z" before its name. Its folder must be called l, r or s,
/// in any case; otherwise it stays and a line says so.
void rename_orphan(const ParameterSet& parameters, const Voice& voice, const std::string& file,
                   FileSide side);

/// A file of a pair that could not be mounted, by `RenameRefused`: 1 moves it to the folder lu, ru or su
/// beside its own, which must be called l, r or s, 2 puts _lu, _ru or _su before its suffix. The folder's
/// letter counts before the side: views may be exchanged.
void rename_refused_file(const ParameterSet& parameters, const Voice& voice, const std::string& file,
                         FileSide side);

/// A file of a pair that the user gave up for good moves to lq, rq or sq in its own folder.
void move_quit_file(const ParameterSet& parameters, const Voice& voice, const std::string& file,
                    FileSide side);

}  // namespace zemora
