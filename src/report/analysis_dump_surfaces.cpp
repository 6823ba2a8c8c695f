/// Error surfaces and profiles as data files, each with the gnuplot commands that show it.

#include <algorithm>
#include <cstdio>

#include "platform/paths.h"
#include "report/analysis_dump.h"

namespace zemora {

namespace {

constexpr const char* kSurfaceFault = "\nstereo_analyse::write_errors: File ";
constexpr const char* kProfileFault = "\nstereo_analyse::write_errors_1dim: File ";

std::string file_name(const VisitedCell& cell, const char* suffix) {
    return format_text("segment_%02d_%02d_%02d%s", static_cast<int>(cell.phase), cell.row, cell.column,
                       suffix);
}

void append_number(std::string& text, float value) {
    constexpr std::size_t kLongest = 64;  // characters; any float with two decimals
    char number[kLongest];
    const int length = std::snprintf(number, kLongest, "%10.2f", static_cast<double>(value));
    text.append(number, static_cast<std::size_t>(length));
}

std::string surface_text(const ErrorSurface& surface) {
    std::string text;
    for (int i = 0; i < surface.rows(); ++i) {
        for (int j = 0; j < surface.columns(); ++j) {
            append_number(text, 0.0F - surface.at(i, j));
            text += ' ';
        }
        text += '\n';
    }
    return text;
}

std::string profile_text(const ErrorSurface& profile) {
    std::string text;
    for (int j = 0; j < profile.columns(); ++j) {
        append_number(text, profile.at(0, j));
        text += '\n';
    }
    return text;
}

/// Where the axis of the errors has to end, because displacements without overlap lie far beyond all
/// errors, or because equal errors give the axis no length.
struct AxisEnd {
    bool needed = false;
    float worst = 0.0F;  ///< A little above the largest error.
};

AxisEnd axis_end(const ErrorSurface& surface) {
    constexpr float kSpace = 1.0F;  // of the unit of the errors
    float least = kNoOverlap;
    float worst = 0.0F;
    bool no_overlap = false;
    for (const float error : surface.errors()) {
        if (error < kNoOverlap) {
            least = std::min(least, error);
            worst = std::max(worst, error);
        } else {
            no_overlap = true;
        }
    }
    return {no_overlap || least >= worst, worst + kSpace};
}

/// gnuplot knows no "close": it goes no further than the line before it.
constexpr const char* kEndOfCommands =
    "exit\n"
    "close output                    \n";

std::string surface_commands(const std::string& data_name, const AxisEnd& end) {
    std::string text =
        "set view 60,60                  \n"
        "set pm3d at s hidden3d 100      \n"
        "set style line 100 lt 5 lw 0.5  \n"
        "unset hidden3d                  \n"
        "unset surf                      \n"
        "# set zrange[-20000:0]\n";
    if (end.needed) {
        const double low = -static_cast<double>(end.worst);
        text += format_text("set zrange[%.2f:0]\nset cbrange[%.2f:0]\n", low, low);
    }
    text += "splot \"" + data_name + "\" matrix with lines\n";
    return text + "pause -1 \"Hit any key to comtinue!\" \n" + kEndOfCommands;
}

std::string profile_commands(const std::string& data_name, const AxisEnd& end) {
    std::string text;
    if (end.needed) {
        text += format_text("set yrange[0:%.2f]\n", static_cast<double>(end.worst));
    }
    text += "plot \"" + data_name + "\" with lines\n";
    return text + "pause -1 \"Hit any key to continue!\" \n" + kEndOfCommands;
}

}  // namespace

void AnalysisDump::write_error_surface(const ErrorSurface& surface, const VisitedCell& cell) const {
    const auto write = [this](const std::string& name, const std::string& text) {
        notes_->print("\nFile " + name);
        notes_->say<Msg::stereo_analyse_will_be_created>();
        if (!write_text(join_path(options_.working_folder, name), text)) {
            tell_not_opened(kSurfaceFault, name);
        }
    };
    const std::string data_name = file_name(cell, ".dat");
    write(data_name, surface_text(surface));
    write(file_name(cell, ".gpl"), surface_commands(data_name, axis_end(surface)));
}

void AnalysisDump::write_error_profile(const ErrorSurface& profile, const VisitedCell& cell) const {
    const auto write = [this](const std::string& name, const std::string& text, const char* fault) {
        const std::string path = image_path(name);
        if (!write_text(path, text)) {
            tell_not_opened(fault, path);
        }
    };
    const std::string data_name = file_name(cell, ".dat");
    write(data_name, profile_text(profile), kProfileFault);
    write(file_name(cell, ".gnu"), profile_commands(data_name, axis_end(profile)), kSurfaceFault);
}

}  // namespace zemora
