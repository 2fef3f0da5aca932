#include "globalregister/custom_type.h"

#include <algorithm>
#include <string>

#include "core/chess_exception.h"
#include "core/printable.h"
#include "globalregister/piece_letters.h"

namespace quillon {

namespace {

class CCustomTypeParser {
  public:
    explicit CCustomTypeParser(std::string_view text) : m_text(text), m_rest(text) {}

    TCustomType Parse() {
        while (!m_rest.empty() && m_rest.front() != '+')
            ParseMovable();
        while (!m_rest.empty())
            ParseFrozen();
        CheckKing('K');
        CheckKing('k');
        return std::move(m_type);
    }

  private:
    [[noreturn]] void Fail(const char* reason) const {
        throw ChessException("Error in custom position type " + Printable(m_text) + ": " + reason);
    }

    char Take() {
        if (m_rest.empty())
            Fail("text ends too early");
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }

    void Expect(char expected) {
        if (Take() != expected)
            Fail("bracket expected");
    }

    TSquare TakeSquare(char letter) {
        const int file = Take() - 'a';
        const int rank = Take() - '1';
        if (!IsOnBoard(file, rank))
            Fail("no square");
        if (IsPawnLetter(letter) && (rank == 0 || rank == 7))
            Fail("pawn on the first or last rank");
        return SquareAt(file, rank);
    }

    char TakeLetter() {
        const char letter = Take();
        if (kPieceLetters.find(letter) == std::string_view::npos)
            Fail("unknown letter");
        return letter;
    }

    void ParseMovable() {
        TMovablePiece piece{TakeLetter()};
        if (!m_type.m_movable.empty() &&
            kPieceLetters.find(piece.m_letter) < kPieceLetters.find(m_type.m_movable.back().m_letter))
            Fail("letters not in their order");
        if (piece.m_letter == 'p') {
            Expect('(');
            piece.m_start = TakeSquare('p');
            Expect(')');
            if (std::ranges::count(m_type.m_movable, piece.m_start, &TMovablePiece::m_start) != 0)
                Fail("two pawns start from one square");
        }
        m_type.m_movable.push_back(piece);
    }

    void ParseFrozen() {
        Take(); // '+'
        const char letter = TakeLetter();
        do {
            const TSquare square = TakeSquare(letter);
            if (std::ranges::count(m_type.m_frozen, square, &TFrozenPiece::m_square) != 0)
                Fail("two frozen pieces on one square");
            m_type.m_frozen.push_back({square, FigureOfLetter(letter)});
        } while (!m_rest.empty() && m_rest.front() != '+');
    }

    void CheckKing(char letter) const {
        const auto nMovable = std::ranges::count(m_type.m_movable, letter, &TMovablePiece::m_letter);
        const auto nFrozen = std::ranges::count(m_type.m_frozen, FigureOfLetter(letter), &TFrozenPiece::m_figure);
        if (nMovable + nFrozen != 1)
            Fail("each side has one king");
    }

    std::string_view m_text;
    std::string_view m_rest;
    TCustomType m_type;
};

} // namespace

bool IsCustomType(std::string_view typeName) { return typeName.find_first_of("Kk+(") != std::string_view::npos; }

TCustomType ParseCustomType(std::string_view typeName) { return CCustomTypeParser(typeName).Parse(); }

} // namespace quillon
