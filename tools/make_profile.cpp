// Writes the colour profiles that output files get whose source has none: zemora_profile FOLDER
//   sRGB.icc              the space of most pictures
//   AdobeCompatible.icc   the wider space that cameras offer beside it
#include <lcms2.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

/// The colours of Adobe RGB (1998): its primaries, daylight of 6500 K, and one power for all channels.
Profile wide_profile() {
    constexpr cmsCIExyY kWhite{0.3127, 0.3290, 1.0};
    constexpr cmsCIExyYTRIPLE kPrimaries{{0.64, 0.33, 1.0}, {0.21, 0.71, 1.0}, {0.15, 0.06, 1.0}};
    constexpr double kPower = 563.0 / 256.0;
    cmsToneCurve* power = cmsBuildGamma(nullptr, kPower);
    cmsToneCurve* const curves[] = {power, power, power};
    Profile profile(power != nullptr ? cmsCreateRGBProfile(&kWhite, &kPrimaries, curves) : nullptr);
    cmsFreeToneCurve(power);
    cmsMLU* name = cmsMLUalloc(nullptr, 1);
    const bool named = profile && name != nullptr &&
                       cmsMLUsetASCII(name, "en", "US", "Compatible with Adobe RGB (1998)") != FALSE &&
                       cmsWriteTag(profile.get(), cmsSigProfileDescriptionTag, name) != FALSE;
    cmsMLUfree(name);
    return named ? std::move(profile) : nullptr;
}

bool save(const Profile& profile, const std::string& path) {
    return profile && cmsSaveProfileToFile(profile.get(), path.c_str()) != FALSE;
}

}  // namespace

int main(int count, char** values) {
    if (count != 2) {
        std::puts("zemora_profile FOLDER");
        return EXIT_FAILURE;
    }
    const std::string folder = std::string(values[1]) + '/';
    const bool written = save(Profile(cmsCreate_sRGBProfile()), folder + "sRGB.icc") &&
                         save(wide_profile(), folder + "AdobeCompatible.icc");
    return written ? EXIT_SUCCESS : EXIT_FAILURE;
}
