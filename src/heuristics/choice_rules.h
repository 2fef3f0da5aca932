#pragma once
// The rule tables by which the initial analysis chooses heuristics: one rule, one name, in the order in which they are
// tried.

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "core/search_context.h"
#include "heuristics/position_class.h"
#include "search/analysis.h"

namespace quillon {

inline constexpr int kConfinedCategory = 4; // of moves; below: the black king keeps to a corner of the board

/// The choice as it stands.
struct TChoice {
    TChessboard& m_root; // White to move; rules may try moves in the slots below
    TSearchContext& m_context;
    TAnalysis& m_analysis;
    const TPositionFacts& m_facts;
    std::uint32_t m_nMask = 0;
    bool m_bSafeModeForced = false;
    bool m_bRootMoveSolved = false;          // a root move is shown to mate already
    std::vector<std::string_view> m_fired{}; // names of the rules that fired

    [[nodiscard]] bool Has(std::uint32_t bits) const { return (m_nMask & bits) != 0; }
    void Set(std::uint32_t bits) { m_nMask |= bits; }
    void Clear(std::uint32_t bits) { m_nMask &= ~bits; }
    void ForceSafeMode() { m_bSafeModeForced = m_analysis.m_bSafeMode = true; }
};

struct TChoiceRule {
    std::string_view m_name;
    bool (*m_pApplies)(const TChoice&);
    void (*m_pTake)(TChoice&);
};

inline void TakeRule(const TChoiceRule& rule, TChoice& choice) {
    rule.m_pTake(choice);
    choice.m_fired.push_back(rule.m_name);
}

/// Takes every rule that applies, in order; a rule sees what those before it have chosen.
inline void TakeAllRules(std::span<const TChoiceRule> rules, TChoice& choice) {
    for (const TChoiceRule& rule : rules)
        if (rule.m_pApplies(choice))
            TakeRule(rule, choice);
}

/// Takes the first rule that applies; false if none does.
inline bool TakeFirstRule(std::span<const TChoiceRule> rules, TChoice& choice) {
    for (const TChoiceRule& rule : rules) {
        if (rule.m_pApplies(choice)) {
            TakeRule(rule, choice);
            return true;
        }
    }
    return false;
}

/// A rule that only sets bits.
template <std::uint32_t nBits> void SetBits(TChoice& choice) { choice.Set(nBits); }

} // namespace quillon
