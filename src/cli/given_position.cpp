#include "cli/given_position.h"

#include <sstream>

#include "core/castling.h"
#include "core/chess_exception.h"
#include "core/chessboard_id.h"
#include "library/ascii.h"

namespace quillon {

namespace {

constexpr const char* kCastlingNote =
    "note: all castlings that the board allows are possible, whatever the castling field says";
constexpr const char* kEnPassantNote =
    "note: no en passant capture is possible in the first move, whatever the en passant field says";

struct TWords {
    std::string m_castling, m_enPassant; // "-" if the text has no such field
};

/// A text may go on with the castling field behind the placement.
TWords ReadWords(std::string_view text) {
    std::istringstream words{std::string(text)};
    std::string word;
    TWords result{"-", "-"};
    words >> word >> word;
    if (word == "w" || word == "b")
        words >> word;
    if (words) {
        result.m_castling = word;
        if (words >> word)
            result.m_enPassant = word;
    }
    return result;
}

std::string NoteOf(const TGivenPosition& position, std::string_view text) {
    const TWords words = ReadWords(text);
    std::string note;
    const bool bFields = text.find_first_of(" \t") != std::string_view::npos;
    const bool bLess = (WhiteCastlingsOnBoard(position.m_board) & ~position.m_fields.m_nCastlingWhite) != 0 ||
                       (BlackCastlingsOnBoard(position.m_board) & ~position.m_fields.m_nCastlingBlack) != 0;
    if (bFields && bLess)
        note = kCastlingNote;
    if (words.m_enPassant != "-")
        note += (note.empty() ? "" : "; ") + std::string(kEnPassantNote);
    return note;
}

void ReadId(TChessboard& board, std::string_view text) {
    try {
        ReadChessboardId(board, text);
    } catch (const ChessException& failure) {
        throw ChessException("neither a FEN (eight ranks with \"/\" between them) nor a position id (" +
                             std::string(failure.what()) + "): " + std::string(text));
    }
}

} // namespace

TGivenPosition ReadGivenPosition(std::string_view text) {
    text = Trimmed(text);
    TGivenPosition position;
    position.m_board = EmptyChessboard();
    const bool bFen = text.empty() || text.find('/') != std::string_view::npos;
    if (bFen)
        position.m_fields = ReadFEN(position.m_board, text);
    else
        ReadId(position.m_board, text);
    RecountFigures(position.m_board, true);
    CheckNumberOfMen(position.m_board);
    if (bFen)
        position.m_note = NoteOf(position, text);
    return position;
}

void CheckSideToMove(const TGivenPosition& position) {
    if (position.m_fields.m_cSideToMove == 'w' && position.m_board.m_blackChecker != kNoChecker)
        throw ChessException("Black is in check with White to move.");
    if (position.m_fields.m_cSideToMove == 'b' && position.m_board.m_whiteChecker != kNoChecker)
        throw ChessException("White is in check with Black to move.");
}

} // namespace quillon
