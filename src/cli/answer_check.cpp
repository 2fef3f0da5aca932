#include "cli/answer_check.h"

#include <algorithm>

#include "app/expected_answer.h"

namespace quillon {

EAnswerCheck CheckAnswer(const TSolvingResult& result, const std::vector<TMove>& expected, int nLimit) {
    const auto& found = result.m_solutions;
    const bool bAllExpected = std::all_of(found.begin(), found.end(), [&](const TSolution& key) {
        return std::any_of(expected.begin(), expected.end(),
                           [&](const TMove& move) { return IsMoveMeant(move, key.m_move); });
    });
    if (!bAllExpected)
        return EAnswerCheck::Differs;
    const bool bAllFound = std::all_of(expected.begin(), expected.end(), [&](const TMove& move) {
        return std::any_of(found.begin(), found.end(),
                           [&](const TSolution& key) { return IsMoveMeant(move, key.m_move); });
    });
    if (bAllFound)
        return found.empty() && !result.m_bComplete ? EAnswerCheck::NotComparable : EAnswerCheck::AsExpected;
    if (result.m_bComplete)
        return EAnswerCheck::Differs;
    const bool bLimitReached = nLimit != 0 && static_cast<int>(found.size()) >= nLimit;
    return bLimitReached ? EAnswerCheck::AsExpected : EAnswerCheck::NotComparable;
}

std::string AnswerText(const std::vector<TMove>& expected, const TChessboard& board) {
    std::string text;
    for (const TMove& move : expected)
        text += (text.empty() ? "" : ", ") + ExpectedMoveText(move, board);
    return text.empty() ? "no solution" : text;
}

} // namespace quillon
