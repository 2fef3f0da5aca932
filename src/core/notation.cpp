#include "core/notation.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <optional>

#include "core/chess_exception.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/printable.h"

namespace quillon {
namespace {

constexpr std::string_view kNullMoveText = "-";
constexpr std::string_view kCastlingShort = "0-0";
constexpr std::string_view kCastlingLong = "0-0-0";
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kListSeparators = " \t,";
constexpr int kFileG = 6;

struct TFigureLetter {
    char m_cLetter; // capital
    TFigure m_kind;
};
/// English and Polish letters. Where the languages differ the English one stands first.
constexpr TFigureLetter kFigureLetters[] = {
    {'K', kKing},   {'Q', kQueen},  {'H', kQueen},  {'R', kRook},   {'W', kRook},
    {'B', kBishop}, {'G', kBishop}, {'N', kKnight}, {'S', kKnight}, {'P', kPawn},
};

constexpr char ToUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

constexpr bool IsLetter(char c) { return ToUpper(c) >= 'A' && ToUpper(c) <= 'Z'; }

std::string_view TrimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

TMove CastlingMove(bool bWhite, bool bKingSide) {
    TMove move{};
    move.m_nFrom = bWhite ? kE1 : kE8;
    if (bKingSide)
        move.m_nTo = bWhite ? kG1 : kG8;
    else
        move.m_nTo = bWhite ? kC1 : kC8;
    return move;
}

/// kNoFigure for a letter of no figure.
TFigure KindOfLetter(char letter) {
    for (const TFigureLetter& row : kFigureLetters)
        if (row.m_cLetter == ToUpper(letter))
            return row.m_kind;
    return kNoFigure;
}

/// kNoSquare for a text that is none.
TSquare SquareOf(std::string_view text) {
    if (text.size() != 2)
        return kNoSquare;
    const int file = ToUpper(text[0]) - 'A';
    const int rank = text[1] - '1';
    return IsOnBoard(file, rank) ? SquareAt(file, rank) : kNoSquare;
}

/// A move as a text tells it, before any position is looked at.
struct TToldMove {
    TFigure m_kind = kPawn; // of the figure that moves
    TMove m_move{};
};

/// Figure letter if the second character is a letter, two squares with any one character between them, promotion
/// letter; what stands behind ("+", "!") is not read. Nothing if the text cannot be a move.
std::optional<TToldMove> ReadToldMove(std::string_view text, bool bWhite) {
    if (text == kCastlingShort || text == kCastlingLong)
        return TToldMove{kKing, CastlingMove(bWhite, text == kCastlingShort)};
    TToldMove told;
    if (text.size() >= 2 && IsLetter(text[1])) {
        told.m_kind = KindOfLetter(text[0]);
        text.remove_prefix(1);
    }
    if (text.size() < 5 || told.m_kind == kNoFigure)
        return std::nullopt;
    told.m_move.m_nFrom = SquareOf(text.substr(0, 2));
    told.m_move.m_nTo = SquareOf(text.substr(3, 2));
    if (told.m_move.m_nFrom == kNoSquare || told.m_move.m_nTo == kNoSquare)
        return std::nullopt;
    text.remove_prefix(5);
    if (text.starts_with('='))
        text.remove_prefix(1);
    if (!text.empty() && IsLetter(text[0])) {
        told.m_move.m_nPromotion = KindOfLetter(text[0]);
        if (told.m_move.m_nPromotion == kNoFigure)
            return std::nullopt;
    }
    return told;
}

bool IsAmongMoves(const TChessboard& b, const TMove& move) {
    TMove list[kMaxMoves];
    const int n = IsWhiteToMove(b) ? GenerateWhiteMoves(b, list) : GenerateBlackMoves(b, list);
    return std::any_of(list, list + n, [&move](const TMove& m) { return SameMove(m, move); });
}

bool MakeOnCopy(TChessboard& position, TMove move, TChessboard& child) {
    child = position;
    child.m_pPrevious = &position;
    return IsWhiteToMove(position) ? MakeWhiteMove<kLegalityOnly>(child, move) != 0
                                   : MakeBlackMove<kLegalityOnly>(child, move, false) != kIllegalMove;
}

} // namespace

char KindToLetter(TFigure kind) {
    if (kind == kPawn)
        return ' ';
    for (const TFigureLetter& row : kFigureLetters)
        if (row.m_kind == kind)
            return row.m_cLetter;
    return 'E';
}

TFigure FigureLetterToKind(char letter) {
    const TFigure kind = KindOfLetter(letter);
    if (kind == kNoFigure)
        throw ChessException("Unknown figure letter: " + Printable(letter));
    return kind;
}

std::string WriteMove(const TMove& move, TFigure movedFigure, bool bCapture) {
    if (IsNullMove(move))
        return std::string(kNullMoveText);
    const std::string squares = SquareText(move.m_nFrom) + (bCapture ? ':' : '-') + SquareText(move.m_nTo);
    if (PromotionKind(move) != 0)
        return squares + KindToLetter(PromotionKind(move));

    const TFigure kind = KindOf(movedFigure);
    if (kind == kKing && AbsDiff(FileOf(move.m_nFrom), FileOf(move.m_nTo)) >= 2)
        return std::string(FileOf(move.m_nTo) == kFileG ? kCastlingShort : kCastlingLong);
    return kind == kPawn ? squares : KindToLetter(kind) + squares;
}

std::string WriteMove(const TMove& move, const TChessboard& before) {
    assert(move.m_nFrom < kSquares && move.m_nTo < kSquares);
    const TFigure figure = before.m_board[move.m_nFrom];
    const bool bEnPassant = KindOf(figure) == kPawn && FileOf(move.m_nFrom) != FileOf(move.m_nTo);
    return WriteMove(move, figure, bEnPassant || before.m_board[move.m_nTo] != kNoFigure);
}

std::string SquareText(TSquare square) {
    return {static_cast<char>('a' + FileOf(square)), static_cast<char>('1' + RankOf(square))};
}

std::string WriteTerseMove(const TMove& move) { return SquareText(move.m_nFrom) + '-' + SquareText(move.m_nTo); }

TMove ParseMove(std::string_view text, bool bWhite) {
    text = TrimBlanks(text);
    if (text.empty())
        throw ChessException("Empty string");
    if (text == kCastlingShort || text == kCastlingLong)
        return CastlingMove(bWhite, text == kCastlingShort);

    TMove move{};
    if (IsLetter(text.back())) {
        move.m_nPromotion = FigureLetterToKind(text.back());
        text.remove_suffix(1);
    }
    if (text.size() >= 2 && IsLetter(text[1]))
        text.remove_prefix(1);
    if (text.size() != 5)
        throw ChessException("Improper string length");
    if (text[2] != '-' && text[2] != ':')
        throw ChessException("Improper full description of move");
    move.m_nFrom = String2Square(text.substr(0, 2));
    move.m_nTo = String2Square(text.substr(3));
    return move;
}

TSquare String2Square(std::string_view text) {
    const TSquare square = SquareOf(text);
    if (square == kNoSquare)
        throw ChessException("Error in String2Square() " + Printable(text));
    return square;
}

std::vector<TSquare> ParseSquares(std::string_view text) {
    std::vector<TSquare> squares;
    std::size_t start = text.find_first_not_of(kListSeparators);
    while (start != std::string_view::npos) {
        const std::size_t end = std::min(text.find_first_of(kListSeparators, start), text.size());
        squares.push_back(SquareOf(text.substr(start, end - start)));
        if (squares.back() == kNoSquare)
            throw ChessException("Invalid square description at index " + std::to_string(start));
        start = text.find_first_not_of(kListSeparators, end);
    }
    return squares;
}

bool MakeMoveFromText(TChessboard& position, std::string_view text, TChessboard& child, std::string* report) {
    if (report != nullptr)
        report->clear();
    std::optional<TToldMove> told = ReadToldMove(TrimBlanks(text), IsWhiteToMove(position));
    if (!told || KindOf(position.m_board[told->m_move.m_nFrom]) != told->m_kind)
        return false;

    TMove& move = told->m_move;
    const int lastRank = IsWhiteToMove(position) ? 7 : 0;
    if (told->m_kind == kPawn && RankOf(move.m_nTo) == lastRank && move.m_nPromotion == 0)
        move.m_nPromotion = kQueen;
    // With no ply left the count of plies would wrap around.
    const bool bLegal = position.m_nMoves > 0 && IsAmongMoves(position, move) && MakeOnCopy(position, move, child);
    if (!bLegal && report != nullptr)
        *report = "Illegal move";
    return bLegal;
}

} // namespace quillon
