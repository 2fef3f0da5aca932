#pragma once
// Solves under conditions that may change the work and never the answer, judged by what the reference knows.

#include <algorithm>
#include <array>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/fen.h"
#include "heuristics/random_set.h"
#include "heuristics/solving_driver.h"
#include "heuristics/unguided_solve.h"
#include "search/searched_position.h"
#include "support/proof_verifier.h"
#include "support/reference_solver.h"

namespace quillon::test {

/// Agrees to everything: brute force asks whether it is meant.
class CAgreeing final : public INotifier {
  public:
    void Inform(std::string_view, std::string_view) override {}
    [[nodiscard]] bool AskYesNo(std::string_view, std::string_view) override { return true; }
};

/// A problem with its keys, sorted, by an independent proof.
struct TJudgedProblem {
    std::string m_placement;
    int m_nMoves = 0;
    std::vector<std::string> m_keys;
};

/// Nothing if the proof would take more positions than allowed.
[[nodiscard]] inline std::optional<TJudgedProblem> Judged(const std::string& placement, int nMoves,
                                                          std::uint64_t maxNodes) {
    const auto answer = reference::SolveAllWithTable(reference::ProblemFromFen(placement), nMoves, maxNodes);
    if (!answer)
        return std::nullopt;
    return TJudgedProblem{placement, nMoves, answer->keys};
}

/// A random problem; nine in ten of those without a key are passed over, most positions being such.
[[nodiscard]] inline TJudgedProblem RandomProblem(std::mt19937_64& rng, int nMoves, int nFewestMen,
                                                  std::uint64_t maxNodes) {
    for (;;) {
        const int men = nFewestMen + reference::DrawInt(rng, 4);
        const std::string placement = reference::Chance(rng, 60) ? reference::RandomMatingPlacement(rng, men)
                                                                 : AnyPlacement(rng, reference::DrawInt(rng, 5), men);
        const auto problem = Judged(placement, nMoves, maxNodes);
        if (problem && (!problem->m_keys.empty() || reference::Chance(rng, 10)))
            return *problem;
    }
}

/// The request's conditions, for a message.
[[nodiscard]] inline std::string TextOf(const TSolveRequest& request) {
    std::string text = WriteFEN(request.m_board, false) + " #" + std::to_string(request.m_nStipulation);
    text += ", mode " + std::to_string(static_cast<int>(request.m_mode));
    text += request.m_bSafeMode ? ", safe" : "";
    text += request.m_bBruteForce ? ", brute force" : "";
    text += request.m_bHybrid ? ", hybrid" : "";
    text += request.m_bRunPass2 ? "" : ", no pass 2";
    text += request.m_bLetRelaxHeuristics ? "" : ", no relaxation";
    text += ", " + std::to_string(request.m_nMemoryBudgetMB) + " MB";
    text += ", short mate depth " + std::to_string(request.m_shLookForQuickerMateDepth);
    if (request.m_heuristics)
        text += ", set " + TextOf(*request.m_heuristics, request.m_board);
    return text;
}

/// A solve of `problem` with everything else as by default.
[[nodiscard]] inline TSolveRequest RequestFor(const TJudgedProblem& problem, ESolveMode mode) {
    TSolveRequest request;
    request.m_board = ChessboardFromFEN(problem.m_placement);
    request.m_nStipulation = problem.m_nMoves;
    request.m_mode = mode;
    request.m_nMemoryBudgetMB = 8;
    return request;
}

inline constexpr std::array kModes{ESolveMode::FirstSolution, ESolveMode::AllSolutions, ESolveMode::AllSolutions,
                                   ESolveMode::StopOnDual, ESolveMode::StopOn3};

/// Conditions drawn at random, the set excepted.
[[nodiscard]] inline TSolveRequest RandomRequest(std::mt19937_64& rng, const TJudgedProblem& problem) {
    const auto Pick = [&rng](const auto& values) {
        return values[static_cast<std::size_t>(reference::DrawInt(rng, static_cast<int>(std::size(values))))];
    };
    TSolveRequest request = RequestFor(problem, Pick(kModes));
    request.m_bSafeMode = reference::Chance(rng, 40);
    request.m_bRunPass2 = reference::Chance(rng, 60);
    request.m_bLetRelaxHeuristics = reference::Chance(rng, 60);
    request.m_bHybrid = request.m_bRunPass2 && reference::Chance(rng, 10);
    request.m_nMemoryBudgetMB = Pick(std::array{0, 1, 16});
    request.m_shLookForQuickerMateDepth =
        Pick(std::array<std::int16_t, 4>{kDefaultQuickerMateDepth, kDefaultQuickerMateDepth, 1, 31});
    return request;
}

/// How many solutions a mode stops at; 0 for none.
[[nodiscard]] inline std::size_t LimitOf(const TSolveRequest& request) {
    if (request.m_bHybrid && request.m_mode == ESolveMode::FirstSolution)
        return 0; // its second phase looks for all duals
    switch (request.m_mode) {
    case ESolveMode::FirstSolution:
        return 1;
    case ESolveMode::StopOnDual:
        return 2;
    case ESolveMode::StopOn3:
        return 3;
    case ESolveMode::StopOn4:
        return 4;
    default:
        return 0;
    }
}

/// What a number of solves came to, so that a test can see that it has looked at something.
struct TJudgedTally {
    int m_nSolves = 0, m_nMate = 0, m_nNoMate = 0, m_nDoubtful = 0;
    int m_nMissed = 0;           // solves whose first pass has missed a key by doubt
    int m_nLaterPasses = 0;      // solves with more than one pass
    int m_nVariants = 0;         // main variants that were replayed
    std::uint64_t m_nHits = 0;   // answers of the register
    std::uint64_t m_nGuided = 0; // solves whose guide had found a mate
};

inline void PrintTo(const TJudgedTally& t, std::ostream* out) {
    *out << t.m_nSolves << " solves: " << t.m_nMate << " mates, " << t.m_nNoMate << " none, " << t.m_nDoubtful
         << " doubtful, " << t.m_nMissed << " that missed a key at first, " << t.m_nLaterPasses
         << " with later passes, " << t.m_nVariants << " variants, " << t.m_nHits << " hits, " << t.m_nGuided
         << " guided";
}

class CJudge {
  public:
    /// Solves and compares. `set` stands for request.m_heuristics, with what a request does not hold.
    void Solve(const TJudgedProblem& problem, TSolveRequest request, const TRandomSet* set = nullptr) {
        if (set != nullptr)
            request.m_heuristics = set->m_set;
        const testing::ScopedTrace trace(__FILE__, __LINE__, TextOf(request));
        CSolve solve(request);
        if (set != nullptr)
            set->StoreRest(solve.Analysis());
        bool bGuided = false;
        solve.SetPlanSink([&](const TPlanReport& plan) { bGuided = plan.m_bGuided; });
        CAgreeing notifier;
        const TSolvingResult result = solve.StartSolving(notifier);
        m_tally.m_nGuided += bGuided ? 1u : 0u;
        Compare(problem, request, result);
        Count(problem, result);
    }

