#include "codec/encode.h"

#include "codec/library.h"
#include "platform/quiet_tiff.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

int flag_of(Chroma chroma) {
    switch (chroma) {
        case Chroma::half: return JPEG_SUBSAMPLING_422;
        case Chroma::full: return JPEG_SUBSAMPLING_444;
        default: return JPEG_SUBSAMPLING_420;
    }
}

int flags_of(const EncodeOptions& options) {
    constexpr int kLosslessSize = 101;  // so that the quality of 85 gives the library's usual 16 to 1
    switch (options.format) {
        case PictureFormat::bmp: return options.compress ? BMP_SAVE_RLE : BMP_DEFAULT;
        case PictureFormat::png: return options.compress ? PNG_Z_DEFAULT_COMPRESSION : PNG_Z_NO_COMPRESSION;
        case PictureFormat::tiff: return options.compress ? TIFF_LZW : TIFF_NONE;
        case PictureFormat::psd: return options.compress ? PSD_DEFAULT : PSD_NONE;
        case PictureFormat::jpeg: return flag_of(options.chroma) | options.quality;
        case PictureFormat::webp:
        case PictureFormat::jng: return options.quality;
        case PictureFormat::jp2:
        case PictureFormat::j2k:  // source bytes for one of the file
            return options.quality == 0 ? 0 : kLosslessSize - options.quality;
        default: return 0;
    }
}

void set_resolution(FIBITMAP* picture, const EncodeOptions& options) {
    if (options.dots_per_metre_x > 0) {
        FreeImage_SetDotsPerMeterX(picture, options.dots_per_metre_x);
    }
    if (options.dots_per_metre_y > 0) {
        FreeImage_SetDotsPerMeterY(picture, options.dots_per_metre_y);
    }
}

}  // namespace

void EncodedPicture::Closer::operator()(void* stream) const {
    FreeImage_CloseMemory(static_cast<FIMEMORY*>(stream));
}

EncodedPicture::EncodedPicture(const Bitmap& picture, const EncodeOptions& options) {
    FIMEMORY* stream = FreeImage_OpenMemory(nullptr, 0);
    stream_.reset(stream);
    FIBITMAP* handle = LibraryBitmap::of(picture);
    BYTE* bytes = nullptr;
    DWORD size = 0;
    silence_tiff_library();
    set_resolution(handle, options);
    if (stream != nullptr &&
        FreeImage_SaveToMemory(library_format(options.format), handle, stream, flags_of(options)) != FALSE &&
        FreeImage_AcquireMemory(stream, &bytes, &size) != FALSE) {
        bytes_ = {bytes, size};
    }
}

std::string encode_and_write(const Bitmap& picture, const EncodeOptions& options, const std::string& path) {
    const EncodedPicture file(picture, options);
    return file.bytes().empty() ? "the picture cannot be encoded" : write_file_whole(path, file.bytes());
}

}  // namespace zemora
