// FEN: any text is read or refused with a ChessException; what is read is what the text says, and writing and reading
// it again changes nothing.

#include <cstddef>
#include <cstring>
#include <string>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "fuzz_check.h"

namespace quillon {

namespace {

// A placement with every empty square written as a dot, all ranks in a row: two placements that say the same are equal.
std::string Expanded(std::string_view placement) {
    std::string squares;
    for (const char c : placement) {
        if (c >= '1' && c <= '8')
            squares.append(static_cast<std::size_t>(c - '0'), '.');
        else if (c != '/')
            squares += c;
    }
    return squares;
}

std::string_view PlacementOf(std::string_view text) { return text.substr(0, text.find_first_of(" \t")); }

bool DiffersOutsideOfBoard(TChessboard a, const TChessboard& b) {
    constexpr std::size_t kUsed = offsetof(TChessboard, m_bWhiteListsValid) + 1; // without the padding at the end
    a.m_board = b.m_board;
    return std::memcmp(&a, &b, kUsed) != 0;
}

bool Reads(TChessboard& b, std::string_view text, TFenFields& fields) {
    try {
        fields = ReadFEN(b, text);
        return true;
    } catch (const ChessException& exception) {
        Require(std::strlen(exception.what()) > 0, "a refusal has a reason");
        return false;
    }
}

void CheckFields(const TFenFields& fields) {
    Require(fields.m_cSideToMove == 'w' || fields.m_cSideToMove == 'b', "the side to move is one of two");
    Require(fields.m_nCastlingWhite >= 0 && fields.m_nCastlingWhite <= kCastlingAll, "castling of White is a weight");
    Require(fields.m_nCastlingBlack >= 0 && fields.m_nCastlingBlack <= kCastlingAll, "castling of Black is a weight");
}

void CheckPlacement(const TChessboard& b, std::string_view text) {
    for (const TFigure figure : b.m_board)
        Require(figure == kNoFigure || IsFigureCode(figure), "only figures are read");
    const std::string written = WriteFEN(b, false);
    Require(Expanded(written) == Expanded(PlacementOf(text)), "the board is what the text says");

    TChessboard again = EmptyChessboard();
    TFenFields fields;
    Require(Reads(again, written, fields), "what is written can be read");
    Require(again.m_board == b.m_board, "reading what is written gives the board");
    Require(fields.m_nCastlingWhite == kCastlingAll && fields.m_nCastlingBlack == kCastlingAll,
            "a placement alone allows all castlings");
}

// Castling that is printed has its king and rook at home.
void CheckCastling(const TChessboard& b, const TFenFields& fields) {
    const auto home = [&b](int weight, int right, TSquare king, TFigure kingFigure, TSquare rook, TFigure rookFigure) {
        return (weight & right) == 0 || (b.m_board[king] == kingFigure && b.m_board[rook] == rookFigure);
    };
    Require(home(fields.m_nCastlingWhite, kCastlingKingSide, kE1, kWhiteKing, kH1, kWhiteRook), "K of the castlings");
    Require(home(fields.m_nCastlingWhite, kCastlingQueenSide, kE1, kWhiteKing, kA1, kWhiteRook), "Q of the castlings");
    Require(home(fields.m_nCastlingBlack, kCastlingKingSide, kE8, kBlackKing, kH8, kBlackRook), "k of the castlings");
    Require(home(fields.m_nCastlingBlack, kCastlingQueenSide, kE8, kBlackKing, kA8, kBlackRook), "q of the castlings");
}

void CheckFullText(TChessboard b) {
    for (const std::uint16_t nMoves : {std::uint16_t{3}, std::uint16_t{2}}) {
        b.m_nMoves = b.m_nInitialMoves = nMoves;
        TChessboard again = EmptyChessboard();
        TFenFields fields;
        Require(Reads(again, WriteFEN(b, true), fields), "the full text can be read");
        Require(again.m_board == b.m_board, "reading the full text gives the board");
        Require(fields.m_cSideToMove == (IsWhiteToMove(b) ? 'w' : 'b'), "the full text names the side to move");
        CheckCastling(b, fields);
    }
}

void CheckText(std::string_view text) {
    const TChessboard empty = EmptyChessboard();
    TChessboard b = empty;
    TFenFields fields;
    const bool bRead = Reads(b, text, fields);
    Require(!DiffersOutsideOfBoard(b, empty), "only the board is touched");
    if (!bRead)
        return;
    CheckFields(fields);
    CheckPlacement(b, text);
    if (TryRecountFigures(b, true))
        CheckFullText(b);
}

} // namespace

} // namespace quillon

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillon::CheckText(quillon::AsText(data, size));
    return 0;
}
