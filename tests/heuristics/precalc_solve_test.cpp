// Solves with precalculated data and without: the data may change the work and never the answer.

#include <gtest/gtest.h>

#include "globalregister/active_tables.h"
#include "heuristics/judged_solve.h"

namespace quillon::test {
namespace {

struct TVerdictAndKeys {
    EVerdict m_verdict;
    bool m_bComplete;
    std::vector<std::string> m_keys;
    friend bool operator==(const TVerdictAndKeys&, const TVerdictAndKeys&) = default;
};

TVerdictAndKeys SolveFor(const std::string& placement, int nMoves, ESolveMode mode) {
    TSolveRequest request = RequestFor({placement, nMoves, {}}, mode);
    CAgreeing notifier;
    const TSolvingResult result = CSolve(request).StartSolving(notifier);
    TVerdictAndKeys found{result.m_verdict, result.m_bComplete, {}};
    for (const TSolution& solution : result.m_solutions)
        found.m_keys.push_back(solution.m_text);
    std::sort(found.m_keys.begin(), found.m_keys.end());
    return found;
}

TEST(PrecalcSolve, SameVerdictsAndKeysWithAndWithoutData) {
    CActiveTables tables;
    std::mt19937_64 rng(7007);
    int nMates = 0;
    for (int i = 0; i < Samples(900); ++i) {
        const int men = 3 + reference::DrawInt(rng, 3);
        const std::string placement =
            i % 3 == 0 ? reference::RandomPawnPlacement(rng, men) : reference::RandomMatingPlacement(rng, men);
        const int nMoves = 2 + i % 2;
        tables.Activate(false);
        const TVerdictAndKeys without = SolveFor(placement, nMoves, ESolveMode::AllSolutions);
        tables.Activate(true);
        const TVerdictAndKeys with = SolveFor(placement, nMoves, ESolveMode::AllSolutions);
        ASSERT_TRUE(with == without) << placement << " #" << nMoves << ' ' << with.m_keys.size() << " keys, without "
                                     << without.m_keys.size();
        nMates += !with.m_keys.empty();
    }
    EXPECT_GT(nMates, Floor(150));
    for (const TRegisterStatus& status : tables.Registers().Status().m_types)
        EXPECT_EQ(status.m_nRefCount, 0) << status.m_typeName;
}

/// A table that knows of no mate shows who asks it.
TEST(PrecalcSolve, WithoutLeaveNoDataAnswerWhateverThisProcessHas) {
    CActiveTables tables(false, {});
    tables.Write("R", TElements(TPositionIndexing("R").GetSize(), 0));
    ASSERT_TRUE(tables.Registers().UnloadAll());
    tables.Activate(true);
    ASSERT_TRUE(IsTypeAvailable(TPositionIndexing("R").nPositionType));
    for (const int nThreads : {1, 2})
        for (const bool bUse : {true, false}) {
            TSolveRequest request = RequestFor({"8/8/8/8/7R/3K4/8/1k6", 3, {}}, ESolveMode::AllSolutions);
            request.m_nThreads = nThreads;
            request.m_bUsePrecalculatedData = bUse;
            CAgreeing notifier;
            const TSolvingResult result = CSolve(request).StartSolving(notifier);
            EXPECT_EQ(result.m_verdict, bUse ? EVerdict::NoMate : EVerdict::Mate) << nThreads;
        }
}

/// The moves after which every reply leads to a mate in fewer than nMoves, by the reference table.
std::vector<std::string> KeysByTable(const std::string& type, const std::string& placement, int nMoves) {
    const reference::Position root = reference::ProblemFromFen(placement);
    std::vector<std::string> keys;
    for (const reference::Move move : reference::LegalMoves(root)) {
        const reference::Position after = reference::Play(root, move);
        bool bMates = reference::HasLegalMove(after) || reference::IsMate(after);
        for (const reference::Move reply : reference::LegalMoves(after)) {
            const reference::Position next = reference::Play(after, reply);
            const auto piece = std::find(next.board.begin(), next.board.end(), type[0]) - next.board.begin();
            const int length = piece == kSquares
                                   ? 0
                                   : ReferenceTable(type).Length(reference::KingSquare(next, reference::Side::White),
                                                                 static_cast<int>(piece),
                                                                 reference::KingSquare(next, reference::Side::Black));
            bMates = bMates && length != 0 && length < nMoves;
        }
        if (bMates)
            keys.push_back(reference::LongNotation(root, move));
    }
    std::sort(keys.begin(), keys.end());
    return keys;
}

// Mates far too long for a search in such a time.
TEST(PrecalcSolve, LongMatesOfThreeMenAreThoseOfTheTable) {
    const CActiveTables tables;
    std::mt19937_64 rng(7008);
    for (int i = 0; i < Samples(60); ++i) {
        const std::string type = i % 2 == 0 ? "Q" : "R";
        const int w = reference::DrawInt(rng, 64), p = reference::DrawInt(rng, 64), k = reference::DrawInt(rng, 64);
        const int length = w == p || p == k || w == k ? 0 : ReferenceTable(type).Length(w, p, k);
        const bool bCastling = w == kE1 && (p == kA1 || p == kH1);
        if (length < 7 || bCastling)
            continue;
        const std::string placement = WriteFEN(ThreeMenBoard(type, w, p, k), false);
        const TVerdictAndKeys mate = SolveFor(placement, length, ESolveMode::AllSolutions);
        EXPECT_EQ(mate.m_verdict, EVerdict::Mate) << placement << " #" << length;
        EXPECT_EQ(mate.m_keys, KeysByTable(type, placement, length)) << placement << " #" << length;
        const TVerdictAndKeys none = SolveFor(placement, length - 1, ESolveMode::FirstSolution);
        EXPECT_EQ(none.m_verdict, EVerdict::NoMate) << placement << " #" << length - 1;
    }
}

} // namespace
} // namespace quillon::test
