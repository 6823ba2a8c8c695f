#pragma once
/// The private temporary folder of a run.

#include <string>

namespace zemora {

/// The folder, made below $TMPDIR (else /tmp) at the first call; empty when it cannot be made. It
/// and its plain files are removed at the end of the process and on SIGINT, SIGTERM and SIGHUP.
[[nodiscard]] const std::string& temporary_folder();

/// Removes the folder with the plain files in it; nothing else is ever removed.
void remove_temporary_folder();

}  // namespace zemora
