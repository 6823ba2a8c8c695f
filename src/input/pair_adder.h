#pragma once
/// Adds accepted pairs and stereo files to the list.

#include <cstdint>
#include <limits>
#include <string>
#include <unordered_map>

#include "config/notes.h"
#include "input/collect_options.h"
#include "input/image_list.h"
#include "platform/directory_walk.h"

namespace zemora {

/// Adds an accepted pair to the list as `InterlacedMode` and `InverseInput` say. One adder serves a run.
class PairAdder {
public:
    PairAdder(const CollectOptions& options, Notes& notes, ImageList& list)
        : options_(options), notes_(notes), list_(list) {}
    /// False when a file cannot be read, which is reported once a file; `left` and `right` take the names as
    /// the disk spells them. An empty name is passed over without a word.
    [[nodiscard]] bool check(std::string& left, std::string& right);
    /// Adds the pair. `stored`, its row of a list, may be null.
    void add(const std::string& left, const std::string& right, const StoredCorrectionRecord* stored);
    [[nodiscard]] int left_name_width() const { return left_name_width_; }

private:
    struct CheckedFile {
        std::string path;  ///< As the disk spells it.
        bool is_readable = false;
    };
    [[nodiscard]] bool check_file(std::string& file);
    [[nodiscard]] CheckedFile look_up(const std::string& file);
    void add_object(std::uint32_t left, std::uint32_t right, const StoredCorrectionRecord* stored);
    [[nodiscard]] std::uint32_t number_of(const std::string& file);

    const CollectOptions& options_;
    Notes& notes_;
    ImageList& list_;
    NameFinder finder_;
    std::unordered_map<std::string, CheckedFile> checked_;
    std::unordered_map<std::string, std::uint32_t> numbers_;
    std::uint32_t left_before_ = 0;  ///< Of the pair before.
    std::uint32_t right_before_ = 0;
    bool has_pair_before_ = false;
    std::uint32_t measured_left_ = std::numeric_limits<std::uint32_t>::max();  ///< The latest one.
    int left_name_width_ = 0;
};

/// Adds a stereo file; a message in place of it where `interlaced_mode` has no meaning for one.
void add_stereo_object(int interlaced_mode, Notes& notes, const std::string& file,
                       const StoredCorrectionRecord* stored, ImageList& list);

/// The name as the disk spells it, which may differ in case. The name itself where there is no such file;
/// where there are several a line says so.
[[nodiscard]] FoundName find_and_tell(NameFinder& finder, Notes& notes, const std::string& file);

/// Characters of a text in UTF-8.
[[nodiscard]] int character_count(const std::string& text);

}  // namespace zemora
