// The recursion under its driver against the reference solver: same verdict, same set of keys.

#include <algorithm>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "core/generation.h"
#include "heuristics/find_mate_root.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

using TKeys = std::vector<std::string>;

/// All keys of mate in nMoves, found by the engine without heuristics.
class CEngine {
  public:
    [[nodiscard]] TKeys Keys(const std::string& placement, int nMoves) {
        m_run = TRootRun{};
        m_analysis.m_nSolveMode = kAllSolutions;
        (void)FindMateRoot(*m_context, m_analysis, ChessboardFromFEN(placement), 2 * nMoves - 1, m_run, true, false);
        TKeys keys;
        for (const TSolution& solution : m_run.m_solutions)
            keys.push_back(solution.m_text);
        std::ranges::sort(keys);
        return keys;
    }
    [[nodiscard]] bool IsSettled() const { return !HasOpenMoves(m_run) && !m_run.m_bStopped; }

    /// The verdict of the root's own node in a pass.
    [[nodiscard]] TMateResult Verdict(const std::string& placement, int nMoves, int nPass, bool bSafeMode) {
        m_analysis.m_bSafeMode = bSafeMode;
        TChessboard& root = *MakeRoot(*m_context, m_analysis, ChessboardFromFEN(placement), 2 * nMoves - 1, nPass);
        const TMateResult verdict = FindMateWhite(&root, true);
        m_analysis.m_bSafeMode = false;
        return verdict;
    }

  private:
    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
    TAnalysis m_analysis;
    TRootRun m_run;
};

struct TSample {
    std::uint64_t m_nSeed;
    int m_nMoves;
    int m_nCount;
    int m_nLeastMen, m_nMostMen;
    std::uint64_t m_nMaxNodes; // of the reference solver; larger trees are passed over
};

/// Compares until m_nCount positions have been compared. Returns how many of them had a key.
int Compare(const TSample& sample) {
    std::mt19937_64 rng(sample.m_nSeed);
    CEngine engine;
    int compared = 0, mates = 0;
    for (int i = 0; compared < sample.m_nCount && i < 10 * sample.m_nCount; ++i) {
        const int men = sample.m_nLeastMen + reference::DrawInt(rng, sample.m_nMostMen - sample.m_nLeastMen + 1);
        const std::string placement = AnyPlacement(rng, i, men);
        const auto truth =
            reference::SolveAllWithTable(reference::ProblemFromFen(placement), sample.m_nMoves, sample.m_nMaxNodes);
        if (!truth)
            continue;
        ++compared;
        EXPECT_EQ(engine.Keys(placement, sample.m_nMoves), truth->keys) << placement << " #" << sample.m_nMoves;
        EXPECT_TRUE(engine.IsSettled()) << placement;
        mates += truth->mateExists ? 1 : 0;
    }
    EXPECT_EQ(compared, sample.m_nCount) << "too many samples were too large for the reference solver";
    return mates;
}

TEST(Differential, MatesInOne) { EXPECT_GT(Compare({101, 1, Samples(1500), 4, 12, 1000}), 0); }
TEST(Differential, MatesInTwo) { EXPECT_GT(Compare({202, 2, Samples(1500), 4, 12, 100000}), 0); }
TEST(Differential, MatesInThreeOfFewMen) { EXPECT_GT(Compare({303, 3, Samples(700), 4, 7, 100000}), 0); }
TEST(Differential, MatesInThreeOfManyMen) { EXPECT_GT(Compare({404, 3, Samples(150), 8, 12, 400000}), 0); }
TEST(Differential, MatesInFour) { EXPECT_GT(Compare({505, 4, Samples(300), 4, 6, 150000}), 0); }

