#include "core/fen.h"

#include <algorithm>
#include <array>

#include "core/chess_exception.h"
#include "core/generation.h"
#include "core/printable.h"

namespace quillon {
namespace {

using TPlacement = std::array<TFigure, kSquares>;

constexpr std::string_view kBlanks = " \t";
constexpr char kUnknownKindLetter = 'E';

struct TKindLetter {
    TFigure m_kind;
    char m_cLetter; // as White writes it
};
constexpr TKindLetter kKindLetters[] = {
    {kKing, 'K'}, {kQueen, 'Q'}, {kRook, 'R'}, {kBishop, 'B'}, {kKnight, 'N'}, {kPawn, 'P'},
};

constexpr char ToLower(char c) { return static_cast<char>(c - 'A' + 'a'); }

[[noreturn]] void Fail(const std::string& text) { throw ChessException("FEN: " + text); }

[[noreturn]] void FailInRank(const std::string& text, int rank) { Fail(text + " in rank " + std::to_string(rank + 1)); }

std::string Quoted(std::string_view text) { return "'" + Printable(text) + "'"; }
std::string Quoted(char c) { return "'" + Printable(c) + "'"; }

/// kNoFigure for a letter that stands for none.
TFigure FigureOfLetter(char letter) {
    for (const TKindLetter& row : kKindLetters) {
        if (letter == row.m_cLetter)
            return kWhite | row.m_kind;
        if (letter == ToLower(row.m_cLetter))
            return kBlack | row.m_kind;
    }
    return kNoFigure;
}

char LetterOfFigure(TFigure figure) {
    char letter = kUnknownKindLetter;
    for (const TKindLetter& row : kKindLetters)
        if (row.m_kind == KindOf(figure))
            letter = row.m_cLetter;
    return IsBlack(figure) ? ToLower(letter) : letter;
}

void ReadRank(TPlacement& placement, std::string_view text, int rank) {
    int file = 0;
    for (const char c : text) {
        if (c == '0' || c == '9')
            FailInRank("improper digit " + Quoted(c), rank);
        if (c >= '1' && c <= '8') {
            file += c - '0';
        } else {
            const TFigure figure = FigureOfLetter(c);
            if (figure == kNoFigure)
                FailInRank("unknown letter " + Quoted(c), rank);
            if (file < 8)
                placement[SquareAt(file, rank)] = figure;
            ++file;
        }
        if (file > 8)
            FailInRank("too many files", rank);
    }
    if (file < 8)
        FailInRank("too few files", rank);
}

TPlacement ReadPlacement(std::string_view text) {
    if (text.empty())
        Fail("the figure field is empty");
    TPlacement placement{};
    for (int rank = 7;; --rank) {
        const std::size_t slash = text.find('/');
        ReadRank(placement, text.substr(0, slash), rank);
        if (slash == std::string_view::npos) {
            if (rank > 0)
                Fail("fewer than eight ranks");
            return placement;
        }
        if (rank == 0)
            Fail("more than eight ranks");
        text.remove_prefix(slash + 1);
    }
}

int CastlingWeight(std::string_view fields, char kingSide, char queenSide) {
    const bool bKingSide = fields.find(kingSide) != std::string_view::npos;
    const bool bQueenSide = fields.find(queenSide) != std::string_view::npos;
    return (bKingSide ? kCastlingKingSide : 0) + (bQueenSide ? kCastlingQueenSide : 0);
}

/// A text may leave the side out and go on with the castling field.
char ReadSideToMove(std::string_view field) {
    if (field == "w" || field == "b")
        return field[0];
    if (field.find_first_not_of("KQkq-") != std::string_view::npos)
        Fail("improper side to move " + Quoted(field));
    return 'w';
}

/// `fields`: everything behind the placement, from the first field on. The castling letters are looked for in all of
/// it: neither a side to move nor an en passant square nor a counter contains one of them.
TFenFields ReadFields(std::string_view fields) {
    TFenFields result;
    if (fields.empty())
        return result;
    result.m_cSideToMove = ReadSideToMove(fields.substr(0, fields.find_first_of(kBlanks)));
    result.m_nCastlingWhite = CastlingWeight(fields, 'K', 'Q');
    result.m_nCastlingBlack = CastlingWeight(fields, 'k', 'q');
    return result;
}

std::string WritePlacement(const TChessboard& b) {
    std::string text;
    for (int rank = 7; rank >= 0; --rank) {
        int empty = 0;
        const auto writeEmpty = [&] {
            if (empty > 0)
                text += static_cast<char>('0' + empty);
            empty = 0;
        };
        for (int file = 0; file < 8; ++file) {
            const TFigure figure = b.m_board[SquareAt(file, rank)];
            if (figure == kNoFigure) {
                ++empty;
                continue;
            }
            writeEmpty();
            text += LetterOfFigure(figure);
        }
        writeEmpty();
        if (rank > 0)
            text += '/';
    }
    return text;
}

std::string CastlingField(const TChessboard& b) {
    std::string rights;
    if (HasWhiteCastlingRight(b, true))
        rights += 'K';
    if (HasWhiteCastlingRight(b, false))
        rights += 'Q';
    if (HasBlackCastlingRight(b, true))
        rights += 'k';
    if (HasBlackCastlingRight(b, false))
        rights += 'q';
    return rights.empty() ? "-" : rights;
}

/// The square passed over by a pawn's double step, in capitals, whether or not a capture is possible.
std::string EnPassantField(const TChessboard& b) {
    if (b.m_pPrevious == nullptr)
        return "-";
    const int from = b.m_lastMove.m_nFrom;
    const int to = b.m_lastMove.m_nTo;
    if (AbsDiff(from, to) != 16 || KindOf(b.m_board[b.m_lastMove.m_nTo]) != kPawn)
        return "-";
    const int passed = (from + to) / 2;
    return {static_cast<char>('A' + FileOf(passed)), static_cast<char>('1' + RankOf(passed))};
}

} // namespace

TFenFields ReadFEN(TChessboard& b, std::string_view text) {
    const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
    const TPlacement placement = ReadPlacement(text.substr(0, end));
    const std::size_t next = std::min(text.find_first_not_of(kBlanks, end), text.size());
    const TFenFields fields = ReadFields(text.substr(next));
    b.m_board = placement;
    return fields;
}

TChessboard ChessboardFromFEN(std::string_view text) {
    TChessboard b = EmptyChessboard();
    static_cast<void>(ReadFEN(b, text));
    RecountFigures(b, true);
    CheckNumberOfMen(b);
    return b;
}

std::string WriteFEN(const TChessboard& b, bool bFull) {
    std::string text = WritePlacement(b);
    if (bFull) {
        const int moveNumber = (b.m_nInitialMoves - b.m_nMoves) / 2 + 1;
        text += IsWhiteToMove(b) ? " w " : " b ";
        text += CastlingField(b) + " " + EnPassantField(b) + " 0 " + std::to_string(moveNumber);
    }
    return text;
}

} // namespace quillon
