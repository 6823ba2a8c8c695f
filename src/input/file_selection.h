#pragma once
/// Which files a run takes, before they become pairs: the walk through the folders and its filters.

#include <string>
#include <vector>

#include "config/notes.h"
#include "input/collect_options.h"

namespace zemora {

/// Whether an object of that `StereoImageInput` is two files: views, or photo and depth mask.
[[nodiscard]] constexpr bool takes_two_files(int stereo_image_input) {
    return stereo_image_input == setting::stereo_image_input::two_files ||
           stereo_image_input == setting::stereo_image_input::photo_and_depth_files;
}

/// Whether an object of that `StereoImageInput` is a photo and its depth mask. Their places are fixed: what
/// is exchanged are the views that are rendered from them.
[[nodiscard]] constexpr bool holds_depth_mask(int stereo_image_input) {
    return stereo_image_input >= setting::stereo_image_input::photo_and_depth_files &&
           stereo_image_input <= setting::stereo_image_input::phone_photo;
}

/// Absolute names in the order of the walk.
struct SelectedFiles {
    std::vector<std::string> left;   ///< Left or stereo files; all files in modes 4 to 8.
    std::vector<std::string> right;  ///< Modes 0, 3 and 9 with two files.
};

/// The files of `InputMode` 0 to 9. Reports what it passes over and which folders it cannot
/// read. In mode 9 a folder whose files stand on one side only is passed over: an empty or missing side says
/// nothing about partners.
[[nodiscard]] SelectedFiles select_files(const CollectOptions& options, Notes& notes);

/// Whether `ImageType` names the suffix of the file, in any case, as "jpg", ".jpg" or "*.jpg".
[[nodiscard]] bool has_listed_suffix(const std::string& image_type, const std::string& name);

/// Whether a folder name is one of those that this program writes into: cl, cr, clr, cs, ca, cp, ct, cd,
/// ce and ce_..., lo, ro, lu, ru, su, lq, rq, sq, with or without `ident` behind it, in any case; or
/// `ident` alone, where products stand without a folder of their kind.
[[nodiscard]] bool is_output_folder_name(const std::string& name, const std::string& ident);

/// Whether a bare name is that of a picture that this program makes for itself.
[[nodiscard]] bool is_own_picture(const std::string& name);

/// Whether a bare name is that of a file that a broken-off run left behind.
[[nodiscard]] bool is_left_over(const std::string& name);

/// Whether the bare name of a stereo file says that it is none: one view, or a depth mask. Then the
/// file is passed over and a hint says so. Photo and depth mask side by side are called "_d"
/// themselves, where the input goes by names.
[[nodiscard]] bool is_dropped_with_hint(const CollectOptions& options, Notes& notes, const std::string& name);

/// The partner of a left name by its marker directly before the suffix: "_l." becomes "_r.", "_L."
/// "_R."; with depth masks "_rgb." becomes "_d.", "_RGB." "_D.". Empty without a marker.
[[nodiscard]] std::string partner_name(const std::string& left, bool depth_masks);

/// "_l", "_rgb", "_d" or "_s": what names of `InputMode` 1 and 2 end in before their suffix.
[[nodiscard]] const char* name_marker(int stereo_image_input);

/// Whether the bare name ends in the marker before its suffix, in any case.
[[nodiscard]] bool has_marker(const std::string& name, const char* marker);

}  // namespace zemora