/// White with little: the rules by which Black escapes for certain are at work.
TEST(Differential, MatesWithMinorFiguresAlone) {
    std::mt19937_64 rng(606);
    CEngine engine;
    int mates = 0;
    for (int i = 0; i < Samples(1200); ++i) {
        const int moves = 2 + i % 3;
        const std::string placement = reference::RandomMinorPlacement(rng, 4 + i % 4);
        const auto truth = reference::SolveAllWithTable(reference::ProblemFromFen(placement), moves, 100000);
        if (!truth)
            continue;
        EXPECT_EQ(engine.Keys(placement, moves), truth->keys) << placement << " #" << moves;
        mates += truth->mateExists ? 1 : 0;
    }
    EXPECT_GT(mates, 0);
}

/// A pass with heuristics, none of them in force: what it proves is true, and only a repetition leaves it in doubt.
TEST(Differential, QuickAndSafePassesProveOnlyWhatIsTrue) {
    std::mt19937_64 rng(707);
    CEngine engine;
    int settled = 0;
    const int count = Samples(400);
    for (int i = 0; i < count; ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 3);
        const int moves = 3 + i % 2;
        const auto truth = reference::SolveAllWithTable(reference::ProblemFromFen(placement), moves, 150000);
        if (!truth)
            continue;
        for (const bool bSafeMode : {false, true}) {
            const TMateResult verdict = engine.Verdict(placement, moves, 1, bSafeMode);
            if (verdict == MR_MATE || verdict == MR_NOMATE) {
                EXPECT_EQ(verdict == MR_MATE, truth->mateExists) << placement << " #" << moves;
                ++settled;
            } else {
                EXPECT_FALSE(bSafeMode) << placement << ": no repetition is treated in so short a problem";
            }
        }
    }
    EXPECT_GT(settled, count / 2);
}

// ---- composed positions

struct TComposed {
    int m_nMoves;
    std::string m_placement, m_key, m_remark;
};

std::vector<TComposed> ReadComposed() {
    std::ifstream file(QUILLON_TEST_DATA_DIR "/composed_positions.tsv");
    std::vector<TComposed> rows;
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        TComposed row;
        std::string moves;
        std::getline(fields, moves, '\t');
        std::getline(fields, row.m_placement, '\t');
        std::getline(fields, row.m_key, '\t');
        std::getline(fields, row.m_remark, '\t');
        row.m_nMoves = std::stoi(moves);
        rows.push_back(row);
    }
    return rows;
}

TEST(Differential, ComposedPositionsHaveTheirKeyAlone) {
    const std::vector<TComposed> rows = ReadComposed();
    ASSERT_GE(rows.size(), 90u);
    CEngine engine;
    int i = 0;
    for (const TComposed& row : rows) {
        if (row.m_nMoves > 5 || i++ % (rows.size() / static_cast<std::size_t>(Samples(120)) + 1) != 0)
            continue;
        EXPECT_EQ(engine.Keys(row.m_placement, row.m_nMoves), TKeys{row.m_key})
            << row.m_placement << ' ' << row.m_remark;
        EXPECT_TRUE(engine.Keys(row.m_placement, row.m_nMoves - 1).empty()) << row.m_placement << " is shorter";
    }
}

/// Diagrams that have exactly one key at their length and none below it, whatever chance put there.
TEST(Differential, SoundProblemsOfChance) {
    std::mt19937_64 rng(808);
    CEngine engine;
    const int wanted = Samples(200);
    int found = 0;
    for (int i = 0; found < wanted && i < 200 * wanted; ++i) {
        const int moves = 2 + (i % 4 == 0 ? 1 : 0);
        const std::string placement = reference::RandomMatingPlacement(rng, moves == 2 ? 5 + i % 6 : 4 + i % 3);
        const reference::Position position = reference::ProblemFromFen(placement);
        if (reference::ForcesMate(position, 1) || (moves == 3 && reference::ForcesMate(position, 2)))
            continue;
        const auto truth = reference::SolveAllWithTable(position, moves, 60000);
        if (!truth || truth->keys.size() != 1)
            continue;
        ++found;
        EXPECT_EQ(engine.Keys(placement, moves), truth->keys) << placement << " #" << moves;
        EXPECT_TRUE(engine.Keys(placement, moves - 1).empty()) << placement;
    }
    EXPECT_EQ(found, wanted);
}

} // namespace
} // namespace quillon::test
