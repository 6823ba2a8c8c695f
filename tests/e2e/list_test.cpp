#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "input/list_line.h"
#include "platform/child_process.h"
#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

constexpr const char* kList = "zemora_files.txt";

/// A folder with pairs a_l.jpg, a_r.jpg, b_l.jpg and so on.
class ListOfImages : public testing::Test {
protected:
    void add_pairs(const std::string& letters, const Views& views) const {
        for (const char letter : letters) {
            save_pair(workshop, views, std::string(1, letter) + "_l.jpg", std::string(1, letter) + "_r.jpg");
        }
    }
    /// A run over the folder or its list; later settings count.
    [[nodiscard]] Outcome run(const std::vector<std::string>& settings) const {
        std::vector<std::string> all{"--PathofImages=" + workshop.folder(), "--LeftRightOutput=2",
                                     "--StereoOutput=0", "--WriteDataBase=2"};
        all.insert(all.end(), settings.begin(), settings.end());
        return workshop.run(all);
    }
    [[nodiscard]] std::vector<ListLine> lines() const {
        std::istringstream text(read_text(workshop.path(kList)));
        std::vector<ListLine> found;
        for (std::string raw; std::getline(text, raw);) {
            ListLine line;
            EXPECT_EQ(parse_list_line(raw, true, line), LineFault::none) << raw;
            EXPECT_TRUE(line.status.empty() ? line.item_count == 0
                                            : line.status != "OK" || line.item_count == 36)
                << "half a line: " << raw;
            found.push_back(line);
        }
        return found;
    }
    [[nodiscard]] int count_of(const std::string& status) const {
        const auto all = lines();
        return static_cast<int>(std::count_if(all.begin(), all.end(),
                                              [&](const ListLine& line) { return line.status == status; }));
    }

    Workshop workshop;
};

