#include "analysis/analysis_dump.h"

#include <utility>

#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

bool names_phase(int setting, AnalysePhase phase) {
    return setting == static_cast<int>(phase);
}

}  // namespace

AnalysisDump::AnalysisDump(const ParameterSet& parameters, std::string working_folder,
                           std::string program_folder, Voice& voice)
    : parameters_(parameters),
      working_folder_(std::move(working_folder)),
      program_folder_(std::move(program_folder)),
      voice_(voice) {}

bool AnalysisDump::wants_surfaces(AnalysePhase phase) const {
    return names_phase(parameters_.gnu_error_output, phase);
}

bool AnalysisDump::wants_segments(AnalysePhase phase) const {
    return names_phase(parameters_.image_segment_output, phase);
}

bool AnalysisDump::wants_tables(AnalysePhase phase) const {
    return names_phase(parameters_.matrix_output, phase);
}

void AnalysisDump::write_cell(const MeasuredPair& pair, const DumpedCell& cell, const TileSearch& search,
                              const ErrorSurface* surface, float dx, float dy) const {
    if (surface != nullptr && wants_surfaces(cell.phase)) {
        if (cell.phase == AnalysePhase::disparity) {
            write_error_profile(*surface, cell);
        } else {
            write_error_surface(*surface, cell);
        }
    }
    if (wants_segments(cell.phase)) {
        write_segment_images(pair, cell, search, dx, dy);
    }
}

void AnalysisDump::conclude_phase(const AnalysisState& state, AnalysePhase phase, bool reduced) const {
    if (phase == AnalysePhase::shift) {
        return;
    }
    if (wants_tables(phase)) {
        display_analyse(state, phase, reduced);
    }
    if (wants_segments(phase)) {
        show_segments(state, phase);
    }
}

std::string AnalysisDump::image_path(const std::string& name) const {
    return join_path(parameters_.path_of_images, name);
}

bool AnalysisDump::write_text(const std::string& path, const std::string& text) const {
    return write_file_whole(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}).empty();
}

void AnalysisDump::tell_not_opened(const char* what, const std::string& name) const {
    voice_.print(what + printable(name));
    voice_.say<Msg::stereo_analyse_cannot_be_opened>();
}

}  // namespace zemora
