#include "input/input_pair.h"

#include <FreeImage.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "input/conversion.h"
#include "input/file_selection.h"
#include "input/mpo.h"
#include "input/mpo_views.h"
#include "input/passepartout.h"
#include "numerics/rounding.h"
#include "numerics/turn.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "platform/temp_folder.h"

namespace zemora {

namespace {

/// Layouts of a stereo file, the values of `StereoImageInput`.
enum StereoLayout {
    kSideBySide = 1,
    kTwoFiles = 2,
    kHalfWidth = 3,
    kAnaglyph = 4,
    kPhotoAndDepthFiles = 5,
    kPhotoAndDepthSideBySide = 6,
    kPhonePhoto = 7,
};

constexpr int kAnalysisSide = 800;  // pixels; long side of the analysis copies

/// Overwrites all channels with one of them.
void spread_channel(Picture picture, int channel) {
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* pixel = picture.row(y);
        for (int x = 0; x < picture.width; ++x, pixel += kPixelBytes) {
            std::memset(pixel, pixel[channel], kPixelBytes);
        }
    }
}

/// The columns [first, end) of a stereo picture as a bitmap of their own.
Bitmap columns_of(const Bitmap& stereo, int first, int end) {
    return Bitmap(FreeImage_Copy(stereo.handle(), first, 0, end, stereo.height()));
}

void rescale_bicubic(Bitmap& bitmap, int width, int height) {
    bitmap = Bitmap(FreeImage_Rescale(bitmap.handle(), width, height, FILTER_BICUBIC));
}

/// A bitmap of exactly the picture's size, so that both views have one pitch.
void make_exact(LoadedView& view) {
    if (view.bitmap.width() == view.width && view.bitmap.height() == view.height) {
        return;
    }
    Bitmap exact = Bitmap::create(view.width, view.height);
    if (exact) {
        copy(view.picture(), exact.picture());
    }
    view.take(std::move(exact));
}

/// The region that a percentage selection keeps along one axis.
struct KeptRange {
    int first;
    int count;
};

KeptRange kept_range(float start_percent, float size_percent, int side) {
    constexpr float kWhole = 100.0F;
    const auto length = static_cast<float>(side);
    const int first = std::clamp(round_half_up(start_percent * length / kWhole), 0, side - 1);
    const int end = first + round_half_up(size_percent * length / kWhole);
    const int last = end > 0 ? std::min(end, side) - 1 : 0;
    return {first, std::max(last - first + 1, 1)};
}

}  // namespace

InputPair::InputPair(const ParameterSet& parameters, ViewGeometry& left_geometry,
                     ViewGeometry& right_geometry, Voice& voice)
    : parameters_(parameters),
      voice_(voice),
      left_geometry_(left_geometry),
      right_geometry_(right_geometry),
      passe_colour_(passe_colour_of(parameters)),
      two_files_(parameters.stereo_image_input == kTwoFiles ||
                 parameters.stereo_image_input == kPhotoAndDepthFiles) {
    corr_left_ = Bitmap::create(kAnalysisSide, kAnalysisSide);
    corr_right_ = Bitmap::create(kAnalysisSide, kAnalysisSide);
    if (!corr_left_ || !corr_right_) {
        end_run_without_picture_memory(voice.console(),
                                       "96: FAILED TO ALLOCATE MEMORY FOR IMAGE (CORRELATION)\n");
    }
}

void InputPair::set_failure(const std::string& path, const std::string& reason) {
    failed_file_ = path;
    failure_ = printable(path) + ": " + printable(reason);
}

void InputPair::release_images() {
    left_.take(Bitmap());
    right_.take(Bitmap());
}

void InputPair::replace_views(const StereoPicture& views) {
    copy(views.left, left_.picture());
    copy(views.right, right_.picture());
}

ReadResult InputPair::read_input_images(const PairFiles& files, bool make_correlation) {
    release_images();
    unsupported_ = false;
    failure_.clear();
    ReadResult result = ReadResult::done;
    if (!(two_files_ ? load_two_files(files) : load_stereo_file(files.stereo))) {
        if (!unsupported_ || !load_converted(files)) {
            release_images();
            return ReadResult::unreadable;
        }
        result = ReadResult::converted;
    }
    start_geometry();
    if (has_pre_selection) {
        crop_by_percent();
    }
    condition_views({left_, left_geometry_, mask_stem(files, true)},
                    {right_, right_geometry_, mask_stem(files, false)}, parameters_, voice_);
    turn_views();
    make_equal_size();
    make_exact(left_);
    make_exact(right_);
    if (!left_.bitmap || !right_.bitmap) {
        end_run_without_picture_memory(voice_.console(),
                                       "3411: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (CROPP)\n");
    }
    if (make_correlation) {
        make_correlation_images();
    }
    return result;
}

