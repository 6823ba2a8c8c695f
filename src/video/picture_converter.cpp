#include "video/picture_converter.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <array>

#include "video/frame_colours.h"

namespace zemora {

namespace {

/// A form of pixels that the own kernel takes.
struct OwnForm {
    AVPixelFormat format;
    int bits;
    int chroma_shift_x;
    int chroma_shift_y;
    bool full_range;
};
constexpr std::array kOwnForms = {
    OwnForm{AV_PIX_FMT_YUV420P, 8, 1, 1, false},      OwnForm{AV_PIX_FMT_YUVJ420P, 8, 1, 1, true},
    OwnForm{AV_PIX_FMT_YUV422P, 8, 1, 0, false},      OwnForm{AV_PIX_FMT_YUVJ422P, 8, 1, 0, true},
    OwnForm{AV_PIX_FMT_YUV444P, 8, 0, 0, false},      OwnForm{AV_PIX_FMT_YUVJ444P, 8, 0, 0, true},
    OwnForm{AV_PIX_FMT_YUV420P10LE, 10, 1, 1, false}, OwnForm{AV_PIX_FMT_YUV422P10LE, 10, 1, 0, false},
    OwnForm{AV_PIX_FMT_YUV444P10LE, 10, 0, 0, false},
};

const OwnForm* own_form_of(const AVFrame& frame) {
    for (const OwnForm& form : kOwnForms) {
        if (form.format == frame.format) {
            return &form;
        }
    }
    return nullptr;
}

/// Chroma across lies between the pixels where that is said, and in JPEG, which is known by its full range.
bool is_chroma_centred(const AVFrame& frame, const OwnForm& form) {
    switch (frame.chroma_location) {
        case AVCHROMA_LOC_CENTER:
        case AVCHROMA_LOC_TOP:
        case AVCHROMA_LOC_BOTTOM: return true;
        case AVCHROMA_LOC_UNSPECIFIED: return form.full_range;
        default: return false;
    }
}

Failure no_memory() {
    return Failure::out_of_memory("425: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (LEFT/RIGHT)\n");
}

}  // namespace

ColourTags tags_of(const AVFrame& frame) {
    const OwnForm* form = own_form_of(frame);
    const bool is_full = frame.color_range == AVCOL_RANGE_JPEG || (form != nullptr && form->full_range);
    return {frame.color_primaries, frame.color_trc, frame.colorspace, is_full};
}

Result<void> PictureConverter::convert(const AVFrame& frame, PictureSize size, LoadedView& into) {
    if (into.bitmap.width() != size.width || into.bitmap.height() != size.height) {
        into.take(Bitmap::create(size.width, size.height));
        if (!into.bitmap) {
            return no_memory();
        }
    }
    into.width = size.width;
    into.height = size.height;
    const OwnForm* form = own_form_of(frame);
    if (form == nullptr || size != PictureSize{frame.width, frame.height}) {
        return scale(frame, into.picture()) ? Result<void>() : Result<void>(Failure::of_pair({}));
    }
    YuvPicture yuv;
    for (std::size_t plane = 0; plane < yuv.planes.size(); ++plane) {
        yuv.planes[plane] = {frame.data[plane], frame.linesize[plane]};
    }
    yuv.width = frame.width;
    yuv.height = frame.height;
    yuv.bits = form->bits;
    yuv.chroma_shift_x = form->chroma_shift_x;
    yuv.chroma_shift_y = form->chroma_shift_y;
    yuv.chroma_is_centred = is_chroma_centred(frame, *form);
    yuv.colours = settled_tags(tags_of(frame), frame.height);
    bgr_from_yuv(yuv, into.picture());
    return {};
}

bool PictureConverter::scale(const AVFrame& frame, Picture into) {
    constexpr int kHow = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP | SWS_FULL_CHR_H_INT;
    scaler_.reset(sws_getCachedContext(scaler_.release(), frame.width, frame.height,
                                       static_cast<AVPixelFormat>(frame.format), into.width, into.height,
                                       AV_PIX_FMT_BGR24, kHow, nullptr, nullptr, nullptr));
    if (!scaler_) {
        return false;
    }
    const ColourTags tags = settled_tags(tags_of(frame), frame.height);
    constexpr int kNeutral = 1 << 16;
    const int* from_matrix = sws_getCoefficients(tags.matrix);
    sws_setColorspaceDetails(scaler_.get(), from_matrix, tags.full_range ? 1 : 0,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, kNeutral, kNeutral);
    std::uint8_t* const top = into.row(into.height - 1);
    std::uint8_t* const planes[] = {top, nullptr, nullptr, nullptr};
    const int pitches[] = {-static_cast<int>(into.pitch), 0, 0, 0};
    return sws_scale(scaler_.get(), frame.data, frame.linesize, 0, frame.height, planes, pitches) ==
           into.height;
}

bool sketch_of(const AVFrame& frame, FrameSketch& sketch) {
    const AVPixFmtDescriptor* form = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    constexpr std::uint64_t kNoLuma = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                                      AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_BAYER |
                                      AV_PIX_FMT_FLAG_FLOAT;
    if (form == nullptr || (form->flags & kNoLuma) != 0) {
        return false;
    }
    // Of red, green and blue the first component will do: what matters is how much it changes.
    const AVComponentDescriptor& luma = form->comp[(form->flags & AV_PIX_FMT_FLAG_RGB) != 0 ? 1 : 0];
    sketch = sketch_of_luma({frame.data[luma.plane] + luma.offset, frame.linesize[luma.plane], luma.step,
                             luma.shift + luma.depth, frame.width, frame.height});
    return true;
}

}  // namespace zemora
