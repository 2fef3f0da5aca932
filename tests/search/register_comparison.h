#pragma once
// One diagram solved under many conditions that may change the work and never the answer: without a register, with one,
// with one that has to make room all the time, without the short-mate search, with hints left by other diagrams.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "heuristics/find_mate_root.h"
#include "search/search_truth.h"

namespace quillon::test {

enum class ERegister { None, Ample, Tiny };

struct TConditions {
    const char* m_pName;
    ERegister m_register;
    int m_nQuickerDepth; // of the short-mate search, -1: chosen by itself
    bool m_bSafeMode = false;
    bool m_bKeepsContext = false; // the context, with its hints, is that of the diagrams before
};

inline constexpr TConditions kBare{"no register, no trials", ERegister::None, 0};
inline constexpr TConditions kConditions[] = {
    {"no register", ERegister::None, -1},
    {"register", ERegister::Ample, -1},
    {"register, no trials", ERegister::Ample, 0},
    {"register, short trials, safe mode", ERegister::Ample, 3, true},
    {"tiny register", ERegister::Tiny, -1},
    {"tiny register, no trials, hints", ERegister::Tiny, 0, false, true},
    {"register, hints, safe mode", ERegister::Ample, -1, true, true},
    {"long trials", ERegister::Ample, 31},
};

/// What a solve under some conditions came to.
struct TAnswer {
    std::vector<std::string> m_keys; // sorted
    bool m_bSettled = false;         // no root move is open
    std::uint64_t m_nAnswers = 0;    // of the register
    std::uint64_t m_nEvictions = 0;
};

class CComparison {
  public:
    /// All keys of mate in nMoves.
    [[nodiscard]] TAnswer Solve(const std::string& placement, int nMoves, const TConditions& conditions) {
        if (!conditions.m_bKeepsContext || !m_kept)
            m_kept = NewSearchContext();
        TAnalysis analysis;
        analysis.m_nSolveMode = kAllSolutions;
        analysis.m_bSafeMode = conditions.m_bSafeMode;
        analysis.m_shLookForQuickerMateDepth = static_cast<std::int16_t>(conditions.m_nQuickerDepth);
        nLastRemovedLevel = 0; // how deep eviction went belongs to one solve
        std::unique_ptr<CRealRegister> known;
        if (conditions.m_register != ERegister::None) {
            known = conditions.m_register == ERegister::Tiny ? std::make_unique<CRealRegister>(kTinyBudget, 256)
                                                             : std::make_unique<CRealRegister>();
            known->m_bWriteDown = m_bJudgesEntries;
            analysis.m_pRegister = known.get();
        }
        TRootRun run;
        (void)FindMateRoot(*m_kept, analysis, ChessboardFromFEN(placement), 2 * nMoves - 1, run, true, false);
        TAnswer answer;
        for (const TSolution& solution : run.m_solutions)
            answer.m_keys.push_back(solution.m_text);
        std::ranges::sort(answer.m_keys);
        answer.m_bSettled = !HasOpenMoves(run) && !run.m_bStopped;
        if (known) {
            answer.m_nAnswers = known->m_nAnswers;
            answer.m_nEvictions = known->m_known.Statistics().m_nEvictions;
            m_nJudged += ExpectTrueEntries(known->m_stored, 30, 30000);
        }
        nLastRemovedLevel = 0;
        return answer;
    }

    /// Under all conditions the same keys.
    void ExpectKeys(const std::string& placement, int nMoves, const std::vector<std::string>& keys) {
        for (const TConditions& conditions : kConditions) {
            const TAnswer answer = Solve(placement, nMoves, conditions);
            EXPECT_EQ(answer.m_keys, keys) << placement << " #" << nMoves << ", " << conditions.m_pName;
            EXPECT_TRUE(answer.m_bSettled) << placement << " #" << nMoves << ", " << conditions.m_pName;
            m_nAnswers += answer.m_nAnswers;
            m_nEvictions += answer.m_nEvictions;
        }
    }

    bool m_bJudgesEntries = false; // the entries of the registers are looked at as well
    int m_nJudged = 0;
    std::uint64_t m_nAnswers = 0, m_nEvictions = 0; // of all registers together

  private:
    static constexpr std::uint64_t kTinyBudget = 64 << 10;
    std::unique_ptr<TSearchContext> m_kept;
};

} // namespace quillon::test
