#include "render/cmyk.h"

#include <lcms2.h>

#include <algorithm>
#include <memory>

#include "codec/bitmap_forms.h"
#include "numerics/rounding.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::unique_ptr<void, DeleteTransform>;

/// From the bytes of the profile file.
Profile open_profile(const std::string& name, std::string& reason) {
    const std::string path = cmyk_profile_path(name);
    const auto bytes = path.empty() || name.empty() ? std::nullopt : read_file_whole(path, reason);
    Profile profile;
    if (bytes && bytes->size() <= UINT32_MAX) {
        profile.reset(cmsOpenProfileFromMem(bytes->data(), static_cast<cmsUInt32Number>(bytes->size())));
    }
    if (!profile) {
        reason = "the CMYK profile \"" + name + "\" cannot be used" + (reason.empty() ? "" : ": " + reason);
    }
    return profile;
}

}  // namespace

std::string cmyk_profile_path(const std::string& name) {
    return is_absolute(name) ? name : find_data_file(name);
}

Inks inks_of(Colour colour) {
    const double cyan = 1.0 - colour.red / 255.0;
    const double magenta = 1.0 - colour.green / 255.0;
    const double yellow = 1.0 - colour.blue / 255.0;
    const double black = std::min({cyan, magenta, yellow});
    const auto ink = [black](double whole) {
        return static_cast<std::uint8_t>(
            round_half_up(black < 1.0 ? 255.0 * (whole - black) / (1.0 - black) : 0.0));
    };
    return {ink(cyan), ink(magenta), ink(yellow), static_cast<std::uint8_t>(round_half_up(255.0 * black))};
}

Bitmap cmyk_by_formula(ConstPicture picture) {
    Bitmap bitmap = create_cmyk(picture.width, picture.height);
    if (!bitmap) {
        return bitmap;
    }
    std::uint8_t* bits = bitmap.bits();
    const std::ptrdiff_t pitch = bitmap.pitch();
#pragma omp parallel for schedule(static)
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* source = picture.row(y);
        std::uint8_t* target = bits + y * pitch;
        for (int x = 0; x < picture.width; ++x, source += kPixelBytes, target += std::tuple_size_v<Inks>) {
            const Inks inks = inks_of({source[0], source[1], source[2]});
            std::copy(inks.begin(), inks.end(), target);
        }
    }
    return bitmap;
}

Bitmap cmyk_by_profile(ConstPicture picture, const std::string& profile_name, std::string& reason) {
    const Profile srgb(cmsCreate_sRGBProfile());
    const Profile print = open_profile(profile_name, reason);
    if (!srgb || !print) {
        return {};
    }
    const Transform transform(
        cmsCreateTransform(srgb.get(), TYPE_BGR_8, print.get(), TYPE_CMYK_8, INTENT_PERCEPTUAL, 0));
    if (!transform) {
        reason = "the profile \"" + profile_name + "\" is not one for CMYK";
        return {};
    }
    Bitmap bitmap = create_cmyk(picture.width, picture.height);
    for (int y = 0; bitmap && y < picture.height; ++y) {
        cmsDoTransform(transform.get(), picture.row(y), bitmap.bits() + y * bitmap.pitch(),
                       static_cast<cmsUInt32Number>(picture.width));
    }
    return bitmap;
}

}  // namespace zemora
