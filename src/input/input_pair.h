#pragma once
/// The two views of the current pair: loaded, turned, equal in size, with reduced copies for the
/// analysis.

#include <functional>
#include <string>

#include "config/parameter_set.h"
#include "config/voice.h"
#include "input/conditioning.h"
#include "input/loaded_view.h"
#include "input/mask_crop.h"
#include "input/picture_file.h"
#include "input/view_geometry.h"
#include "numerics/bitmap.h"
#include "numerics/pair_geometry.h"
#include "numerics/rescale.h"

namespace zemora {

/// Result of `read_input_images`.
enum class ReadResult {
    done = 0,
    unreadable = 1,  ///< The pair is skipped.
    converted = 2,   ///< Done, by way of the outside converter.
};

/// Files of one pair; for stereo input `stereo` alone.
struct PairFiles {
    std::string left;
    std::string right;
    std::string stereo;
};

class InputPair {
public:
    InputPair(const ParameterSet& parameters, ViewGeometry& left_geometry, ViewGeometry& right_geometry,
              Voice& voice);

    // Set by the driver before each call.
    int inverse_input = 0;
    int rot_mir_left = 0;  ///< 0 to 7.
    int rot_mir_right = 0;
    bool swap_views = false;  ///< The previewer asked for an exchange.
    bool has_pre_selection = false;
    PreSelection pre_selection;
    float left_zoom = 1.0F;  ///< Of the analysis copies.
    float right_zoom = 1.0F;
    /// Finds the depth image of a photo with depth data.
    std::function<LoadedPicture(const std::string& photo)> find_phone_depth;

    /// Loads the pair and brings it to `view` and, with `make_correlation`, to the analysis copies.
    [[nodiscard]] ReadResult read_input_images(const PairFiles& files, bool make_correlation);
    /// Builds the analysis copies from the final views: long side 800, presets applied.
    void make_correlation_images();
    /// Keeps the part of a video frame that its mask shows, and builds the analysis copies anew.
    void crop_by_mask(const MaskFrame& mask);
    /// Puts other pictures of the same size in the place of the views.
    void replace_views(const StereoPicture& views);
    /// Frees the views of the pair.
    void release_images();

    /// The final views; equal in size.
    [[nodiscard]] StereoPicture full() const { return {left_.picture(), right_.picture()}; }
    [[nodiscard]] int height() const { return left_.height; }
    [[nodiscard]] int width() const { return left_.width; }
    /// The analysis copies.
    [[nodiscard]] StereoPicture reduced() const {
        return {corr_left_.picture(corr_width_, corr_height_),
                corr_right_.picture(corr_width_, corr_height_)};
    }
    [[nodiscard]] int reduced_height() const { return corr_height_; }
    [[nodiscard]] int reduced_width() const { return corr_width_; }

    /// What the unreadable file of the latest call was, with the reason, for the message.
    [[nodiscard]] const std::string& failure() const { return failure_; }
    /// The file that it is about.
    [[nodiscard]] const std::string& failed_file() const { return failed_file_; }

private:
    bool load_two_files(const PairFiles& files);
    bool load_stereo_file(const std::string& path);
    bool load_mpo_file(const std::string& path);
    bool load_phone_photo(const std::string& path);
    /// Loads both views at the same time; `load` is asked for the left (true) and the right one.
    bool load_both(const std::function<LoadedPicture(bool is_left)>& load, const std::string& left_name,
                   const std::string& right_name);
    bool finish_stereo();
    bool settle_two_files();
    bool split_stereo(Bitmap&& stereo, int layout);
    bool load_converted(const PairFiles& files);
    [[nodiscard]] Bitmap load_through_converter(const std::string& path);
    void start_geometry();
    void crop_by_percent();
    [[nodiscard]] std::string mask_stem(const PairFiles& files, bool is_left) const;
    void turn_views();
    void make_equal_size();
    void scale_smaller_view();
    void place_on_canvas();
    void crop_to_smaller();
    void warn_of_sizes(int cropp_input);
    void set_failure(const std::string& path, const std::string& reason);

    const ParameterSet& parameters_;
    Voice& voice_;
    ViewGeometry& left_geometry_;
    ViewGeometry& right_geometry_;
    LoadedView left_;
    LoadedView right_;
    Bitmap corr_left_;
    Bitmap corr_right_;
    int corr_height_ = 0;
    int corr_width_ = 0;
    RescaleScratch scratch_;
    Colour passe_colour_;
    bool two_files_;
    bool unsupported_ = false;  ///< The load failed for a format that only the converter may know.
    std::string failure_;
    std::string failed_file_;
};

}  // namespace zemora