bool InputPair::load_both(const std::function<LoadedPicture(bool is_left)>& load,
                          const std::string& left_name, const std::string& right_name) {
    LoadedPicture left;
    LoadedPicture right;
#pragma omp parallel sections
    {
#pragma omp section
        left = load(true);
#pragma omp section
        right = load(false);
    }
    for (const auto& [picture, name] : {std::pair{&left, &left_name}, std::pair{&right, &right_name}}) {
        if (picture->status != LoadStatus::done) {
            set_failure(*name, picture->reason);
            // A file that is damaged stays unread; only a foreign format goes to the converter.
            unsupported_ = picture->status == LoadStatus::unsupported;
            if (!unsupported_) {
                return false;
            }
        }
    }
    if (left.status != LoadStatus::done || right.status != LoadStatus::done) {
        return false;
    }
    left_.take(std::move(left.bitmap));
    right_.take(std::move(right.bitmap));
    return true;
}

bool InputPair::load_two_files(const PairFiles& files) {
    const auto load = [&files](bool is_left) { return load_picture(is_left ? files.left : files.right); };
    if (!load_both(load, files.left, files.right)) {
        return false;
    }
    return settle_two_files();
}

/// Views that a viewer has exchanged change places; the mask of a photo gets the photo's size.
bool InputPair::settle_two_files() {
    if (swap_views) {
        std::swap(left_, right_);
    }
    if (parameters_.stereo_image_input == kPhotoAndDepthFiles &&
        (right_.width != left_.width || right_.height != left_.height)) {
        Bitmap mask = std::move(right_.bitmap);
        rescale_bicubic(mask, left_.width, left_.height);
        right_.take(std::move(mask));
    }
    return static_cast<bool>(right_.bitmap);
}

bool InputPair::load_mpo_file(const std::string& path) {
    std::string reason;
    const auto content = read_file_whole(path, reason);
    if (!content) {
        voice_.say<Msg::img_input_mpo_file_open_failed>(printable(path));
        voice_.console().wait_for_enter();
        set_failure(path, reason);
        return false;
    }
    const auto pictures = cut_mpo(*content, voice_);
    if (!pictures) {
        set_failure(path, "the second picture is not found");
        return false;
    }
    const MpoCutNames names = mpo_cut_names(path, parameters_.input_mode);
    const auto decode = [&](bool is_left) {
        const std::span<const std::uint8_t> picture = is_left ? pictures->left : pictures->right;
        return decode_picture({picture.begin(), picture.end()}, is_left ? names.left : names.right);
    };
    if (!load_both(decode, path, path)) {
        unsupported_ = false;  // no converter takes a part of a file
        return false;
    }
    if (leaves_cut_pictures(parameters_.estimate_geometry)) {
        keep_cut_pictures(*pictures, names, voice_);
    }
    return finish_stereo();
}

/// The photo at the left, its depth image of the same size at the right.
bool InputPair::load_phone_photo(const std::string& path) {
    LoadedPicture photo = load_picture(path);
    LoadedPicture depth =
        photo.status == LoadStatus::done && find_phone_depth ? find_phone_depth(path) : LoadedPicture{};
    for (const LoadedPicture* picture : {&photo, &depth}) {
        if (picture->status != LoadStatus::done) {
            set_failure(path, picture->reason);
            return false;
        }
    }
    rescale_bicubic(depth.bitmap, photo.bitmap.width(), photo.bitmap.height());
    left_.take(std::move(photo.bitmap));
    right_.take(std::move(depth.bitmap));
    return finish_stereo();
}