    /// The same by the passes alone.
    void SolveUnguided(const TJudgedProblem& problem, TSolveRequest request, const TRandomSet* set) {
        request.m_bHybrid = false;
        if (set != nullptr)
            request.m_heuristics = set->m_set;
        const testing::ScopedTrace trace(__FILE__, __LINE__, "no guide, " + TextOf(request));
        const TSolvingResult result = SolveWithoutGuide(request, set);
        Compare(problem, request, result);
        Count(problem, result);
    }

    [[nodiscard]] const TJudgedTally& Tally() const { return m_tally; }

  private:
    static std::vector<std::string> Keys(const TSolvingResult& result) {
        std::vector<std::string> keys;
        for (const TSolution& solution : result.m_solutions)
            keys.push_back(solution.m_text);
        std::ranges::sort(keys);
        return keys;
    }

    void Compare(const TJudgedProblem& problem, const TSolveRequest& request, const TSolvingResult& result) {
        const std::vector<std::string> keys = Keys(result);
        EXPECT_FALSE(result.m_bStopped);
        EXPECT_NE(result.m_verdict, EVerdict::Stopped);
        EXPECT_EQ(result.m_verdict == EVerdict::Mate, !keys.empty());
        EXPECT_TRUE(std::ranges::includes(problem.m_keys, keys)) << "false key: " << testing::PrintToString(keys);
        EXPECT_EQ(std::ranges::adjacent_find(keys), keys.end()) << "a key is told twice";
        if (result.m_verdict == EVerdict::NoMate) {
            EXPECT_EQ(problem.m_keys, std::vector<std::string>{}) << "false absence";
        }
        if (result.m_bComplete) {
            EXPECT_EQ(keys, problem.m_keys) << "the list is not complete";
        }
        if (request.m_bRunPass2)
            CompareWhole(problem, request, result, keys);
        else
            CompareWithoutPass2(result);
        CompareTexts(request, result);
        CompareVariant(problem, result);
    }

    static void CompareWhole(const TJudgedProblem& problem, const TSolveRequest& request, const TSolvingResult& result,
                             const std::vector<std::string>& keys) {
        const std::size_t limit = LimitOf(request);
        const std::size_t wanted = limit == 0 ? problem.m_keys.size() : std::min(limit, problem.m_keys.size());
        EXPECT_EQ(keys.size(), wanted) << testing::PrintToString(keys);
        EXPECT_NE(result.m_verdict, EVerdict::Doubtful);
        if (limit == 0 || problem.m_keys.size() < limit) {
            EXPECT_TRUE(result.m_bComplete);
        }
    }

