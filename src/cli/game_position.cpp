#include "cli/game_position.h"

#include <memory>
#include <utility>

#include "core/board_transform.h"
#include "core/castling.h"
#include "core/generation.h"
#include "core/makers.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr int kRankFlip = 56; // square ^ 56 is the square of the same file with the ranks reversed

// The generators and makers want a root whose plies have the parity of the side to move, and room for one move.
constexpr int kWhitePlies = 3, kBlackPlies = 2;

void TakeRookOff(TChessboard& b, int rights, int lost, TSquare rookHome) {
    if ((rights & lost) == 0)
        b.m_board[rookHome] = kNoFigure;
}

/// What castling is measured against: rights that are lost show as rooks that did not stand at home.
TChessboard StartOf(const TGamePosition& position) {
    TChessboard start = EmptyChessboard();
    start.m_board = position.m_board;
    TakeRookOff(start, position.m_nCastlingWhite, kCastlingQueenSide, kA1);
    TakeRookOff(start, position.m_nCastlingWhite, kCastlingKingSide, kH1);
    TakeRookOff(start, position.m_nCastlingBlack, kCastlingQueenSide, kA8);
    TakeRookOff(start, position.m_nCastlingBlack, kCastlingKingSide, kH8);
    return start;
}

TMove DoubleStepTo(TSquare to) { return {static_cast<std::uint8_t>(RankOf(to) == 3 ? to - 16 : to + 16), to, 0, 0}; }

bool IsDoubleStep(const TChessboard& after) {
    const TMove& move = after.m_lastMove;
    return AbsDiff(move.m_nFrom, move.m_nTo) == 16 && KindOf(after.m_board[move.m_nTo]) == kPawn;
}

TGamePosition PositionOf(const TChessboard& after, bool bWhiteToMove) {
    TGamePosition position;
    position.m_board = after.m_board;
    position.m_bWhiteToMove = bWhiteToMove;
    position.m_nCastlingWhite = WhiteCastlingsLeft(after);
    position.m_nCastlingBlack = BlackCastlingsLeft(after);
    if (IsDoubleStep(after))
        position.m_nDoubleStep = after.m_lastMove.m_nTo;
    return position;
}

/// A position with the history that generators and makers ask for.
class CGameRoot {
  public:
    explicit CGameRoot(const TGamePosition& position)
        : m_context(NewSearchContext()), m_start(StartOf(position)),
          m_root(*MakeRoot(*m_context, m_analysis, RecordOf(position),
                           position.m_bWhiteToMove ? kWhitePlies : kBlackPlies, 2)) {
        m_context->m_pRoot = &m_start;
        if (position.m_nDoubleStep == kNoSquare)
            return;
        m_root.m_pPrevious = &m_start;
        m_root.m_lastMove = DoubleStepTo(position.m_nDoubleStep);
    }

    [[nodiscard]] std::vector<TGameMove> Moves() {
        const bool bWhite = IsWhiteToMove(m_root);
        TMove list[kMaxMoves];
        const int count = bWhite ? GenerateWhiteMoves(m_root, list) : GenerateBlackMoves(m_root, list);
        std::vector<TGameMove> moves;
        for (int i = 0; i < count; ++i) {
            TMove move = list[i];
            TChessboard& child = *CopyToChild(&m_root);
            const bool bLegal = bWhite ? MakeWhiteMove<kLegalityOnly>(child, move) != 0
                                       : MakeBlackMove<kLegalityOnly>(child, move, false) != kIllegalMove;
            if (bLegal)
                moves.push_back({move, PositionOf(child, !bWhite)});
        }
        return moves;
    }

  private:
    const std::unique_ptr<TSearchContext> m_context;
    TAnalysis m_analysis;
    TChessboard m_start;
    TChessboard& m_root;
};

} // namespace

TChessboard RecordOf(const TGamePosition& position) {
    TChessboard b = EmptyChessboard();
    b.m_board = position.m_board;
    RecountFigures(b, true);
    return b;
}

bool IsInCheck(const TGamePosition& position) {
    const TChessboard b = RecordOf(position);
    return (position.m_bWhiteToMove ? b.m_whiteChecker : b.m_blackChecker) != kNoChecker;
}

bool HasMatingMaterial(const TGamePosition& position) {
    const TChessboard b = RecordOf(position);
    const bool bWhite = position.m_bWhiteToMove;
    const int own = bWhite ? WhiteMen(b) : BlackMen(b), other = bWhite ? BlackMen(b) : WhiteMen(b);
    const int minor = bWhite ? b.m_whiteKnights + b.m_whiteBishops : b.m_blackKnights + b.m_blackBishops;
    return own > 1 || (own == 1 && (minor == 0 || other > 0));
}

std::vector<TGameMove> LegalMoves(const TGamePosition& position) { return CGameRoot(position).Moves(); }

TGamePosition WithColoursSwapped(const TGamePosition& position) {
    TChessboard b = EmptyChessboard();
    b.m_board = position.m_board;
    SwapColours(b);
    TGamePosition swapped = position;
    swapped.m_board = b.m_board;
    swapped.m_bWhiteToMove = !position.m_bWhiteToMove;
    std::swap(swapped.m_nCastlingWhite, swapped.m_nCastlingBlack);
    if (position.m_nDoubleStep != kNoSquare)
        swapped.m_nDoubleStep = static_cast<TSquare>(position.m_nDoubleStep ^ kRankFlip);
    return swapped;
}

TMove WithColoursSwapped(TMove move) {
    move.m_nFrom ^= kRankFlip;
    move.m_nTo ^= kRankFlip;
    return move;
}

} // namespace quillon
