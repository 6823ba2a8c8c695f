#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "analysis/iteration_verdict.h"
#include "driver/window_placement.h"
#include "input/stored_record.h"

namespace zemora {
namespace {

TEST(StoredRecord, SurvivesItsTextWithinTheFormatsDigits) {
    StoredCorrectionRecord record = empty_record();
    for (std::size_t i = 0; i < record.size(); ++i) {
        record[i] = (i % 2 == 0 ? 1.0 : -1.0) * (0.25 + 0.5 * static_cast<double>(i % 5));
    }
    record[kRecordCroppOutput] = 3;
    const auto back = parse_record(record_text(record));
    ASSERT_TRUE(back);
    for (std::size_t i = 0; i < record.size(); ++i) {
        EXPECT_NEAR((*back)[i], record[i], 0.051) << i;
    }
    EXPECT_NEAR((*back)[kRecordHeight], record[kRecordHeight], 0.0051);
    EXPECT_NEAR((*back)[kRecordDeviation], record[kRecordDeviation], 0.000051);
}

TEST(StoredRecord, TextIsPaddedByTheTableAndFits) {
    const std::string text = record_text(empty_record());
    EXPECT_EQ(text.rfind("Zemora_OK_V1.0   0.0   0.0   0.0   0.0", 0), 0U) << text;
    EXPECT_EQ(text.substr(text.size() - 8), "  1.00 0") << text;
    EXPECT_LE(text.size(), 255U);
    StoredCorrectionRecord wide = empty_record();
    wide.fill(-100.0);
    wide[kRecordHeight] = -12345.67;
    EXPECT_EQ(record_text(wide).find("  "), std::string::npos) << "padding goes first";
    EXPECT_TRUE(parse_record(record_text(wide)));
}

TEST(StoredRecord, ValuesThatAreNoNumbersAreStoredAsZero) {
    StoredCorrectionRecord record = empty_record();
    record[kRecordHeight] = std::numeric_limits<double>::quiet_NaN();
    record[kRecordNearPoint] = std::numeric_limits<double>::infinity();
    const auto back = parse_record(record_text(record));
    ASSERT_TRUE(back);
    EXPECT_EQ((*back)[kRecordHeight], 0.0);
}

std::string record_with(const std::string& head, std::size_t values, const std::string& value) {
    std::string text = head;
    for (std::size_t i = 0; i < values; ++i) {
        text += ' ' + value;
    }
    return text;
}

TEST(StoredRecord, OnlyAWholeRecordOfThisVersionCounts) {
    const std::string word = "Zemora_OK_V1.0";
    EXPECT_TRUE(parse_record(record_with(word, kRecordFields, "1.5")));
    EXPECT_TRUE(parse_record("  " + record_with(word, kRecordFields, "  -2e-3") + "  \r\n"));
    EXPECT_TRUE(parse_record(record_with(word, kRecordFields + 1, "1")));  // more is not looked at
    for (const std::string& bad :
         {std::string(), word, record_with(word, kRecordFields - 1, "1"),
          record_with("Zemora_OK_V1.1", kRecordFields, "1"),
          record_with("Zemora_OK_V1.00", kRecordFields, "1"),
          record_with("zemora_ok_v1.0", kRecordFields, "1"), record_with(word, kRecordFields, "nan"),
          record_with(word, kRecordFields, "inf"), record_with(word, kRecordFields, "x"),
          record_with(word, kRecordFields, "1,5"), record_with(word, kRecordFields, "1e999"),
          std::string("Canon EOS holiday"), word + std::string(5000, ' ')}) {
        EXPECT_FALSE(parse_record(bad)) << bad.substr(0, 80);
    }
}

TEST(StoredRecord, NeutralFactorOfZeroReadsAsOne) {
    const auto record = parse_record(record_with("Zemora_OK_V1.0", kRecordFields, "0"));
    ASSERT_TRUE(record);
    EXPECT_EQ((*record)[kRecordTrapezScale], 1.0);
}

struct StopCase {
    double height_px, size_percent, rotation_deg, vergence_deg;
    int input_height;
    StatusCode status;
    bool converged;
};

class StopTest : public testing::TestWithParam<StopCase> {};

TEST_P(StopTest, JudgesByTheLimitsOnBothSigns) {
    const StopCase& c = GetParam();
    for (const double sign : {1.0, -1.0}) {
        Correction remaining;
        remaining.height_px = sign * c.height_px;
        remaining.size = sign * c.size_percent / 100.0;
        remaining.rotation_rad = sign * c.rotation_deg * kRadiansPerDegree;
        remaining.vergence_v_rad = sign * c.vergence_deg * kRadiansPerDegree;
        const StopVerdict verdict = judge_iteration(remaining, c.input_height, 600);
        EXPECT_EQ(verdict.status, c.status);
        EXPECT_EQ(verdict.converged, c.converged);
        EXPECT_EQ(verdict.worth_keeping, c.converged);
    }
}

constexpr auto kSuccess = StatusCode::success;
constexpr auto kUsable = StatusCode::usable;
constexpr auto kNone = StatusCode::no_result;
INSTANTIATE_TEST_SUITE_P(Table, StopTest,
                         testing::Values(StopCase{0.99, 0.199, 0.113, 0.113, 600, kSuccess, true},
                                         StopCase{1.01, 0.199, 0.113, 0.113, 600, kUsable, true},
                                         StopCase{0.99, 0.201, 0.113, 0.113, 600, kUsable, true},
                                         StopCase{0.99, 0.199, 0.115, 0.113, 600, kUsable, true},
                                         StopCase{0.99, 0.199, 0.113, 0.115, 600, kUsable, true},
                                         StopCase{1.99, 0.399, 0.227, 9.0, 600, kUsable, true},
                                         StopCase{2.01, 0.399, 0.227, 0.0, 600, kNone, false},
                                         StopCase{0.5, 0.399, 0.229, 0.0, 600, kNone, false},
                                         StopCase{0.5, 0.401, 0.0, 0.0, 600, kNone, false},
                                         StopCase{1.99, 0.1, 0.1, 0.1, 4000, kSuccess,
                                                  true},  // a unit of two rows
                                         StopCase{3.99, 0.1, 0.1, 0.1, 4000, kUsable, true},
                                         StopCase{6.6, 0.1, 0.1, 0.1, 4000, kUsable, false},
                                         StopCase{6.7, 0.1, 0.1, 0.1, 4000, kNone, false}));

struct WindowCase {
    int estimate_window, window_offset, reference;
    double shift_px, window_px, scale;
    double output_px, window_shift_input_px, pure_px;
};

class PlaceWindow : public testing::TestWithParam<WindowCase> {};

TEST_P(PlaceWindow, SharesTheShiftBetweenWindowAndPair) {
    const WindowCase& c = GetParam();
    const WindowWish wish{c.estimate_window, c.window_offset, c.reference};
    const WindowPlacement placed = place_window(wish, c.shift_px, c.window_px, c.scale, {2000, 1000});
    EXPECT_NEAR(placed.window_working_px, c.output_px, 1e-9);
    EXPECT_NEAR(placed.window_shift_input_px, c.window_shift_input_px, 1e-9);
    EXPECT_NEAR(placed.pure_shift_input_px, c.pure_px, 1e-9);
    EXPECT_NEAR(placed.window_shift_input_px + placed.pure_shift_input_px, c.shift_px, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Table, PlaceWindow,
                         testing::Values(WindowCase{0, 0, 0, 40.0, -7.0, 2.0, 80.0, 40.0, 0.0},
                                         WindowCase{0, 10, 0, 40.0, -7.0, 2.0, 90.0, 45.0, -5.0},
                                         WindowCase{1, 10, 0, 40.0, -7.0, 2.0, 10.0, 5.0, 35.0},
                                         WindowCase{1, 5, 1, 40.0, -7.0, 1.0, 10.0, 10.0, 30.0},
                                         WindowCase{2, 0, 0, 40.0, -7.0, 2.0, 14.0, 7.0, 33.0},
                                         WindowCase{2, 10, 0, 40.0, 7.0, 2.0, -4.0, -2.0, 42.0},
                                         WindowCase{5, 3, 3, 40.0, -7.0, 0.5, 3.5 + 4.8, 16.6, 23.4}));

}  // namespace
}  // namespace zemora
