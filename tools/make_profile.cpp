// Writes the sRGB colour profile that output files get whose source has none: zemora_profile FILE
#include <lcms2.h>

#include <cstdio>
#include <cstdlib>

int main(int count, char** values) {
    if (count != 2) {
        std::puts("zemora_profile FILE");
        return EXIT_FAILURE;
    }
    cmsHPROFILE profile = cmsCreate_sRGBProfile();
    const bool written = profile != nullptr && cmsSaveProfileToFile(profile, values[1]) != FALSE;
    cmsCloseProfile(profile);
    return written ? EXIT_SUCCESS : EXIT_FAILURE;
}
