#include "driver/exiftool.h"

#include <gtest/gtest.h>

#include <iostream>
#include <optional>

#include "codec/encode.h"
#include "codec/library.h"
#include "input/mpo.h"
#include "input/mpo_sizes.h"
#include "platform/child_process.h"
#include "platform/file_times.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "render/cmyk.h"
#include "render/mpo_file.h"
#include "tests/input/generated_mpo.h"
#include "tests/support/pictures.h"
#include "tests/support/speech.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

class ExifToolCalls : public testing::Test, public test::Speech {
protected:
    void SetUp() override {
        if (find_program("exiftool").empty()) {
            GTEST_SKIP() << "no exiftool";
        }
        testing::internal::CaptureStdout();
        tool.require(voice);
    }
    void TearDown() override {
        if (listening) {
            (void)heard();
        }
    }
    std::string heard() {
        listening = false;
        console.flush();
        const std::string text = testing::internal::GetCapturedStdout();
        std::cout << text;  // failures of the test are among it
        return text;
    }
    std::string picture(const std::string& name) const {
        const auto bytes = test::encoded(test::place_picture(16, 16), FIF_JPEG, 90);
        test::write_text(folder / name, {bytes.begin(), bytes.end()});
        return folder / name;
    }

    bool listening = true;
    test::TestFolder folder;
    ExifTool tool{parameters};
    TransferLog log{voice};
};

TEST_F(ExifToolCalls, RecordComesBackFromFilesOfAnyName) {
    for (const char* name : {"plain.jpg", "-n%d%%f.jpg", "new\nline.jpg", "carriage\rreturn.jpg",
                             "# comment.jpg", " blank.jpg", "\xC3\xA4.jpg", "latin\xE4.jpg",
                             "{zemora-status 1 zemora-end}.jpg", "-execute.jpg", "$(x)'\";.jpg"}) {
        const std::string path = picture(name);
        const std::string text = std::string("Zemora_OK_V1.0  1.5 -2 ") + std::to_string(name[0]);
        EXPECT_TRUE(tool.write_record(path, InputClass::jpeg, text, voice)) << name;
        EXPECT_EQ(tool.read_record(path, InputClass::jpeg, voice), std::optional(text)) << name;
    }
    EXPECT_EQ(folder.files().size(), 11U) << "something was left beside the pictures";
    EXPECT_EQ(heard().find("No success"), std::string::npos);
}

TEST_F(ExifToolCalls, BrokenFileFailsAloneAndTheNextOneWorks) {
    const std::string good = picture("good.jpg");
    test::write_text(folder / "broken.jpg", "no picture");
    EXPECT_FALSE(tool.write_record(folder / "broken.jpg", InputClass::jpeg, "x", voice));
    EXPECT_FALSE(tool.read_record(folder / "none.jpg", InputClass::jpeg, voice));
    EXPECT_EQ(tool.read_orientation(folder / "broken.jpg", voice), 0);
    EXPECT_TRUE(tool.write_record(good, InputClass::jpeg, "after", voice));
    EXPECT_EQ(tool.read_record(good, InputClass::jpeg, voice), std::optional<std::string>("after"));
    EXPECT_EQ(test::read_text(folder / "broken.jpg"), "no picture");
    EXPECT_NE(heard().find("No success to call Exiftool!"), std::string::npos);
}

TEST_F(ExifToolCalls, TransferKeepsTheDateAndEachSourcesOwnTags) {
    parameters.meta_transfer = 1;
    parameters.exif_copyright = "two\nlines";
    const std::string first = picture("first %d.jpg");
    const std::string second = picture("second.jpg");
    for (const auto& [path, date] :
         {std::pair{first, "2001:02:03 04:05:06"}, std::pair{second, "2011:12:13 14:15:16"}}) {
        ASSERT_TRUE(run_child({"exiftool", "-q", "-overwrite_original",
                               std::string("-DateTimeOriginal=") + date, path})
                        .succeeded());
    }
    const TagPermissions all{true, true, true};
    const std::string first_target = picture("first_target %d.jpg");
    const std::string second_target = picture("second_target.jpg");
    tool.prefetch_profile(first, log);
    tool.start_transfer(first, first_target, all, {-7, 20, 27}, false, log, voice);
    tool.start_transfer(second, second_target, all, {1, 2, 3}, false, log, voice);
    tool.forget_files({first, second});
    for (const auto& [path, date, software] :
         {std::tuple{first_target, "2001:02:03 04:05:06", "nearpoint= -7, farpoint= 20, deviation= 27"},
          {second_target, "2011:12:13 14:15:16", "nearpoint=  1, farpoint=  2, deviation=  3"}}) {
        const ChildResult tags =
            run_child({"exiftool", "-s", "-s", "-s", "-DateTimeOriginal", "-Software", path});
        const std::string text(tags.output.begin(), tags.output.end());
        EXPECT_EQ(text.substr(0, 19), date);
        EXPECT_NE(text.find(software), std::string::npos) << text;
    }
    EXPECT_EQ(heard().find("No success"), std::string::npos);
}

