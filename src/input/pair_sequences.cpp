// Pairs of files that stand in one list: each with its successor, with all of its folder, or in turns.

#include <array>

#include "input/pair_former.h"
#include "input/time_control.h"
#include "platform/paths.h"

namespace zemora {

namespace {

enum class Verdict {
    accepted,
    apart,  ///< The times lie too far from each other.
    ended,  ///< A missing time ends the collection.
};

/// Which missing times end the collection.
struct MissingTimeRow {
    int input_mode;
    bool one_ends;
    bool both_end;
};
constexpr std::array kMissingTimes{
    MissingTimeRow{4, true, true},  MissingTimeRow{5, true, false},  MissingTimeRow{6, true, false},
    MissingTimeRow{7, true, false}, MissingTimeRow{8, false, false},
};

Verdict verdict_without_times(int input_mode, const TimeComparison& times) {
    for (const MissingTimeRow& row : kMissingTimes) {
        if (row.input_mode == input_mode && (times.has_one() ? row.one_ends : row.both_end)) {
            return Verdict::ended;
        }
    }
    return Verdict::accepted;
}

Verdict judge(TimeControl& control, int input_mode, const std::string& left, const std::string& right,
              bool is_first) {
    if (!control.is_on()) {
        return Verdict::accepted;
    }
    const TimeComparison times = control.compare(left, right);
    if (input_mode == setting::input_mode::consecutive && is_first) {
        control.set_reference(times.seconds, left, right);
        return Verdict::accepted;
    }
    if (!times.has_both()) {
        const Verdict verdict = verdict_without_times(input_mode, times);
        if (verdict == Verdict::ended) {
            control.tell_end_of_pairs(times, left, right);
        }
        return verdict;
    }
    return control.is_near_reference(times.seconds, left, right) ? Verdict::accepted : Verdict::apart;
}

/// Each file with the next one, or the files two by two.
void form_neighbours(const std::vector<std::string>& files, TimeControl& control, PairFormer& former) {
    const int mode = former.options.input_mode;
    std::string folder;
    bool is_first = true;
    for (std::size_t left = 0; left + 1 < files.size();) {
        const std::size_t right = left + 1;
        const std::string left_folder = folder_of(files[left]);
        if (left_folder != folder_of(files[right])) {
            left = right;
            continue;
        }
        if (left_folder != folder) {
            folder = left_folder;
            is_first = true;
        }
        former.tell_folder(folder);
        const Verdict verdict =
            judge(control, mode, files[left], files[right], is_first || former.list.count() == 0);
        if (verdict == Verdict::ended) {
            return;
        }
        if (verdict == Verdict::apart) {
            left = right;
            continue;
        }
        former.add(files[left], files[right]);
        is_first = false;
        left = mode == setting::input_mode::consecutive ? right + 1 : right;
    }
}

/// The first file of a folder, or the first after a pause, with those behind it.
void form_with_anchor(const std::vector<std::string>& files, TimeControl& control, PairFormer& former) {
    std::size_t anchor = 0;
    for (std::size_t right = 1; right < files.size(); ++right) {
        const std::string folder = folder_of(files[anchor]);
        if (folder_of(files[right]) != folder) {
            anchor = right;
            continue;
        }
        former.tell_folder(folder);
        const Verdict verdict =
            judge(control, setting::input_mode::first_with_later, files[anchor], files[right], false);
        if (verdict == Verdict::ended) {
            return;
        }
        if (verdict == Verdict::apart) {
            anchor = right;
        } else {
            former.add(files[anchor], files[right]);
        }
    }
}

/// The place behind the last file of the folder of `files[start]`.
std::size_t end_of_folder(const std::vector<std::string>& files, std::size_t start) {
    const std::string folder = folder_of(files[start]);
    std::size_t end = start + 1;
    while (end < files.size() && folder_of(files[end]) == folder) {
        ++end;
    }
    return end;
}

}  // namespace

void form_pairs_of_sequence(const std::vector<std::string>& files, PairFormer& former) {
    TimeControl control(former.options.exif_time_tolerance, former.notes);
    control.expect(files);
    if (former.options.input_mode == setting::input_mode::first_with_later) {
        form_with_anchor(files, control, former);
    } else {
        form_neighbours(files, control, former);
    }
}

long long count_all_pairs(const std::vector<std::string>& files) {
    long long pairs = 0;
    for (std::size_t start = 0, end = 0; start < files.size(); start = end) {
        end = end_of_folder(files, start);
        const auto count = static_cast<long long>(end - start);
        pairs += count * (count - 1) / 2;
    }
    return pairs;
}

void form_all_pairs(const std::vector<std::string>& files, PairFormer& former) {
    TimeControl control(former.options.exif_time_tolerance, former.notes);
    control.expect(files);
    for (std::size_t start = 0, end = 0; start < files.size(); start = end) {
        end = end_of_folder(files, start);
        for (std::size_t left = start; left + 1 < end; ++left) {
            former.tell_folder(folder_of(files[left]));
            for (std::size_t right = left + 1; right < end; ++right) {
                // The files go by time: behind one that is too late all are.
                if (judge(control, setting::input_mode::all_with_all, files[left], files[right], false) ==
                    Verdict::apart) {
                    break;
                }
                former.add(files[left], files[right]);
            }
        }
    }
}

}  // namespace zemora
