#include "driver/viewer_exchange.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

#include "config/messages.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr double kWindowLimit = 0.001;  // a narrower window is none

// What a viewer can mean; anything beyond is a broken file.
constexpr double kMostDegrees = 90.0;
constexpr double kPercent = 100.0;
constexpr double kLeastPercent = 1.0;  // of a width or height
constexpr double kLeastScale = 0.01;
constexpr double kMostScale = 100.0;
constexpr double kMostShape = 10.0;      // the keys go to 1
constexpr double kOvershoot = 0.01;      // of a fraction, from the viewer's own rounding
constexpr double kDeviationZero = 32.0;  // added to the deviation

/// Takes the numbers of a text one after the other; one that is missing or out of its range makes all void.
class NumberReader {
public:
    explicit NumberReader(std::string_view text) : rest_(text) {}

    [[nodiscard]] bool is_valid() const { return valid_; }

    std::string_view word() {
        constexpr std::string_view kBlanks = " \t\r\n\v\f";
        rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
        const std::string_view next = rest_.substr(0, rest_.find_first_of(kBlanks));
        rest_.remove_prefix(next.size());
        valid_ = valid_ && !next.empty();
        return next;
    }
    template <class T>
    T number() {
        std::string_view text = word();
        if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
            text.remove_prefix(1);
        }
        T value{};
        const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
        valid_ = valid_ && result.ec == std::errc() && result.ptr == text.data() + text.size();
        return value;
    }
    double real(double low, double high) {
        const auto value = number<double>();
        valid_ = valid_ && value >= low && value <= high;  // false for what is no number
        return valid_ ? value : 0.0;
    }
    float real_float(double low, double high) { return static_cast<float>(real(low, high)); }

private:
    std::string_view rest_;
    bool valid_ = true;
};

/// `first` tenths above bit 16, `second` tenths below.
std::uint32_t tenths_word(float first, float second) {
    const auto tenths = [](float value) {
        constexpr int kMostTenths = 65535;
        return static_cast<std::uint32_t>(
            std::clamp(round_half_up(10.0 * static_cast<double>(value)), 0, kMostTenths));
    };
    return tenths(first) << 16 | tenths(second);
}

std::uint32_t rotations_word(const PreSelection& s) {
    const auto field = [](float degrees, int offset, int most) {
        return static_cast<std::uint32_t>(
            std::clamp(round_half_up(10.0 * static_cast<double>(degrees) + offset), 0, most));
    };
    return field(s.rotation_left, 50, 1023) << 22 | field(s.rotation_right, 50, 1023) << 12 |
           field(s.vergence_v, 75, 4095);
}

double held(double fraction) {
    return std::clamp(fraction, 0.0, 1.0);
}

/// Cuts one side of the box, round its middle.
void shrink(double& start, double& size, double wanted) {
    start = held(start + (size - wanted) / 2.0);
    size = std::min(wanted, 1.0 - start);
}

/// Cuts the box to `ratio`; `height` and `width` are its size in pixels, the preview's sides those of 1.
void shrink_to_ratio(ViewerBox& box, double ratio, double height, double width, const PreviewSize& preview) {
    if (ratio <= width / height) {
        shrink(box.left, box.width, std::min(box.width, height * ratio / preview.width));
    } else {
        shrink(box.bottom, box.height, std::min(box.height, width / ratio / preview.height));
    }
}

/// Pixels from the first to the last of a part of a side.
double pixels_of(double start, double size, int side) {
    return round_half_up((side - 1) * (start + size)) - round_half_up((side - 1) * start) + 1;
}

std::string real_text(double value) {
    return format_text("%f", value);
}

}  // namespace

PreviewerWords previewer_words(const ParameterSet& p, const PreSelection& selection, int rot_mir_left,
                               int rot_mir_right) {
    const PreSelection s = p.pre_settings == 1 ? selection : PreSelection();
    const int flags = p.language + 2 * rot_mir_right + 16 * rot_mir_left + 128 * p.inverse_input +
                      256 * p.cropp_input + 1024 * p.stereo_image_input + 8192 * p.passepartout;
    const auto byte = [](int value) { return static_cast<std::uint32_t>(std::clamp(value, 0, 255)); };
    return {rotations_word(s),
            tenths_word(s.left_start_x, s.left_width),
            tenths_word(s.left_start_y, s.left_height),
            tenths_word(s.right_start_x, s.right_width),
            tenths_word(s.right_start_y, s.right_height),
            byte(p.passe_color_blue) << 24 | byte(p.passe_color_green) << 16 | byte(p.passe_color_red) << 8 |
                byte(p.passe_tolerance),
            static_cast<std::uint32_t>(flags)};
}

