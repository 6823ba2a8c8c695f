#include "driver/invocation.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "driver/file_kinds.h"
#include "driver/post_run.h"
#include "platform/child_process.h"
#include "platform/paths.h"
#include "tests/support/speech.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using Form = InvocationForm;

struct FormCase {
    std::vector<std::string> arguments;  ///< "@" stands for the test's folder.
    std::optional<Form> form;
    std::string parameter_file;
};

class Forms : public testing::TestWithParam<FormCase> {};

TEST_P(Forms, FollowFromNumberAndKindOfTheArguments) {
    const test::TestFolder folder;
    for (const char* name : {"l", "r", "R", "other", "folder.ini"}) {
        std::filesystem::create_directory(folder / name);
    }
    const auto placed = [&](std::string text) {
        if (!text.empty() && text.front() == '@') {
            text.replace(0, 1, folder.path());
        }
        return text;
    };
    std::vector<std::string> arguments;
    for (const std::string& argument : GetParam().arguments) {
        arguments.push_back(placed(argument));
    }
    const auto call = classify_call(arguments);
    ASSERT_EQ(call.has_value(), GetParam().form.has_value());
    if (call) {
        EXPECT_EQ(call->form, *GetParam().form);
        EXPECT_EQ(call->parameter_file, placed(GetParam().parameter_file));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, Forms,
    testing::Values(
        FormCase{{}, Form::defaults, "zemora.ini"}, FormCase{{"my.ini"}, Form::parameter_file, "my.ini"},
        FormCase{{"MY.INI"}, Form::parameter_file, "MY.INI"},
        FormCase{{"a.ini.jpg"}, Form::parameter_file, "a.ini.jpg"},
        FormCase{{"a.Ini"}, Form::stereo_file, "zemora.ini"},
        FormCase{{"x.ini/a.jpg"}, Form::stereo_file, "x.ini/zemora.ini"},
        FormCase{{"@/folder.ini"}, Form::folder, ""}, FormCase{{"@/other/"}, Form::folder, ""},
        FormCase{{"a.jpg"}, Form::stereo_file, "zemora.ini"},
        FormCase{{"d\\a.jpg"}, Form::stereo_file, "d/zemora.ini"},
        FormCase{{"a.jpg", "my.ini"}, Form::stereo_file_and_parameters, "my.ini"},
        FormCase{{"d/a.jpg", "b.jpg"}, Form::pair, "d/zemora.ini"},
        FormCase{{"/a.jpg", "b.jpg"}, Form::pair, "/zemora.ini"},
        FormCase{{"a.jpg", "b.jpg", "my.ini"}, Form::pair_and_parameters, "my.ini"},
        FormCase{{"a.jpg", "b.jpg", "c.jpg"}, std::nullopt, ""},
        FormCase{{"a", "b", "c", "d.ini"}, std::nullopt, ""},
        FormCase{{"@/l", "@/r/"}, Form::two_folders, ""}, FormCase{{"@/l", "@/R"}, Form::two_folders, ""},
        FormCase{{"@/r", "@/l"}, std::nullopt, ""}, FormCase{{"@/l", "@/other"}, std::nullopt, ""},
        FormCase{{"@/l", "@/r", "my.ini"}, Form::pair_and_parameters, "my.ini"}));

TEST(ForcedValues, PairAndStereoFileTakeTheirFolderAndDropTheViews) {
    ParameterSet p;
    Invocation call{Form::pair, {"/p/l/a.jpg", "/p/r/a.jpg"}, "", false};
    force_values(call, p);
    EXPECT_EQ(p.input_mode, 0);
    EXPECT_EQ(p.stereo_image_input, 2);
    EXPECT_EQ(p.path_of_images, "/p");
    EXPECT_EQ(p.left_file_name, "/p/l/a.jpg");
    EXPECT_EQ(p.right_file_name, "/p/r/a.jpg");
    call = {Form::stereo_file, {"/p/s/a.jpg"}, "", false};
    force_values(call, p);
    EXPECT_EQ(p.stereo_image_input, 1);
    EXPECT_EQ(p.path_of_images, "/p");
    call = {Form::pair, {"/q/L/a.jpg", "/q/R/a.jpg"}, "", false};
    force_values(call, p);
    EXPECT_EQ(p.path_of_images, "/q");
    call = {Form::pair, {"/p/pearl/a.jpg", "/p/r/a.jpg"}, "", false};
    force_values(call, p);
    EXPECT_EQ(p.path_of_images, "/p/pearl");
}

TEST(ForcedValues, FoldersSetTheirInputMode) {
    ParameterSet p;
    force_values({Form::folder, {"/p"}, "", false}, p, {LayoutSign::multi_pictures, 1, 4});
    EXPECT_EQ(p.input_mode, 4);
    EXPECT_EQ(p.stereo_output, 0);
    EXPECT_EQ(p.extra_output, 5);
    EXPECT_EQ(p.path_of_images, "/p");
    ParameterSet two;
    force_values({Form::two_folders, {"/p/l", "/p/r"}, "", false}, two);
    EXPECT_EQ(two.input_mode, 9);
    EXPECT_EQ(two.stereo_image_input, 2);
    EXPECT_EQ(two.path_of_images, "/p");
    ParameterSet named;
    named.include_subdirs = 1;
    force_values({Form::folder, {"/p"}, "", false}, named, {LayoutSign::marked_pairs, 2, 1});
    EXPECT_EQ(named.input_mode, 2) << "by names, with subfolders";
    EXPECT_EQ(named.extra_output, 0);
}

TEST(WordsOfTheCall, MustNameSomethingThatExists) {
    const test::TestFolder folder;
    for (const char* name : {"a_l.jpg", "B_R.JPG", "my.ini"}) {
        test::write_text(folder / name, "x");
    }
    ParameterSet p;
    p.path_of_images = folder.path();
    const auto missing = [&](const std::vector<std::string>& words) -> std::string {
        const auto call = classify_call(words);
        EXPECT_TRUE(call.has_value());
        const std::string* file = find_missing_parameter_file(*call);
        const std::string* word = file != nullptr ? file : find_missing_picture(*call, p);
        return word != nullptr ? *word : "";
    };
    EXPECT_EQ(missing({folder / "a_l.jpg", folder / "b_r.jpg"}), "") << "another case is enough";
    EXPECT_EQ(missing({"a_l.jpg", "B_R.JPG", folder / "my.ini"}), "")
        << "bare names are looked for in the folder";
    EXPECT_EQ(missing({"a_l.jpg", "c_r.jpg"}), "c_r.jpg");
    EXPECT_EQ(missing({folder / "x_s.jpg"}), folder / "x_s.jpg");
    EXPECT_EQ(missing({"a_l.jpg", "B_R.JPG", folder / "your.ini"}), folder / "your.ini");
    EXPECT_EQ(missing({}), "") << "zemora.ini may be missing";
    EXPECT_EQ(*find_word_with_drive(*classify_call({"a_l.jpg", "C:\\b.jpg"})), "C:/b.jpg");
    EXPECT_EQ(find_word_with_drive(*classify_call({"a_l.jpg", "b:c.jpg"})), nullptr);
}

/// What the shell prints for a script, without the first line, which removes the script's file.
std::string printed_by(const std::string& script) {
    const ChildResult result = run_child({"sh", "-c", script.substr(script.find('\n') + 1)});
    return {result.output.begin(), result.output.end()};
}

TEST(BatchScript, EndsAtTheFirstEmptyLineAndReplacesEveryMark) {
    const std::string text =
        "REM echo #CS#\nprintf '<%s>' '#CS#' #CS#\r\nprintf '<%s>' '#CA#' x#CM#y#CS# \"#CA#\"\n\necho "
        "never\n";
    EXPECT_EQ(printed_by(batch_script(text, {"ana", "stereo", "extra"})),
              "<stereo><stereo><ana><xextraystereo><ana>");
    EXPECT_EQ(printed_by(batch_script("printf '<%s>' #CS# #CM#\n", {"", "", "extra"})), "<extra><extra>");
    EXPECT_EQ(printed_by(batch_script("printf '<%s>' #CS# #CM#\n", {"", "stereo", ""})), "<stereo><stereo>");
    EXPECT_EQ(printed_by(batch_script("printf '<%s>' #CA# #CS#\n", {"", "stereo", ""})), "<><stereo>");
}

TEST(BatchScript, NamesReachTheProgramAsOneWordHoweverTheMarkIsQuoted) {
    for (const std::string name : {"/a b/c.jpg", "/it's.jpg", "/$(echo x)`echo y`.jpg", "/\"q\"\\.jpg",
                                   "/two\necho lines.jpg", "/;#&|*.jpg"}) {
        for (const char* line : {"printf '<%s>' #CS#", "printf '<%s>' \"#CS#\"", "printf '<%s>' '#CS#'",
                                 "printf \"<%s>\" \\\\#CS#"}) {
            const std::string expected =
                (std::string(line).find('\\') != std::string::npos ? "<\\" : "<") + name + '>';
            EXPECT_EQ(printed_by(batch_script(std::string("REM #CS#\n") + line + '\n', {"", name, ""})),
                      expected)
                << line;
        }
    }
}

struct Rig : test::Speech {
    std::string told;

    template <class Call>
    auto listen(const Call& call) {
        testing::internal::CaptureStdout();
        auto result = call();
        console.flush();
        told = testing::internal::GetCapturedStdout();
        return result;
    }
};

TEST(FileKinds, SuffixesAreLowerCasedShortenedAndChecked) {
    Rig rig;
    for (const auto& [name, suffix] : {std::pair{"a.JPG", ".jpg"},
                                       {"a.jpeg", ".jpg"},
                                       {"a.TIFF", ".tif"},
                                       {"b/a.x.Webp", ".webp"},
                                       {"a", ""},
                                       {"a.", ""},
                                       {"a.js", ""},
                                       {"a.toolong", ""}}) {
        EXPECT_EQ(rig.listen([&, n = name] { return checked_suffix(n, rig.voice); }), suffix) << name;
        EXPECT_EQ(rig.told.find(name) != std::string::npos, std::string(suffix).empty()) << rig.told;
    }
}

TEST(FileKinds, OutputSuffixFollowsTheFormatElseTheInput) {
    Rig rig;
    const auto suffix_for = [&](int format, const char* input, bool multi) {
        rig.parameters.output_format = format;
        return rig.listen([&] { return output_suffix(rig.parameters, input, multi, rig.voice); });
    };
    const char* expected[] = {".png", ".jpg", ".tga", ".bmp", ".png", ".tif", ".tif", ".tif", ".tif", ".tif"};
    for (int format = 0; format < 10; ++format) {
        EXPECT_EQ(suffix_for(format, ".png", false), expected[format]) << format;
    }
    EXPECT_EQ(suffix_for(0, ".mpo", true), ".jpg");
    EXPECT_EQ(suffix_for(0, ".arw", false), ".bmp");
    EXPECT_NE(rig.told.find("'.arw' cannot be written"), std::string::npos) << rig.told;
    EXPECT_EQ(suffix_for(17, ".tga", false), ".tga");  // an option may give any number
}

struct TagCase {
    const char* left_in;
    const char* right_in;
    const char* left_out;
    const char* right_out;
    bool exif, tags, profile;
};

class Tags : public testing::TestWithParam<TagCase> {};

TEST_P(Tags, AreTransferredWhereBothEndsCanHoldThem) {
    const TagCase& c = GetParam();
    Rig rig;
    const TagPermissions permissions = rig.listen([&] {
        return tag_permissions(rig.parameters, c.left_in, c.right_in, c.left_out, c.right_out, rig.voice);
    });
    EXPECT_EQ(permissions.exif_ok, c.exif);
    EXPECT_EQ(permissions.tags_ok, c.tags);
    EXPECT_EQ(permissions.colour_profile_ok, c.profile);
    EXPECT_EQ(rig.told.find("MetaTransfer set") != std::string::npos, !c.exif) << rig.told;
}

INSTANTIATE_TEST_SUITE_P(Table, Tags,
                         testing::Values(TagCase{".jpg", ".jpg", ".jpg", ".jpg", true, true, true},
                                         TagCase{".cr2", ".cr2", ".tif", ".tif", true, true, true},
                                         TagCase{".mpo", ".mpo", ".jpg", ".jpg", true, true, true},
                                         TagCase{".jpg", ".tif", ".jpg", ".jpg", false, true, true},
                                         TagCase{".png", ".png", ".jpg", ".jpg", false, true, true},
                                         TagCase{".jpg", ".jpg", ".jpg", ".tif", false, false, false},
                                         TagCase{".jpg", ".jpg", ".mpo", ".mpo", false, true, false},
                                         TagCase{".jpg", ".jpg", ".bmp", ".bmp", false, false, false}));

TEST(FileKinds, RecordGoesIntoLikeFilesOnly) {
    EXPECT_EQ(input_class_of(".jpg", ".jpg"), InputClass::jpeg);
    EXPECT_EQ(input_class_of(".tif", ".tif"), InputClass::tiff);
    EXPECT_EQ(input_class_of(".mpo", ".mpo"), InputClass::mpo);
    EXPECT_EQ(input_class_of(".jpg", ".tif"), InputClass::none);
    EXPECT_EQ(input_class_of(".png", ".png"), InputClass::none);
}

}  // namespace
}  // namespace zemora
