#include "driver/stations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include "driver/pair_notes.h"
#include "tests/support/speech.h"

namespace zemora {
namespace {

using std::chrono::milliseconds;

/// Stations that take their time and write down what they have seen.
struct Course {
    explicit Course(int slow_station = -1) : slow(slow_station) {}

    void work(int station, int index) {
        const auto s = static_cast<std::size_t>(station);
        EXPECT_EQ(index, done[s]) << "station " << station << " takes the objects in their order";
        if (station > 0) {
            EXPECT_GT(done[s - 1], index) << "the station before is done with it";
        }
        if (station < 2) {
            const int most = station == 0 ? kObjectsAtWork : kObjectsMounted;
            EXPECT_LT(index - done[2], most) << "no more objects are in memory";
        }
        std::this_thread::sleep_for(milliseconds(station == slow ? 4 : 1));
        ++done[s];
    }
    [[nodiscard]] Stations stations() {
        return {[this](int index) { work(0, index); }, [this](int index) { work(1, index); },
                [this](int index) { work(2, index); }, [](int, int) { return false; }, [] {}};
    }

    int slow;
    std::array<std::atomic<int>, 3> done{};
};

TEST(Stations, WorkInOrderWithFewObjectsAtATime) {
    for (const int slow : {-1, 0, 1, 2}) {
        Course course(slow);
        ASSERT_TRUE(run_stations(12, course.stations()));
        EXPECT_EQ(course.done[2], 12);
    }
}

TEST(Stations, WorkAtTheSameTime) {
    // Each station waits until the two others are at work on other objects.
    std::array<std::atomic<int>, 3> begun{};
    const auto wait_for = [&begun](std::size_t station, int count) {
        for (int i = 0; i < 5000 && begun[station] < count; ++i) {
            std::this_thread::sleep_for(milliseconds(1));
        }
        EXPECT_GE(begun[station], count);
    };
    const Stations stations{[&](int) { ++begun[0]; },
                            [&](int index) {
                                ++begun[1];
                                wait_for(0, std::min(index + 2, 4));
                            },
                            [&](int index) {
                                ++begun[2];
                                wait_for(1, std::min(index + 2, 4));
                            },
                            [](int, int) { return false; }, [] {}};
    ASSERT_TRUE(run_stations(4, stations));
    EXPECT_EQ(begun[2], 4);
}

TEST(Stations, AnObjectThatDependsOnAnotherWaitsForIt) {
    Course course;
    Stations stations = course.stations();
    stations.must_wait_for = [](int index, int earlier) { return index == 3 && earlier == 2; };
    stations.read = [&](int index) {
        if (index == 3) {
            EXPECT_EQ(course.done[2], 3);
        }
        course.work(0, index);
    };
    ASSERT_TRUE(run_stations(6, stations));
    EXPECT_EQ(course.done[2], 6);
}

TEST(Stations, WhatOneThrowsEndsTheRunAndArrivesOnce) {
    for (const int failing : {0, 1, 2}) {
        Course course;
        Stations stations = course.stations();
        std::atomic<int> stops{0};
        stations.stop = [&stops] { ++stops; };
        auto& work = failing == 0 ? stations.read : failing == 1 ? stations.mount : stations.store;
        work = [failing, &course](int index) {
            if (index == 2) {
                throw std::runtime_error("object 2");
            }
            course.work(failing, index);
        };
        EXPECT_THROW((void)run_stations(8, stations), std::runtime_error);
        EXPECT_EQ(stops, 1);
        EXPECT_LE(course.done[2], 2) << "nothing behind the failure is stored";
    }
}

/// What a listener hears, in its order.
class Heard : public Notes {
public:
    using Notes::Notes;
    void add(Note note) override { lines.push_back(note.text); }
    void progress(std::string_view step, double percent) override {
        lines.push_back(std::string(step) + ' ' + std::to_string(static_cast<int>(percent)));
    }
    std::vector<std::string> lines;
};

class PairNotesTest : public testing::Test, public test::Speech {
protected:
    Heard heard{messages, parameters.verbose_mode};
    PairNotes notes{heard};
};

TEST_F(PairNotesTest, KeepsItsOrderUntilItsTurnAndThenSpeaksAtOnce) {
    notes.print("first\n");
    notes.progress("step", 50.0);
    notes.progress("step", 100.0);
    notes.print("second\n");
    EXPECT_TRUE(heard.lines.empty());
    notes.open();
    notes.progress("later", 50.0);
    notes.print("third\n");
    EXPECT_EQ(heard.lines,
              (std::vector<std::string>{"first\n", "step 100", "second\n", "later 50", "third\n"}));
    notes.await_listener();
}

TEST_F(PairNotesTest, WhoWaitsForItsTurnIsWokenByItOrByTheEndOfTheRun) {
    std::atomic<bool> passed{false};
    std::thread waiting([&] {
        notes.await_listener();
        passed = true;
    });
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_FALSE(passed);
    notes.open();
    waiting.join();
    EXPECT_TRUE(passed);

    PairNotes never(heard);
    std::thread stopped([&] { EXPECT_THROW(never.await_listener(), RunStopped); });
    std::this_thread::sleep_for(milliseconds(20));
    never.stop();
    stopped.join();
}

}  // namespace
}  // namespace zemora
