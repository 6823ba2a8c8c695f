#pragma once
/// From the selected files to the objects of the run: which file goes with which, the control by capture
/// time, the check of the files.

#include "config/parameter_set.h"
#include "config/voice.h"
#include "input/file_selection.h"
#include "input/image_list.h"
#include "input/list_file.h"

namespace zemora {

/// What pairing leaves for the listing.
struct PairingResult {
    int left_name_width = 0;  ///< Characters of the longest left name without its folder.
};

/// Forms the pairs of `InputMode` 0 to 9 with two files and adds them to `list` and `names`.
PairingResult form_pairs(const ParameterSet& parameters, const Voice& voice, const SelectedFiles& files,
                         ImageList& list, ListedNames& names);

/// Adds the stereo files of `InputMode` 0 to 4 and 9 to `list` and `names`.
PairingResult take_stereo_files(const ParameterSet& parameters, const Voice& voice,
                                const SelectedFiles& files, ImageList& list, ListedNames& names);

/// Adds an accepted pair to the list as `InterlacedMode` and `InverseInput` say. One adder serves a run.
class PairAdder {
public:
    PairAdder(const ParameterSet& parameters, const Voice& voice, ImageList& list);
    /// False, with a warning, when a file cannot be read; `left` and `right` take the names as the disk
    /// spells them.
    [[nodiscard]] bool check(std::string& left, std::string& right);
    /// Adds the pair. `stored`, its row of a list, may be null.
    void add(const std::string& left, const std::string& right, const StoredCorrectionRecord* stored);
    [[nodiscard]] int left_name_width() const { return left_name_width_; }

private:
    const ParameterSet& parameters_;
    const Voice& voice_;
    ImageList& list_;
    int left_name_width_ = 0;
};

/// Adds a stereo file; a message in place of it where `InterlacedMode` has no meaning for one.
void add_stereo_object(const ParameterSet& parameters, const Voice& voice, const std::string& file,
                       const StoredCorrectionRecord* stored, ImageList& list);

}  // namespace zemora