std::optional<PreviewerAnswer> parse_previewer_answer(std::string_view text) {
    NumberReader reader(text);
    PreviewerAnswer answer;
    PreSelection& s = answer.selection;
    (void)reader.word();
    (void)reader.number<int>();
    answer.swaps_views = reader.number<int>() == 1;
    for (float* angle : {&s.rotation_left, &s.rotation_right, &s.vergence_v}) {
        *angle = reader.real_float(-kMostDegrees, kMostDegrees);
    }
    answer.scale = reader.real_float(kLeastScale, kMostScale);
    struct Part {
        float* start;
        float* size;
    };
    for (const Part& part :
         {Part{&s.left_start_x, &s.left_width}, Part{&s.left_start_y, &s.left_height},
          Part{&s.right_start_x, &s.right_width}, Part{&s.right_start_y, &s.right_height}}) {
        *part.start = reader.real_float(0.0, kPercent);
        *part.size = reader.real_float(kLeastPercent, kPercent);
    }
    (void)reader.number<int>();
    return reader.is_valid() ? std::optional(answer) : std::nullopt;
}

PreSelection with_views_swapped(const PreSelection& selection, bool is_stereo_file) {
    PreSelection s = selection;
    std::swap(s.rotation_left, s.rotation_right);
    s.vergence_v = s.vergence_v == 0.0F ? 0.0F : -s.vergence_v;
    if (is_stereo_file) {
        std::swap(s.left_start_x, s.right_start_x);
        std::swap(s.left_start_y, s.right_start_y);
        std::swap(s.left_width, s.right_width);
        std::swap(s.left_height, s.right_height);
    }
    return s;
}

std::optional<PostViewerAnswer> parse_post_viewer_answer(std::string_view text) {
    NumberReader reader(text);
    PostViewerAnswer answer;
    answer.has_selection = reader.number<int>() != 0;
    answer.window_shift = reader.real(-1.0, 1.0);
    // Without a selection the rectangle means nothing.
    const double low = answer.has_selection ? -kOvershoot : -1.0 / kOvershoot;
    const double high = answer.has_selection ? 1.0 + kOvershoot : 1.0 / kOvershoot;
    const double left = reader.real(low, high);
    const double bottom = reader.real(low, high);
    const double right = left + reader.real(answer.has_selection ? kWindowLimit : low, high);
    const double top = bottom + reader.real(answer.has_selection ? kWindowLimit : low, high);
    answer.band_left = reader.real(0.0, 1.0);
    answer.band_right = reader.real(0.0, 1.0);
    for (double* shape : {&answer.phantogram, &answer.edge_warp, &answer.vertical_ax, &answer.common_trapez,
                          &answer.sym_trapez}) {
        *shape = reader.real(-kMostShape, kMostShape);
    }
    answer.trapez_scale = reader.real(kLeastScale, kMostScale);
    answer.swaps_output = reader.number<int>() == 1;
    answer.ratio_code = reader.number<int>();
    answer.language = reader.number<unsigned>();
    if (!reader.is_valid() || (answer.has_selection && (right > high || top > high))) {
        return std::nullopt;
    }
    if (answer.has_selection) {
        answer.box = {held(left), held(bottom), held(right) - held(left), held(top) - held(bottom)};
        if (answer.box.width <= kWindowLimit || answer.box.height <= kWindowLimit) {
            return std::nullopt;
        }
    }
    return answer;
}

bool has_selected_window(const SelectionBox& selection) {
    return selection.right - selection.left > static_cast<float>(kWindowLimit);
}

std::optional<ViewerBox> box_of_selection(const SelectionBox& s) {
    if (!has_selected_window(s)) {
        return std::nullopt;
    }
    const double width = static_cast<double>(s.result_right) - s.result_left;
    const double height = static_cast<double>(s.result_top) - s.result_bottom;
    const auto across = [&](float edge) { return held((static_cast<double>(edge) - s.result_left) / width); };
    const auto down = [&](float edge) {
        return held(1.0 - (static_cast<double>(edge) - s.result_bottom) / height);
    };
    return ViewerBox{across(s.left), down(s.top), across(s.right) - across(s.left),
                     down(s.bottom) - down(s.top)};
}

void take_selection(const PostViewerAnswer& answer, SelectionBox& s) {
    const double width = static_cast<double>(s.result_right) - s.result_left;
    const double height = static_cast<double>(s.result_top) - s.result_bottom;
    const ViewerBox& box = answer.box;
    s.window_offset = static_cast<float>(width * answer.window_shift);
    s.band_left = static_cast<float>(answer.band_left);
    s.band_right = static_cast<float>(answer.band_right);
    s.left = s.right = s.top = s.bottom = 0.0F;
    if (answer.has_selection) {
        s.left = static_cast<float>(box.left * width + s.result_left);
        s.right = static_cast<float>((box.left + box.width) * width + s.result_left);
        s.top = static_cast<float>((1.0 - box.bottom) * height + s.result_bottom);
        s.bottom = static_cast<float>((1.0 - (box.bottom + box.height)) * height + s.result_bottom);
    }
}

