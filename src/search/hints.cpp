#include "search/hints.h"

#include <algorithm>

#include "core/generation.h"
#include "core/packed_move.h"

namespace quillon {

namespace {

/// The slot of the answer to the move that led to `b`.
std::uint16_t& AnswerSlot(const TChessboard& b) {
    const auto table = static_cast<std::size_t>(IsWhiteToMove(b) ? 0 : 1);
    return b.m_pContext->m_answers[table][static_cast<std::size_t>(b.m_lastMove.m_nFrom | b.m_lastMove.m_nTo << 6)];
}

/// Both hints of the node, unproved; a null move where there is none.
struct TWanted {
    explicit TWanted(const TChessboard& b)
        : m_ofPly(b.m_pContext->m_hints[b.m_nMoves]),
          m_answer(b.m_pPrevious != nullptr ? UnpackMove(AnswerSlot(b)) : TMove{}) {
        if (SameMove(m_ofPly, m_answer))
            m_answer = TMove{};
    }
    TMove m_ofPly, m_answer;
};

constexpr int kMostRefutations = 4096;
constexpr int kWorthUnit = 64; // so that the worth of a move is at most 64, that of a minor capture being 12
constexpr int kStep = 32;      // a refutation moves the count by this part of the way

std::uint16_t& Refutations(const TChessboard& b, const TMove& move) {
    return b.m_pContext->m_refutations[KindOf(b.m_board[move.m_nFrom])][move.m_nTo];
}

} // namespace

bool CanMake(const TChessboard& b, const TMove& wanted) {
    const bool bWhite = IsWhiteToMove(b);
    const TFigure figure = b.m_board[wanted.m_nFrom];
    if (!(bWhite ? IsWhite(figure) : IsBlack(figure)))
        return false;
    TMove list[kMaxMoves];
    const int count =
        bWhite ? GenerateWhiteFigureMoves(b, wanted.m_nFrom, list) : GenerateBlackFigureMoves(b, wanted.m_nFrom, list);
    return std::any_of(list, list + count, [&](const TMove& move) { return SameMove(move, wanted); });
}

CHints::CHints(const TChessboard& b) {
    const TWanted wanted(b);
    for (const TMove& move : {wanted.m_ofPly, wanted.m_answer})
        if (!IsNullMove(move) && CanMake(b, move))
            m_moves[m_count++] = move;
}

bool CHints::Knows(const TMove& move) const {
    return std::any_of(m_moves, m_moves + m_count, [&](const TMove& hint) { return SameMove(hint, move); });
}

int CHints::DropFrom(TMove* list, int count) const {
    if (m_count == 0)
        return count;
    TMove* const end = std::remove_if(list, list + count, [&](const TMove& move) { return Knows(move); });
    return static_cast<int>(end - list);
}

void PutHintsFirst(const TChessboard& b, int nMoves, TMove* list) {
    const TWanted wanted(b);
    for (const TMove& move : {wanted.m_answer, wanted.m_ofPly}) {
        TMove* const found = std::find_if(list, list + nMoves, [&](const TMove& m) { return SameMove(m, move); });
        if (found != list + nMoves)
            std::rotate(list, found, found + 1);
    }
}

void KeepHint(const TChessboard& b, const TMove& move) {
    b.m_pContext->m_hints[b.m_nMoves] = {move.m_nFrom, move.m_nTo, PromotionKind(move), 0};
    if (b.m_pPrevious != nullptr)
        AnswerSlot(b) = PackMove(move);
}

void KeepRefutation(const TChessboard& b, const TMove* list, int i) {
    std::uint16_t& count = Refutations(b, list[i]);
    count = static_cast<std::uint16_t>(count + (kMostRefutations - count) / kStep);
    for (int tried = 0; tried < i; ++tried) {
        std::uint16_t& failed = Refutations(b, list[tried]);
        failed = static_cast<std::uint16_t>(failed - failed / kStep);
    }
}

int RefutingWorth(const TChessboard& b, const TMove& move) { return Refutations(b, move) / kWorthUnit; }

} // namespace quillon
