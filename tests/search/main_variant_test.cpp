// The main variant: a legal line, mate at its end, Black holding out as long as he can.

#include "search/main_variant.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <thread>

#include <gtest/gtest.h>

#include "heuristics/find_mate_root.h"
#include "platform/processors.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr std::uint64_t kNodes = 400000;

reference::Move ToReference(const TMove& move) {
    char promotion = 0;
    if (PromotionKind(move) != 0)
        promotion = KindToLetter(PromotionKind(move));
    return {move.m_nFrom, move.m_nTo, promotion};
}

/// Plays the line; every black reply has to be as good as the best, every white move to win as fast as can be.
void CheckLine(const std::string& placement, int nMoves, const std::vector<TMove>& line) {
    reference::Position position = reference::ProblemFromFen(placement);
    int left = nMoves; // white moves at most, the next included
    for (std::size_t i = 0; i < line.size(); ++i) {
        const std::vector<reference::Move> legal = reference::LegalMoves(position);
        const reference::Move move = ToReference(line[i]);
        ASSERT_NE(std::ranges::find(legal, move), legal.end()) << placement << " move " << i;
        const reference::Position after = reference::Play(position, move);
        if (i % 2 == 1) {
            int longest = 0;
            for (const reference::Move& reply : legal) {
                const auto length = reference::ShortestMate(reference::Play(position, reply), left, kNodes);
                ASSERT_TRUE(length && *length > 0) << placement << ": the key is none";
                longest = std::max(longest, *length);
            }
            const auto chosen = reference::ShortestMate(after, left, kNodes);
            EXPECT_EQ(chosen, longest) << placement << " reply " << i / 2 + 1;
            left = longest;
        } else {
            --left;
        }
        position = after;
    }
    EXPECT_TRUE(reference::IsMate(position)) << placement;
    EXPECT_GE(left, 0) << placement;
    EXPECT_EQ(line.size() % 2, 1u);
}

int CheckRandomProblems(std::uint64_t seed, int nMoves, int nCount, int nMen) {
    std::mt19937_64 rng(seed);
    const auto context = NewSearchContext();
    int found = 0;
    for (int i = 0; found < nCount && i < 500 * nCount; ++i) {
        const std::string placement = AnyPlacement(rng, i, nMen + i % 3);
        TAnalysis analysis;
        TRootRun run;
        if (FindMateRoot(*context, analysis, ChessboardFromFEN(placement), 2 * nMoves - 1, run, true, false) !=
            kSolutionsFound)
            continue;
        const std::vector<TMove> line = BuildMainVariant(*context->m_pRoot, run.m_solutions.front().m_move);
        EXPECT_FALSE(line.empty());
        EXPECT_LE(line.size(), static_cast<std::size_t>(2 * nMoves - 1));
        CheckLine(placement, nMoves, line);
        found += line.size() > 1 ? 1 : 0;
    }
    return found;
}

TEST(MainVariant, OfMatesInTwo) { EXPECT_EQ(CheckRandomProblems(1, 2, Samples(250), 4), Samples(250)); }
TEST(MainVariant, OfMatesInThree) { EXPECT_EQ(CheckRandomProblems(2, 3, Samples(80), 4), Samples(80)); }
TEST(MainVariant, OfMatesInFour) { EXPECT_EQ(CheckRandomProblems(3, 4, Samples(10), 4), Samples(10)); }

TEST(MainVariant, OfAMateOnTheMoveIsTheKeyAlone) {
    CSearchedPosition line("7k/8/6K1/8/8/8/8/1Q6", 5);
    const std::vector<TMove> moves = BuildMainVariant(line.Root(), {1, 57, 0, 0});
    ASSERT_EQ(moves.size(), 1u);
    EXPECT_EQ(moves.front().m_nTo, 57);
}

