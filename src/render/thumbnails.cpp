#include "render/thumbnails.h"

#include "numerics/bitmap_file.h"
#include "numerics/rescale.h"

namespace zemora {

namespace {

constexpr Colour kBars{0x40, 0xFF, 0x40};

[[noreturn]] void fail_for_memory(const WarpState& warp) {
    end_run_without_picture_memory(warp.voice.console(),
                                   "13513: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (THUMB)\n");
}

Bitmap small_bitmap(const WarpState& warp, int width, int height) {
    Bitmap bitmap = Bitmap::create(width, height);
    if (!bitmap) {
        fail_for_memory(warp);
    }
    return bitmap;
}

/// A view in the largest size inside the thumbnail, in the lower left of `room`.
Picture scaled_view(ConstPicture view, const Bitmap& room) {
    RescaleScratch scratch;
    const PictureSize size =
        rescale(view, room.picture(), scratch, RescaleFilter::bicubic, RescaleFit::keep_aspect);
    return room.picture(size.width, size.height);
}

Bitmap thumb(const WarpState& warp, ConstPicture view) {
    Bitmap result = small_bitmap(warp, kThumbWidth, kThumbHeight);
    const Bitmap room = small_bitmap(warp, kThumbWidth, kThumbHeight);
    const Picture scaled = scaled_view(view, room);
    fill(result.picture(), kBars);
    copy(scaled, result.picture().part((kThumbWidth - scaled.width) / 2, (kThumbHeight - scaled.height) / 2,
                                       scaled.width, scaled.height));
    return result;
}

std::string save_thumb(const WarpState& warp, ConstPicture view, const std::string& file) {
    const Bitmap room = small_bitmap(warp, kThumbWidth, kThumbHeight);
    const Picture scaled = scaled_view(view, room);
    if (scaled.width <= 0 || scaled.height <= 0) {
        return file + ": the picture is too narrow for a thumbnail";
    }
    const Bitmap whole = small_bitmap(warp, scaled.width, scaled.height);
    copy(scaled, whole.picture());
    const std::string reason = encode_and_write(whole.handle(), FIF_JPEG, JPEG_DEFAULT, file);
    return reason.empty() ? reason : file + ": " + reason;
}

}  // namespace

Thumbnails make_thumbs(const WarpState& warp) {
    return {thumb(warp, warp.pair().left), thumb(warp, warp.pair().right)};
}

std::string save_thumbs(const WarpState& warp, const std::string& left_file, const std::string& right_file) {
    const std::string reason = save_thumb(warp, warp.pair().left, left_file);
    const std::string second = save_thumb(warp, warp.pair().right, right_file);
    return reason + (reason.empty() || second.empty() ? "" : "\n") + second;
}

}  // namespace zemora
