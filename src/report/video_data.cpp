#include "report/video_data.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "config/text_file.h"
#include "numerics/pair_geometry.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr double kPerMille = 1000.0;
constexpr double kPercent = 100.0;
constexpr double kDegrees = 1.0 / kRadiansPerDegree;
constexpr double kOneDegree = 0.017453292;  // radians; the range of angles is not below
constexpr double kMargin = 0.2;             // of a range, on either side

/// One value of each analysed frame.
struct Line {
    std::vector<int> frames;
    std::vector<double> values;

    [[nodiscard]] double mean() const {
        double sum = 0.0;
        for (const double value : values) {
            sum += value;
        }
        return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
    }
    /// The largest value, at least `least`.
    [[nodiscard]] double largest(double least) const {
        for (const double value : values) {
            least = std::max(least, value);
        }
        return least;
    }
};

/// `value(frame)` of each analysed frame; what is no finite number counts as 0.
template <class Value>
Line line_of(const CorrectionSeries& series, const Value& value) {
    Line line;
    for (int i = 0; i < series.analysed.count() && series.analysed.at(i) < series.frames(); ++i) {
        const int frame = series.analysed.at(i);
        const double number = value(static_cast<std::size_t>(frame));
        line.frames.push_back(frame);
        line.values.push_back(std::isfinite(number) ? number + 0.0 : 0.0);  // no minus in front of 0
    }
    return line;
}

/// As an array of points. A single one stands twice, so that there is a line to draw.
std::string array_of(const char* name, const Line& line) {
    std::string text = std::string("var ") + name + " = [";
    for (std::size_t i = 0; i < line.values.size(); ++i) {
        text += format_text("%s[%d,%f]", i == 0 ? "" : ",", line.frames[i], line.values[i]);
    }
    if (line.values.size() == 1) {
        text += format_text(",[%d,%f]", line.frames[0] + 1, line.values[0]);
    }
    return text + "];\n";
}

/// What a chart shows of an axis.
struct Range {
    double low;
    double high;

    void take(const Line& line) {
        for (const double value : line.values) {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    /// The two variables, with the margin.
    [[nodiscard]] std::string text(const char* name) const {
        const double margin = kMargin * (high - low);
        return format_text("var %s_min = %f;\nvar %s_max = %f;\n", name, low - margin, name, high + margin);
    }
};

Range range_of(const Line& line, double start) {
    Range range{-start, start};
    range.take(line);
    return range;
}

}  // namespace

std::string disparity_data(const CorrectionSeries& series, int width) {
    const auto per_mille = [&](float FrameDisparities::*member) {
        return line_of(series, [&](std::size_t frame) {
            return static_cast<double>(series.disparities[frame].*member) * kPerMille / width;
        });
    };
    const Line ssg = line_of(
        series, [&](std::size_t frame) { return static_cast<double>(series.disparities[frame].ssg_px); });
    Range ssg_range{0.0, 5.0};
    ssg_range.take(ssg);
    const Line near_line = per_mille(&FrameDisparities::near_px);
    const Line far_line = per_mille(&FrameDisparities::far_px);
    const Line centre = per_mille(&FrameDisparities::centre_px);
    const Line deviation = per_mille(&FrameDisparities::deviation_px);
    Range range{-10.0, 10.0};
    for (const Line* line : {&near_line, &far_line, &centre, &deviation}) {
        range.take(*line);
    }
    return array_of("ssg", ssg) + ssg_range.text("ssg") + array_of("dispmin", near_line) +
           array_of("dispmax", far_line) + array_of("dispfix", centre) + array_of("deviation", deviation) +
           range.text("disp") + format_text("var WO_U         = %d;\n", width) +
           format_text("var dispmax_mean = %f;\nvar dispmax_max  = %f;\n", far_line.mean(),
                       far_line.largest(near_line.largest(10.0))) +
           format_text("var deviation_mean = %f;\nvar deviation_max  = %f;\n", deviation.mean(),
                       deviation.largest(0.0));
}

std::string error_data(const CorrectionSeries& series) {
    const auto line = [&](float FrameValues::*member, double factor) {
        return line_of(series, [&, member, factor](std::size_t frame) {
            return static_cast<double>(series.values[frame].*member) * factor;
        });
    };
    const Line height = line(&FrameValues::height_px, 1.0);
    const Line size = line(&FrameValues::size, kPercent);
    const Line rotation = line(&FrameValues::rotation_rad, kDegrees);
    const Line vergence_v = line(&FrameValues::vergence_v_rad, kDegrees);
    const Line vergence_h = line(&FrameValues::vergence_h_rad, kDegrees);
    const Line window = line(&FrameValues::window_px, -1.0);
    Range angles = range_of(rotation, kOneDegree * kDegrees);
    angles.take(vergence_v);
    angles.take(vergence_h);
    return array_of("hgt", height) + range_of(height, 5.0).text("hgt") + array_of("siz", size) +
           range_of(size, 1.0).text("siz") + array_of("rot", rotation) + array_of("ver", vergence_v) +
           array_of("veh", vergence_h) + angles.text("rot") + array_of("win", window) +
           range_of(window, 5.0).text("win");
}

Result<void> write_video_data(const std::string& folder, const CorrectionSeries& series, int width,
                              const MessageCatalogue& messages) {
    Result<void> done =
        write_text_file(join_path(folder, kDisparityDataName), disparity_data(series, width), messages);
    if (done) {
        done = write_text_file(join_path(folder, kErrorDataName), error_data(series), messages);
    }
    return done;
}

}  // namespace zemora