    static void CompareWithoutPass2(const TSolvingResult& result) {
        // A set without any heuristic is settled by that pass alone, there is no other.
        EXPECT_TRUE(std::ranges::find(result.m_passes, "2") == result.m_passes.end() || result.m_passes.size() == 1)
            << "a pass that was not wanted: " << testing::PrintToString(result.m_passes);
    }

    /// Where the proof was not tried, the text says so.
    static void CompareTexts(const TSolveRequest& request, const TSolvingResult& result) {
        if (result.m_text.empty() || result.m_verdict == EVerdict::Mate)
            return;
        const bool bDoubtful = result.m_verdict == EVerdict::Doubtful;
        const char* const told = bDoubtful ? "pass without heuristics has been skipped"
                                           : "Pass without heuristics is currently switched off";
        EXPECT_EQ(result.m_text.find(told) != std::string::npos, !request.m_bRunPass2) << result.m_text;
    }

    void CompareVariant(const TJudgedProblem& problem, const TSolvingResult& result) {
        if (result.m_variant.empty())
            return;
        ++m_tally.m_nVariants;
        ASSERT_FALSE(result.m_solutions.empty());
        EXPECT_EQ(result.m_variant.front(), result.m_solutions.front().m_text);
        EXPECT_EQ(reference::FaultOfMatingLine(reference::ProblemFromFen(problem.m_placement), problem.m_nMoves,
                                               result.m_variant),
                  "")
            << testing::PrintToString(result.m_variant);
    }

    void Count(const TJudgedProblem& problem, const TSolvingResult& result) {
        ++m_tally.m_nSolves;
        m_tally.m_nMate += result.m_verdict == EVerdict::Mate;
        m_tally.m_nNoMate += result.m_verdict == EVerdict::NoMate;
        m_tally.m_nDoubtful += result.m_verdict == EVerdict::Doubtful;
        m_tally.m_nMissed += HasMissed(problem, result);
        m_tally.m_nLaterPasses += result.m_passes.size() > 1;
        m_tally.m_nHits += result.m_register.m_nHits;
    }

    static bool HasMissed(const TJudgedProblem& problem, const TSolvingResult& result) {
        if (result.m_verdict == EVerdict::Doubtful)
            return !problem.m_keys.empty();
        return std::ranges::any_of(result.m_solutions, [&](const TSolution& solution) {
            return !solution.m_pass.empty() && solution.m_pass != result.m_passes.front();
        });
    }

    TJudgedTally m_tally;
};

/// Solves `problem` under nSets random sets, each with and without the guide.
inline void SolveWithRandomSets(CJudge& judge, std::mt19937_64& rng, const TJudgedProblem& problem, int nSets) {
    for (int i = 0; i < nSets; ++i) {
        const TSolveRequest request = RandomRequest(rng, problem);
        const TRandomSet set = RandomSet(rng, request.m_board);
        judge.Solve(problem, request, &set);
        judge.SolveUnguided(problem, request, &set);
    }
}

/// What the random problems of a test are like.
struct TRandomProblems {
    int m_nMoves;
    int m_nFewestMen; // and three more at most
    int m_nProblems;
    int m_nSets;               // for each
    std::uint64_t m_nMaxNodes; // of the reference
};

[[nodiscard]] inline TJudgedTally SolveRandomProblems(std::uint64_t seed, const TRandomProblems& wanted) {
    std::mt19937_64 rng(seed);
    CJudge judge;
    for (int i = 0; i < wanted.m_nProblems; ++i) {
        const TJudgedProblem problem = RandomProblem(rng, wanted.m_nMoves, wanted.m_nFewestMen, wanted.m_nMaxNodes);
        SolveWithRandomSets(judge, rng, problem, wanted.m_nSets);
    }
    return judge.Tally();
}

/// Nothing is shown by solves that all came to the same.
inline void ExpectAllVerdicts(const TJudgedTally& tally) {
    EXPECT_GT(tally.m_nMate, tally.m_nSolves / 10) << testing::PrintToString(tally);
    EXPECT_GT(tally.m_nNoMate, tally.m_nSolves / 50) << testing::PrintToString(tally);
    EXPECT_GT(tally.m_nDoubtful, tally.m_nSolves / 50) << testing::PrintToString(tally);
    EXPECT_GT(tally.m_nMissed, tally.m_nSolves / 200) << testing::PrintToString(tally);
    EXPECT_GT(tally.m_nLaterPasses, tally.m_nSolves / 10) << testing::PrintToString(tally);
}

} // namespace quillon::test
