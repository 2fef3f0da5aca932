// Moves as text. The first line of an input is a FEN ("b" after the board: Black to move), the rest is the text of a
// move. Any text is read or refused; what is read survives being written and read again; a move that is made leaves a
// position whose record is the one that is counted afresh from its board.

#include <algorithm>
#include <memory>
#include <string>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "core/notation.h"
#include "core/search_context.h"
#include "fuzz_check.h"

namespace quillon {

namespace {

bool Parses(std::string_view text, bool bWhite, TMove& move) {
    try {
        move = ParseMove(text, bWhite);
        return true;
    } catch (const ChessException&) {
        return false;
    }
}

void CheckParsing(std::string_view text, bool bWhite) {
    TMove move{};
    if (!Parses(text, bWhite, move))
        return;
    Require(move.m_nFrom < kSquares && move.m_nTo < kSquares, "a move has two squares of the board");
    // A null move has a sign of its own, and a promotion to a pawn, which only a text can ask for, is written as none.
    if (IsNullMove(move) || PromotionKind(move) == kPawn)
        return;
    for (const bool bCapture : {false, true}) {
        TMove again{};
        Require(Parses(WriteMove(move, kPawn, bCapture), bWhite, again), "what is written can be read");
        Require(SameMove(move, again), "reading what is written gives the move");
    }
}

void CheckSquares(std::string_view text) {
    try {
        for (const TSquare square : ParseSquares(text))
            Require(square < kSquares, "only squares of the board are listed");
    } catch (const ChessException&) {
        return;
    }
}

bool SameCounts(const TChessboard& a, const TChessboard& b) {
    return a.m_whiteQueens == b.m_whiteQueens && a.m_blackQueens == b.m_blackQueens &&
           a.m_whiteRooks == b.m_whiteRooks && a.m_blackRooks == b.m_blackRooks &&
           a.m_whiteBishops == b.m_whiteBishops && a.m_blackBishops == b.m_blackBishops &&
           a.m_whiteKnights == b.m_whiteKnights && a.m_blackKnights == b.m_blackKnights &&
           a.m_whitePawns == b.m_whitePawns && a.m_blackPawns == b.m_blackPawns;
}

// The field of the other side means nothing: that side has just moved, so it is not in check.
std::int8_t CheckerOfSideToMove(const TChessboard& b) { return IsWhiteToMove(b) ? b.m_whiteChecker : b.m_blackChecker; }

void CheckChild(const TChessboard& position, const TChessboard& child) {
    Require(child.m_nMoves + 1 == position.m_nMoves, "a move takes a ply");
    TChessboard counted = child;
    Require(TryRecountFigures(counted, false), "a move leads to a position");
    Require(SameCounts(counted, child), "the figures are counted");
    Require(WhiteKingSquare(counted) == WhiteKingSquare(child) && BlackKingSquare(counted) == BlackKingSquare(child),
            "the kings are found");
    Require((CheckerOfSideToMove(counted) != kNoChecker) == (CheckerOfSideToMove(child) != kNoChecker),
            "a check is seen");
}

void CheckMaking(TChessboard& position, std::string_view text) {
    TChessboard child = EmptyChessboard();
    std::string report = "as it was before";
    if (!MakeMoveFromText(position, text, child, &report)) {
        Require(report.empty() || report == "Illegal move", "a refusal tells illegal moves from unreadable ones");
        return;
    }
    CheckChild(position, child);
    TChessboard again = EmptyChessboard();
    Require(MakeMoveFromText(position, WriteMove(child.m_lastMove, position), again, nullptr),
            "a move that was made can be written and made again");
    Require(again.m_board == child.m_board, "the same move gives the same board");
}

// The context that the makers note captures in; one for all inputs, as it is large.
TSearchContext& Context() {
    static const std::unique_ptr<TSearchContext> context = NewSearchContext();
    return *context;
}

void CheckInput(std::string_view input) {
    const std::size_t end = std::min(input.find('\n'), input.size());
    const std::string_view text = input.substr(std::min(end + 1, input.size()));
    CheckParsing(text, true);
    CheckParsing(text, false);
    CheckSquares(text);

    TChessboard position = EmptyChessboard();
    try {
        const TFenFields fields = ReadFEN(position, input.substr(0, end));
        RecountFigures(position, true);
        CheckNumberOfMen(position);
        position.m_pContext = &Context();
        position.m_pContext->m_pRoot = &position;
        position.m_nMoves = position.m_nInitialMoves = fields.m_cSideToMove == 'w' ? 3 : 2;
    } catch (const ChessException&) {
        return;
    }
    // The side that has just moved cannot stand in check; such a position is none of a game.
    const std::int8_t checked = IsWhiteToMove(position) ? position.m_blackChecker : position.m_whiteChecker;
    if (checked == kNoChecker)
        CheckMaking(position, text);
}

} // namespace

} // namespace quillon

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillon::CheckInput(quillon::AsText(data, size));
    return 0;
}
