// SH_DONTLETFIGUREUNBLOCK applied on the way.

#include "heuristics/dynamic_blocking.h"

#include <cstring>

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"

namespace quillon::test {
namespace {

CHeuristicLine& Allowed(CHeuristicLine& line) {
    line.Context().m_bApplyDlfuDynamically = line.Context().m_bDlfuDynamic = true;
    return line;
}

TEST(DynamicBlocking, NeedsAKingsMoveThatLeavesEveryFigureBlocked) {
    CHeuristicLine line("rb6/p1k5/P1P5/8/8/8/8/K7", 21, SH_3MOVESTOMATE);
    Allowed(line).Play("Ka1-b1 Kc7-c8");
    EXPECT_FALSE(AreFiguresJustBlocked(line.Now())) << "the bishop has c7 and beyond";
    CHeuristicLine shut("rb6/p2k4/P1P5/8/8/8/8/K7", 21, SH_3MOVESTOMATE);
    Allowed(shut).Play("Ka1-b1 Kd7-c7");
    EXPECT_TRUE(AreFiguresJustBlocked(shut.Now()));
    CHeuristicLine other("rb6/p1k4p/P1P5/8/8/8/8/K7", 21, SH_3MOVESTOMATE);
    Allowed(other).Play("Ka1-b1 h7-h6");
    EXPECT_FALSE(AreFiguresJustBlocked(other.Now())) << "the king has not moved";
    CHeuristicLine bare("8/p2k4/P7/8/8/8/8/K7", 21, SH_3MOVESTOMATE);
    Allowed(bare).Play("Ka1-b1 Kd7-c7");
    EXPECT_FALSE(AreFiguresJustBlocked(bare.Now())) << "there is none";
}

TEST(DynamicBlocking, NeedsLeave) {
    const auto asked = [](std::uint32_t mask, auto allow) {
        CHeuristicLine line("rb6/p2k4/P1P5/8/8/8/8/K7", 21, mask);
        line.Context().m_bDlfuDynamic = line.Context().m_bFallbackPending = false;
        allow(line.Context());
        line.Play("Ka1-b1 Kd7-c7");
        return AreFiguresJustBlocked(line.Now());
    };
    const auto dynamic = [](TSearchContext& context) { context.m_bDlfuDynamic = true; };
    EXPECT_TRUE(asked(SH_3MOVESTOMATE, dynamic));
    EXPECT_TRUE(asked(SH_3MOVESTOMATE, [](TSearchContext& context) { context.m_bFallbackPending = true; }));
    EXPECT_TRUE(asked(SH_3MOVESTOMATE, [](TSearchContext& context) { context.m_bBlockedSubtreeTrial = true; }));
    EXPECT_FALSE(asked(SH_3MOVESTOMATE, [](TSearchContext&) {}));
    EXPECT_FALSE(asked(0, dynamic)) << "the pass without heuristics";
    EXPECT_FALSE(asked(SH_DONTLETFIGUREUNBLOCK, dynamic)) << "it is in force already";
    EXPECT_FALSE(asked(SH_3MOVESTOMATE, [](TSearchContext& context) {
        context.m_bDlfuDynamic = true;
        context.m_bApplyDlfuDynamically = false;
    }));
}

TEST(DynamicBlocking, WatchesTheFiguresWhereTheyStandAndPutsAllBack) {
    CHeuristicLine line("rb6/p2k4/P1P5/8/8/8/8/K7", 21, SH_3MOVESTOMATE);
    Allowed(line).Play("Ka1-b1 Kd7-c7");
    TSearchContext& context = line.Context();
    context.m_nBlockedFigures = 1;
    context.m_BlockedFigures[0] = context.m_BlockedFiguresNow[0] = String2Square("a7");
    context.m_bBlockedFiguresByHand = true;
    const TChessboard before = line.Now();
    const THeuristicParameters parameters = context;
    {
        const CDynamicBlocking trial(line.Now());
        EXPECT_TRUE(line.Has(SH_DONTLETFIGUREUNBLOCK));
        EXPECT_EQ(context.m_nBlockedFigures, 2);
        EXPECT_EQ(line.Now().m_blockedFigures[0], String2Square("a8"));
        EXPECT_EQ(line.Now().m_blockedFigures[1], String2Square("b8"));
        EXPECT_EQ(line.Now().m_nHeurParams, ComputeHeurParams(line.Now()));
        EXPECT_FALSE(AreAllFiguresUnblocked(line.Now()));
        line.Now().m_blockedFigures = kNoBlockedSquares;
        EXPECT_TRUE(AreAllFiguresUnblocked(line.Now()));
    }
    EXPECT_EQ(std::memcmp(&before, &line.Now(), sizeof before), 0);
    EXPECT_EQ(static_cast<const THeuristicParameters&>(context), parameters);
    EXPECT_FALSE(AreAllFiguresUnblocked(line.Now())) << "the heuristic is not in force";
}

TEST(DynamicBlocking, WithFallbackANodeThatWatchesNothingIsRunAgainWithoutTheHeuristic) {
    for (const bool bFallback : {false, true}) {
        CHeuristicLine line("7k/8/8/8/8/8/P7/K7", 11, SH_DONTLETFIGUREUNBLOCK);
        line.Context().m_bHeuristicsFallback = bFallback;
        line.Context().m_nBlockedFigures = 1; // let go long ago: the board's list is empty
        line.Analysis().m_shLookForQuickerMateDepth = 0;
        line.Now().m_nMoves = 13; // long enough for the sort, which is what notices
        (void)line.Verdict();
        EXPECT_EQ(line.Has(SH_DONTLETFIGUREUNBLOCK), !bFallback);
    }
}

} // namespace
} // namespace quillon::test
