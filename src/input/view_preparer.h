#pragma once
/// From decoded pictures to the two equal views of a pair, whether they were files or frames.

#include "config/notes.h"
#include "input/conditioning.h"
#include "input/mask_crop.h"
#include "input/view_geometry.h"
#include "input/view_source.h"
#include "numerics/pair_geometry.h"
#include "numerics/rescale.h"
#include "numerics/result.h"

namespace zemora {

/// The views of a pair, turned and equal in size, and their reduced copies for the analysis.
struct InputViews {
    LoadedView left;
    LoadedView right;
    InputGeometry left_geometry;
    InputGeometry right_geometry;
    Bitmap reduced_left;  ///< May be larger than the copy.
    Bitmap reduced_right;
    PictureSize reduced_size;

    [[nodiscard]] StereoPicture full() const { return {left.picture(), right.picture()}; }
    [[nodiscard]] int height() const { return left.height; }
    [[nodiscard]] int width() const { return left.width; }
    [[nodiscard]] StereoPicture reduced() const {
        return {reduced_left.picture(reduced_size.width, reduced_size.height),
                reduced_right.picture(reduced_size.width, reduced_size.height)};
    }
    [[nodiscard]] int reduced_height() const { return reduced_size.height; }
    [[nodiscard]] int reduced_width() const { return reduced_size.width; }

    /// Puts other pictures of the same size in the place of the full-size views.
    void replace_views(const StereoPicture& views) {
        copy(views.left, left.picture());
        copy(views.right, right.picture());
    }
};

/// What settings, files and a person want done with the views of one pair.
struct ViewOrders {
    bool exchanged = false;  ///< Left and right change places before anything else is done.
    int rot_mir_left = 0;    ///< 0 to 7.
    int rot_mir_right = 0;
    bool has_pre_selection = false;
    PreSelection pre_selection;
    float left_zoom = 1.0F;  ///< Of the reduced copies.
    float right_zoom = 1.0F;
    MaskStems mask_stems;      ///< Of the views as they stand after the exchange.
    bool wants_copies = true;  ///< The reduced copies, which the analysis starts from.
};

struct PrepareOptions {
    int cropp_input = setting::cropp_input::framed;  ///< How views of different sizes become equal.
    FrameOptions frame;
};

/// Prepares one pair after the other; keeps memory for the reduced copies. One serves a thread.
class ViewPreparer {
public:
    explicit ViewPreparer(const PrepareOptions& options) : options_(options) {}

    /// Exchange, pre-selection, frame, turning, one size, and copies whose long side has 800 pixels. Fails
    /// for the run without memory, or where a mask file is missing or unfit.
    [[nodiscard]] Result<InputViews> prepare(RawViews raw, const ViewOrders& orders, Notes& notes);
    /// Keeps the part of a video frame that its mask shows, and makes the reduced copies anew.
    void crop_by_mask(InputViews& views, const MaskFrame& mask, const ViewOrders& orders) const;
    /// Frees the full-size views and keeps the memory of the copies for the next pair.
    void take_back(InputViews&& used);

private:
    [[nodiscard]] Result<void> provide_copies(InputViews& views);
    void make_reduced(InputViews& views, const ViewOrders& orders) const;

    PrepareOptions options_;
    Bitmap spare_left_;
    Bitmap spare_right_;
    RescaleScratch scratch_;
};

}  // namespace zemora
