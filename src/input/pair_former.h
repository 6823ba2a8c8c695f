#pragma once
/// What the ways of pairing share: a proposed pair is checked, listed and added; changes of folder are
/// reported.

#include <string>
#include <vector>

#include "config/notes.h"
#include "input/collect_options.h"
#include "input/file_selection.h"
#include "input/image_list.h"
#include "input/list_file.h"
#include "input/pair_adder.h"

namespace zemora {

class PairFormer {
public:
    PairFormer(const CollectOptions& options_in, Notes& notes_in, ImageList& list_in, ListedNames& names)
        : options(options_in),
          notes(notes_in),
          list(list_in),
          names_(names),
          adder_(options_in, notes_in, list_in) {}

    /// Adds the pair if its files can be read.
    void add(std::string left, std::string right);
    /// Reports where the pairs come from: the image folder at the first call, then each other folder.
    void tell_folder(const std::string& folder);
    /// Takes this folder for one that has been reported, as the image folder is at first.
    void start_in(const std::string& folder) { folder_ = folder; }
    [[nodiscard]] int left_name_width() const { return adder_.left_name_width(); }

    const CollectOptions& options;
    Notes& notes;
    ImageList& list;

private:
    ListedNames& names_;
    PairAdder adder_;
    std::string folder_;
    bool has_told_root_ = false;
    bool is_every_second_ = false;  ///< The next pair is the second, fourth and so on.
};

/// `InputMode` 3 and 9: both lists side by side, in step by their folders and capture times.
void form_pairs_in_lockstep(const SelectedFiles& files, long long most_pairs, PairFormer& former);

/// `InputMode` 4 to 7: each file with one that follows it in its folder.
void form_pairs_of_sequence(const std::vector<std::string>& files, PairFormer& former);

/// `InputMode` 8: all pairs of files of a folder.
void form_all_pairs(const std::vector<std::string>& files, PairFormer& former);

/// How many pairs `form_all_pairs` can make.
[[nodiscard]] long long count_all_pairs(const std::vector<std::string>& files);

}  // namespace zemora
