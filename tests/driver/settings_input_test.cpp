#include "driver/settings_input.h"

#include <gtest/gtest.h>

namespace zemora {
namespace {

TEST(CollectOptionsOf, OnlySomeModesTakeTheValuesOfTheList) {
    for (int mode = -5; mode <= 5; ++mode) {
        ParameterSet parameters;
        parameters.estimate_geometry = mode;
        EXPECT_EQ(collect_options_of(parameters).applies_stored_values, mode == 2 || mode == 5 || mode == -5)
            << mode;
    }
}

TEST(CollectOptionsOf, StartsWithTheDefaultsOfTheParameters) {
    const CollectOptions given = collect_options_of(ParameterSet());
    const CollectOptions plain;
    EXPECT_EQ(given.image_type, plain.image_type);
    EXPECT_EQ(given.left_file_name, plain.left_file_name);
    EXPECT_EQ(given.right_file_name, plain.right_file_name);
    EXPECT_EQ(given.stereo_file_name, plain.stereo_file_name);
    EXPECT_EQ(given.list_of_images, plain.list_of_images);
    EXPECT_EQ(given.input_mode, plain.input_mode);
    EXPECT_EQ(given.stereo_image_input, plain.stereo_image_input);
    EXPECT_EQ(given.include_subdirs, plain.include_subdirs);
    EXPECT_EQ(given.write_data_base, plain.write_data_base);
    EXPECT_EQ(given.exif_time_tolerance, plain.exif_time_tolerance);
    EXPECT_EQ(given.rename_orphans, plain.rename_orphans);
    EXPECT_EQ(given.inverse_input, plain.inverse_input);
    EXPECT_EQ(given.interlaced_mode, plain.interlaced_mode);
}

TEST(PairReadOptionsOf, CutPicturesStayWhereTheGeometryIsKept) {
    for (int mode = -5; mode <= 5; ++mode) {
        ParameterSet parameters;
        parameters.estimate_geometry = mode;
        EXPECT_EQ(pair_read_options_of(parameters).keeps_cut_pictures, mode == 0 || mode >= 3) << mode;
    }
}

TEST(PrepareOptionsOf, AMeasuredFrameIsBlackWhateverTheColourOfTheSettings) {
    ParameterSet parameters;
    parameters.passe_color_red = 200;
    EXPECT_EQ(prepare_options_of(parameters).frame.colour, (Colour{0, 0, 200}));
    parameters.passepartout = 2;
    EXPECT_EQ(prepare_options_of(parameters).frame.colour, Colour{});
}

}  // namespace
}  // namespace zemora
