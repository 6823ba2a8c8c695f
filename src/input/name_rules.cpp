// What the names of files and folders mean for the choice of input.

#include <algorithm>
#include <array>
#include <string_view>

#include "config/text_lines.h"
#include "input/file_selection.h"
#include "platform/console.h"
#include "platform/directory_walk.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr std::array<std::string_view, 17> kOutputFolders{
    "cl", "cr", "clr", "cs", "ca", "cp", "ct", "cd", "ce", "lo", "ro", "lu", "ru", "su", "lq", "rq", "sq"};
constexpr std::string_view kExtraFolderStart = "ce_";

bool is_plain_output_folder(std::string_view folded) {
    return folded.starts_with(kExtraFolderStart) ||
           std::find(kOutputFolders.begin(), kOutputFolders.end(), folded) != kOutputFolders.end();
}

/// Names in lower case begin and end so; "#" in the start is a number.
struct NamePattern {
    std::string_view start;
    std::string_view end;
};
// clang-format off
constexpr std::array kOwnPictures{
    NamePattern{"zemora_alignment.tif", ""},
    NamePattern{"zemora_pl.bmp",        ""},
    NamePattern{"zemora_pr.bmp",        ""},
    NamePattern{"segment_#_#_#_#_",     ".jpg"},
    NamePattern{"tintrovela_print_",    ""},
    NamePattern{"zemora_thumb_",        ""},
    NamePattern{"",                     "_pass_in.bmp"},
    NamePattern{"",                     "_pass_out.bmp"},
};
constexpr std::array kLeftOvers{NamePattern{"zemora_temp_", ""}, NamePattern{"zemoratemp_", ""}};

struct MarkerRow {
    bool depth_masks;
    std::string_view left;
    std::string_view right;
};
constexpr std::array kPartners{
    MarkerRow{false, "_l",   "_r"},
    MarkerRow{false, "_L",   "_R"},
    MarkerRow{true,  "_rgb", "_d"},
    MarkerRow{true,  "_RGB", "_D"},
};
// clang-format on

bool starts_as(std::string_view name, std::string_view pattern) {
    for (const char c : pattern) {
        const std::size_t length = c == '#' ? std::min(name.find_first_not_of("0123456789"), name.size())
                                            : static_cast<std::size_t>(name.starts_with(c));
        if (length == 0) {
            return false;
        }
        name.remove_prefix(length);
    }
    return true;
}

template <class Table>
bool matches_one_of(const Table& table, const std::string& name) {
    const std::string folded = fold_case(name);
    return std::any_of(table.begin(), table.end(), [&](const NamePattern& row) {
        return starts_as(folded, row.start) && folded.ends_with(row.end);
    });
}

/// A list may hold what an earlier run chose by its names.
bool goes_by_names(int input_mode) {
    return input_mode == 1 || input_mode == 2 || input_mode == 10;
}

}  // namespace

bool has_listed_suffix(const std::string& image_type, const std::string& name) {
    const std::string bare = bare_name_of(name);
    const std::size_t dot = bare.rfind('.');
    if (dot == std::string::npos || dot + 1 == bare.size()) {
        return false;
    }
    const std::string suffix = lower_case(bare.substr(dot + 1));
    const std::string types = lower_case(image_type) + ';';
    for (std::size_t start = 0; start < types.size();) {
        const std::size_t end = types.find(';', start);
        std::string_view type = trimmed(std::string_view(types).substr(start, end - start));
        type.remove_prefix(
            std::min(type.find_first_not_of("*."), type.size()));  // "*.jpg" and ".jpg" are meant too
        if (type == suffix) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

bool is_output_folder_name(const std::string& name, const std::string& ident) {
    const std::string folded = fold_case(name);
    std::string end = fold_case(ident);
    std::replace_if(
        end.begin(), end.end(), [](char c) { return c == '/' || c == '\\'; }, '_');
    return is_plain_output_folder(folded) ||
           (!end.empty() && folded.ends_with(end) &&
            (folded == end ||
             is_plain_output_folder(std::string_view(folded).substr(0, folded.size() - end.size()))));
}

bool is_own_picture(const std::string& name) {
    return matches_one_of(kOwnPictures, name);
}

bool is_left_over(const std::string& name) {
    return matches_one_of(kLeftOvers, name);
}

bool is_dropped_with_hint(const CollectOptions& options, Notes& notes, const std::string& name) {
    if (has_marker(name, "_l") || has_marker(name, "_r")) {
        notes.print(notes.messages().either(
            {"Hint: Files with identifiers \"_l\", \"_L\", \"_r\" and \"_R\" are NOT to be assumed as stereo "
             "images!\n\n",
             "Hinweis: Dateien mit den Kennungen \"_l\", \"_L\", \"_r\" und \"_R\" gelten NICHT als "
             "Stereobilder!\n\n"}));
        notes.print("   " + printable(name) + '\n');
        return true;
    }
    const bool may_be_depth =
        options.stereo_image_input == setting::stereo_image_input::photo_and_depth_side_by_side &&
        goes_by_names(options.input_mode);
    if (has_marker(name, "_d") && !may_be_depth) {
        notes.print(notes.messages().either(
            {"Hint: Files with identifier \"_d\" or \"_D\" are assumed to be depth masks!\n\n",
             "Hinweis: Dateien mit der Kennung \"_d\" oder \"_D\" gelten als Tiefenmasken!\n\n"}));
        notes.print("   " + printable(name) + '\n');
        return true;
    }
    return false;
}

std::string partner_name(const std::string& left, bool depth_masks) {
    const std::string suffix = suffix_of(left);
    const std::string stem = without_suffix(left);
    for (const MarkerRow& row : kPartners) {
        if (row.depth_masks == depth_masks && !suffix.empty() && stem.ends_with(row.left)) {
            return stem.substr(0, stem.size() - row.left.size()).append(row.right) + suffix;
        }
    }
    return {};
}

const char* name_marker(int stereo_image_input) {
    switch (stereo_image_input) {
        case setting::stereo_image_input::two_files: return "_l";
        case setting::stereo_image_input::photo_and_depth_files: return "_rgb";
        case setting::stereo_image_input::photo_and_depth_side_by_side: return "_d";
        default: return "_s";
    }
}

bool has_marker(const std::string& name, const char* marker) {
    return !suffix_of(name).empty() && lower_case(without_suffix(name)).ends_with(marker);
}

}  // namespace zemora
