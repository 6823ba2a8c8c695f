#pragma once
/// All metadata work, through the outside program exiftool. One process serves the whole run.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "config/parameter_set.h"
#include "config/voice.h"
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

class ExifTool {
public:
    ExifTool(const ParameterSet& parameters, Voice& voice);

    /// Looks for the program; warns once, in the words of the catalogue, when it is missing.
    void require();
    /// Looks for the program at the first call that needs it; without a word when it is missing.
    [[nodiscard]] bool is_available();

    /// The EXIF orientation 1 to 8 of a picture; 0 when it has none.
    [[nodiscard]] int read_orientation(const std::string& path);
    /// The line that names the software of a picture, or an empty text.
    [[nodiscard]] std::string read_software(const std::string& path);
    /// The IPTC headline of a picture, or an empty text.
    [[nodiscard]] std::string read_headline(const std::string& path);
    /// The maker of the camera, or an empty text.
    [[nodiscard]] std::string read_maker(const std::string& path);
    /// The bytes of a tag of a picture; empty when it has none.
    [[nodiscard]] std::vector<std::uint8_t> read_binary(const std::string& path, const std::string& tag);
    /// Gives a file that the run has made the EXIF orientation of `source`.
    void copy_orientation(const std::string& source, const std::string& target);
    /// Puts the sRGB profile into a file that the run has made.
    void add_standard_profile(const std::string& path);
    /// The line that holds the record; nothing when the call failed.
    [[nodiscard]] std::optional<std::string> read_record(const std::string& path, InputClass input_class);
    /// Writes the record into the input file.
    bool write_record(const std::string& path, InputClass input_class, const std::string& text);
    /// Begins to fetch the colour profile of an input, which a transfer will want.
    void prefetch_profile(const std::string& source);
    /// Begins to copy profile and tags of `source` to the stored file `target`. `finish` waits for it.
    void start_transfer(const std::string& source, const std::string& target,
                        const TagPermissions& permissions, const SoftwareTagValues& values,
                        bool is_extra_output);
    /// Waits for what was begun, in its order. A failure is told with the name of the file.
    void finish();
    /// Waits as well; false when a transfer has failed since the last call.
    [[nodiscard]] bool settle_transfers();
    /// Waits for what was begun and forgets what was read of the files of a pair.
    void forget_pair();

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
    Answer run(const std::vector<std::string>& arguments);
    /// Reads something of `path`; a file that cannot be read is told once in a run.
    Answer read(const std::string& path, const std::vector<std::string>& arguments);
    Answer run_alone(const std::vector<std::string>& arguments) const;
    /// Sends the request, or runs it at once where the dialog cannot take it.
    void start(const std::vector<std::string>& arguments, std::function<void(const Answer&)> done);
    [[nodiscard]] bool send(const std::vector<std::string>& arguments);
    [[nodiscard]] std::optional<Answer> receive();
    void keep_profile(const std::string& source, const Answer& answer);
    /// Arguments that give the target the profile that its pixels have: that of `source`, else the one of
    /// the space that Exif names; of printer's colours that of `CMYK_Profile` or none.
    std::vector<std::string> profile_arguments(const std::string& source, const std::string& target);
    void tell_unreadable(const std::string& path, const Answer& answer);
    void tell_failure(const std::string& path, const Answer& answer) const;
    /// Removes what a run that was broken off has left beside a file of this run, where exiftool works on it.
    void remove_left_over(const std::string& path) const;

    const ParameterSet& parameters_;
    Voice& voice_;
    long long run_start_;  ///< Calendar seconds.
    bool transfer_failed_ = false;
    std::set<std::string> unreadable_;  ///< Files that were told.
    bool looked_for_ = false;
    std::string program_;
    ChildDialog dialog_;
    std::deque<Pending> pending_;
    std::map<std::string, std::string> profile_files_;  ///< Source to the file that holds its profile.
};

/// The RotMirInput code of an EXIF orientation 1 to 8; 0 for any other value.
[[nodiscard]] int rot_mir_of_orientation(int orientation);

}  // namespace zemora