TEST(MainVariant, IsEmptyWhenTheSearchIsStopped) {
    CSearchedPosition line("8/8/8/8/7Q/n1K5/8/k7", 5);
    line.Context().m_nStopRequest = kStopRequest;
    EXPECT_TRUE(BuildMainVariant(line.Root(), ParseMove("Qh4-b4", true)).empty());
}

/// The line of a solved position, its work shared by so many threads.
std::vector<TMove> LineOfThreads(const char* placement, int nMoves, const char* key, int nThreads,
                                 std::uint64_t nMostPositions) {
    CSearchedPosition line(placement, 2 * nMoves - 1);
    line.Analysis().m_nThreads = static_cast<std::uint8_t>(nThreads);
    return BuildMainVariant(line.Root(), ParseMove(key, true), nMostPositions);
}

/// The king shuttles between g8 and h8 while a knight sets the pawn free and that promotes: Black never has a choice.
/// How soon the only reply is mated is then of little use, and takes little of what may be spent.
TEST(MainVariant, OnlyRepliesLeaveTheBoundToChoices) {
    constexpr std::uint64_t kBound = 800'000; // less than the first trial alone would take
    CSearchedPosition line("6k1/4K2p/7P/8/8/p1p5/P1P5/5B1N", 25);
    const std::vector<TMove> moves = BuildMainVariant(line.Root(), ParseMove("Nh1-f2", true), kBound);
    ASSERT_EQ(moves.size(), 23u);
    EXPECT_EQ(moves.back().m_nTo, 58); // c8
    FlushPositions(line.Context(), line.Analysis());
    EXPECT_GT(line.Analysis().m_nPositions, kBound / 4);
    EXPECT_LT(line.Analysis().m_nPositions, kBound * 5 / 8);
}

/// Whichever of several best replies they find first, Black holds out as long.
TEST(MainVariant, IsAsLongWhenThreadsShareTheWork) {
    for (const int threads : {1, 2, 3})
        EXPECT_EQ(LineOfThreads("7k/5p2/3K1P1p/7P/1p6/1P6/8/8", 10, "Kd6-e7", threads, 100'000'000).size(), 19u);
}

/// Has no memory for threads but the one it was made in.
class CRegisterOfOneThread : public ITemporaryRegister {
  public:
    TMateResult Find(const TChessboard&, int, int) override {
        if (std::this_thread::get_id() != m_owner) {
            ++m_nFailures;
            throw std::bad_alloc();
        }
        return MR_NONE;
    }
    void Insert(const TChessboard&, int, TMateResult) override {}
    void InsertDoubtful(const TChessboard&, int) override {}
    std::atomic<int> m_nFailures{0};

  private:
    const std::thread::id m_owner = std::this_thread::get_id();
};

TEST(MainVariant, AHelperWithoutMemoryCostsNoLine) {
    CRegisterOfOneThread known;
    CSearchedPosition line("7k/5p2/3K1P1p/7P/1p6/1P6/8/8", 19);
    line.Analysis().m_nThreads = 2;
    line.Analysis().m_pRegister = &known;
    const std::vector<TMove> moves = BuildMainVariant(line.Root(), ParseMove("Kd6-e7", true), 1'000'000);
    EXPECT_EQ(moves.size() % 2, 1u);
    EXPECT_GT(known.m_nFailures, UsableProcessors() > 1 ? 0 : -1);
}

/// Black's only reply takes the pawn that has just passed e4, and the queen mates on the square it stood on.
TEST(MainVariant, MarksBlacksEnPassantCapture) {
    CSearchedPosition line("7k/4N2p/7P/6P1/4p2Q/4K3/3P4/8", 3);
    const std::vector<TMove> moves = BuildMainVariant(line.Root(), ParseMove("d2-d4", true));
    ASSERT_EQ(moves.size(), 3u);
    EXPECT_EQ(WriteTerseMove(moves[1]), "e4-d3");
    EXPECT_EQ(moves[1].m_nEnPassant, 1);
    EXPECT_EQ(WriteTerseMove(moves[2]), "h4-d4");
}

} // namespace
} // namespace quillon::test
