#include <gtest/gtest.h>

#include "driver/pipeline.h"
#include "tests/support/speech.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

struct Case {
    StatusCode status;
    int mode;
    bool store_failed;
    const char* mark;  ///< Behind the names of the line.
    bool under_reserve;
};

class ConcludePair : public testing::TestWithParam<Case>, public test::Speech {};

TEST_P(ConcludePair, MarksTheLineByTheStatus) {
    const Case& c = GetParam();
    test::TestFolder folder;
    parameters.path_of_images = folder.path();
    parameters.write_data_base = 2;
    parameters.verbose_mode = 1;
    parameters.stop_at_error = 0;
    test::write_text(folder / parameters.list_of_images, "\"a_l.bmp\"   \"a_r.bmp\"\n");
    RunContext context;
    ImageList list;
    list.add_object(list.add_name(folder / "a_l.bmp"), list.add_name(folder / "a_r.bmp"));
    ExifTool exiftool(parameters);
    Pipeline pipeline(parameters, context, list, exiftool, voice);
    PairRun pair(0, voice);
    pair.files = {list.left(0), list.right(0), {}};
    pair.mode = c.mode;
    pair.status = c.status;
    pair.store_failed = c.store_failed;
    pair.mounted.size = {400, 300};
    testing::internal::CaptureStdout();
    conclude_pair(pipeline, pair);
    console.flush();
    const std::string told = testing::internal::GetCapturedStdout();
    EXPECT_EQ(test::read_text(folder / parameters.list_of_images).substr(21, 4), c.mark);
    EXPECT_EQ(told.find("Images will be written under reverse!") != std::string::npos, c.under_reserve)
        << told;
    EXPECT_EQ(told.find("enlarge the parameter IterativeWarp") != std::string::npos,
              c.under_reserve || c.status == StatusCode::no_result)
        << told;
}

constexpr auto kSuccess = StatusCode::success;
constexpr auto kUsable = StatusCode::usable;
INSTANTIATE_TEST_SUITE_P(
    Table, ConcludePair,
    testing::Values(Case{kSuccess, 1, false, " OK ", false}, Case{kUsable, 1, false, " IM\n", true},
                    Case{kUsable, 3, false, " IM\n", true}, Case{kUsable, 1, true, "\n", true},
                    Case{kSuccess, 1, true, "\n", false}, Case{kSuccess, 0, false, "\n", false},
                    Case{StatusCode::abandoned, 1, false, " QU\n", false},
                    Case{StatusCode::no_result, 1, false, "\n", false}));

}  // namespace
}  // namespace zemora
