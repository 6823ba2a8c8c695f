#pragma once
/// The objects of a run: each a left and a right file or one stereo file.

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "config/notes.h"
#include "input/collect_options.h"
#include "input/depth_gaps.h"
#include "input/stored_record.h"
#include "numerics/result.h"

namespace zemora {

/// One object, by the numbers of its names. A stereo file is both left and right.
struct ImageObject {
    static constexpr std::int32_t kNoRow = -1;
    std::uint32_t left = 0;
    std::uint32_t right = 0;
    std::int32_t stored_row = kNoRow;
};

/// An object that an earlier run has mounted and the list passes over; its products keep their names.
struct MountedObject {
    std::string left;        ///< Absolute; or the stereo file.
    std::string right;       ///< Empty for a stereo file.
    int objects_before = 0;  ///< Of the run, in the order of the list.
    bool has_values = false;
    double deviation = 0.0;  ///< Fraction of the width.
    double image_ratio = 1.0;
};

/// Pairs of a combination share their names, so an object costs twelve bytes.
class ImageList {
public:
    bool two_files = true;
    std::vector<MountedObject> mounted;

    [[nodiscard]] int count() const { return static_cast<int>(objects_.size()); }
    /// Absolute paths.
    [[nodiscard]] const std::string& left(int object) const { return names_[at(object).left]; }
    [[nodiscard]] const std::string& right(int object) const { return names_[at(object).right]; }
    [[nodiscard]] const std::string& stereo(int object) const { return left(object); }
    /// The values that the list of an earlier run gave; null without.
    [[nodiscard]] const StoredCorrectionRecord* stored(int object) const {
        const std::int32_t row = at(object).stored_row;
        return row == ImageObject::kNoRow ? nullptr : &stored_[static_cast<std::size_t>(row)];
    }
    [[nodiscard]] const std::vector<std::string>& names() const { return names_; }

    /// Adds a name without looking whether it is there already.
    std::uint32_t add_name(std::string path) {
        names_.push_back(std::move(path));
        return static_cast<std::uint32_t>(names_.size() - 1);
    }
    void add_object(std::uint32_t left, std::uint32_t right) { objects_.push_back({left, right}); }
    void add_object(std::uint32_t left, std::uint32_t right, const StoredCorrectionRecord& values) {
        objects_.push_back({left, right, static_cast<std::int32_t>(stored_.size())});
        stored_.push_back(values);
    }

    /// The left and the right file of an object change places.
    void exchange_views(int object) {
        ImageObject& exchanged = objects_[static_cast<std::size_t>(object)];
        std::swap(exchanged.left, exchanged.right);
    }

private:
    [[nodiscard]] const ImageObject& at(int object) const {
        return objects_[static_cast<std::size_t>(object)];
    }

    std::vector<std::string> names_;
    std::vector<ImageObject> objects_;
    std::vector<StoredCorrectionRecord> stored_;
};

/// Makes the depth masks that a sequence lacks; fails for the run when they cannot be made.
using MakeDepthMasks = std::function<Result<void>(
    const DepthGapPlan& plan, const std::vector<std::string>& photos, const std::vector<std::string>& masks)>;

/// Collects the objects of the run by its `InputMode`, lists them, and writes the names into `ListofImages`
/// where `WriteDataBase` asks for it. Fails for the run where there is nothing to collect from. An empty list
/// means that every object was passed over. Where a sequence has masks at some of its photos only, the others
/// are made first.
[[nodiscard]] Result<ImageList> build_image_list(const CollectOptions& options, Notes& notes,
                                                 const MakeDepthMasks& make_depth_masks = {});

}  // namespace zemora