bool InputPair::load_stereo_file(const std::string& path) {
    if (is_mpo_name(path) || (parameters_.stereo_image_input == kSideBySide && holds_two_views(path))) {
        return load_mpo_file(path);
    }
    if (parameters_.stereo_image_input == kPhonePhoto) {
        return load_phone_photo(path);
    }
    LoadedPicture stereo = load_picture(path);
    if (stereo.status != LoadStatus::done) {
        set_failure(path, stereo.reason);
        unsupported_ = stereo.status == LoadStatus::unsupported;
        return false;
    }
    if (!split_stereo(std::move(stereo.bitmap), parameters_.stereo_image_input)) {
        set_failure(path, "the picture cannot be split into two views");
        return false;
    }
    return true;
}

bool InputPair::split_stereo(Bitmap&& stereo, int layout) {
    const Bitmap whole = std::move(stereo);
    const int width = whole.width();
    if (layout == kAnaglyph) {
        left_.take(whole.clone());
        right_.take(whole.clone());
        if (left_.bitmap && right_.bitmap) {
            spread_channel(left_.picture(), FI_RGBA_RED);
            spread_channel(right_.picture(), FI_RGBA_GREEN);
        }
    } else {
        left_.take(columns_of(whole, 0, width / 2));
        right_.take(columns_of(whole, width / 2, width));
        if (layout == kHalfWidth && left_.bitmap && right_.bitmap) {
            rescale_bicubic(left_.bitmap, width, whole.height());
            rescale_bicubic(right_.bitmap, width, whole.height());
            left_.take(std::move(left_.bitmap));
            right_.take(std::move(right_.bitmap));
        }
    }
    return finish_stereo();
}

/// Both views of a stereo file get the width of the narrower one; `inverse_input` exchanges them, but no
/// photo and its depth mask.
bool InputPair::finish_stereo() {
    if (left_.width == 0 || right_.width == 0) {
        return false;
    }
    const int common = std::min(left_.width, right_.width);
    left_.width = common;
    right_.width = common;
    make_exact(left_);
    make_exact(right_);
    if (inverse_input == 1 && !holds_depth_mask(parameters_.stereo_image_input)) {
        std::swap(left_, right_);
    }
    return static_cast<bool>(left_.bitmap) && static_cast<bool>(right_.bitmap);
}

Bitmap InputPair::load_through_converter(const std::string& path) {
    const std::string& folder = temporary_folder();
    const std::string target = folder + "/zemora_temp_" + without_suffix(bare_name_of(path)) + ".bmp";
    const Conversion conversion = folder.empty()
                                      ? Conversion::failed
                                      : convert_picture(parameters_.path_of_irfanview, path, target, voice_);
    if (conversion != Conversion::done) {
        set_failure(path, conversion == Conversion::no_converter
                              ? "the format is not supported and there is no converter for it"
                              : "the format is not supported and the converter has failed");
        return {};
    }
    LoadedPicture converted = load_picture(target);
    std::remove(target.c_str());
    if (converted.status != LoadStatus::done) {
        set_failure(path, "the conversion gave no readable picture");
    }
    return std::move(converted.bitmap);
}

bool InputPair::load_converted(const PairFiles& files) {
    voice_.say<Msg::img_input_image_type_tried_with_irfanview>();
    voice_.print("\n");
    if (!two_files_) {
        Bitmap stereo = load_through_converter(files.stereo);
        return stereo && split_stereo(std::move(stereo), kSideBySide);
    }
    Bitmap left = load_through_converter(files.left);
    if (!left) {
        return false;
    }
    Bitmap right = load_through_converter(files.right);
    if (!right) {
        return false;
    }
    left_.take(std::move(left));
    right_.take(std::move(right));
    return settle_two_files();
}

void InputPair::start_geometry() {
    for (const auto& [geometry, view] :
         {std::pair{&left_geometry_, &left_}, std::pair{&right_geometry_, &right_}}) {
        geometry->crop_x = 0;
        geometry->crop_y = 0;
        geometry->crop_width = view->width;
        geometry->crop_height = view->height;
        geometry->scaled_width = 0;
        geometry->scaled_height = 0;
    }
    left_geometry_.rot_mir = rot_mir_left;
    right_geometry_.rot_mir = rot_mir_right;
}

