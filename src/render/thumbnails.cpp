#include "render/thumbnails.h"

#include <utility>

#include "codec/encode.h"
#include "numerics/rescale.h"

namespace zemora {

namespace {

constexpr Colour kBars{0x40, 0xFF, 0x40};

Failure no_memory() {
    return Failure::out_of_memory("13513: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (THUMB)\n");
}

Result<Bitmap> make_thumbnail(ConstPicture view) {
    const Bitmap room = Bitmap::create(kThumbWidth, kThumbHeight);
    if (!room) {
        return no_memory();
    }
    RescaleScratch scratch;
    const PictureSize size =
        rescale(view, room.picture(), scratch, RescaleFilter::bicubic, RescaleFit::keep_aspect);
    if (size.width <= 0 || size.height <= 0) {
        return Bitmap();
    }
    Bitmap thumbnail = Bitmap::create(size.width, size.height);
    if (!thumbnail) {
        return no_memory();
    }
    copy(room.picture(size.width, size.height), thumbnail.picture());
    return {std::move(thumbnail)};
}

Result<Bitmap> on_bars(const Bitmap& thumbnail) {
    Bitmap whole = Bitmap::create(kThumbWidth, kThumbHeight);
    if (!whole) {
        return no_memory();
    }
    fill(whole.picture(), kBars);
    if (thumbnail) {
        const int width = thumbnail.width();
        const int height = thumbnail.height();
        copy(thumbnail.picture(),
             whole.picture().part((kThumbWidth - width) / 2, (kThumbHeight - height) / 2, width, height));
    }
    return {std::move(whole)};
}

Result<Thumbnails> both(Result<Bitmap> left, Result<Bitmap> right) {
    if (!left || !right) {
        return no_memory();
    }
    return Thumbnails{*std::move(left), *std::move(right)};
}

std::string save_thumbnail(const Bitmap& thumbnail, const std::string& file) {
    const std::string reason = thumbnail ? encode_and_write(thumbnail, {PictureFormat::jpeg}, file)
                                         : "the picture is too narrow for a thumbnail";
    return reason.empty() ? reason : file + ": " + reason;
}

}  // namespace

Result<Thumbnails> make_thumbnails(const StereoPicture& views) {
    return both(make_thumbnail(views.left), make_thumbnail(views.right));
}

Result<Thumbnails> with_bars(const Thumbnails& thumbnails) {
    return both(on_bars(thumbnails.left), on_bars(thumbnails.right));
}

std::string save_thumbnails(const Thumbnails& thumbnails, const std::string& left_file,
                            const std::string& right_file) {
    const std::string first = save_thumbnail(thumbnails.left, left_file);
    const std::string second = save_thumbnail(thumbnails.right, right_file);
    return first + (first.empty() || second.empty() ? "" : "\n") + second;
}

}  // namespace zemora
