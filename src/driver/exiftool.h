#pragma once
/// All metadata work, through the outside program exiftool. One process serves the whole run.

#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "config/notes.h"
#include "config/parameter_set.h"
#include "platform/child_dialog.h"

namespace zemora {

/// Which tag of an input file can hold the record of a pair.
enum class InputClass { none = 0, jpeg = 1, tiff = 2, mpo = 3 };

/// What may be transferred to an output file.
struct TagPermissions {
    bool exif_ok = false;
    bool tags_ok = false;
    bool colour_profile_ok = false;
    bool keeps_orientation = false;  ///< The product lies as its source does.
};

/// The software tag's values, per mille of the output width.
struct SoftwareTagValues {
    int near_point = 0;
    int far_point = 0;
    int deviation = 0;
};

/// What becomes of the requests for one file, which run beside its store. Must live until they are settled.
struct TransferLog {
    explicit TransferLog(const Notes& listener) : notes(KeptNotes::for_listener(listener)) {}
    KeptNotes notes;
    bool has_failure = false;
};

/// The program is started by the first call that needs it. It ends with the thread of that call, where the
/// process does not end it before. May be called from several threads. Failures are reported to the `notes`
/// of the call.
class ExifTool {
public:
    explicit ExifTool(const ParameterSet& parameters);

    /// Looks for the program; warns once, in the words of the catalogue, when it is missing.
    void require(Notes& notes);
    /// Looks for the program at the first call that needs it; without a word when it is missing.
    [[nodiscard]] bool is_available();

    /// The EXIF orientation 1 to 8 of a picture; 0 when it has none.
    [[nodiscard]] int read_orientation(const std::string& path, Notes& notes);
    /// The line that names the software of a picture, or an empty text.
    [[nodiscard]] std::string read_software(const std::string& path, Notes& notes);
    /// The IPTC headline of a picture, or an empty text.
    [[nodiscard]] std::string read_headline(const std::string& path, Notes& notes);
    /// The maker of the camera, or an empty text.
    [[nodiscard]] std::string read_maker(const std::string& path, Notes& notes);
    /// The bytes of a tag of a picture; empty when it has none.
    [[nodiscard]] std::vector<std::uint8_t> read_binary(const std::string& path, const std::string& tag,
                                                        Notes& notes);
    /// Gives a file that the run has made the EXIF orientation of `source`.
    void copy_orientation(const std::string& source, const std::string& target, Notes& notes);
    /// Puts the sRGB profile into a file that the run has made.
    void add_standard_profile(const std::string& path, Notes& notes);
    /// The line that holds the record; nothing when the call failed.
    [[nodiscard]] std::optional<std::string> read_record(const std::string& path, InputClass input_class,
                                                         Notes& notes);
    /// Writes the record into the input file.
    bool write_record(const std::string& path, InputClass input_class, const std::string& text, Notes& notes);
    /// Begins to fetch the colour profile of an input, which a transfer will want.
    void prefetch_profile(const std::string& source, TransferLog& log);
    /// Begins to copy profile and tags of `source` to the stored file `target`. `settle` waits for it.
    void start_transfer(const std::string& source, const std::string& target,
                        const TagPermissions& permissions, const SoftwareTagValues& values,
                        bool is_extra_output, TransferLog& log, Notes& notes);
    /// Waits for all that was begun; false when a transfer of this log has failed. Reports the failures of
    /// this log with the name of the file.
    [[nodiscard]] bool settle(TransferLog& log, Notes& notes);
    /// Waits for what was begun and forgets what was read of these files.
    void forget_files(std::initializer_list<std::string> sources);

private:
    struct Answer {
        int exit_code = -1;
        std::vector<std::uint8_t> output;
        std::string errors;  ///< What exiftool says of a failure.
    };
    /// A request that was sent and waits for its answer.
    struct Pending {
        std::vector<std::string> arguments;
        std::function<void(const Answer&)> done;
    };
    // All of these with the lock of the call held.
    [[nodiscard]] bool find();
    void finish();
    Answer run(const std::vector<std::string>& arguments);
    /// Reads something of `path`; a file that cannot be read is reported once in a run.
    Answer read(const std::string& path, const std::vector<std::string>& arguments, Notes& notes);
    Answer run_alone(const std::vector<std::string>& arguments) const;
    /// Sends the request, or runs it at once where the dialog cannot take it.
    void start(const std::vector<std::string>& arguments, std::function<void(const Answer&)> done);
    [[nodiscard]] bool send(const std::vector<std::string>& arguments);
    [[nodiscard]] std::optional<Answer> receive();
    void keep_profile(const std::string& source, const Answer& answer, Notes& notes);
    /// Arguments that give the target the profile that its pixels have: that of `source`, else the one of
    /// the space that Exif names; of printer's colours that of `CMYK_Profile` or none.
    std::vector<std::string> profile_arguments(const std::string& source, const std::string& target,
                                               Notes& notes);
    void tell_unreadable(const std::string& path, const Answer& answer, Notes& notes);
    static void tell_failure(const std::string& path, const Answer& answer, Notes& notes);
    /// Removes what a run that was broken off has left beside a file of this run, where exiftool works on it.
    void remove_left_over(const std::string& path, Notes& notes) const;

    const ParameterSet& parameters_;
    long long run_start_;               ///< Calendar seconds.
    std::mutex mutex_;                  ///< One call at a time talks to the program.
    std::set<std::string> unreadable_;  ///< Files that were reported.
    bool looked_for_ = false;
    std::string program_;
    ChildDialog dialog_;
    std::deque<Pending> pending_;
    std::map<std::string, std::string> profile_files_;  ///< Source to the file that holds its profile.
    int fetched_profiles_ = 0;                          ///< So that each has a name of its own.
};

/// The RotMirInput code of an EXIF orientation 1 to 8; 0 for any other value.
[[nodiscard]] int rot_mir_of_orientation(int orientation);

}  // namespace zemora
