#include "input/pair_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <utility>

#include "codec/bitmap_forms.h"
#include "input/conversion.h"
#include "input/file_selection.h"
#include "input/mpo.h"
#include "input/mpo_views.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "platform/temp_folder.h"

namespace zemora {

namespace layout = setting::stereo_image_input;

namespace {

/// Overwrites all channels with one of them.
void spread_channel(Picture picture, std::size_t channel) {
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* pixel = picture.row(y);
        for (int x = 0; x < picture.width; ++x, pixel += kPixelBytes) {
            std::memset(pixel, pixel[channel], kPixelBytes);
        }
    }
}

/// The way of one pair from its files into memory.
class PairReader {
public:
    PairReader(const PairFiles& files, const PairReadOptions& options, Notes& notes)
        : files_(files),
          options_(options),
          notes_(notes),
          two_files_(takes_two_files(options.stereo_image_input)) {}

    [[nodiscard]] Result<RawViews> read() {
        if (!(two_files_ ? load_two_files() : load_stereo_file(files_.stereo))) {
            views_ = {};
            if (!is_foreign_ || !load_converted()) {
                return failure_;
            }
            views_.converted = true;
        }
        return std::move(views_);
    }

private:
    bool load_two_files();
    bool load_stereo_file(const std::string& path);
    bool load_mpo_file(const std::string& path);
    bool load_phone_photo(const std::string& path);
    /// Loads both views at the same time; `load` is asked for the left (true) and the right one.
    bool load_both(const std::function<LoadedPicture(bool is_left)>& load, const std::string& left_name,
                   const std::string& right_name);
    bool load_converted();
    [[nodiscard]] Bitmap load_through_converter(const std::string& path);
    bool split_stereo(const Bitmap& whole, int stereo_layout);
    bool make_equally_wide();
    bool fit_mask_to_photo();
    void fail(const std::string& path, const std::string& reason);

    const PairFiles& files_;
    const PairReadOptions& options_;
    Notes& notes_;
    RawViews views_;
    bool two_files_;
    bool is_foreign_ = false;  ///< The load failed for a format that only the converter may know.
    Failure failure_ = Failure::of_pair({});
};

void PairReader::fail(const std::string& path, const std::string& reason) {
    failure_ = Failure::of_pair(printable(path) + ": " + printable(reason));
    failure_.file = path;
}

bool PairReader::load_both(const std::function<LoadedPicture(bool is_left)>& load,
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
            fail(*name, picture->reason);
            // A file that is damaged stays unread; only a foreign format goes to the converter.
            is_foreign_ = picture->status == LoadStatus::unsupported;
            if (!is_foreign_) {
                return false;
            }
        }
    }
    if (left.status != LoadStatus::done || right.status != LoadStatus::done) {
        return false;
    }
    views_.left.take(std::move(left.bitmap));
    views_.right.take(std::move(right.bitmap));
    return true;
}

bool PairReader::load_two_files() {
    const auto load = [this](bool is_left) { return load_picture(is_left ? files_.left : files_.right); };
    return load_both(load, files_.left, files_.right) && fit_mask_to_photo();
}

/// The mask of a photo gets the photo's size; two views stay as they are.
bool PairReader::fit_mask_to_photo() {
    LoadedView& right = views_.right;
    const LoadedView& photo = views_.left;
    if (options_.stereo_image_input == layout::photo_and_depth_files &&
        (right.width != photo.width || right.height != photo.height)) {
        Bitmap mask = std::move(right.bitmap);
        mask = scaled_bicubic(mask, photo.width, photo.height);
        right.take(std::move(mask));
    }
    return static_cast<bool>(right.bitmap);
}

bool PairReader::load_mpo_file(const std::string& path) {
    std::string reason;
    const auto content = read_file_whole(path, reason);
    if (!content) {
        notes_.say<Msg::img_input_mpo_file_open_failed>(printable(path));
        notes_.wait(Severity::must_be_seen);
        fail(path, reason);
        return false;
    }
    const auto pictures = cut_mpo(*content, notes_);
    if (!pictures) {
        fail(path, "the second picture is not found");
        return false;
    }
    const MpoCutNames names = mpo_cut_names(path, options_.has_view_folders);
    const auto decode = [&](bool is_left) {
        const std::span<const std::uint8_t> picture = is_left ? pictures->left : pictures->right;
        return decode_picture({picture.begin(), picture.end()}, is_left ? names.left : names.right);
    };
    if (!load_both(decode, path, path)) {
        is_foreign_ = false;  // no converter takes a part of a file
        return false;
    }
    if (options_.keeps_cut_pictures) {
        keep_cut_pictures(*pictures, names, notes_);
    }
    return make_equally_wide();
}

