#include "driver/trust.h"

#include <gtest/gtest.h>

#include "driver/mount.h"

namespace zemora {
namespace {

constexpr double kJustBelow = 4.999 * kRadiansPerDegree;
constexpr double kJustAbove = 5.001 * kRadiansPerDegree;

TEST(Trust, EachFactHasItsLimitOnBothSides) {
    const Correction most = {900.0, 900.0, -0.04, -kJustBelow, kJustBelow, -kJustBelow};
    EXPECT_TRUE(doubts_of({most, 0.25, HeightVerdict::visible}).empty());
    EXPECT_TRUE(doubts_of({most, 0.0, HeightVerdict::unchecked}).empty());
    using Doubts = std::vector<Doubt>;
    EXPECT_EQ(doubts_of({{.size = -0.0401}}), Doubts{Doubt::size});
    EXPECT_EQ(doubts_of({{.rotation_rad = -kJustAbove}}), Doubts{Doubt::angle});
    EXPECT_EQ(doubts_of({{.vergence_v_rad = kJustAbove}}), Doubts{Doubt::angle});
    EXPECT_EQ(doubts_of({{.vergence_h_rad = -kJustAbove}}), Doubts{Doubt::angle});
    EXPECT_EQ(doubts_of({{}, 0.251}), Doubts{Doubt::rejected});
    EXPECT_EQ(doubts_of({{}, 0.0, HeightVerdict::unusable}), Doubts{Doubt::height});
    EXPECT_EQ(doubts_of({{}, 0.0, HeightVerdict::good, 0.499}), Doubts{Doubt::pattern});
    EXPECT_TRUE(doubts_of({{}, 0.0, HeightVerdict::good, 0.501}).empty());
}

TEST(Trust, AllDoubtsStandInOneLine) {
    const std::vector<Doubt> doubts =
        doubts_of({{.size = 0.05, .vergence_h_rad = 0.2}, 0.5, HeightVerdict::unusable});
    EXPECT_EQ(doubt_text(doubts, MessageCatalogue(Language::english)),
              "Not told as success: the views differ in size by more than 4 percent, a rotation or vergence "
              "is above "
              "5 degrees, more than a quarter of the matches contradict the others, the remaining error of "
              "height is "
              "too large.\n");
    EXPECT_EQ(doubt_text({Doubt::height}, MessageCatalogue(Language::german)),
              "Nicht als Erfolg gewertet: der verbliebene Hoehenfehler ist zu gross.\n");
    EXPECT_EQ(doubt_text({}, MessageCatalogue(Language::english)), "");
}

TEST(Trust, OnlyACheckedPairIsDoubted) {
    LocatedPair located;
    located.geometry.correction.size = 0.05;
    MountedPair mounted;
    EXPECT_TRUE(doubts_about(mounted, located, 0.9).empty());
    mounted.heights = HeightCheck{81, 70, 0, 0, 0.1, 0.2, 0.1, 1000.0, 1.0};
    using Doubts = std::vector<Doubt>;
    EXPECT_EQ(doubts_about(mounted, located, 0.0), Doubts{Doubt::size});
    EXPECT_EQ(doubts_about(mounted, located, 0.9), (Doubts{Doubt::size, Doubt::rejected}));
}

}  // namespace
}  // namespace zemora
