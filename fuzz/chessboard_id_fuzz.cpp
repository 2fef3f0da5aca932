// Position ids: any text is read or refused with a ChessException, and a text that is read is the one text of its
// board. The same bytes are also taken as a board, which must survive the way into a text and back.

#include <algorithm>
#include <array>
#include <string>

#include "core/chess_exception.h"
#include "core/chessboard_id.h"
#include "fuzz_check.h"

namespace quillon {

namespace {

constexpr std::array<TFigure, 13> kSquareContents{
    kNoFigure,  kWhiteKing, kWhitePawn,   kWhiteBishop, kWhiteRook,  kWhiteQueen,  kWhiteKnight,
    kBlackKing, kBlackPawn, kBlackBishop, kBlackRook,   kBlackQueen, kBlackKnight,
};

bool Reads(TChessboard& b, std::string_view text) {
    try {
        ReadChessboardId(b, text);
        return true;
    } catch (const ChessException&) {
        return false;
    }
}

void CheckText(std::string_view text) {
    TChessboard b = EmptyChessboard();
    if (Reads(b, text))
        Require(ToAlphanum6(MakeChessboardId(b)) == text, "a board has one text");
}

std::size_t MenOn(const TChessboard& b) {
    return static_cast<std::size_t>(kSquares - std::ranges::count(b.m_board, kNoFigure));
}

std::size_t DivideUp(std::size_t a, std::size_t b) { return (a + b - 1) / b; }

void CheckBoard(const TChessboard& b) {
    const TChessboardId id = MakeChessboardId(b);
    const std::size_t bits = 64 + 4 * MenOn(b);
    Require(id.m_nBits == bits, "a bit a square and four more a figure");
    Require(ToAlphanum5(id).size() == DivideUp(bits, 5), "five bits a character");

    const std::string text = ToAlphanum6(id);
    Require(text.size() == DivideUp(bits, 6), "six bits a character");
    TChessboard again = EmptyChessboard();
    Require(Reads(again, text), "what is written can be read");
    Require(again.m_board == b.m_board, "reading what is written gives the board");
    Require(!Reads(again, text + '0') && !Reads(again, text.substr(0, text.size() - 1)),
            "a longer or shorter text is refused");
}

bool MakesId(const TChessboard& b) {
    try {
        static_cast<void>(MakeChessboardId(b));
        return true;
    } catch (const ChessException&) {
        return false;
    }
}

// Bytes that are no figures must be refused; the mark of a pawn is no part of a figure here.
void CheckRawBytes(const TChessboard& b) {
    const bool bAllFigures = std::ranges::all_of(
        b.m_board, [](TFigure figure) { return std::ranges::find(kSquareContents, figure) != kSquareContents.end(); });
    Require(MakesId(b) == bAllFigures, "only the twelve figures have a code");
}

} // namespace

} // namespace quillon

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quillon;
    CheckText(AsText(data, size));
    TChessboard figures = EmptyChessboard();
    TChessboard raw = EmptyChessboard();
    for (std::size_t i = 0; i < std::min<std::size_t>(size, kSquares); ++i) {
        figures.m_board[i] = kSquareContents[data[i] % kSquareContents.size()];
        raw.m_board[i] = data[i];
    }
    CheckBoard(figures);
    CheckRawBytes(raw);
    return 0;
}
