#include "globalregister/custom_indexing.h"

#include <algorithm>
#include <numeric>
#include <string>

#include "core/chess_exception.h"
#include "core/figure_masks.h"
#include "core/printable.h"
#include "globalregister/board_by_index.h"
#include "globalregister/piece_letters.h"

namespace quillon {

namespace {

constexpr std::uint8_t kFrozen = 255;

} // namespace

TCustomIndexing::TCustomIndexing(std::string_view typeName) : m_type(ParseCustomType(typeName)) {
    if (m_type.m_movable.size() > kMaxCustomLetters)
        throw ChessException("Error in custom position type " + Printable(typeName) + ": too many movable pieces");
    SetFrozen();
    for (const TMovablePiece& piece : m_type.m_movable) {
        m_fields.push_back(FieldOf(piece));
        if (m_fields.back().m_squares.empty())
            throw ChessException("Error in custom position type " + Printable(typeName) + ": pawn without a square");
        m_nSize *= m_fields.back().m_squares.size();
        bHasPawns = bHasPawns || IsPawnLetter(piece.m_letter);
    }
    OrderLetters();
}

void TCustomIndexing::SetFrozen() {
    for (const TFrozenPiece& piece : m_type.m_frozen)
        frozenSquares.insert(static_cast<std::int8_t>(piece.m_square));
    nFrozenSquares = frozenSquares.size();
    std::uint8_t number = 0;
    for (int square = 0; square < kSquares; ++square) {
        const bool bFrozen = frozenSquares.contains(static_cast<std::int8_t>(square));
        squareRemap[static_cast<std::size_t>(square)] = bFrozen ? kFrozen : number++;
    }
}

std::vector<TSquare> TCustomIndexing::SquaresOf(const TMovablePiece& piece) const {
    std::vector<TSquare> squares;
    const auto addUnlessFrozen = [&](int square) {
        if (squareRemap[static_cast<std::size_t>(square)] != kFrozen)
            squares.push_back(static_cast<TSquare>(square));
    };
    if (piece.m_start != kNoSquare)
        for (int square = piece.m_start; RankOf(square) > 0; square -= 8)
            addUnlessFrozen(square);
    else
        for (int square = 0; square < kSquares; ++square)
            addUnlessFrozen(square);
    return squares;
}

TCustomIndexing::TField TCustomIndexing::FieldOf(const TMovablePiece& piece) const {
    TField field{FigureOfLetter(piece.m_letter), SquaresOf(piece)};
    field.m_values.fill(kFrozen);
    std::uint8_t value = 0;
    for (const TSquare square : field.m_squares)
        field.m_values[square] = value++;
    return field;
}

// A pawn cannot pass another one of its file, so the lower pawn is the one with the lower start.
void TCustomIndexing::OrderLetters() {
    m_taking.resize(m_fields.size());
    std::iota(m_taking.begin(), m_taking.end(), std::size_t{0});
    std::ranges::stable_sort(m_taking, [&](std::size_t a, std::size_t b) {
        const TMovablePiece &pieceA = m_type.m_movable[a], &pieceB = m_type.m_movable[b];
        return pieceA.m_start != kNoSquare && pieceB.m_start != kNoSquare && pieceA.m_start < pieceB.m_start;
    });
}

bool TCustomIndexing::AreFrozenInPlace(const TChessboard& b) const {
    return std::ranges::all_of(m_type.m_frozen, [&](const TFrozenPiece& piece) {
        return WithoutMark(b.m_board[piece.m_square]) == piece.m_figure;
    });
}

std::uint64_t TCustomIndexing::GetIndex(const TChessboard& b) const {
    const CBoardPlanes planes(b.m_board.data());
    TMask movable = planes.Plane<6>() | planes.Plane<7>();
    for (const TFrozenPiece& piece : m_type.m_frozen)
        movable &= ~MaskOf(piece.m_square);
    if (!AreFrozenInPlace(b) || static_cast<std::size_t>(std::popcount(movable)) != m_fields.size())
        return kNoIndex;

    std::array<std::uint64_t, kMaxCustomLetters> values{};
    for (const std::size_t letter : m_taking) {
        TMask candidates = movable;
        int square = -1;
        while (candidates != 0 && square < 0) {
            const int candidate = TakeSquare(candidates);
            const auto place = static_cast<std::size_t>(candidate);
            if (WithoutMark(b.m_board[place]) == m_fields[letter].m_figure &&
                m_fields[letter].m_values[place] != kFrozen)
                square = candidate;
        }
        if (square < 0)
            return kNoIndex;
        movable &= ~MaskOf(square);
        values[letter] = m_fields[letter].m_values[static_cast<std::size_t>(square)];
    }
    std::uint64_t index = 0;
    for (std::size_t letter = 0; letter < m_fields.size(); ++letter)
        index = index * m_fields[letter].m_squares.size() + values[letter];
    return index;
}

bool TCustomIndexing::GetPositionByIndex(std::uint64_t index, TChessboard& b) const {
    if (index >= m_nSize)
        return false;
    b.m_board.fill(kNoFigure);
    for (const TFrozenPiece& piece : m_type.m_frozen)
        static_cast<void>(PlacePiece(b, piece.m_square, piece.m_figure));
    for (auto field = m_fields.rbegin(); field != m_fields.rend(); ++field) {
        const std::uint64_t nValues = field->m_squares.size();
        if (!PlacePiece(b, field->m_squares[index % nValues], field->m_figure))
            return false;
        index /= nValues;
    }
    return KingSteps(WhiteKingSquare(b), BlackKingSquare(b)) > 1;
}

} // namespace quillon