PreviewSize preview_size(int height, int width, int max_viewer_size, int screen_height, int screen_width) {
    constexpr int kTitleAndTaskBar = 71;  // pixels of the screen's height
    const int height_limit = std::max(1, std::min(max_viewer_size, screen_height - kTitleAndTaskBar));
    const int width_limit = std::max(1, std::min(max_viewer_size, screen_width * 4 / 5));
    if (static_cast<double>(height) * width_limit < static_cast<double>(width) * height_limit) {
        const double scale = static_cast<double>(width_limit) / width;
        return {std::max(1, round_half_up(height * scale)), width_limit, scale};
    }
    const double scale = static_cast<double>(height_limit) / height;
    return {height_limit, std::max(1, round_half_up(width * scale)), scale};
}

ViewerFrame viewer_frame(int cropp_output, const RatioSides& wanted, const PreviewSize& preview,
                         const std::optional<ViewerBox>& box) {
    ViewerFrame frame;
    frame.box = box.value_or(ViewerBox());
    frame.ratio_width = wanted.width;
    frame.ratio_height = wanted.height;
    if (wanted.width <= 0 || wanted.height <= 0) {
        return frame;
    }
    if (cropp_output == setting::cropp_output::ratio_turned &&
        (frame.ratio_width >= frame.ratio_height) != (preview.width >= preview.height)) {
        std::swap(frame.ratio_width, frame.ratio_height);
    }
    const double ratio = static_cast<double>(frame.ratio_width) / frame.ratio_height;
    if (!box) {
        if (cropp_output != setting::cropp_output::fitted) {
            shrink_to_ratio(frame.box, ratio, preview.height, preview.width, preview);
        }
        return frame;
    }
    ViewerBox& kept = frame.box;
    shrink_to_ratio(kept, ratio, preview.height * kept.height, preview.width * kept.width, preview);
    shrink_to_ratio(kept, ratio, pixels_of(kept.bottom, kept.height, preview.height),
                    pixels_of(kept.left, kept.width, preview.width), preview);
    return frame;
}

std::vector<std::string> post_viewer_numbers(const ParameterSet& p, const ViewerFrame& frame,
                                             const PreviewSize& preview, double warped_over_preview,
                                             const SelectionBox& selection, double deviation,
                                             const ViewShape& shape) {
    const double kept_width = static_cast<double>(selection.result_right) - selection.result_left;
    const double shift = has_selected_window(selection) ? selection.window_offset / kept_width : 0.0;
    std::vector<std::string> arguments;
    for (const int number : {p.cropp_output, frame.ratio_width, frame.ratio_height}) {
        arguments.push_back(format_text("%d", number));
    }
    const ViewerBox& box = frame.box;
    for (const double number :
         {warped_over_preview, preview.scale, box.left, box.bottom, box.width, box.height, shift,
          static_cast<double>(selection.band_left), static_cast<double>(selection.band_right),
          deviation + kDeviationZero, shape.phantogram, shape.edge_warp, shape.vertical_ax,
          shape.common_trapez, shape.sym_trapez, shape.trapez_scale}) {
        arguments.push_back(real_text(number));
    }
    arguments.push_back(format_text("%d", p.language));
    return arguments;
}

std::optional<RatioSides> ratio_of_code(int code, const PreviewSize& preview, const ViewerBox& box) {
    struct Row {
        int code;
        RatioSides sides;
    };
    static constexpr Row kRatios[] = {{1, {1, 1}},  {-1, {1, 1}}, {2, {4, 5}},   {3, {3, 4}},
                                      {4, {2, 3}},  {5, {9, 16}}, {6, {1, 2}},   {-2, {5, 4}},
                                      {-3, {4, 3}}, {-4, {3, 2}}, {-5, {16, 9}}, {-6, {2, 1}}};
    constexpr int kAsSelected = 99;
    if (code == kAsSelected) {
        return RatioSides{std::max(1, static_cast<int>((preview.height - 1) * box.height)),
                          std::max(1, static_cast<int>((preview.width - 1) * box.width))};
    }
    const auto* row = std::find_if(std::begin(kRatios), std::end(kRatios),
                                   [code](const Row& candidate) { return candidate.code == code; });
    return row == std::end(kRatios) ? std::nullopt : std::optional(row->sides);
}

RatioSides fit_ratio(const RatioSides& ratio, const RatioSides& wanted) {
    const double by_height = static_cast<double>(wanted.height) / ratio.height;
    const double by_width = static_cast<double>(wanted.width) / ratio.width;
    const bool height_rules = wanted.width <= 0 || (wanted.height > 0 && by_height <= by_width);
    const double unit = height_rules ? by_height : by_width;
    return {std::max(1, round_half_up(ratio.height * unit)), std::max(1, round_half_up(ratio.width * unit))};
}

}  // namespace zemora
