#include "platform/console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>

#include "platform/process_end.h"

namespace zemora {
namespace {

/// What a child process writes to its standard output, and how it ended.
struct Heard {
    std::string text;
    int status = 0;
};

std::string read_all(int descriptor) {
    std::string text;
    std::array<char, 4096> block;
    for (ssize_t count = 0; (count = read(descriptor, block.data(), block.size())) > 0;) {
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    return text;
}

Heard hear_terminal(unsigned short columns, const std::function<void(Console&)>& speak) {
    winsize size{24, columns, 0, 0};
    int master = -1;
    const pid_t child = forkpty(&master, nullptr, nullptr, &size);
    if (child == 0) {
        Console console;
        speak(console);
        flush_console();
        _exit(0);
    }
    Heard heard{read_all(master), 0};
    close(master);
    waitpid(child, &heard.status, 0);
    return heard;
}

Heard hear_pipe(const std::function<void(Console&)>& speak) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        Console console;
        speak(console);
        _exit(0);
    }
    close(ends[1]);
    Heard heard{read_all(ends[0]), 0};
    close(ends[0]);
    waitpid(child, &heard.status, 0);
    return heard;
}

TEST(Console, NameOfAStepGivesWayToPercentAndTimeLeft) {
    const auto speak = [](Console& console) {
        console.set_course("12/40  ", "0:12:30 left");
        console.progress("Zemora::analyse:  phase 1: correlation   ", 42.0);
    };
    EXPECT_EQ(hear_terminal(200, speak).text,
              "\r12/40  Zemora::analyse:  phase 1: correlation   42.0 %  0:12:30 left\033[K");
    EXPECT_EQ(hear_terminal(40, speak).text, "\r12/40  Zemora::a   42.0 %  0:12:30 left\033[K");
    EXPECT_EQ(hear_terminal(10, speak).text, "\r12/40     42.0 %  0:12:30 left\033[K");
}

TEST(Console, WholeLinesAreThereBeforeTheProcessEndsAndTheBegunOneAfterIt) {
    const auto speak = [](Console& console) {
        console.print("first\nseco");
        console.print("nd");
    };
    EXPECT_EQ(hear_pipe([&](Console& console) {
                  speak(console);
                  _exit(0);
              }).text,
              "first\n");
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const Heard heard = hear_pipe([&](Console& console) {
            std::signal(number, SIG_DFL);
            end_well_at_signals();
            speak(console);
            raise(number);
        });
        EXPECT_EQ(heard.text, "first\nsecond");
        EXPECT_TRUE(WIFSIGNALED(heard.status) && WTERMSIG(heard.status) == number) << heard.status;
    }
}

TEST(EndSignals, AreHeldBackAndActAfterwards) {
    const Heard heard = hear_pipe([](Console& console) {
        end_well_at_signals();
        {
            const NoEndSignals outer;
            {
                const NoEndSignals inner;
                raise(SIGTERM);
            }
            console.print("still here\n");
        }
        console.print("gone\n");
    });
    EXPECT_EQ(heard.text, "still here\n");
    EXPECT_TRUE(WIFSIGNALED(heard.status) && WTERMSIG(heard.status) == SIGTERM) << heard.status;
}

TEST(Console, ControlsOfOlderTerminalsAreShownAsQuestionMarksToo) {
    EXPECT_EQ(printable("a\x1b[2J\x7f\tb"), "a?[2J??b");
    EXPECT_EQ(printable("\xC2\x9B"
                        "31m \xC2\x80 \x9B"
                        "31m"),
              "?31m ? ?31m");
    for (const char* kept :
         {"\xC3\x9F", "\xC2\xA0", "\xE7\x95\xAB", "\xF0\x9F\x93\xB7", "\xE0\xA4\x9B", "latin\xE4"}) {
        EXPECT_EQ(printable(kept), kept);
    }
}

TEST(Console, OutputThatCannotBeWrittenTurnsSuccessIntoFailure) {
    for (const auto& [file, code] : {std::pair{"/dev/full", kExitFailure}, {"/dev/null", kExitDone}}) {
        const pid_t child = fork();
        if (child == 0) {
            dup2(open(file, O_WRONLY), STDOUT_FILENO);
            dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
            Console().print("lost\n");
            end_process(kExitDone);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(WEXITSTATUS(status), code) << file;
    }
}

}  // namespace
}  // namespace zemora
