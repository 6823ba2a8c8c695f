#include "report/height_judgement.h"

#include <gtest/gtest.h>

namespace zemora {
namespace {

/// A picture 3000 pixels high whose tiles all match.
HeightCheck check_of(double most_px) {
    HeightCheck check;
    check.tiles = check.matched = kHeightCheckTiles;
    check.median_input_px = most_px / 3.0;
    check.most_input_px = most_px;
    check.rough_input_px = most_px / 5.0;
    check.height_input_px = 3000.0;
    return check;
}

constexpr double kFlat = 0.02;

TEST(HeightJudgement, VerdictByThePartOfTheHeight) {
    EXPECT_EQ(judge_heights(check_of(3.0), kFlat).verdict, HeightVerdict::good);
    EXPECT_EQ(judge_heights(check_of(3.01), kFlat).verdict, HeightVerdict::visible);
    EXPECT_EQ(judge_heights(check_of(10.0), kFlat).verdict, HeightVerdict::visible);
    EXPECT_EQ(judge_heights(check_of(10.01), kFlat).verdict, HeightVerdict::unusable);
    HeightCheck small = check_of(0.5);
    small.height_input_px = 200.0;
    EXPECT_EQ(judge_heights(small, kFlat).verdict, HeightVerdict::good) << "not measured more finely";
    small.most_input_px = 1.51;
    EXPECT_EQ(judge_heights(small, kFlat).verdict, HeightVerdict::unusable);
    small.pixel_input_px = 2.0;
    EXPECT_EQ(judge_heights(small, kFlat).verdict, HeightVerdict::visible) << "pixels of half the size";
}

TEST(HeightJudgement, FewTilesAreNoCheckHoweverGoodTheyAre) {
    HeightCheck check = check_of(0.1);
    check.matched = 6;
    EXPECT_EQ(judge_heights(check, kFlat).verdict, HeightVerdict::good);
    EXPECT_EQ(judge_heights(check, kFlat).cause, HeightCause::none);
    check.matched = 5;
    EXPECT_EQ(judge_heights(check, kFlat).verdict, HeightVerdict::unchecked);
    EXPECT_EQ(judge_heights(check, kFlat).cause, HeightCause::unclear);
}

TEST(HeightJudgement, WhereThePictureIsDividedNoErrorIsGood) {
    HeightCheck check = check_of(0.1);
    check.agreement = 0.51;
    EXPECT_EQ(judge_heights(check, kFlat).verdict, HeightVerdict::good);
    check.agreement = 0.49;
    EXPECT_EQ(judge_heights(check, kFlat).verdict, HeightVerdict::visible);
    EXPECT_EQ(judge_heights(check, kFlat).cause, HeightCause::pattern);
}

struct CauseCase {
    HeightCause cause;
    int tiles;
    int matched;
    int ambiguous;
    double rough_px;
    double depth;
};

TEST(HeightJudgement, CauseByWhatTheTilesShow) {
    const CauseCase cases[] = {
        {HeightCause::distortion, 81, 60, 5, 1.0, kFlat}, {HeightCause::unclear, 81, 60, 5, 4.0, kFlat},
        {HeightCause::unclear, 81, 30, 5, 1.0, kFlat},    {HeightCause::depth, 81, 30, 5, 1.0, 0.1},
        {HeightCause::pattern, 81, 30, 30, 1.0, 0.1},     {HeightCause::pattern, 81, 0, 81, 0.0, kFlat},
        {HeightCause::sharpness, 20, 15, 8, 1.0, 0.1},    {HeightCause::sharpness, 0, 0, 0, 0.0, kFlat},
    };
    for (const CauseCase& c : cases) {
        HeightCheck check = check_of(12.0);
        check.tiles = c.tiles;
        check.matched = c.matched;
        check.ambiguous = c.ambiguous;
        check.rough_input_px = c.rough_px;
        EXPECT_EQ(judge_heights(check, c.depth).cause, c.cause)
            << c.tiles << ' ' << c.matched << ' ' << c.ambiguous << ' ' << c.rough_px << ' ' << c.depth;
    }
}

TEST(HeightJudgement, EachCauseHasOneLineInBothLanguages) {
    std::string before;
    for (const Language language : {Language::english, Language::german}) {
        const MessageCatalogue messages(language);
        EXPECT_EQ(height_remedy(HeightCause::none, messages), "");
        for (int k = 1; k <= static_cast<int>(HeightCause::unclear); ++k) {
            const std::string remedy = height_remedy(static_cast<HeightCause>(k), messages);
            EXPECT_TRUE(remedy.ends_with(".\n") && remedy.find('\n') + 1 == remedy.size()) << remedy;
            EXPECT_NE(remedy, before);
            before = remedy;
        }
    }
}

}  // namespace
}  // namespace zemora
