#include "report/analysis_dump.h"

#include <utility>

#include "platform/console.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

bool names_phase(int setting, AnalysePhase phase) {
    return setting == static_cast<int>(phase);
}

}  // namespace

AnalysisDump::AnalysisDump(AnalysisDumpOptions options, Notes& notes)
    : options_(std::move(options)), notes_(&notes) {}

void AnalysisDump::set_pair(const std::string& left_name, const std::string& right_name, Notes& notes) {
    notes_ = &notes;
    names_ = right_name.empty() ? left_name : left_name + ", " + right_name;
}

bool AnalysisDump::wants_surfaces(AnalysePhase phase) const {
    return names_phase(options_.surface_phase, phase);
}

bool AnalysisDump::wants_segments(AnalysePhase phase) const {
    return names_phase(options_.segment_phase, phase);
}

bool AnalysisDump::wants_tables(AnalysePhase phase) const {
    return names_phase(options_.table_phase, phase);
}

void AnalysisDump::visit_cell(const MeasuredPair& pair, const VisitedCell& cell, const TileSearch& search,
                              const ErrorSurface* surface, float dx, float dy) {
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

void AnalysisDump::visit_phase(const AnalysisState& state, AnalysePhase phase, bool reduced) {
    if (phase == AnalysePhase::shift) {
        write_heads();
        return;
    }
    if (wants_tables(phase)) {
        print_tables(state, phase, reduced);
    }
    if (wants_segments(phase)) {
        show_segments(state, phase);
    }
}

std::string AnalysisDump::image_path(const std::string& name) const {
    return join_path(options_.image_folder, name);
}

bool AnalysisDump::write_text(const std::string& path, const std::string& text) const {
    return write_file_whole(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}).empty();
}

void AnalysisDump::tell_not_opened(const char* what, const std::string& name) const {
    notes_->print(what + printable(name));
    notes_->say<Msg::stereo_analyse_cannot_be_opened>();
}

}  // namespace zemora
