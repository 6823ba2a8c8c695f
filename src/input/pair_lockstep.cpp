// Pairs of two lists that run side by side: a file without partner is an orphan and leaves its list.

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "input/moved_files.h"
#include "input/pair_former.h"
#include "input/picture_file.h"
#include "input/time_control.h"
#include "platform/paths.h"

namespace zemora {

namespace {

/// Files whose EXIF data are known to hold times.
bool suffix_has_times(const std::string& file) {
    static constexpr std::array<std::string_view, 5> kWithTimes{".jpg", ".tif", ".arw", ".dng", ".cr2"};
    const std::string suffix = usual_suffix(file);
    return std::any_of(kWithTimes.begin(), kWithTimes.end(),
                       [&](std::string_view known) { return suffix.find(known) != std::string::npos; });
}

/// The folder that holds the folders of both views.
std::string pair_folder_of(const std::string& file) {
    return folder_of(folder_of(file));
}

class Lockstep {
public:
    Lockstep(const SelectedFiles& files, PairFormer& former);
    void form(long long most_pairs);

private:
    /// One of the lists with its next file.
    struct Side {
        const std::vector<std::string>& files;
        FileSide side;
        std::size_t next = 0;
        [[nodiscard]] bool has_ended() const { return next == files.size(); }
        [[nodiscard]] const std::string& file() const { return files[next]; }
    };
    [[nodiscard]] bool form_next();
    void switch_off_without_times();
    [[nodiscard]] Side* find_orphan();
    [[nodiscard]] Side* find_orphan_by_folder();
    [[nodiscard]] Side* find_orphan_by_time(bool opens_folder);
    void tell_without_time(const Side& side) const;
    void drop(Side& side);
    void drop_all(Side& side);

    PairFormer& former_;
    TimeControl control_;
    Side left_;
    Side right_;
    std::unordered_map<std::string, std::size_t> rank_;  ///< Of the folders, in the order of the walk.
    std::optional<std::string> folder_;                  ///< Of the pair before.
};

Lockstep::Lockstep(const SelectedFiles& files, PairFormer& former)
    : former_(former),
      control_(former.options.exif_time_tolerance, former.notes),
      left_{files.left, FileSide::left},
      right_{files.right, FileSide::right} {
    control_.expect(files.left);
    control_.expect(files.right);
    for (const std::string& file : files.left) {
        rank_.try_emplace(pair_folder_of(file), rank_.size());
    }
}

void Lockstep::form(long long most_pairs) {
    while (most_pairs > 0 && form_next()) {
        --most_pairs;
    }
}

/// False when a list has ended; the rest of the other one are orphans.
bool Lockstep::form_next() {
    while (!left_.has_ended() && !right_.has_ended()) {
        switch_off_without_times();
        if (Side* orphan = find_orphan()) {
            drop(*orphan);
            continue;
        }
        former_.add(left_.file(), right_.file());
        ++left_.next;
        ++right_.next;
        return true;
    }
    drop_all(left_);
    drop_all(right_);
    return false;
}

void Lockstep::switch_off_without_times() {
    if (!control_.is_on() || suffix_has_times(left_.file())) {
        return;
    }
    control_.switch_off();
    if (former_.notes.verbose() > 0) {
        former_.notes.say<Msg::files_input_no_exif_time_in_type>();
        former_.notes.wait(Severity::warning);
    }
}

/// Null when the next files of both sides make a pair.
Lockstep::Side* Lockstep::find_orphan() {
    if (Side* orphan = find_orphan_by_folder()) {
        return orphan;
    }
    const std::string folder = pair_folder_of(left_.file());
    const bool opens_folder = folder_ != folder || former_.list.count() == 0;
    folder_ = folder;
    former_.tell_folder(folder);
    return control_.is_on() ? find_orphan_by_time(opens_folder) : nullptr;
}

/// The side that stands in an earlier folder than the other one.
Lockstep::Side* Lockstep::find_orphan_by_folder() {
    const std::size_t left = rank_[pair_folder_of(left_.file())];
    const std::size_t right = rank_[pair_folder_of(right_.file())];
    return left == right ? nullptr : (left < right ? &left_ : &right_);
}

Lockstep::Side* Lockstep::find_orphan_by_time(bool opens_folder) {
    const TimeComparison times = control_.compare(left_.file(), right_.file());
    if (times.has_one()) {
        tell_without_time(times.left_has_time ? right_ : left_);
    }
    if (!times.has_both()) {
        return nullptr;
    }
    // Against 0, clocks that differ would make orphans of all files.
    if (opens_folder || !control_.has_reference()) {
        control_.set_reference(times.seconds, left_.file(), right_.file());
        return nullptr;
    }
    if (control_.is_near_reference(times.seconds, left_.file(), right_.file())) {
        return nullptr;
    }
    return times.seconds > control_.reference() ? &right_ : &left_;
}

void Lockstep::tell_without_time(const Side& side) const {
    former_.notes.tell_everywhere(former_.notes.messages().text<Msg::files_input_orphan_file>() +
                                  indented_name(side.file()) +
                                  former_.notes.messages().either({"   (missing)\n", "   (fehlt)\n"}));
}

/// Takes the next file out of its list; on disk only while times are controlled.
void Lockstep::drop(Side& side) {
    if (control_.is_on()) {
        rename_orphan(former_.options.rename_orphans, former_.notes, side.file(), side.side);
    }
    ++side.next;
}

void Lockstep::drop_all(Side& side) {
    while (!side.has_ended()) {
        drop(side);
    }
}

}  // namespace

void form_pairs_in_lockstep(const SelectedFiles& files, long long most_pairs, PairFormer& former) {
    former.start_in(former.options.path_of_images);
    Lockstep(files, former).form(most_pairs);
}

}  // namespace zemora
