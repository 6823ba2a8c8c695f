#pragma once
/// What the setup of a run leaves for the pipeline.

#include <string>

namespace zemora {

/// Forms of the call.
enum class InvocationForm {
    defaults = 1,
    parameter_file = 2,
    stereo_file = 3,
    stereo_file_and_parameters = 4,
    pair = 5,
    pair_and_parameters = 6,
    folder = 7,
    two_folders = 8,
};

struct RunContext {
    InvocationForm form = InvocationForm::defaults;
    std::string parameter_file;  ///< As given or found; empty in forms 7 and 8.
    std::string program_directory;
    std::string working_directory;
    long long run_start = 0;  ///< Calendar seconds.
    std::string stamp;        ///< Time stamp text.
};

}  // namespace zemora
