#include "report/corr_values_plots.h"

#include "config/text_file.h"
#include "platform/paths.h"

namespace zemora {

namespace {

/// Any gnuplot from 4.6 on takes the commands, with a screen or without: where it has no window to plot in,
/// only the file is made.
constexpr const char* kHead = R"(# Commandfile for Gnuplot
# 1: n
# 2: height
# 3: size
# 4: rot
# 5: ver_v
# 6: ver_h
# 7: window
# 8: curtain_l
# 9: curtain_r
if (strstrt(GPVAL_TERMINALS, ' windows ') > 0) set terminal windows
has_screen = GPVAL_SYSNAME ne 'Linux' || strlen(system('echo "$DISPLAY$WAYLAND_DISPLAY"')) > 0
has_window = GPVAL_TERM ne 'unknown' && has_screen
if (!has_window) set terminal dumb; set output '/dev/null'
)";

constexpr const char* kGrid = R"(set grid
set key
set grid xtics
set grid ytics
#set xrange [0:500]
#set yrange [0:100]
)";

constexpr const char* kGeometryPlot = R"(set title 'CorrValues.dat'
set xlabel 'Frame Number'
set ylabel 'Error [Pixel, %, degree]'
plot 'CorrValues.dat' using 1:2 w l title 'height', \
     'CorrValues.dat' using 1:(100.*$3) w l title 'size', \
     'CorrValues.dat' using 1:(100.*$4/pi) w l title 'rotation', \
     'CorrValues.dat' using 1:(100.*$5/pi) w l title 'v-vertical', \
     'CorrValues.dat' using 1:(100.*$6/pi) w l title 'v-horizontal'
)";

constexpr const char* kWindowPlot = R"(set title 'CorrValues.dat'
set xlabel 'Frame Number'
set ylabel 'Error [Pixel, %, degree]'
plot 'CorrValues.dat' using 1:7 w l title 'window', \
     'CorrValues.dat' using 1:8 w l title 'curtain_l', \
     'CorrValues.dat' using 1:9 w l title 'curtain_r'
)";

constexpr const char* kChoice = R"(Choice = 2
if (Choice == 2) { label_raw = 'height raw'; label_final = 'height final' } else { \
if (Choice == 3) { label_raw = 'size raw'; label_final = 'size final' } else { \
if (Choice == 4) { label_raw = 'rot raw'; label_final = 'rot final' } else { \
if (Choice == 5) { label_raw = 'ver raw'; label_final = 'ver final' } else { \
if (Choice == 6) { label_raw = 'veh raw'; label_final = 'veh final' } else { \
if (Choice == 7) { label_raw = 'win raw'; label_final = 'win final' } } } } } }
)";

constexpr const char* kRawPlot = R"(set title 'CorrValues.dat'
set xlabel 'Frame Number'
set ylabel 'Error'
plot 'CorrValues_Raw.dat' using 1:Choice w l title label_raw, \
     'CorrValues.dat'     using 1:Choice w l title label_final
)";

/// gnuplot takes the kind of the file before its name; a gnuplot without PDF writes SVG. It knows no "close":
/// it goes no further than the line before it.
std::string end_for(const std::string& picture) {
    return "if (has_window) pause  -1 'Hit a key!'\n"
           "if (strstrt(GPVAL_TERMINALS, ' pdf') > 0) {\n"
           "set terminal pdf\n"
           "set output '" +
           picture +
           ".pdf'\n"
           "} else {\n"
           "set terminal svg\n"
           "set output '" +
           picture +
           ".svg'\n"
           "}\n"
           "replot\n"
           "set output\n"
           "exit\n"
           "close terminal windows\n";
}

}  // namespace

Result<void> write_corr_values_plots(const std::string& folder, bool with_raw,
                                     const MessageCatalogue& messages) {
    const std::string head = kHead;
    Result<void> done = write_text_file(join_path(folder, "CorrValues_Geo.gpl"),
                                        head + kGrid + kGeometryPlot + end_for("CorrValue_Geo"), messages);
    if (done) {
        done = write_text_file(join_path(folder, "CorrValues_Window.gpl"),
                               head + kGrid + kWindowPlot + end_for("CorrValue_Window"), messages);
    }
    if (done && with_raw) {
        done = write_text_file(join_path(folder, "CorrValues_Raw.gpl"),
                               head + kChoice + kGrid + kRawPlot + end_for("CorrValues_raw"), messages);
    }
    return done;
}

}  // namespace zemora
