#pragma once
/// The private temporary folder of a run.

#include <string>

namespace zemora {

/// The folder, made below $TMPDIR (else /tmp) at the first call; empty when it cannot be made. It
/// and its plain files are removed at the end of the process.
[[nodiscard]] const std::string& temporary_folder();

/// Another name for the file `path` (absolute), with the same suffix and nothing of its own in it, for
/// programs that read more than a name into some characters. Empty when it cannot be made.
[[nodiscard]] std::string alias_in_temporary_folder(const std::string& path);

/// Removes the folder with the plain files in it; nothing else is ever removed. A signal handler may call it.
void remove_temporary_folder();

}  // namespace zemora
