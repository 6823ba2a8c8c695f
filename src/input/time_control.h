#pragma once
/// Whether the two files of a proposed pair were taken together, by their capture times.

#include <string>
#include <unordered_set>
#include <vector>

#include "config/notes.h"
#include "input/capture_time.h"

namespace zemora {

/// What the capture times of a proposed pair say.
struct TimeComparison {
    int seconds = 0;  ///< Left minus right; 0 unless both have a time.
    bool left_has_time = false;
    bool right_has_time = false;
    [[nodiscard]] bool has_both() const { return left_has_time && right_has_time; }
    [[nodiscard]] bool has_one() const { return left_has_time != right_has_time; }
};

class TimeControl {
public:
    TimeControl(int tolerance_s, Notes& notes) : notes_(notes), tolerance_s_(tolerance_s) {}

    /// False with a tolerance of 0, and after `switch_off`.
    [[nodiscard]] bool is_on() const { return tolerance_s_ != 0; }
    /// Ends the control for the rest of the list.
    void switch_off() { tolerance_s_ = 0; }

    /// Files that will be compared.
    void expect(const std::vector<std::string>& files);
    /// Compares both times. A left file whose time the picture library does not find is reported, once a
    /// file.
    [[nodiscard]] TimeComparison compare(const std::string& left, const std::string& right);
    /// Takes the difference of a pair as the one that later pairs must have.
    void set_reference(int seconds, const std::string& left, const std::string& right);
    /// Whether a difference is as near to the reference as the tolerance wants; reports one that is not.
    [[nodiscard]] bool is_near_reference(int seconds, const std::string& left,
                                         const std::string& right) const;
    /// Seconds, left minus right.
    [[nodiscard]] int reference() const { return reference_s_; }
    /// Whether a pair has set the reference.
    [[nodiscard]] bool has_reference() const { return has_reference_; }
    /// Reports that the files behind this pair stay unpaired, because it lacks a time.
    void tell_end_of_pairs(const TimeComparison& times, const std::string& left,
                           const std::string& right) const;

private:
    void tell_missing_time(const std::string& left);

    Notes& notes_;
    CaptureClock clock_;
    int tolerance_s_;
    int reference_s_ = 0;  ///< Difference left minus right of the pair that opened the folder.
    bool has_reference_ = false;
    std::unordered_set<std::string> told_;
};

/// A name as it stands in messages about pairs.
[[nodiscard]] std::string indented_name(const std::string& file);

}  // namespace zemora