void InputPair::crop_by_percent() {
    struct Axis {
        const char* start_label;
        const char* size_label;
        const char* lone_size_label;  ///< Where the size stands alone.
        float start;
        float size;
    };
    const PreSelection& chosen = pre_selection;
    const Axis axes[] = {
        {"   LeftImageStartx = ", "   LeftImageWidth  = ", "   LeftImageWidth  = ", chosen.left_start_x,
         chosen.left_width},
        {"   LeftImageStarty = ", "   LeftImageHeight = ", "   LeftImageHeight  = ", chosen.left_start_y,
         chosen.left_height},
        {"   RightImageStartx = ", "   RightImageWidth  = ", "   RightImageWidth  = ", chosen.right_start_x,
         chosen.right_width},
        {"   RightImageStarty = ", "   RightImageHeight = ", "   RightImageHeight  = ", chosen.right_start_y,
         chosen.right_height},
    };
    constexpr float kTenths = 10.0F;
    constexpr int kLimit = 1001;  // tenths of a per cent; just above the whole
    for (const Axis& axis : axes) {
        if (axis.size < 1.0F) {
            voice_.print(format_text("%s%5.1f", axis.lone_size_label, static_cast<double>(axis.size)));
            voice_.say<Msg::img_input_value_not_used>();
            voice_.print("\n");
            return;
        }
    }
    for (const Axis& axis : axes) {
        if (0L + round_half_up(axis.start * kTenths) + round_half_up(axis.size * kTenths) >= kLimit) {
            voice_.say<Msg::img_input_selection_sum_above_100>();
            voice_.print(format_text("\n%s%5.1f\n%s%5.1f\n", axis.start_label,
                                     static_cast<double>(axis.start), axis.size_label,
                                     static_cast<double>(axis.size)));
            return;
        }
    }
    const auto crop = [](LoadedView& view, ViewGeometry& geometry, const Axis& x_axis, const Axis& y_axis) {
        const KeptRange x = kept_range(x_axis.start, x_axis.size, view.width);
        const KeptRange y = kept_range(y_axis.start, y_axis.size, view.height);
        keep_region(view, x.first, y.first, x.count, y.count);
        geometry.crop_x = x.first;
        geometry.crop_y = y.first;
        geometry.crop_width = x.count;
        geometry.crop_height = y.count;
    };
    crop(left_, left_geometry_, axes[0], axes[1]);
    crop(right_, right_geometry_, axes[2], axes[3]);
}

std::string InputPair::mask_stem(const PairFiles& files, bool is_left) const {
    if (!two_files_) {
        return without_suffix(files.stereo) + (is_left ? "_l" : "_r");
    }
    return without_suffix(is_left != swap_views ? files.left : files.right);
}

void InputPair::turn_views() {
    for (const auto& [view, mode] : {std::pair{&left_, rot_mir_left}, std::pair{&right_, rot_mir_right}}) {
        if (mode <= 0 || mode >= kTurnModes) {
            continue;
        }
        const bool exchanged = exchanges_sides(mode);
        Bitmap turned =
            Bitmap::create(exchanged ? view->height : view->width, exchanged ? view->width : view->height);
        if (!turned) {
            end_run_without_picture_memory(voice_.console(),
                                           "3109: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (ROT RIGHT) \n");
        }
        const Picture source = view->picture();
        turn_pixels({source.bits, source.pitch}, source.width, source.height, kPixelBytes, mode,
                    {turned.bits(), turned.pitch()});
        view->take(std::move(turned));
    }
}

void InputPair::warn_of_sizes(int cropp_input) {
    constexpr float kVeryDifferent = 0.15F;
    const auto ratio = [](int a, int b) {
        return std::fabs(static_cast<float>(a - b)) / static_cast<float>(a + b);
    };
    if (ratio(left_.height, right_.height) > kVeryDifferent ||
        ratio(left_.width, right_.width) > kVeryDifferent) {
        voice_.say<Msg::img_input_sizes_very_different>();
        voice_.wait(Severity::warning);
        if (cropp_input == 2 && parameters_.passepartout >= 3) {
            voice_.say<Msg::img_input_better_cropp_input_2>();
            voice_.wait(Severity::error);
        }
        if (cropp_input != 2 && has_pre_selection) {
            voice_.say<Msg::img_input_better_cropp_input_0>();
            voice_.wait(Severity::error);
        }
    }
}

void InputPair::make_equal_size() {
    left_geometry_.frame_x = left_geometry_.frame_y = 0;
    right_geometry_.frame_x = right_geometry_.frame_y = 0;
    if (left_.width != right_.width || left_.height != right_.height) {
        const int cropp_input = parameters_.cropp_input;
        warn_of_sizes(cropp_input);
        if (cropp_input == 1) {
            crop_to_smaller();
        } else {
            if (cropp_input == 2) {
                scale_smaller_view();
            }
            place_on_canvas();
        }
    }
    for (ViewGeometry* geometry : {&left_geometry_, &right_geometry_}) {
        geometry->frame_width = left_.width;
        geometry->frame_height = left_.height;
    }
}

