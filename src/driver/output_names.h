#pragma once
/// Names of everything that a run writes beside its images.

#include <string>
#include <unordered_map>
#include <unordered_set>

#include "config/parameter_set.h"

namespace zemora {

/// The products of a pair; the letter names the view or product and selects the folder.
enum class ProductKind : char {
    left = 'l',
    right = 'r',
    stereo = 's',
    anaglyph = 'a',
    extra = 'e',
    panorama = 'p'
};

/// A name in its parts, so that stamps and partners are put in and never patched.
struct OutputName {
    std::string folder;       ///< Absolute, without a separator at its end.
    std::string base;         ///< Bare name without marker and suffix.
    std::string partner;      ///< Base of the right view in a combined name, else empty.
    std::string stamp;        ///< Deviation and time stamps.
    std::string tail;         ///< "_cl", "_0_cl", "_OS" and the like.
    std::string ending;       ///< Ending of an extra product, e.g. "-lrq".
    std::string number;       ///< Of the frame, for a still of a film.
    std::string suffix;       ///< With its dot.
    bool over_limit = false;  ///< The deviation passes the limit: "zz_" before the name.

    [[nodiscard]] std::string bare() const;
    [[nodiscard]] std::string path() const;
};

/// Forms the name of a product. `root` is the output root, `relative` the input name below the image
/// folder (or an absolute one, which keeps its own folder unless `PathofOutput` is absolute), `frame_index`
/// counts fields of video.
[[nodiscard]] OutputName output_path(const ParameterSet& parameters, const std::string& root,
                                     const std::string& relative, ProductKind kind, int frame_index,
                                     const std::string& suffix);

/// The deviations of a pair as fractions of the width.
struct StampValues {
    double deviation = 0.0;
    double projected_deviation = 0.0;
    std::string time_stamp;    ///< "_2026.01.31_23.59.59"
    bool stamps_time = false;  ///< Whatever `StampFiles` says.
};

/// Puts in the stamps that `StampFiles` asks for, and "zz_" above `DeviationThresh` (images only).
void stamp_name(OutputName& name, const ParameterSet& parameters, const StampValues& values);

/// Puts in the number of a frame. The tail that tells the product goes where the folder tells it.
void number_frame(OutputName& name, const ParameterSet& parameters, ProductKind kind, int frame);

/// The common base of a pair. When there is one, the markers go from both relative names.
[[nodiscard]] bool take_common_base(const ParameterSet& parameters, std::string& left_relative,
                                    std::string& right_relative);

/// Whether a pair without common base gets the names of both views.
[[nodiscard]] bool wants_combined_name(const ParameterSet& parameters, bool two_files, bool common_base);

/// Makes a left name the combined name of both views.
void combine_names(OutputName& name, const OutputName& right);

/// The ending of an extra product for `ExtraOutput`; format 5 changes the suffix instead.
void add_extra_ending(OutputName& name, int extra_output, bool inverse_output);

/// Calendar seconds of now.
[[nodiscard]] long long current_seconds();

/// The stamp of a moment: "_%04d.%02d.%02d_%02d.%02d.%02d".
[[nodiscard]] std::string stamp_text(long long calendar_seconds);

/// Names given away in this run: a second one of the same path gets "-2" before its kind tail, also when a
/// pair is stored once more.
class GivenNames {
public:
    /// Changes `name` until it is new; true when it had to.
    bool give_free_name(OutputName& name);
    /// Gives a name away that an earlier run has written. Without `has_stamp` its stamp of the deviation is
    /// unknown, so nothing gets this name with any stamp.
    void close(const OutputName& name, bool has_stamp);
    /// An object stands before others in the list that is still open: whether it had its name then, nobody
    /// knows. What may be the name of a later one is not given while a file has it.
    void note_open(const OutputName& name);

private:
    /// Files of an earlier run that differ in their stamps alone.
    struct Earlier {
        int count = 0;         ///< In the list so far.
        int open = 0;          ///< Of these without a result.
        int closed_up_to = 0;  ///< Numbers that may stand behind a stamp nobody knows.
        int doubtful_up_to = 0;
    };
    /// By hash, so that a long run stays small; a chance collision costs a needless "-2".
    std::unordered_set<std::size_t> given_;
    std::unordered_map<std::size_t, Earlier> earlier_;
};

}  // namespace zemora