/// The photo at the left, its depth image of the same size at the right.
bool PairReader::load_phone_photo(const std::string& path) {
    LoadedPicture photo = load_picture(path);
    LoadedPicture depth = photo.status == LoadStatus::done && options_.find_phone_depth
                              ? options_.find_phone_depth(path, notes_)
                              : LoadedPicture{};
    for (const LoadedPicture* picture : {&photo, &depth}) {
        if (picture->status != LoadStatus::done) {
            fail(path, picture->reason);
            return false;
        }
    }
    depth.bitmap = scaled_bicubic(depth.bitmap, photo.bitmap.width(), photo.bitmap.height());
    views_.left.take(std::move(photo.bitmap));
    views_.right.take(std::move(depth.bitmap));
    return make_equally_wide();
}

bool PairReader::load_stereo_file(const std::string& path) {
    if (is_mpo_name(path) || (options_.stereo_image_input == layout::side_by_side && holds_two_views(path))) {
        return load_mpo_file(path);
    }
    if (options_.stereo_image_input == layout::phone_photo) {
        return load_phone_photo(path);
    }
    const LoadedPicture stereo = load_picture(path);
    if (stereo.status != LoadStatus::done) {
        fail(path, stereo.reason);
        is_foreign_ = stereo.status == LoadStatus::unsupported;
        return false;
    }
    if (!split_stereo(stereo.bitmap, options_.stereo_image_input)) {
        fail(path, "the picture cannot be split into two views");
        return false;
    }
    return true;
}

bool PairReader::split_stereo(const Bitmap& whole, int stereo_layout) {
    LoadedView& left = views_.left;
    LoadedView& right = views_.right;
    const int width = whole.width();
    if (stereo_layout == layout::anaglyph) {
        left.take(whole.clone());
        right.take(whole.clone());
        if (left.bitmap && right.bitmap) {
            spread_channel(left.picture(), offsetof(Colour, red));
            spread_channel(right.picture(), offsetof(Colour, green));
        }
    } else {
        left.take(columns_of(whole, 0, width / 2));
        right.take(columns_of(whole, width / 2, width));
        if (stereo_layout == layout::half_width && left.bitmap && right.bitmap) {
            for (LoadedView* view : {&left, &right}) {
                const Bitmap half = std::move(view->bitmap);
                view->take(scaled_bicubic(half, width, whole.height()));
            }
        }
    }
    return make_equally_wide();
}

/// Both views of a stereo file get the width of the narrower one.
bool PairReader::make_equally_wide() {
    if (views_.left.width == 0 || views_.right.width == 0) {
        return false;
    }
    const int common = std::min(views_.left.width, views_.right.width);
    for (LoadedView* view : {&views_.left, &views_.right}) {
        view->width = common;
        make_exact(*view);
    }
    return static_cast<bool>(views_.left.bitmap) && static_cast<bool>(views_.right.bitmap);
}

Bitmap PairReader::load_through_converter(const std::string& path) {
    const std::string& folder = temporary_folder();
    const std::string target = folder + "/zemora_temp_" + without_suffix(bare_name_of(path)) + ".bmp";
    const Conversion conversion =
        folder.empty() ? Conversion::failed : convert_picture(options_.converter, path, target, notes_);
    if (conversion != Conversion::done) {
        fail(path, conversion == Conversion::no_converter
                       ? "the format is not supported and there is no converter for it"
                       : "the format is not supported and the converter has failed");
        return {};
    }
    LoadedPicture converted = load_picture(target);
    std::remove(target.c_str());
    if (converted.status != LoadStatus::done) {
        fail(path, "the conversion gave no readable picture");
    }
    return std::move(converted.bitmap);
}

bool PairReader::load_converted() {
    notes_.say<Msg::img_input_image_type_tried_with_irfanview>();
    notes_.print("\n");
    if (!two_files_) {
        const Bitmap stereo = load_through_converter(files_.stereo);
        return stereo && split_stereo(stereo, layout::side_by_side);
    }
    Bitmap left = load_through_converter(files_.left);
    if (!left) {
        return false;
    }
    Bitmap right = load_through_converter(files_.right);
    if (!right) {
        return false;
    }
    views_.left.take(std::move(left));
    views_.right.take(std::move(right));
    return fit_mask_to_photo();
}

}  // namespace

Result<RawViews> read_pair(const PairFiles& files, const PairReadOptions& options, Notes& notes) {
    return PairReader(files, options, notes).read();
}

PairFiles files_of(const ImageList& list, int object) {
    return list.two_files ? PairFiles{list.left(object), list.right(object), {}}
                          : PairFiles{{}, {}, list.stereo(object)};
}

}  // namespace zemora
