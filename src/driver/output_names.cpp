#include "driver/output_names.h"

#include <array>
#include <cmath>
#include <ctime>
#include <string_view>

#include "config/messages.h"
#include "config/setting_values.h"
#include "platform/file_times.h"
#include "platform/move_file.h"
#include "platform/paths.h"

namespace zemora {

namespace {

bool is_view_letter(char c) {
    return std::string_view("lLrRsS").find(c) != std::string_view::npos;
}

bool is_view_folder(std::string_view name) {
    return name.size() == 1 && is_view_letter(name[0]);
}

/// "_l", "-R" and the like at the end of a name without suffix.
void drop_view_marker(std::string& name) {
    const std::size_t size = name.size();
    if (size >= 2 && (name[size - 2] == '_' || name[size - 2] == '-') && is_view_letter(name[size - 1])) {
        name.resize(size - 2);
    }
}

bool names_folder_modes(int input_mode) {
    return input_mode == 0 || input_mode == 3 || input_mode == 9 || input_mode == 10;
}

/// The folder part of an input name, without the folders that only tell the view.
std::string folder_without_view(const ParameterSet& parameters, const std::string& relative) {
    std::string folder = folder_of(relative);
    if (names_folder_modes(parameters.input_mode)) {
        const std::size_t slash = folder.find('/');
        if (is_view_folder(std::string_view(folder).substr(0, slash))) {
            folder = slash == std::string::npos ? std::string() : folder.substr(slash + 1);
        }
    }
    if (is_view_folder(bare_name_of(folder))) {
        folder = folder_of(folder);
    }
    return folder == "." ? std::string() : folder;
}

/// Whether the output folder is the same for every image folder.
bool leads_to_one_place(const std::string& path_of_output) {
    return is_absolute(path_of_output) || path_of_output == "~" || path_of_output.starts_with("~/");
}

/// An extra product's folder: the first row whose output is on.
struct ExtraFolderRow {
    int extra_output;
    int video_output;
    const char* ending;
};
constexpr int kNever = -1;
constexpr std::array kExtraFolders{
    ExtraFolderRow{1, 4, "_lrq"},       ExtraFolderRow{2, 5, "_ab"},        ExtraFolderRow{3, 6, "_abq"},
    ExtraFolderRow{4, 7, "_oe"},        ExtraFolderRow{5, kNever, "_mpo"},  ExtraFolderRow{6, kNever, "_lrl"},
    ExtraFolderRow{7, kNever, "_lrrl"}, ExtraFolderRow{kNever, 8, "_dual"},
};

std::string extra_folder(const ParameterSet& parameters) {
    for (const ExtraFolderRow& row : kExtraFolders) {
        if (parameters.extra_output == row.extra_output || parameters.video_output == row.video_output) {
            return std::string("ce") + row.ending;
        }
    }
    return "ce";
}

std::string kind_folder(const ParameterSet& parameters, ProductKind kind) {
    constexpr int kInFolder = 2;
    const int video = parameters.video_output;
    switch (kind) {
        case ProductKind::left:
        case ProductKind::right:
            if (video == 9) {
                return "clr";
            }
            return parameters.left_right_output == kInFolder || video == 1
                       ? std::string("c") + static_cast<char>(kind)
                       : std::string();
        case ProductKind::stereo: return parameters.stereo_output == kInFolder || video == 2 ? "cs" : "";
        case ProductKind::anaglyph: return parameters.anaglyph_output == kInFolder || video == 3 ? "ca" : "";
        case ProductKind::extra: return extra_folder(parameters);
        case ProductKind::panorama: return video == 10 ? "cp" : "";
    }
    return {};
}

/// The ident text as part of one folder name: it never leaves the output tree.
std::string safe_ident(const std::string& ident) {
    std::string safe = ident;
    for (char& c : safe) {
        if (c == '/' || c == '\\') {
            c = '_';
        }
    }
    return safe;
}

std::string with_ident(const std::string& folder, const std::string& ident) {
    const std::string safe = safe_ident(ident);
    // Behind a folder part that ends with a separator the text is a folder of its own.
    const bool stands_alone = folder.empty() || folder.back() == '/';
    return folder + (stands_alone && (safe == "." || safe == "..") ? "_" : safe);
}

std::string field_text(const ParameterSet& parameters, int frame_index) {
    switch (parameters.interlaced_mode) {
        case 1:
        case 3:
        case 4:
        case 5:
        case 6: return format_text("_%1d", frame_index % 2);
        case 2: return format_text("_%1d", 1 - frame_index % 2);
        default: return {};
    }
}

std::string kind_tail(const ParameterSet& parameters, ProductKind kind, bool absolute,
                      const std::string& field) {
    constexpr int kEyeEndings = 3;
    if (field.empty() && !absolute && parameters.left_right_output == kEyeEndings) {
        if (kind == ProductKind::left) {
            return "_OS";
        }
        if (kind == ProductKind::right) {
            return "_OD";
        }
    }
    return field + "_c" + static_cast<char>(kind);
}

std::string deviation_stamp(const ParameterSet& parameters, const StampValues& values) {
    static constexpr std::array kEndings{"", "", "(4;3)", "(16;10)", "(16;9)", "(Kino)"};
    const int ratio = parameters.projection_ratio;
    const bool projected = ratio >= 2 && ratio < static_cast<int>(kEndings.size());
    const double deviation = projected ? values.projected_deviation : values.deviation;
    return format_text("_%03d%s", static_cast<int>(std::floor(deviation * 1000.0 + 0.5)),
                       projected ? kEndings[static_cast<std::size_t>(ratio)] : "");
}

/// Drops `count` characters before the suffix of both names.
void drop_before_suffix(std::string& name, std::size_t count) {
    const std::string suffix = suffix_of(name);
    name = name.substr(0, name.size() - suffix.size() - count) + suffix;
}

bool ends_with(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::size_t hash_of(const OutputName& name) {
    return std::hash<std::string>()(name.path());
}

/// The same for all names that differ in what the deviation makes of them.
std::size_t hash_without_stamp(const OutputName& name) {
    OutputName plain = name;
    plain.stamp.clear();
    plain.over_limit = false;
    return hash_of(plain);
}

}  // namespace

std::string OutputName::bare() const {
    std::string name = over_limit ? "zz_" : "";
    name += base;
    if (!partner.empty()) {
        name += '-' + partner;
    }
    return name + stamp + tail + ending + number + suffix;
}

std::string OutputName::path() const {
    return folder + '/' + bare();
}

OutputName output_path(const ParameterSet& parameters, const std::string& root, const std::string& relative,
                       ProductKind kind, int frame_index, const std::string& suffix) {
    OutputName name;
    name.base = without_suffix(bare_name_of(relative));
    drop_view_marker(name.base);
    std::string folder = folder_without_view(parameters, relative);
    if (is_absolute(folder) && leads_to_one_place(parameters.path_of_output)) {
        folder.clear();
    }
    const bool absolute = is_absolute(folder);
    if (!folder.empty() && folder != "/") {
        folder += '/';
    }
    folder = with_ident(folder + kind_folder(parameters, kind), parameters.ident_output_dir);
    name.folder = absolute ? join_path("/", folder) : join_path(root, folder.empty() ? "." : folder);
    name.tail = kind_tail(parameters, kind, absolute, field_text(parameters, frame_index));
    name.suffix = suffix;
    return name;
}

void stamp_name(OutputName& name, const ParameterSet& parameters, const StampValues& values) {
    const int mode = parameters.stamp_files;
    if (mode == setting::stamp_files::deviation || mode == setting::stamp_files::deviation_and_time) {
        name.stamp += deviation_stamp(parameters, values);
    }
    if (mode >= setting::stamp_files::time || values.stamps_time) {
        name.stamp += values.time_stamp;
    }
    name.over_limit = parameters.video_mode == 0 && values.deviation * 1000.0 > parameters.deviation_thresh;
}

void number_frame(OutputName& name, const ParameterSet& parameters, ProductKind kind, int frame) {
    const bool is_view = kind == ProductKind::left || kind == ProductKind::right;
    const bool shares_folder = is_view && parameters.video_output == setting::video_output::views_in_folder;
    if (kind != ProductKind::extra && !shares_folder && !kind_folder(parameters, kind).empty()) {
        name.tail.clear();
    }
    name.number = format_text("_%07d", frame);
}

bool take_common_base(const ParameterSet& parameters, std::string& left_relative,
                      std::string& right_relative) {
    const std::string left = bare_name_of(left_relative);
    const std::string right = bare_name_of(right_relative);
    if (left == right) {
        return true;
    }
    const std::string left_stem = without_suffix(left);
    const std::string right_stem = without_suffix(right);
    const auto agree = [&](std::size_t marker) {
        return left.size() == right.size() && left_stem.size() == right_stem.size() &&
               left_stem.size() >= marker &&
               left_stem.compare(0, left_stem.size() - marker, right_stem, 0, right_stem.size() - marker) ==
                   0;
    };
    const auto take = [&](std::size_t left_marker, std::size_t right_marker) {
        drop_before_suffix(left_relative, left_marker);
        drop_before_suffix(right_relative, right_marker);
        return true;
    };
    const bool short_left = ends_with(left_stem, "_l") || ends_with(left_stem, "_L");
    const bool short_right = ends_with(right_stem, "_r") || ends_with(right_stem, "_R");
    if (short_left && short_right && agree(2)) {
        return take(2, 2);
    }
    if (ends_with(left_stem, "_cl") && ends_with(right_stem, "_cr") && agree(3)) {
        return take(3, 3);
    }
    constexpr int kPhotoAndDepthFiles = 5;
    if (parameters.stereo_image_input == kPhotoAndDepthFiles && ends_with(left_stem, "_rgb") &&
        ends_with(right_stem, "_d") &&
        left_stem.substr(0, left_stem.size() - 4) == right_stem.substr(0, right_stem.size() - 2)) {
        return take(4, 2);
    }
    return false;
}

bool wants_combined_name(const ParameterSet& parameters, bool two_files, bool common_base) {
    const int mode = parameters.input_mode;
    return two_files && !common_base && (mode == 0 || (mode >= 4 && mode <= 10));
}

void combine_names(OutputName& name, const OutputName& right) {
    name.partner = right.base;
}

void add_extra_ending(OutputName& name, int extra_output, bool inverse_output) {
    struct Row {
        int extra_output;
        const char* plain;
        const char* inverse;
    };
    static constexpr std::array kEndings{
        Row{1, "-lrq", "-rlq"}, Row{2, "-ab", "-ba"},   Row{3, "-abq", "-baq"},
        Row{4, "-oe", "-eo"},   Row{6, "-lrl", "-rlr"}, Row{7, "-lrrl", "-rllr"},
    };
    constexpr int kMultiPicture = 5;
    if (extra_output == kMultiPicture) {
        name.suffix = ".mpo";
    }
    for (const Row& row : kEndings) {
        if (row.extra_output == extra_output) {
            name.ending = inverse_output ? row.inverse : row.plain;
        }
    }
}

long long current_seconds() {
    return static_cast<long long>(std::time(nullptr));
}

std::string stamp_text(long long calendar_seconds) {
    const LocalTime t = local_time_of(calendar_seconds);
    return format_text("_%04d.%02d.%02d_%02d.%02d.%02d", t.year, t.month, t.day, t.hour, t.minute, t.second);
}

bool GivenNames::give_free_name(OutputName& name) {
    const std::string stamp = name.stamp;
    const auto earlier = earlier_.empty() ? earlier_.end() : earlier_.find(hash_without_stamp(name));
    const Earlier limits = earlier == earlier_.end() ? Earlier() : earlier->second;
    int number = 1;
    while (number <= limits.closed_up_to || (number <= limits.doubtful_up_to && name_is_taken(name.path())) ||
           !given_.insert(hash_of(name)).second) {
        ++number;
        name.stamp = stamp + format_text("-%d", number);
    }
    return number > 1;
}

void GivenNames::close(const OutputName& name, bool has_stamp) {
    Earlier& earlier = earlier_[hash_without_stamp(name)];
    ++earlier.count;
    if (has_stamp) {
        OutputName given = name;
        (void)give_free_name(given);
    } else {
        earlier.closed_up_to = earlier.count;
    }
    earlier.doubtful_up_to = earlier.open > 0 ? earlier.count : 0;
}

void GivenNames::note_open(const OutputName& name) {
    Earlier& earlier = earlier_[hash_without_stamp(name)];
    ++earlier.count;
    ++earlier.open;
}

}  // namespace zemora