void InputPair::scale_smaller_view() {
    const auto smaller_both_ways = [](const LoadedView& a, const LoadedView& b) {
        return a.width < b.width && a.height < b.height;
    };
    LoadedView* small = nullptr;
    const LoadedView* large = nullptr;
    if (smaller_both_ways(left_, right_)) {
        small = &left_;
        large = &right_;
    } else if (smaller_both_ways(right_, left_)) {
        small = &right_;
        large = &left_;
    } else {
        return;
    }
    const double factor = std::min(static_cast<double>(large->height) / small->height,
                                   static_cast<double>(large->width) / small->width);
    Bitmap scaled =
        Bitmap::create(round_half_up(small->width * factor), round_half_up(small->height * factor));
    if (!scaled) {
        end_run_without_picture_memory(voice_.console(),
                                       "3442: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (CROPP)\n");
    }
    (void)rescale(small->picture(), scaled.picture(), scratch_, RescaleFilter::bicubic, RescaleFit::stretch);
    small->take(std::move(scaled));
    ViewGeometry& geometry = small == &left_ ? left_geometry_ : right_geometry_;
    geometry.scaled_width = small->width;
    geometry.scaled_height = small->height;
}

void InputPair::place_on_canvas() {
    const int width = std::max(left_.width, right_.width);
    const int height = std::max(left_.height, right_.height);
    const auto place = [&](LoadedView& view, ViewGeometry& geometry) {
        Bitmap canvas = Bitmap::create(width, height);
        if (!canvas) {
            end_run_without_picture_memory(voice_.console(),
                                           "3585: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (CROPP)\n");
        }
        geometry.frame_x = (width - view.width) / 2;
        geometry.frame_y = (height - view.height) / 2;
        fill(canvas.picture(), passe_colour_);
        copy(view.picture(),
             canvas.picture().part(geometry.frame_x, geometry.frame_y, view.width, view.height));
        view.take(std::move(canvas));
    };
    place(left_, left_geometry_);
    place(right_, right_geometry_);
}

void InputPair::crop_to_smaller() {
    voice_.say<Msg::img_input_sizes_differ>();
    voice_.say<Msg::img_input_cropped_without_scaling>();
    voice_.wait(Severity::information);
    const int width = std::min(left_.width, right_.width);
    const int height = std::min(left_.height, right_.height);
    const auto crop = [&](LoadedView& view, ViewGeometry& geometry) {
        const int x = (view.width - width) / 2;
        const int y = (view.height - height) / 2;
        keep_region(view, x, y, width, height);
        geometry.frame_x = -x;
        geometry.frame_y = -y;
    };
    crop(left_, left_geometry_);
    crop(right_, right_geometry_);
}

void InputPair::crop_by_mask(const MaskFrame& mask) {
    const PictureSize kept = apply_mask_crop(left_.picture(), right_.picture(), mask);
    for (LoadedView* view : {&left_, &right_}) {
        view->width = kept.width;
        view->height = kept.height;
    }
    make_correlation_images();
}

void InputPair::make_correlation_images() {
    const double w = left_.width;
    const double h = left_.height;
    const bool portrait = left_.width <= left_.height;
    corr_height_ = portrait ? kAnalysisSide : std::max(round_half_up(h * kAnalysisSide / w), 2);
    corr_width_ = portrait ? std::max(round_half_up(w * kAnalysisSide / h), 2) : kAnalysisSide;
    const PreSelection none;
    const PreSelection& preset = has_pre_selection ? pre_selection : none;
    const double half_vergence = 0.5 * preset.vergence_v;
    const auto reduce = [&](const LoadedView& view, Bitmap& target, RotatedRescale how) {
        how.outside = passe_colour_;
        rescale_rotated(view.picture(), target.picture(corr_width_, corr_height_), how);
    };
    reduce(left_, corr_left_, {preset.rotation_left, half_vergence, left_zoom, {}});
    reduce(right_, corr_right_, {preset.rotation_right, -half_vergence, right_zoom, {}});
}

}  // namespace zemora
