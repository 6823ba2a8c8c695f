#include "render/thumbnails.h"

#include "codec/encode.h"
#include "numerics/rescale.h"

namespace zemora {

namespace {

constexpr Colour kBars{0x40, 0xFF, 0x40};

Failure no_memory() {
    return Failure::out_of_memory("13513: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (THUMB)\n");
}

/// A view in the largest size inside the thumbnail, in the lower left of `room`.
Picture scaled_view(ConstPicture view, const Bitmap& room) {
    RescaleScratch scratch;
    const PictureSize size =
        rescale(view, room.picture(), scratch, RescaleFilter::bicubic, RescaleFit::keep_aspect);
    return room.picture(size.width, size.height);
}

/// Empty when the memory is not there.
Bitmap thumb(ConstPicture view) {
    Bitmap result = Bitmap::create(kThumbWidth, kThumbHeight);
    const Bitmap room = Bitmap::create(kThumbWidth, kThumbHeight);
    if (!result || !room) {
        return {};
    }
    const Picture scaled = scaled_view(view, room);
    fill(result.picture(), kBars);
    copy(scaled, result.picture().part((kThumbWidth - scaled.width) / 2, (kThumbHeight - scaled.height) / 2,
                                       scaled.width, scaled.height));
    return result;
}

Result<std::string> save_thumb(ConstPicture view, const std::string& file) {
    const Bitmap room = Bitmap::create(kThumbWidth, kThumbHeight);
    if (!room) {
        return no_memory();
    }
    const Picture scaled = scaled_view(view, room);
    if (scaled.width <= 0 || scaled.height <= 0) {
        return file + ": the picture is too narrow for a thumbnail";
    }
    const Bitmap whole = Bitmap::create(scaled.width, scaled.height);
    if (!whole) {
        return no_memory();
    }
    copy(scaled, whole.picture());
    const std::string reason = encode_and_write(whole, {PictureFormat::jpeg}, file);
    return reason.empty() ? reason : file + ": " + reason;
}

}  // namespace

Result<Thumbnails> make_thumbs(const StereoPicture& views) {
    Thumbnails thumbs{thumb(views.left), thumb(views.right)};
    if (!thumbs.left || !thumbs.right) {
        return no_memory();
    }
    return {std::move(thumbs)};
}

Result<std::string> save_thumbs(const StereoPicture& views, const std::string& left_file,
                                const std::string& right_file) {
    const Result<std::string> first = save_thumb(views.left, left_file);
    if (!first) {
        return first;
    }
    const Result<std::string> second = save_thumb(views.right, right_file);
    if (!second) {
        return second;
    }
    return *first + (first->empty() || second->empty() ? "" : "\n") + *second;
}

}  // namespace zemora
