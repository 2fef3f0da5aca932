#pragma once
// Steps that both move makers take with the colours exchanged. Private to the makers.

#include <cstring>

#include "core/chessboard.h"
#include "core/lines.h"
#include "core/position_type.h"
#include "core/precalc_at_hand.h"
#include "core/queries.h"
#include "core/search_context.h"

namespace quillon::maker_steps {

/// What the colours differ in.
struct TWhiteSide {
    static constexpr TFigure kOwn = kWhite, kEnemy = kBlack;
    static constexpr int kForward = 8;
    static constexpr TSquare kKingHome = kE1, kRankBase = kA1;
    static int EnemyKing(const TChessboard& b) { return BlackKingSquare(b); }
    static int OwnKing(const TChessboard& b) { return WhiteKingSquare(b); }
    static std::int8_t& EnemyChecker(TChessboard& b) { return b.m_blackChecker; }
    static bool HasSlider(const TChessboard& b, TDirection d) { return HasWhiteSlider(b, d); }
    static bool HasEnemySlider(const TChessboard& b, TDirection d) { return HasBlackSlider(b, d); }
    static void SetKing(TChessboard& b, int square) {
        b.m_whiteKingFile = static_cast<std::int8_t>(FileOf(square));
        b.m_whiteKingRank = static_cast<std::int8_t>(RankOf(square));
    }
};
struct TBlackSide {
    static constexpr TFigure kOwn = kBlack, kEnemy = kWhite;
    static constexpr int kForward = -8;
    static constexpr TSquare kKingHome = kE8, kRankBase = kA8;
    static int EnemyKing(const TChessboard& b) { return WhiteKingSquare(b); }
    static int OwnKing(const TChessboard& b) { return BlackKingSquare(b); }
    static std::int8_t& EnemyChecker(TChessboard& b) { return b.m_whiteChecker; }
    static bool HasSlider(const TChessboard& b, TDirection d) { return HasBlackSlider(b, d); }
    static bool HasEnemySlider(const TChessboard& b, TDirection d) { return HasWhiteSlider(b, d); }
    static void SetKing(TChessboard& b, int square) {
        const int file = FileOf(square), rank = RankOf(square);
        b.m_blackKingFile = static_cast<std::int8_t>(file);
        b.m_blackKingRank = static_cast<std::int8_t>(rank);
        b.m_wBlackState =
            static_cast<std::uint16_t>((b.m_wBlackState & ~kRingMask) | (RingOf(file, rank) << kRingShift));
    }
};

/// The position before the move: the copy's own last move is its parent's, and in the root that means nothing.
[[nodiscard]] inline const TChessboard& ParentOf(const TChessboard& b) {
    return b.m_pPrevious != nullptr ? *b.m_pPrevious : b;
}

/// A castling by its king's move; source and target are two files apart.
[[nodiscard]] constexpr bool IsCastling(const TMove& move) { return AbsDiff(move.m_nFrom, move.m_nTo) == 2; }

template <class TSide> struct TCastlingRook {
    explicit TCastlingRook(const TMove& move)
        : m_nFrom(static_cast<TSquare>(TSide::kRankBase + (move.m_nTo > move.m_nFrom ? 7 : 0))),
          m_nTo(static_cast<TSquare>(TSide::kRankBase + (move.m_nTo > move.m_nFrom ? 5 : 3))) {}
    TSquare m_nFrom, m_nTo;
};

/// Does emptying `square` uncover the own king to an enemy slider? Asked after the figures were moved.
template <class TSide> [[nodiscard]] bool UncoversOwnKing(const TChessboard& b, int square) {
    const int king = TSide::OwnKing(b);
    const TDirection direction = DirectionBetween(king, square);
    if (direction == kNoDirection || !TSide::HasEnemySlider(b, direction))
        return false;
    const TSquare found = FirstOnRay(b, king, direction);
    return found != kNoSquare && IsSliderAlong(b.m_board[found], TSide::kEnemy, direction);
}

template <class TSide> void AddChecker(TChessboard& b, TSquare square) {
    std::int8_t& checker = TSide::EnemyChecker(b);
    checker = checker == kNoChecker || checker == square ? static_cast<std::int8_t>(square) : kDoubleCheck;
}

/// A slider of the moving side that an emptied square has opened to the enemy king.
template <class TSide> void DetectOpenedLine(TChessboard& b, int emptied, int movedTo) {
    const int king = TSide::EnemyKing(b);
    const TDirection direction = DirectionBetween(king, emptied);
    if (direction == kNoDirection || !TSide::HasSlider(b, direction) || DirectionBetween(king, movedTo) == direction)
        return;
    const TSquare found = FirstOnRay(b, king, direction);
    if (found != kNoSquare && IsSliderAlong(b.m_board[found], TSide::kOwn, direction))
        AddChecker<TSide>(b, found);
}

/// Does the figure that stands on `square` check the enemy king?
template <class TSide> [[nodiscard]] bool ChecksDirectly(const TChessboard& b, int square) {
    const int king = TSide::EnemyKing(b);
    const TFigure kind = KindOf(b.m_board[static_cast<std::size_t>(square)]);
    const int files = AbsDiff(FileOf(square), FileOf(king));
    switch (kind) {
    case kKing:
        return false;
    case kPawn:
        return files == 1 && RankOf(king) == RankOf(square) + TSide::kForward / 8;
    case kKnight:
        return files * AbsDiff(RankOf(square), RankOf(king)) == 2;
    default: {
        const TDirection direction = DirectionBetween(square, king);
        return direction != kNoDirection && SlidesAlong(kind, direction) && IsEmptyBetween(b, square, king, direction);
    }
    }
}

/// Sets the enemy's checker field after the move: from the figure that arrived and the lines that were opened.
template <class TSide> void DetectCheck(TChessboard& b, const TMove& move, bool bCastled) {
    TSide::EnemyChecker(b) = kNoChecker;
    const int arrived = bCastled ? TCastlingRook<TSide>(move).m_nTo : move.m_nTo;
    if (ChecksDirectly<TSide>(b, arrived))
        AddChecker<TSide>(b, static_cast<TSquare>(arrived));
    if (move.m_nEnPassant != 0)
        DetectOpenedLine<TSide>(b, SquareAt(FileOf(move.m_nTo), RankOf(move.m_nFrom)), move.m_nTo);
    if (!bCastled)
        DetectOpenedLine<TSide>(b, move.m_nFrom, move.m_nTo);
}

inline constexpr std::uint64_t kNoBlockedFigures = ~std::uint64_t{0};

[[nodiscard]] inline bool HasBlockedFigures(const TChessboard& b) {
    std::uint64_t squares;
    std::memcpy(&squares, b.m_blockedFigures.data(), sizeof squares);
    return squares != kNoBlockedFigures;
}

/// A watched black figure went elsewhere (`to`), or was captured (kNoSquare).
inline void FollowBlockedFigure(TChessboard& b, TSquare from, TSquare to) {
    for (TSquare& square : b.m_blockedFigures)
        if (square == from)
            square = to;
}

/// Keeps the bits that say whether precalculated data can answer, after a capture or a promotion.
inline void UpdatePrecalcBits(TChessboard& b) {
    int state = b.m_wKingState & ~(kPrecalcCanAnswer | kCustomDataMayMate);
    if (ArePrecalcDataAtHand() && (state & kNoPrecalcData) == 0) {
        if (WhiteMen(b) + BlackMen(b) <= kMaxTypeMen && IsPrecalcDataAvailable(GetPositionType(b)))
            state |= kPrecalcCanAnswer;
        if (IsCustomPrecalcDataAvailable(b))
            state |= kCustomDataMayMate;
    }
    b.m_wKingState = static_cast<std::uint16_t>(state);
}

/// Ends a move: stores it, counts it, and clears the repetition mark of the new position.
inline void FinishMove(TChessboard& b, const TMove& move) {
    b.m_lastMove = move;
    --b.m_nMoves;
    b.m_pContext->m_repetition[b.m_nMoves + 1u] = 0;
}

} // namespace quillon::maker_steps