TEST_F(ExifToolCalls, TextsOfAnyAlphabetAreReadAndTransferred) {
    parameters.meta_transfer = 1;
    struct Row {
        std::vector<std::string> how;
        const char* headline;
    };
    const Row rows[] = {{{"-IPTC:CodedCharacterSet=UTF8"}, "\xD0\x9F\xD1\x80\xD0\xB8 \xCE\x91"},
                        {{"-charset", "iptc=UTF8"}, "\xD0\x9F\xD1\x80 \xC3\x81"},
                        {{"-IPTC:Category=x"},
                         "Gr\xC3\xB6\xC3\x9F"
                         "e"}};
    for (const Row& row : rows) {
        const std::string source = picture("source.jpg");
        const std::string target = picture("target.jpg");
        std::vector<std::string> call{"exiftool", "-q", "-overwrite_original"};
        call.insert(call.end(), row.how.begin(), row.how.end());
        call.insert(call.end(), {std::string("-IPTC:Headline=") + row.headline, source});
        ASSERT_TRUE(run_child(call).succeeded());
        EXPECT_EQ(tool.read_headline(source, voice), row.headline);
        tool.start_transfer(source, target, {true, true, true}, {}, false, log, voice);
        EXPECT_TRUE(tool.settle(log, voice));
        EXPECT_EQ(tool.read_headline(target, voice), row.headline);
    }
}

TEST_F(ExifToolCalls, PrintersColoursGetThePrintersProfile) {
    parameters.meta_transfer = 1;
    std::string profile(160, '\0');  // a head that tells its colours, and one entry
    profile[3] = static_cast<char>(160);
    profile.replace(12, 12, "prtrCMYKLab ");
    profile.replace(36, 4, "acsp");
    profile.replace(131, 13, "\1desc\0\0\0\x90\0\0\0\x10", 13);
    profile.replace(144, 16, "desc\0\0\0\0\0\0\0\4Own", 16);
    test::write_text(folder / "print.icc", profile);
    for (const int format : {8, 9}) {
        parameters.output_format = format;
        const std::string target = folder / "target.tif";
        ASSERT_EQ(encode_and_write(cmyk_by_formula(test::place_picture(16, 16).picture()),
                                   {.format = PictureFormat::tiff, .compress = true}, target),
                  "");
        parameters.cmyk_profile = folder / "print.icc";
        tool.start_transfer(picture("source.jpg"), target, {true, true, true}, {}, false, log, voice);
        tool.forget_files({folder / "source.jpg"});
        const ChildResult tags = run_child({"exiftool", "-s", "-s", "-s", "-ColorSpaceData", target});
        EXPECT_EQ(std::string(tags.output.begin(), tags.output.end()), format == 9 ? "CMYK\n" : "") << format;
    }
}

TEST_F(ExifToolCalls, TheIndexOfAMultiPictureFileFitsAfterTheTransfer) {
    parameters.extra_output = 5;
    parameters.verbose_mode = 0;
    std::string reason;
    const FileBytes jpeg = read_file_whole(picture("source.jpg"), reason).value_or(FileBytes());
    MpoMetadata metadata;
    metadata.width = metadata.height = 16;
    // A longer first picture in the one case, a shorter one in the other.
    for (const std::string& copyright : {std::string(300, 'c'), std::string("c")}) {
        parameters.exif_copyright = copyright;
        const std::string target = folder / "target.mpo";
        const auto joined = join_as_mpo(jpeg, jpeg, metadata, voice);
        ASSERT_TRUE(joined && write_file_whole(target, *joined).empty());
        tool.start_transfer(folder / "source.jpg", target, {true, true, true}, {}, true, log, voice);
        EXPECT_TRUE(tool.settle(log, voice));
        const auto edited = read_file_whole(target, reason);
        ASSERT_TRUE(edited);
        EXPECT_NE(edited->size(), joined->size());
        // The reader tells a size that does not lead to the second picture.
        parameters.verbose_mode = 2;
        EXPECT_TRUE(cut_mpo(*edited, voice));
        parameters.verbose_mode = 0;
    }
    EXPECT_EQ(heard(), "");
}

