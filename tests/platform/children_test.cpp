#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "platform/child_dialog.h"
#include "platform/child_process.h"
#include "platform/threads.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using test::TestFolder;

std::string text_of(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

TEST(RunChild, ArgumentsArriveAsTheyAre) {
    const std::vector<std::string> hostile{"a b",        "'",  "\"",       "$(touch x)", "`id`", ";rm x",
                                           "two\nlines", "-n", "--all",    "*",          "\\",   "",
                                           "\xC3\xA4",   "%s", "&& false", ">x"};
    std::vector<std::string> call{"printf", "<%s>"};
    std::string expected;
    for (const std::string& argument : hostile) {
        call.push_back(argument);
        expected += '<' + argument + '>';
    }
    const ChildResult result = run_child(call);
    EXPECT_TRUE(result.succeeded());
    EXPECT_EQ(text_of(result.output), expected);
}

TEST(RunChild, TakesSignalsThoughTheThreadThatStartsItDoesNot) {
    const std::vector<std::string> blocked_signals{"sed", "-n", "s/^SigBlk:[ \t0]*//p", "/proc/self/status"};
    ChildResult result;
    start_team([&] { result = run_child(blocked_signals); }).join();
    EXPECT_TRUE(result.succeeded());
    EXPECT_EQ(text_of(result.output), "\n");
    std::vector<std::uint8_t> answer;
    start_team([&] {
        ChildDialog dialog;
        ASSERT_TRUE(
            dialog.start({"sh", "-c", "sed -n 's/^SigBlk:[ \t0]*/./p' /proc/self/status; read x"}, "\n"));
        EXPECT_TRUE(dialog.read_until("\n", answer));
    }).join();
    EXPECT_EQ(text_of(answer), ".\n");
}

TEST(RunChild, TellsHowTheProgramEnded) {
    EXPECT_EQ(run_child({"sh", "-c", "exit 7"}).exit_code, 7);
    EXPECT_EQ(run_child({"sh", "-c", "kill -9 $$"}).exit_code, -1);
    const ChildResult missing = run_child({"/no/such/program"});
    EXPECT_EQ(missing.exit_code, -1);
    EXPECT_FALSE(missing.error.empty());
    EXPECT_FALSE(run_child({}).succeeded());
}

TEST(RunChild, ReadsMoreThanAPipeHoldsAndGivesNoInput) {
    const ChildResult large = run_child({"sh", "-c", "cat; head -c 3000000 /dev/zero"});
    EXPECT_TRUE(large.succeeded());
    EXPECT_EQ(large.output.size(), 3'000'000U);
}

TEST(ChildDialog, AnswersSeveralRequests) {
    ChildDialog dialog;
    ASSERT_TRUE(dialog.start(
        {"sh", "-c", "while read -r line; do [ \"$line\" = bye ] && exit; printf '%s.end' \"$line\"; done"},
        "bye\n"));
    for (const std::string request : {"one", "two words", "three"}) {
        std::vector<std::uint8_t> answer;
        ASSERT_TRUE(dialog.write(request + '\n'));
        ASSERT_TRUE(dialog.read_until(".end", answer));
        EXPECT_EQ(text_of(answer), request + ".end");
    }
    dialog.close();
    EXPECT_FALSE(dialog.is_running());
}

TEST(ChildDialog, AnswersThatArriveTogetherAreGivenOutOneByOne) {
    ChildDialog dialog;
    ASSERT_TRUE(
        dialog.start({"/bin/sh", "-c", "printf 'one.two.three'; read -r _; printf '.'; read -r _"}, "\n\n"));
    std::vector<std::uint8_t> answer;
    for (const std::string expected : {"one.", "two."}) {
        ASSERT_TRUE(dialog.read_until(".", answer));
        EXPECT_EQ(std::string(answer.begin(), answer.end()), expected);
    }
    ASSERT_TRUE(dialog.write("go on\n"));
    ASSERT_TRUE(dialog.read_until(".", answer));
    EXPECT_EQ(std::string(answer.begin(), answer.end()), "three.");
}

TEST(ChildDialog, ErrorsBelongToTheirAnswerAndNeverBlockTheProgram) {
    ChildDialog dialog;
    ASSERT_TRUE(
        dialog.start({"sh", "-c",
                      "while read -r line; do head -c 300000 /dev/zero >&2; printf '%s.end' \"$line\" >&2; "
                      "printf '%s.end' \"$line\"; done"},
                     ""));
    ASSERT_TRUE(dialog.write("one\ntwo\n"));
    for (const std::string request : {"one", "two"}) {
        std::vector<std::uint8_t> answer;
        std::vector<std::uint8_t> errors;
        ASSERT_TRUE(dialog.read_until(".end", answer, &errors));
        EXPECT_EQ(text_of(answer), request + ".end");
        ASSERT_EQ(errors.size(), 300'000U + request.size() + 4);
        EXPECT_EQ(std::string(errors.begin() + 300'000, errors.end()), request + ".end");
    }
    const ChildResult both =
        run_child_and_keep_errors({"sh", "-c", "head -c 300000 /dev/zero >&2; printf out; exit 3"});
    EXPECT_EQ(both.exit_code, 3);
    EXPECT_EQ(text_of(both.output), "out");
    EXPECT_EQ(both.errors.size(), 300'000U);
}

TEST(ChildDialog, NoticesAProgramThatHasGone) {
    ChildDialog dialog;
    ASSERT_TRUE(dialog.start({"sh", "-c", "read -r line; printf part; exit 3"}, ""));
    std::vector<std::uint8_t> answer;
    ASSERT_TRUE(dialog.write("go\n"));
    EXPECT_FALSE(dialog.read_until(".end", answer));
    EXPECT_EQ(text_of(answer), "part");
    EXPECT_FALSE(dialog.is_running());
    EXPECT_FALSE(dialog.write("more\n"));
    EXPECT_FALSE(dialog.read_until(".end", answer)) << "an answer that was promised before is not waited for";
    EXPECT_FALSE(ChildDialog().start({"/no/such/program"}, ""));
    EXPECT_FALSE(ChildDialog().start({}, ""));
}

TEST(FindProgram, TakesTheFirstExecutableOfThePathWithAndWithoutExe) {
    const TestFolder folder;
    for (const char* name : {"first", "second"}) {
        std::filesystem::create_directory(folder / name);
    }
    std::filesystem::create_directory(folder / "first/ztool");
    test::write_text(folder / "first/zother", "not executable");
    for (const char* name : {"second/ztool", "second/zother"}) {
        test::write_text(folder / name, "#!/bin/sh\n");
        std::filesystem::permissions(folder / name, std::filesystem::perms::owner_all);
    }
    const std::string before = std::getenv("PATH");
    setenv("PATH", (":" + folder / "first" + "::" + folder / "second").c_str(), 1);
    EXPECT_EQ(find_program("ztool.exe"), folder / "second/ztool");
    EXPECT_EQ(find_program("ztool.EXE"), folder / "second/ztool");
    EXPECT_EQ(find_program("zother"), folder / "second/zother");
    EXPECT_EQ(find_program("znone.exe"), "");
    setenv("PATH", before.c_str(), 1);
}

}  // namespace
}  // namespace zemora
