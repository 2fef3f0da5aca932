// The register as the search asks it.

#include "tempregister/search_register.h"

#include <gtest/gtest.h>

#include "core/fen.h"
#include "core/heuristic_parameters.h"

namespace quillon::test {
namespace {

constexpr std::uint64_t kBudget = 1 << 20;
constexpr std::uint32_t kBuckets = 256;

/// A register and a position in pass 1 with one heuristic.
class SearchRegister : public testing::Test {
  protected:
    SearchRegister() { With(SH_KEYLINE, 7, 1); }

    void With(std::uint32_t heuristics, std::uint32_t params, std::uint8_t pass) {
        m_position.m_nHeuristics = heuristics;
        m_position.m_nHeurParams = params;
        m_position.m_byPass = pass;
    }

    [[nodiscard]] int Find(int nMoves) { return m_register.Find(m_position, nMoves, nMoves); }
    [[nodiscard]] int FindUpTo(int nMoves, int nMaxMoves) { return m_register.Find(m_position, nMoves, nMaxMoves); }

    TAggregatedTemporaryChessboardRegister m_known{kBudget, kBuckets};
    CSearchRegister m_register{m_known};
    TChessboard m_position = ChessboardFromFEN("8/8/8/8/7Q/n1K5/8/k7");
};

TEST_F(SearchRegister, KnowsNothingAtFirst) {
    EXPECT_EQ(Find(5), MR_NONE);
    EXPECT_EQ(FindUpTo(5, 9), MR_NONE);
}

TEST_F(SearchRegister, AMateHoldsForLongerLengthsAndItsAbsenceForShorterOnes) {
    m_register.Insert(m_position, 9, MR_MATE);
    m_register.Insert(m_position, 5, MR_NOMATE);
    EXPECT_EQ(Find(11), MR_MATE);
    EXPECT_EQ(Find(9), MR_MATE);
    EXPECT_EQ(Find(7), MR_NONE);
    EXPECT_EQ(Find(5), MR_NOMATE);
    EXPECT_EQ(Find(3), MR_NOMATE);
}

TEST_F(SearchRegister, AMateWithinTheAllowanceIsQuicker) {
    m_register.Insert(m_position, 9, MR_MATE);
    EXPECT_EQ(FindUpTo(5, 7), MR_NONE); // the mate needs more than is allowed
    EXPECT_EQ(FindUpTo(5, 9), MR_QUICKER);
    EXPECT_EQ(FindUpTo(7, 13), MR_QUICKER);
    EXPECT_EQ(FindUpTo(9, 13), MR_MATE);
    m_register.Insert(m_position, 5, MR_NOMATE);
    EXPECT_EQ(FindUpTo(5, 9), MR_NOMATE);
}

TEST_F(SearchRegister, DoubtAnswersUnderItsOwnHeuristicsAlone) {
    m_register.InsertDoubtful(m_position, 7);
    EXPECT_EQ(Find(7), MR_DOUBTFUL);
    EXPECT_EQ(Find(5), MR_DOUBTFUL);
    EXPECT_EQ(Find(9), MR_NONE);
    EXPECT_EQ(FindUpTo(7, 11), MR_DOUBTFUL);
    EXPECT_EQ(FindUpTo(9, 11), MR_NONE);
    With(SH_KEYLINE, 8, 1);
    EXPECT_EQ(Find(7), MR_NONE);
    With(SH_KEYDIAGONAL, 7, 1);
    EXPECT_EQ(Find(7), MR_NONE);
    With(SH_KEYLINE, 7, 1);
    EXPECT_EQ(Find(7), MR_DOUBTFUL);
}

TEST_F(SearchRegister, DoubtIsNotAskedForInThePassWithoutHeuristics) {
    m_register.InsertDoubtful(m_position, 7);
    With(SH_KEYLINE, 7, 2);
    EXPECT_EQ(Find(7), MR_NONE);
    With(0, 7, 1); // every heuristic dropped on the way, in a pass with heuristics
    m_register.InsertDoubtful(m_position, 7);
    EXPECT_EQ(Find(7), MR_DOUBTFUL);
    With(0, 7, 2);
    EXPECT_EQ(Find(7), MR_NONE);
}

TEST_F(SearchRegister, AProofBeatsDoubt) {
    m_register.InsertDoubtful(m_position, 7);
    m_register.Insert(m_position, 7, MR_NOMATE);
    EXPECT_EQ(Find(7), MR_NOMATE);
    m_register.Insert(m_position, 9, MR_MATE);
    EXPECT_EQ(Find(9), MR_MATE);
}

TEST_F(SearchRegister, DoubtLivesAsLongAsAPassUsesIt) {
    m_register.AddDoubtfulUser(SH_KEYLINE, 7);
    m_register.InsertDoubtful(m_position, 9);
    m_register.Insert(m_position, 5, MR_NOMATE);
    EXPECT_EQ(Find(9), MR_DOUBTFUL);
    m_register.ReleaseDoubtfulUser(SH_KEYLINE, 7);
    EXPECT_EQ(Find(9), MR_NONE);
    EXPECT_EQ(Find(5), MR_NOMATE) << "a proof stays";
}

TEST_F(SearchRegister, AllDoubtCanBeForgotten) {
    m_register.InsertDoubtful(m_position, 9);
    m_register.Insert(m_position, 5, MR_NOMATE);
    With(SH_KEYDIAGONAL, 3, 1);
    m_register.InsertDoubtful(m_position, 9);
    m_register.ForgetDoubt();
    EXPECT_EQ(Find(9), MR_NONE);
    EXPECT_EQ(Find(5), MR_NOMATE);
    EXPECT_EQ(m_known.GetDoubtfulCount(), 0u);
}

TEST_F(SearchRegister, PassesOnThatASearchIsBesideThePasses) {
    EXPECT_FALSE(m_register.SetSideAnalysis(true));
    EXPECT_TRUE(m_known.bSideAnalysis);
    EXPECT_TRUE(m_register.SetSideAnalysis(false));
    EXPECT_FALSE(m_known.bSideAnalysis);
}

} // namespace
} // namespace quillon::test
