#pragma once
// Solves on many threads, with what the reference or one thread knows beside them.

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "heuristics/judged_solve.h"
#include "platform/thread.h"

namespace quillon::test {

/// Threads that share the moves of a node, and levels.
struct TTree {
    int m_nThreads = 1, m_nLevels = 1;
};

/// How many of `nFull` solves a test makes: with sanitizers each takes long, and each is worth much.
[[nodiscard]] constexpr int Few(int nFull) { return Samples(1000) < 1000 ? std::max(nFull / 5, 1) : nFull; }

inline constexpr TTree kTrees[] = {{2, 1}, {4, 1}, {16, 1}, {2, 2}, {4, 2}, {3, 3}, {16, 2}};

[[nodiscard]] inline std::vector<std::string> SortedKeys(const TSolvingResult& result) {
    std::vector<std::string> keys;
    for (const TSolution& solution : result.m_solutions)
        keys.push_back(solution.m_text);
    std::sort(keys.begin(), keys.end());
    return keys;
}

[[nodiscard]] inline TSolveRequest AllKeys(const std::string& placement, int nMoves, TTree tree) {
    TSolveRequest request;
    request.m_board = ChessboardFromFEN(placement);
    request.m_nStipulation = nMoves;
    request.m_mode = ESolveMode::AllSolutions;
    request.m_nMemoryBudgetMB = 16;
    request.m_nThreads = tree.m_nThreads;
    request.m_nMultithreadingLevels = tree.m_nLevels;
    return request;
}

/// The same with a scheduler whose turns last hardly long enough to get anywhere.
[[nodiscard]] inline TSolveRequest Juggled(TSolveRequest request, std::mt19937_64& rng) {
    request.m_nSchedulerLevels = 1 + reference::DrawInt(rng, 9);
    request.m_bCustomScheduler = reference::Chance(rng, 50);
    request.m_nQuantumSecondMs = 1 + reference::DrawInt(rng, 4);
    return request;
}

inline constexpr const char* kEndless = "r1bqkbnr/pppppppp/n7/8/8/N7/PPPPPPPP/R1BQKBNR";
inline constexpr int kEndlessMoves = 12;

/// No machine ends it soon. Its one pass begins at once, for no set is chosen and without memory there is no guide, and
/// gets deep at once, without short-mate searches.
[[nodiscard]] inline TSolveRequest Endless(TTree tree) {
    TSolveRequest request = AllKeys(kEndless, kEndlessMoves, tree);
    request.m_nMemoryBudgetMB = 1;
    request.m_shLookForQuickerMateDepth = 0;
    request.m_heuristics.emplace();
    return request;
}

/// Nothing of a solve is left behind it.
class CNothingLeft {
  public:
    ~CNothingLeft() {
        EXPECT_EQ(LiveSearchContexts(), m_contexts);
        EXPECT_EQ(LiveThreads(), m_threads);
    }

  private:
    const int m_contexts = LiveSearchContexts(), m_threads = LiveThreads();
};

} // namespace quillon::test
