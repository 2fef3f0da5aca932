#include "search/bounded_look.h"

#include <gtest/gtest.h>

#include "search/control.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

// A queen ending that takes the recursion far more than some thousand positions.
constexpr const char* kLong = "8/8/8/3k4/8/8/8/KQ6";

std::uint64_t Searched(CSearchedPosition& line) {
    FlushPositions(line.Context(), line.Analysis());
    return line.Analysis().m_nPositions + line.Analysis().m_nTrialPositions;
}

TEST(BoundedLook, StopsTheThreadWhenItIsUsedUp) {
    CSearchedPosition line(kLong, 11);
    {
        CBoundedLook look(line.Context(), line.Analysis(), 3000);
        (void)line.Verdict();
        EXPECT_TRUE(look.IsUsedUp());
        EXPECT_TRUE(IsStopping(line.Root()));
    }
    EXPECT_FALSE(IsStopping(line.Root()));
    EXPECT_GE(Searched(line), 3000u);
    EXPECT_LT(Searched(line), 3000u + 4 * kCountLot);
}

TEST(BoundedLook, IsNotFeltWhereItIsAmple) {
    CSearchedPosition line("7k/8/5K2/8/8/8/8/6Q1", 3);
    CBoundedLook look(line.Context(), line.Analysis(), 1'000'000);
    EXPECT_EQ(line.Verdict(), MR_MATE);
    EXPECT_FALSE(look.IsUsedUp());
}

TEST(BoundedLook, AStopOfTheUserStays) {
    CSearchedPosition line(kLong, 11);
    {
        CBoundedLook look(line.Context(), line.Analysis(), 1000);
        (void)line.Verdict();
        line.Context().m_nStopRequest = kStopRequest; // Ctrl+C meanwhile
    }
    EXPECT_TRUE(IsStopping(line.Root()));
}

TEST(BoundedLook, APauseOfTheUserStays) {
    CSearchedPosition line(kLong, 11);
    {
        CBoundedLook look(line.Context(), line.Analysis(), 1000);
        line.Context().m_nStopRequest = kPauseRequest;
        EXPECT_FALSE(look.IsUsedUp());
    }
    EXPECT_EQ(line.Context().m_nStopRequest, kPauseRequest);
}

} // namespace
} // namespace quillon::test