TEST_F(ListOfImages, IsWrittenEditedWorkedThroughAndGoneOnWith) {
    add_pairs("abcd", aligned_views());
    Outcome outcome = run({"--InputMode=1", "--WriteDataBase=1"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("Only [ListofImages] written")) << outcome.text;
    EXPECT_EQ(read_text(workshop.path(kList)),
              "\"a_l.jpg\"   \"a_r.jpg\"\n\"b_l.jpg\"   \"b_r.jpg\"\n"
              "\"c_l.jpg\"   \"c_r.jpg\"\n\"d_l.jpg\"   \"d_r.jpg\"\n");
    EXPECT_FALSE(std::filesystem::exists(workshop.path("cl")));

    workshop.write(
        kList, "\"d_l.jpg\"   \"d_r.jpg\"\r\n\"b_l.jpg\"   \"b_r.jpg\" QU\r\n\"a_l.jpg\"   \"a_r.jpg\"\r\n");
    outcome = run({"--InputMode=10"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("processed images: 2/2")) << outcome.text;
    EXPECT_EQ(count_of("OK"), 2);
    EXPECT_EQ(count_of("QU"), 1);
    EXPECT_EQ(lines().front().left, "d_l.jpg") << "the user's order stays";

    const std::string before = read_text(workshop.path(kList));
    outcome = run({"--InputMode=10"});
    EXPECT_EQ(outcome.exit_code, 1) << "nothing is left to do";
    EXPECT_TRUE(outcome.tells("\"OK\" found in ListofImages")) << outcome.text;
    EXPECT_EQ(read_text(workshop.path(kList)), before);
}

TEST_F(ListOfImages, AFailedPairIsTriedAgainAndTheOthersAreNot) {
    add_pairs("ac", aligned_views());
    save_pair(workshop, aligned_views(), "b_l.jpg", "b_r.jpg");
    const Bitmap grey = Bitmap::create(400, 300);
    fill(grey.picture(), {128, 128, 128});
    workshop.save("b_r.jpg", grey.picture());  // nothing to be measured
    Outcome outcome = run({"--InputMode=1"});
    EXPECT_TRUE(outcome.tells("processed images: 2/3")) << outcome.text;
    ASSERT_EQ(lines().size(), 3U);
    EXPECT_EQ(lines()[1].status, "");
    save_pair(workshop, aligned_views(), "b_l.jpg", "b_r.jpg");
    outcome = run({"--InputMode=10"});
    EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    EXPECT_EQ(count_of("OK"), 3);
}

TEST_F(ListOfImages, StoredCorrectionsGiveThePictureOfTheMeasuringRun) {
    add_pairs("a", misaligned_views());
    // Tone is adapted by the picture before the final warp in one run and behind it in the other.
    for (const auto& [contrast, levels] :
         {std::pair{"--AutoOutputContrast=0", 0}, std::pair{"--AutoOutputContrast=3", 3}}) {
        Outcome outcome = run({"--InputMode=1", "--OutputFormat=3", "--PathofOutput=first", contrast});
        ASSERT_EQ(count_of("OK"), 1) << outcome.text;
        outcome = run({"--InputMode=10", "--EstimateGeometry=2", "--OutputFormat=3", "--PathofOutput=second",
                       contrast});
        EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
        EXPECT_FALSE(outcome.tells("iterative")) << "measured again: " << outcome.text;
        for (const char* name : {"cl/a_cl.bmp", "cr/a_cr.bmp"}) {
            const Bitmap first = workshop.load(std::string("first/") + name);
            const Bitmap second = workshop.load(std::string("second/") + name);
            EXPECT_LE(greatest_difference(first.picture(), second.picture()), levels) << name;
        }
    }
}

TEST_F(ListOfImages, GoingOnNeverWritesOverThePicturesOfAPairThatIsDone) {
    add_pairs("a", aligned_views());
    save_pair(workshop, aligned_views(), "a_l.tif", "a_r.tif");
    const std::vector<std::string> products{"--OutputFormat=1", "--AnaglyphOutput=2", "--ExtraOutput=1",
                                            "--EstimateGeometry=1"};
    for (const char* stamp : {"--StampFiles=0", "--StampFiles=1"}) {
        for (const std::string status : {"OK", "IM"}) {
            const std::set<std::string> inputs = workshop.files();
            const auto go = [&](std::vector<std::string> more) {
                more.insert(more.end(), products.begin(), products.end());
                more.push_back(stamp);
                const Outcome outcome = run(more);
                EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
            };
            go({"--InputMode=1", "--ImageType=jpg"});
            std::string list = read_text(workshop.path(kList));
            if (status == "IM") {
                list = "\"a_l.jpg\"   \"a_r.jpg\" IM\n";
            }
            workshop.write(kList, list + "\"a_l.tif\"   \"a_r.tif\"\n");
            std::set<std::string> first;
            for (const std::string& name : workshop.files()) {
                if (inputs.count(name) == 0 && name != kList) {
                    first.insert(name);
                    workshop.write(name, "picture of the first run");
                }
            }
            ASSERT_EQ(first.size(), 4U);
            go({"--InputMode=10"});
            EXPECT_EQ(workshop.files().size(), inputs.size() + 9) << "four pictures more, and the list";
            for (const std::string& name : first) {
                EXPECT_EQ(read_text(workshop.path(name)), "picture of the first run") << name;
            }
            for (const char* folder : {"cl", "cr", "ca", "ce_lrq", kList}) {
                std::filesystem::remove_all(workshop.path(folder));
            }
        }
    }
}

TEST_F(ListOfImages, ALineThatNamesTheViewsInTheOtherOrderHoldsTheValuesOfThatOrder) {
    workshop.save("1.bmp", misaligned_views().left.picture());
    workshop.save("2.bmp", misaligned_views().right.picture());
    workshop.save("3.bmp", misaligned_views().left.picture());
    for (const char* window : {"1", "2", "5"}) {
        const std::string setting = std::string("--EstimateWindow=") + window;
        Outcome outcome = run({"--InputMode=6", "--ImageType=bmp", setting});
        ASSERT_TRUE(outcome.tells("processed images: 2/2")) << outcome.text;
        const auto measured = lines();
        ASSERT_EQ(measured.size(), 2U);
        EXPECT_EQ(measured[1].left, "3.bmp");
        for (const RecordField field : {kRecordHeight, kRecordSize, kRecordRotation, kRecordVergenceV,
                                        kRecordPureShift, kRecordWindowShift, kRecordNearPoint}) {
            const bool in_pixels = field == kRecordHeight || field >= kRecordPureShift;
            EXPECT_NEAR(measured[1].values[field], measured[0].values[field], in_pixels ? 1.0 : 0.05)
                << "field " << field << ", window " << window;
        }
        std::filesystem::remove(workshop.path(kList));
    }
}

TEST_F(ListOfImages, CorrectionsGoFromTheListIntoTheImages) {
    if (find_program("exiftool").empty()) {
        GTEST_SKIP() << "no exiftool";
    }
    add_pairs("a", misaligned_views());
    ASSERT_EQ(run({"--InputMode=1"}).exit_code, 0);
    const ListLine before = lines().at(0);
    const Outcome outcome = run({"--InputMode=10", "--EstimateGeometry=5"});
    EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    EXPECT_FALSE(outcome.tells("iterative")) << outcome.text;
    const ListLine after = lines().at(0);
    EXPECT_EQ(after.status, "OK");
    for (const RecordField field : {kRecordHeight, kRecordSize, kRecordRotation, kRecordVergenceV,
                                    kRecordPureShift, kRecordWindowShift, kRecordNearPoint}) {
        EXPECT_EQ(after.values[field], before.values[field]) << field;
    }
    for (const char* name : {"a_l.jpg", "a_r.jpg"}) {
        const ChildResult tag = run_child({"exiftool", "-s", "-s", "-s", "-comment", workshop.path(name)});
        const auto record = parse_record(std::string(tag.output.begin(), tag.output.end()));
        ASSERT_TRUE(record) << name;
        EXPECT_NEAR((*record)[kRecordHeight], before.values[kRecordHeight], 0.006);
        EXPECT_NEAR((*record)[kRecordWindowShift], before.values[kRecordWindowShift], 0.006);
    }
}

TEST_F(ListOfImages, AMeasuredLineOfMode5WritesTheRecordWhereAStoredOneWould) {
    if (find_program("exiftool").empty()) {
        GTEST_SKIP() << "no exiftool";
    }
    add_pairs("a", aligned_views());
    workshop.write(kList, "\"a_l.jpg\"   \"a_r.jpg\"\n");
    const Outcome outcome = run({"--InputMode=10", "--EstimateGeometry=-5"});
    EXPECT_EQ(count_of("OK"), 1) << outcome.text;
    for (const auto& [name, has_record] : {std::pair{"a_l.jpg", true}, {"a_r.jpg", false}}) {
        const ChildResult tag = run_child({"exiftool", "-s3", "-comment", workshop.path(name)});
        EXPECT_EQ(tag.output.empty(), !has_record) << name;
    }
}

TEST_F(ListOfImages, ARunThatIsKilledLosesAtMostThePairAtWork) {
    add_pairs("abcdef", aligned_views());
    ASSERT_EQ(run({"--InputMode=1", "--WriteDataBase=1"}).exit_code, 0);
    for (const char* signal : {"KILL", "TERM", "KILL"}) {
        for (const char* seconds : {"0.05", "0.2", "0.3"}) {
            const int before = count_of("OK");
            workshop.is_killed = true;
            workshop.around = std::string("shift 2; \"$@\" & pid=$!; sleep ") + seconds + "; kill -" +
                              signal + " $pid 2>/dev/null; wait $pid";
            (void)run({"--InputMode=10", "--OutputFormat=3"});
            ASSERT_EQ(lines().size(), 6U) << "the list is whole";
            int stored = 0;
            for (const std::string& name : workshop.files()) {
                stored += name.starts_with("cr/") ? 1 : 0;
            }
            EXPECT_LE(stored - count_of("OK"), 1) << "at most one pair is done and not noted";
            EXPECT_GE(count_of("OK"), before);
        }
    }
    workshop.around = "exec \"$@\"";
    workshop.is_killed = false;
    const int left = 6 - count_of("OK");
    const Outcome outcome = run({"--InputMode=10", "--OutputFormat=3"});
    if (left > 0) {
        EXPECT_TRUE(outcome.tells("processed images: " + std::to_string(left) + "/" + std::to_string(left)))
            << outcome.text;
    }
    EXPECT_EQ(count_of("OK"), 6);
}

}  // namespace
}  // namespace zemora::test