TEST_F(ExifToolCalls, ARecordLeavesTheIndexOfAMultiPictureFileRight) {
    const Bitmap view = test::place_picture(16, 16);
    for (const bool big_endian : {false, true}) {
        for (const std::size_t padding : {0, 40}) {
            const std::string path = folder / "camera.mpo";
            test::GeneratedMpo mpo = test::make_mpo({.big_endian = big_endian}, view, view);
            // Zeros before the second picture, which the size of the first one counts as some cameras do.
            mpo.bytes.insert(mpo.bytes.begin() + static_cast<std::ptrdiff_t>(mpo.left.size()), padding, 0);
            const auto first = [&] { return first_picture_of(path).value_or(FirstPicture()); };
            for (const int part : {1, 2}) {
                const std::size_t size = mpo.left.size() + padding;
                const std::size_t offset = size - mpo.origin;
                const std::size_t place = mpo.origin + 8 + 2 + 36 + 4 + (part == 1 ? 4 : 16 + 8);
                for (std::size_t i = 0; i < 4; ++i) {
                    mpo.bytes[place + (big_endian ? 3 - i : i)] =
                        static_cast<std::uint8_t>((part == 1 ? size : offset) >> 8 * i);
                }
            }
            test::write_text(path, {mpo.bytes.begin(), mpo.bytes.end()});
            ASSERT_EQ(first().size, mpo.left.size() + padding);
            EXPECT_TRUE(tool.write_record(path, InputClass::mpo, std::string(200, 'r'), voice));
            EXPECT_GT(first().next_start, mpo.left.size() + padding + 200);
            EXPECT_EQ(first().size, first().next_start) << big_endian << ' ' << padding;
        }
    }
}

TEST_F(ExifToolCalls, FailuresTellTheFileAndTheSentenceOfExiftool) {
    parameters.exif_copyright = "c";
    test::write_text(folder / "broken.jpg", "no picture");
    const std::string good = picture("good.jpg");
    tool.start_transfer(good, folder / "broken.jpg", {true, true, true}, {}, false, log, voice);
    tool.start_transfer(good, good, {true, true, true}, {}, false, log, voice);
    EXPECT_EQ(tool.read_orientation(folder / "none.jpg", voice), 0);
    EXPECT_EQ(tool.read_software(folder / "none.jpg", voice), "");
    EXPECT_FALSE(tool.settle(log, voice));
    tool.start_transfer(good, good, {true, true, true}, {}, false, log, voice);
    EXPECT_TRUE(tool.settle(log, voice)) << "a failure counts for its pair alone";
    test::write_text(good + "_exiftool_tmp", "of another run");
    EXPECT_FALSE(tool.write_record(good, InputClass::jpeg, "x", voice));
    EXPECT_EQ(test::read_text(good + "_exiftool_tmp"), "of another run");
    const std::string text = heard();
    EXPECT_NE(text.find("broken.jpg: Error: Not a valid JPG (looks more like a TXT)\n"), std::string::npos);
    EXPECT_NE(text.find("please remove " + good + "_exiftool_tmp"), std::string::npos);
    const std::size_t told = text.find("none.jpg: Error: File not found\n");
    EXPECT_NE(told, std::string::npos);
    EXPECT_EQ(text.find("none.jpg", told + 1), std::string::npos) << "a failed read is told once";
}

TEST_F(ExifToolCalls, WhatAnEarlierRunLeftBesideAProductIsRemoved) {
    parameters.exif_copyright = "c";
    const std::string target = picture("target.jpg");
    const std::string left_over = target + "_exiftool_tmp";
    const std::int64_t long_ago = 1'000'000'000;
    for (const bool is_old : {true, false}) {
        test::write_text(left_over, "half");
        ASSERT_TRUE(!is_old || set_file_times(left_over, long_ago));
        tool.start_transfer(target, target, {true, true, true}, {}, false, log, voice);
        EXPECT_EQ(tool.settle(log, voice), is_old);
        EXPECT_EQ(file_exists(left_over), !is_old) << "another run may be at work on it";
    }
    EXPECT_NE(heard().find(left_over + " was left by a run that was broken off"), std::string::npos);
}

TEST(ExifOrientation, TurnsIntoTheCodesOfTheInput) {
    const int codes[] = {0, 0, 4, 2, 6, 7, 3, 5, 1, 0};
    for (int orientation = 0; orientation < 10; ++orientation) {
        EXPECT_EQ(rot_mir_of_orientation(orientation), codes[orientation]) << orientation;
    }
    EXPECT_EQ(rot_mir_of_orientation(-1), 0);
}

}  // namespace
}  // namespace zemora
