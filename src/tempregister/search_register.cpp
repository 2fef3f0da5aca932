#include "tempregister/search_register.h"

#include <cassert>

namespace quillon {

namespace {

static_assert(kRegisterMate == MR_MATE && kRegisterNoMate == MR_NOMATE && kRegisterIsDoubtful == MR_DOUBTFUL &&
              kRegisterUnknown == MR_NONE && kRegisterQuicker == MR_QUICKER);

// Who moves is no part of the key.
[[maybe_unused]] bool IsWhiteLength(int nMoves) { return (nMoves & 1) != 0; }

// In the pass without heuristics doubt is no answer. Before it even a node whose heuristics were all dropped on the way
// may be doubtful: through a repetition.
bool MayBeDoubtful(const TChessboard& position) { return position.m_byPass < 2; }

} // namespace

TMateResult CSearchRegister::Find(const TChessboard& position, int nMoves, int nMaxMoves) {
    assert(IsWhiteLength(nMoves) && nMoves <= nMaxMoves);
    if (nMaxMoves > nMoves)
        return m_known.FindRange(nMoves, nMaxMoves, position.m_board, position.m_nHeuristics, position.m_nHeurParams);
    if (!MayBeDoubtful(position))
        return m_known.FindFinal(nMoves, position.m_board);
    return m_known.Find(nMoves, position.m_board, position.m_nHeuristics, position.m_nHeurParams);
}

void CSearchRegister::Insert(const TChessboard& position, int nMoves, TMateResult verdict) {
    assert(IsWhiteLength(nMoves) && (verdict == MR_MATE || verdict == MR_NOMATE));
    m_known.Insert(static_cast<std::uint16_t>(nMoves), position, verdict == MR_MATE);
}

void CSearchRegister::InsertDoubtful(const TChessboard& position, int nMoves) {
    assert(IsWhiteLength(nMoves));
    m_known.InsertDoubtful(static_cast<std::uint16_t>(nMoves), position.m_board, position.m_nHeuristics,
                           position.m_nHeurParams);
}

void CSearchRegister::AddDoubtfulUser(std::uint32_t heuristics, std::uint32_t params) {
    m_known.AddDoubtfulUser(heuristics, params);
}

void CSearchRegister::ReleaseDoubtfulUser(std::uint32_t heuristics, std::uint32_t params) {
    m_known.ReleaseDoubtfulUser(heuristics, params);
}

void CSearchRegister::ForgetDoubt() {
    constexpr int kDoubtAlone = -1;
    m_known.Clear(kDoubtAlone, true);
}

} // namespace quillon
