// Groups of the levels below the root.

#include "parallel/threaded_solve.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/search_hooks.h"

namespace quillon::test {
namespace {

constexpr int kRootPlies = 41;

TMateResult RefuteAll(TChessboard* p) {
    p->m_pContext->m_byResumeList = 0;
    return MR_NOMATE;
}

/// A white node so many plies below the root, in the thread of a number.
class CNodeOfLevel {
  public:
    CNodeOfLevel(const char* placement, int nPlies, int nRootPlies, std::uint32_t thread) {
        m_analysis.m_nMultithreadingLevels = 3;
        m_context->m_nGroupSize = 4;
        m_context->m_nThreadNumber = thread;
        m_node = MakeRoot(*m_context, m_analysis, ChessboardFromFEN(placement), nPlies, 2);
        m_node->m_nInitialMoves = static_cast<std::uint16_t>(nRootPlies);
    }

    const CNothingLeft m_nothing;
    TAnalysis m_analysis;
    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
    TChessboard* m_node = nullptr;
};

/// A thread of the root whose second white move was the only one has formed no group there: it forms one for the third.
TEST(LevelThreads, AForcedMoveAboveDoesNotKeepTheNextLevelFromItsThreads) {
    TMove list[] = {{0, 8, 0, 0}, {0, 1, 0, 0}, {0, 9, 0, 0}};
    for (const std::uint32_t thread : {0u, 1u, 3u, 4u, 19u}) {
        CNodeOfLevel level("8/8/8/8/8/8/8/K6k", kRootPlies - 4, kRootPlies, thread);
        EXPECT_EQ(FindMateMultithreadingLevel(*level.m_node, 3, list, &RefuteAll), MR_NOMATE) << thread;
        EXPECT_EQ(level.m_analysis.m_nFinishedThreads, 3u) << thread;
    }
}

TEST(LevelThreads, NumbersThatAreTooHighMeanNoThreads) {
    TMove list[] = {{0, 8, 0, 0}, {0, 1, 0, 0}, {0, 9, 0, 0}};
    CNodeOfLevel level("8/8/8/8/8/8/8/K6k", kRootPlies - 4, kRootPlies, 500'000);
    EXPECT_EQ(FindMateMultithreadingLevel(*level.m_node, 3, list, &RefuteAll), kContinueHere);
    EXPECT_EQ(level.m_analysis.m_nFinishedThreads, 0u);
}

/// Counts the good moments that it is told of.
class CEarlyFreed : public ITemporaryRegister {
  public:
    TMateResult Find(const TChessboard&, int, int) override { return MR_NONE; }
    void Insert(const TChessboard&, int, TMateResult) override {}
    void InsertDoubtful(const TChessboard&, int) override {}
    void FreeMemoryEarly() override { ++m_nFreed; }
    int m_nFreed = 0;
};

/// Behind each group, but nobody who stops has time for it.
TEST(LevelThreads, AGroupThatHasEndedIsAMomentToMakeRoomInTheRegister) {
    TMove list[] = {{0, 8, 0, 0}, {0, 1, 0, 0}, {0, 9, 0, 0}};
    CEarlyFreed known;
    CNodeOfLevel level("8/8/8/8/8/8/8/K6k", kRootPlies - 4, kRootPlies, 0);
    level.m_analysis.m_pRegister = &known;
    EXPECT_EQ(FindMateMultithreadingLevel(*level.m_node, 3, list, &RefuteAll), MR_NOMATE);
    EXPECT_EQ(known.m_nFreed, 1);
    AskThread(*level.m_context, kStopRequest);
    (void)FindMateMultithreadingLevel(*level.m_node, 3, list, &RefuteAll);
    EXPECT_EQ(known.m_nFreed, 1);
}

/// Only the node itself is within the levels: 13 plies left, 17 at the root.
TEST(LevelThreads, ANodeWithOneMoveHasNone) {
    CNodeOfLevel one("7k/5ppb/8/8/8/8/r6P/K7", 13, 17, 0), some("7k/5ppb/8/8/8/8/7P/K7", 13, 17, 0);
    EXPECT_EQ(FindMateWhite<kPlainNode>(one.m_node, false), MR_NOMATE);
    EXPECT_EQ(one.m_analysis.m_nFinishedThreads, 0u);
    EXPECT_EQ(FindMateWhite<kPlainNode>(some.m_node, false), MR_NOMATE);
    EXPECT_GT(some.m_analysis.m_nFinishedThreads, 1u);
}

} // namespace
} // namespace quillon::test
