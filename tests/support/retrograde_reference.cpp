#include "support/retrograde_reference.h"

#include <algorithm>
#include <cassert>

namespace reference {

namespace {

constexpr std::string_view kOrder = "QRBNPqrbnp";
constexpr std::string_view kPromotions = "QRBN";
constexpr std::size_t kSquares = 64;
constexpr std::uint8_t kOpen = 0, kIllegal = 255;

bool IsWhiteLetter(char letter) { return letter < 'a'; }
bool IsPawnLetter(char letter) { return letter == 'P' || letter == 'p'; }
char InColourOf(char letter, char promotion) {
    return IsWhiteLetter(letter) ? promotion : static_cast<char>(promotion - 'A' + 'a');
}

// A square under each symmetry of the board: 1 mirrors the files, 2 the ranks, 4 then swaps both.
constexpr auto kReflected = [] {
    std::array<std::array<std::size_t, kSquares>, 8> reflected{};
    for (std::size_t symmetry = 0; symmetry < 8; ++symmetry)
        for (std::size_t square = 0; square < kSquares; ++square) {
            const std::size_t file = (symmetry & 1) != 0 ? 7 - square % 8 : square % 8;
            const std::size_t rank = (symmetry & 2) != 0 ? 7 - square / 8 : square / 8;
            reflected[symmetry][square] = (symmetry & 4) != 0 ? file * 8 + rank : rank * 8 + file;
        }
    return reflected;
}();

// A mate is known in at most so many moves.
bool IsWithin(std::uint8_t value, int moves) {
    return value != kOpen && value != kIllegal && static_cast<int>(value) <= moves;
}

} // namespace

const RetrogradeTable& RetrogradeTables::Of(const std::string& material) {
    std::unique_ptr<RetrogradeTable>& table = m_tables[material];
    if (table == nullptr)
        table = std::make_unique<RetrogradeTable>(material, *this);
    return *table;
}

RetrogradeTable::RetrogradeTable(const std::string& material, RetrogradeTables& others) : m_letters("Kk" + material) {
    FindReflections();
    FindConversions(others);
    std::size_t count = m_whiteKingSquares.size();
    for (std::size_t man = 1; man < m_letters.size(); ++man)
        count *= kSquares;
    m_white.assign(count, kOpen);
    m_black.assign(count, kOpen);
    Solve();
}

// White kings on one half of the board stand for all where there are pawns, on the triangle a1-d1-d4 where there are
// none.
void RetrogradeTable::FindReflections() {
    const bool pawns = std::ranges::any_of(m_letters, IsPawnLetter);
    const std::size_t symmetries = pawns ? 2 : 8;
    std::array<std::size_t, kSquares> slotOfTarget{};
    for (std::size_t square = 0; square < kSquares; ++square)
        if (square % 8 < 4 && (pawns || square / 8 <= square % 8)) {
            slotOfTarget[square] = m_whiteKingSquares.size();
            m_whiteKingSquares.push_back(static_cast<int>(square));
        }
    for (std::size_t square = 0; square < kSquares; ++square)
        for (std::size_t symmetry = symmetries; symmetry-- > 0;) {
            const std::size_t target = kReflected[symmetry][square];
            if (target % 8 < 4 && (pawns || target / 8 <= target % 8)) {
                m_reflection[square] = symmetry;
                m_slot[square] = slotOfTarget[target];
            }
        }
}

// Every man but a king can be taken by every hostile one, every pawn can promote, with a capture or without.
void RetrogradeTable::FindConversions(RetrogradeTables& others) {
    for (std::size_t man = 0; man < m_letters.size(); ++man) {
        const char letter = m_letters[man];
        for (std::size_t taken = 2; taken < m_letters.size(); ++taken)
            if (IsWhiteLetter(m_letters[taken]) != IsWhiteLetter(letter))
                AddConversion(others, man, taken, 0);
        if (!IsPawnLetter(letter))
            continue;
        for (const char promotion : kPromotions) {
            AddConversion(others, man, m_letters.size(), InColourOf(letter, promotion));
            for (std::size_t taken = 2; taken < m_letters.size(); ++taken)
                if (IsWhiteLetter(m_letters[taken]) != IsWhiteLetter(letter))
                    AddConversion(others, man, taken, InColourOf(letter, promotion));
        }
    }
}

// Nobody taken: the number behind the last man.
void RetrogradeTable::AddConversion(RetrogradeTables& others, std::size_t man, std::size_t taken, char promotion) {
    std::string letters = m_letters;
    if (promotion != 0)
        letters[man] = promotion;
    Conversion& conversion = ConversionBy(man, taken, promotion);
    for (std::size_t i = 0; i < letters.size(); ++i)
        if (i != taken)
            conversion.men[conversion.count++] = i;
    std::stable_sort(conversion.men.begin() + 2, conversion.men.begin() + conversion.count,
                     [&](std::size_t a, std::size_t b) { return kOrder.find(letters[a]) < kOrder.find(letters[b]); });
    std::string material;
    for (std::size_t i = 2; i < conversion.count; ++i)
        material += letters[conversion.men[i]];
    conversion.table = &others.Of(material);
    m_longestConversion = std::max(m_longestConversion, conversion.table->LongestMate());
}

RetrogradeTable::Conversion& RetrogradeTable::ConversionBy(std::size_t man, std::size_t taken, char promotion) {
    const std::size_t kind = promotion == 0 ? kPromotions.size() : kPromotions.find(static_cast<char>(promotion & ~32));
    return m_conversions[man][taken][kind];
}

std::size_t RetrogradeTable::Number(Squares squares) const {
    const auto whiteKing = static_cast<std::size_t>(squares[0]);
    const auto& reflected = kReflected[m_reflection[whiteKing]];
    std::size_t number = m_slot[whiteKing];
    for (const int square : squares.subspan(1))
        number = number * kSquares + reflected[static_cast<std::size_t>(square)];
    return number;
}

bool RetrogradeTable::Place(std::size_t number, FewMenBoard& board) const {
    std::array<int, FewMenBoard::kMaxMen> squares{};
    for (std::size_t man = m_letters.size(); man-- > 1; number /= kSquares)
        squares[man] = static_cast<int>(number % kSquares);
    squares[0] = m_whiteKingSquares[number];
    return board.Set({squares.data(), m_letters.size()});
}

bool RetrogradeTable::IsLegal(Squares squares, bool whiteToMove) const {
    return (whiteToMove ? m_white : m_black)[Number(squares)] != kIllegal;
}

int RetrogradeTable::MateIn(Squares squares) const {
    const std::uint8_t value = m_white[Number(squares)];
    return value == kIllegal ? 0 : value;
}

int RetrogradeTable::MatedIn(Squares squares) const {
    const std::uint8_t value = m_black[Number(squares)];
    return value == kIllegal || value == kOpen ? kNotLost : value - 1;
}

// Mates of n moves need what Black loses in n - 1. What other material still has to offer may come after a gap.
void RetrogradeTable::Solve() {
    MarkIllegal();
    bool found = Sweep(false, 0);
    for (int moves = 1; found || moves <= m_longestConversion + 1; ++moves) {
        assert(moves < kIllegal - 1);
        found = Sweep(true, moves);
        if (found)
            m_longest = moves;
        found = Sweep(false, moves) || found;
    }
}

void RetrogradeTable::MarkIllegal() {
    FewMenBoard board(m_letters);
    for (std::size_t number = 0; number < m_white.size(); ++number) {
        const bool stands = Place(number, board);
        if (!stands || board.IsInCheck(false))
            m_white[number] = kIllegal;
        if (!stands || board.IsInCheck(true))
            m_black[number] = kIllegal;
    }
}

// All positions that are still open, for mates of this many moves.
bool RetrogradeTable::Sweep(bool white, int moves) {
    FewMenBoard board(m_letters);
    bool found = false;
    Values& values = white ? m_white : m_black;
    for (std::size_t number = 0; number < values.size(); ++number) {
        if (values[number] != kOpen || !Place(number, board))
            continue;
        const bool holds =
            white ? WhiteMates(board, moves, FewMenBoard::kNobody) : BlackIsMated(board, moves, FewMenBoard::kNobody);
        if (holds) {
            values[number] = static_cast<std::uint8_t>(white ? moves : moves + 1);
            found = true;
        }
    }
    return found;
}

// A position with Black to move that has a value is legal, and so is the move to it.
bool RetrogradeTable::WhiteMates(FewMenBoard& board, int moves, int doubleStepper) {
    return board.AnyMove(true, doubleStepper, [&](const Move& move) {
        if (const int stepper = board.DoubleStepperOf(move); stepper != FewMenBoard::kNobody)
            return !board.IsInCheck(true) && BlackIsMated(board, moves - 1, stepper);
        return IsWithin(After(board, move, false), moves); // moves - 1, and one more as they are stored
    });
}

// Every move leads to a mate, or there is none and it is mate.
bool RetrogradeTable::BlackIsMated(FewMenBoard& board, int moves, int doubleStepper) {
    bool hasMove = false;
    const bool escapes = board.AnyMove(false, doubleStepper, [&](const Move& move) {
        if (IsWithin(After(board, move, true), moves)) {
            hasMove = true;
            return false;
        }
        if (board.IsInCheck(false))
            return false;
        hasMove = true;
        const int stepper = board.DoubleStepperOf(move);
        return stepper == FewMenBoard::kNobody || !WhiteMates(board, moves, stepper);
    });
    return !escapes && (hasMove || board.IsInCheck(false));
}

// What is known of the position that the move just played has led to.
std::uint8_t RetrogradeTable::After(const FewMenBoard& board, const Move& move, bool whiteToMove) {
    if (move.taken == FewMenBoard::kNobody && move.promotion == 0)
        return (whiteToMove ? m_white : m_black)[Number(board.Squares())];
    const std::size_t taken =
        move.taken == FewMenBoard::kNobody ? m_letters.size() : static_cast<std::size_t>(move.taken);
    const Conversion& conversion = ConversionBy(static_cast<std::size_t>(move.man), taken, move.promotion);
    std::array<int, FewMenBoard::kMaxMen> squares{};
    for (std::size_t i = 0; i < conversion.count; ++i)
        squares[i] = board.Squares()[conversion.men[i]];
    const RetrogradeTable& other = *conversion.table;
    return (whiteToMove ? other.m_white : other.m_black)[other.Number({squares.data(), conversion.count})];
}

} // namespace reference
