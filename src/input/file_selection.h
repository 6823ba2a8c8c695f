#pragma once
/// Which files a run takes, before they become pairs: the walk through the folders and its filters.

#include <string>
#include <vector>

#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

/// One side of two lists that run in lockstep, or the one list of the other modes.
struct SelectedSide {
    std::vector<std::string> files;  ///< Absolute, in the order of the walk.
    /// A folder of the side was read and held files. Otherwise the other side's files are no orphans:
    /// a side that is missing, unreadable or empty tells nothing about partners.
    bool is_known = true;
};

struct SelectedFiles {
    SelectedSide left;   ///< Left or stereo files; all files in modes 4 to 8.
    SelectedSide right;  ///< Modes 0, 3 and 9 with two files.
};

/// The files of `InputMode` 0 to 9. Tells what it passes over, and ends the run with code 1 when the
/// image folder cannot be read.
[[nodiscard]] SelectedFiles select_files(const ParameterSet& parameters, const Voice& voice);

/// Whether `ImageType` names the suffix of the file: the text behind its last ".", in lower case.
[[nodiscard]] bool has_listed_suffix(const std::string& image_type, const std::string& name);

/// Whether a folder name is one of those that this program writes into: cl, cr, clr, cs, ca, cp, ct, cd,
/// ce and ce_..., lo, ro, lu, ru, su, lq, rq, sq, with or without `ident` behind it, in any case.
[[nodiscard]] bool is_output_folder_name(const std::string& name, const std::string& ident);

/// Whether a bare name is that of a picture that this program makes for itself.
[[nodiscard]] bool is_own_picture(const std::string& name);

/// Whether the bare name of a stereo file says that it is none: one view, or a depth mask where
/// `StereoImageInput` knows none. Then a hint is told and the file is passed over.
[[nodiscard]] bool is_dropped_with_hint(const ParameterSet& parameters, const Voice& voice,
                                        const std::string& name);

/// The partner of a left name by its marker directly before the suffix: "_l." becomes "_r.", "_L."
/// "_R."; with depth masks "_rgb." becomes "_d.", "_RGB." "_D.". Empty without a marker.
[[nodiscard]] std::string partner_name(const std::string& left, bool depth_masks);

}  // namespace zemora
