#include "globalregister/position_indexing.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>

#include "core/chess_exception.h"
#include "core/figure_masks.h"
#include "core/printable.h"
#include "globalregister/board_by_index.h"
#include "globalregister/packed/little_endian.h"
#include "globalregister/piece_letters.h"

namespace quillon {

namespace {

constexpr std::uint64_t kPawnSquares = 48;
constexpr std::uint64_t kFirstPawnSquare = 8;
constexpr std::uint64_t kSmallestCombinedMen = 6; // with the kings

// Squares of a position are held as bytes of one word: those of the letters and of the black king. What is done to one
// square is done to all at once. Lane 0 is the word's lowest byte and the first square of TMenSquares on any machine.
constexpr std::size_t kBlackKingLane = kMaxTypeLetters;
constexpr std::size_t kUnusedLane = 8;
constexpr std::uint64_t kEachLane = 0x0101010101010101u; // times a byte: that byte in each lane

// Lanes are counted round: a man that is no letter of the type, of which a position of the type has none, goes
// anywhere.
constexpr std::uint64_t InLane(std::uint64_t square, std::size_t lane) { return square << (8 * lane & 63); }

constexpr std::uint64_t kMirrorFiles = 7 * kEachLane; // changed bits of the squares
constexpr std::uint64_t kMirrorRanks = 56 * kEachLane;
constexpr std::uint64_t SwapFilesAndRanks(std::uint64_t squares) {
    return ((squares >> 3) & 7 * kEachLane) | ((squares & 7 * kEachLane) << 3);
}

// Of the ten figures of a type in their order, from 0; kOtherKind for kings and whatever else a board can hold.
constexpr std::uint8_t kOtherKind = 10;
constexpr auto kKindOfByte = [] {
    std::array<std::uint8_t, 256> kinds{};
    kinds.fill(kOtherKind);
    for (std::uint8_t kind = 0; kind < kOtherKind; ++kind)
        kinds[FigureOfLetter(kTypeLetters[kind])] = kind;
    kinds[kBlackPawn | kPawnMayNotAdvance] = kinds[kBlackPawn];
    return kinds;
}();

// The triangle a1-d1-d4.
constexpr TSquare kTriangle[10] = {0, 1, 2, 3, 9, 10, 11, 18, 19, 27};
constexpr auto kTriangleNumber = [] {
    std::array<std::uint8_t, kSquares> numbers{};
    std::uint8_t number = 0;
    for (const TSquare square : kTriangle)
        numbers[square] = number++;
    return numbers;
}();

// What folds the board for a white king on one square. No step is a branch: where the king stands cannot be foreseen.
struct TFolding {
    std::uint64_t m_nMirror = 0;  // changed bits of the squares
    std::uint64_t m_nSwapped = 0; // all bits set if files and ranks are swapped then
    TSquare m_whiteKing = 0;      // folded
};

constexpr TFolding FoldingWithPawns(int file, int rank) {
    return {file >= 4 ? kMirrorFiles : 0, 0, SquareAt(std::min(file, 7 - file), rank)};
}

constexpr TFolding FoldingWithoutPawns(int file, int rank) {
    const std::uint64_t mirror = (file >= 4 ? kMirrorFiles : 0) | (rank >= 4 ? kMirrorRanks : 0);
    file = std::min(file, 7 - file);
    rank = std::min(rank, 7 - rank);
    return {mirror, rank > file ? ~std::uint64_t{0} : 0, SquareAt(std::max(file, rank), std::min(file, rank))};
}

// By whether there are pawns, and the white king's square.
constexpr auto kFoldings = [] {
    std::array<std::array<TFolding, kSquares>, 2> foldings{};
    for (int square = 0; square < kSquares; ++square) {
        const auto place = static_cast<std::size_t>(square);
        foldings[0][place] = FoldingWithoutPawns(FileOf(square), RankOf(square));
        foldings[1][place] = FoldingWithPawns(FileOf(square), RankOf(square));
    }
    return foldings;
}();

// The number of a type of one spelling: the figures in their order.
TPositionType ParseType(std::string_view text) {
    TPositionType type = 0;
    std::size_t last = 0;
    for (const char letter : text) {
        const std::size_t place = kTypeLetters.find(letter);
        const bool bSpecial = place != std::string_view::npos && FigureOfLetter(letter) == kNoFigure;
        if (place == std::string_view::npos || (!bSpecial && place < last) || text.size() > kMaxTypeLetters)
            throw ChessException("Error in position type: " + Printable(text));
        if (!bSpecial)
            last = place;
        type = type << 4 | (place + 1);
    }
    return type << 1;
}

void SortGroup(std::uint8_t* squares, std::size_t nMen) {
    for (std::size_t i = 1; i < nMen; ++i)
        for (std::size_t j = i; j > 0 && squares[j] < squares[j - 1]; --j)
            std::swap(squares[j], squares[j - 1]);
}

std::uint64_t Power(std::uint64_t base, std::size_t exponent) {
    std::uint64_t result = 1;
    for (; exponent > 0; --exponent)
        result *= base;
    return result;
}

// The value of the lowest field, which is taken off.
std::uint64_t TakeField(std::uint64_t& fields, std::uint64_t nValues) {
    const std::uint64_t value = fields % nValues;
    fields /= nValues;
    return value;
}

} // namespace

TPositionIndexing::TPositionIndexing(std::string_view type) : typeName(type) {
    if (IsCustomType(type)) {
        custom.emplace(type);
        bHasPawns = custom->bHasPawns;
        return;
    }
    nPositionType = ParseType(type);
    SetLetters();
    bPawnRanks48 = bHasPawns;
    ComputeStrides(strides);
    for (std::size_t i = 0; i < typeName.size(); ++i)
        m_nPawnOffset += bPawnSquares[i] ? strides[i] * kFirstPawnSquare : 0;
}

void TPositionIndexing::SetLetters() {
    m_firstLetter.fill(kUnusedLane);
    for (std::size_t i = typeName.size(); i-- > 0;) {
        m_figures[i] = FigureOfLetter(typeName[i]);
        bPawnSquares[i] = IsPawnLetter(typeName[i]);
        bHasPawns = bHasPawns || bPawnSquares[i];
        if (m_figures[i] == kNoFigure)
            bHasSpecialPiece = true;
        else
            m_firstLetter[kKindOfByte[m_figures[i]]] = static_cast<std::uint8_t>(i);
    }
    mappings.assign(typeName.size(), nullptr);
    groupSizes.assign(typeName.size(), 0);
    groupCounts.assign(typeName.size(), 0);
}

std::size_t TPositionIndexing::MenWithKings() const { return custom ? custom->Men() : typeName.size() + 2; }

// The number of equal letters from letter `i` on.
std::size_t TPositionIndexing::RunFrom(std::size_t i) const {
    return std::min(typeName.find_first_not_of(typeName[i], i), typeName.size()) - i;
}

bool TPositionIndexing::SetupCombinations() {
    if (custom || MenWithKings() < kSmallestCombinedMen)
        return false;
    try {
        for (std::size_t i = 0; i < typeName.size(); i += RunFrom(i))
            if (RunFrom(i) >= kMinGroup && RunFrom(i) <= kMaxGroup)
                mappings[i] = &CombinationMapping(bPawnSquares[i], RunFrom(i));
    } catch (const std::bad_alloc&) {
        std::ranges::fill(mappings, nullptr);
        return false;
    }
    for (std::size_t i = 0; i < typeName.size(); ++i)
        if (mappings[i] != nullptr) {
            groupSizes[i] = static_cast<std::uint8_t>(RunFrom(i));
            groupCounts[i] = mappings[i]->GetCount();
        }
    bUseCombinations = true;
    ComputeStrides(strides);
    return true;
}

void TPositionIndexing::ComputeStrides(std::array<std::uint64_t, kMaxTypeLetters>& factors) const {
    factors.fill(0);
    if (custom)
        return;
    std::uint64_t factor = WhiteKingSquares() * kSquares;
    for (std::size_t end = typeName.size(); end > 0;) {
        std::size_t i = end - 1;
        std::uint64_t nValues = bPawnSquares[i] ? kPawnSquares : kSquares;
        for (std::size_t head = 0; bUseCombinations && head < end; ++head)
            if (groupSizes[head] != 0 && head + groupSizes[head] == end) {
                i = head;
                nValues = groupCounts[head];
            }
        factors[i] = factor;
        factor *= nValues;
        end = i;
    }
}

// The squares of the letters and of the black king, each in its lane.
std::uint64_t TPositionIndexing::CollectSquares(const TChessboard& b) const {
    std::array<std::uint8_t, kKinds> next = m_firstLetter;
    std::uint64_t squares = InLane(BlackKingSquare(b), kBlackKingLane);
    const CBoardPlanes planes(b.m_board.data());
    const TMask kings = MaskOf(WhiteKingSquare(b)) | MaskOf(BlackKingSquare(b));
    for (TMask men = (planes.Plane<6>() | planes.Plane<7>()) & ~kings; men != 0;) {
        const auto square = static_cast<std::size_t>(TakeSquare(men));
        squares |= InLane(square, next[kKindOfByte[b.m_board[square]]]++);
    }
    return squares;
}

std::uint64_t TPositionIndexing::IndexOfBoard(const TChessboard& b) const {
    TMenSquares men;
    StoreLittleEndian(men.m_squares.data(), CollectSquares(b));
    men.m_whiteKing = WhiteKingSquare(b);
    return IndexOfMen(men);
}

// The white king alone decides the folding: on the diagonal the two halves of the board stay apart.
void TPositionIndexing::FoldMen(TMenSquares& men) const {
    const TFolding& folding = kFoldings[bHasPawns][men.m_whiteKing];
    std::uint64_t squares = 0;
    std::memcpy(&squares, men.m_squares.data(), sizeof squares);
    squares ^= folding.m_nMirror;
    squares ^= (squares ^ SwapFilesAndRanks(squares)) & folding.m_nSwapped;
    std::memcpy(men.m_squares.data(), &squares, sizeof squares);
    men.m_whiteKing = folding.m_whiteKing;
}

std::uint64_t TPositionIndexing::IndexOfFolded(const TMenSquares& men) const {
    assert(!bHasSpecialPiece);
    const int white = men.m_whiteKing;
    const auto slot = static_cast<std::uint64_t>(bHasPawns ? RankOf(white) * 4 + FileOf(white)
                                                           : kTriangleNumber[static_cast<std::size_t>(white)]);
    const std::uint64_t low = men.BlackKing() * WhiteKingSquares() + slot;
    if (bUseCombinations) {
        auto lanes = men.m_squares;
        return GroupedFields(lanes.data()) + low;
    }
    std::uint64_t fields = 0;
    for (std::size_t i = 0; i < typeName.size(); ++i)
        fields += men.m_squares[i] * strides[i];
    return fields - m_nPawnOffset + low;
}

std::uint64_t TPositionIndexing::GroupedFields(std::uint8_t* squares) const {
    std::uint64_t fields = 0;
    for (std::size_t i = 0; i < typeName.size(); ++i) {
        if (strides[i] == 0) // behind the head of its group
            continue;
        std::uint64_t value = squares[i] - (bPawnSquares[i] ? kFirstPawnSquare : 0);
        if (mappings[i] != nullptr) {
            SortGroup(squares + i, groupSizes[i]);
            value = mappings[i]->GetIndex(squares + i);
        }
        fields += value * strides[i];
    }
    return fields;
}

bool TPositionIndexing::GetPositionByIndex(std::uint64_t index, TChessboard& b) const {
    if (custom)
        return custom->GetPositionByIndex(index, b);
    b.m_board.fill(kNoFigure);
    TMenSquares men;
    if (!GetMenByIndex(index, men))
        return false;
    bool bPlaced = PlacePiece(b, men.m_whiteKing, kWhiteKing) && PlacePiece(b, men.BlackKing(), kBlackKing);
    for (std::size_t i = 0; bPlaced && i < typeName.size(); ++i)
        bPlaced = PlacePiece(b, men.m_squares[i], m_figures[i]);
    return bPlaced;
}

bool TPositionIndexing::GetMenByIndex(std::uint64_t index, TMenSquares& men) const {
    const std::uint64_t slot = TakeField(index, WhiteKingSquares());
    men.m_whiteKing = static_cast<TSquare>(bHasPawns ? (slot & 28) * 2 + (slot & 3) : kTriangle[slot]);
    men.m_squares[kMaxTypeLetters] = static_cast<TSquare>(TakeField(index, kSquares));
    if (KingSteps(men.m_whiteKing, men.BlackKing()) <= 1 || bHasSpecialPiece || !TakeLetters(index, men))
        return false;
    TMask occupied = MaskOf(men.m_whiteKing) | MaskOf(men.BlackKing());
    for (std::size_t i = 0; i < typeName.size(); ++i) {
        if ((occupied & MaskOf(men.m_squares[i])) != 0)
            return false;
        occupied |= MaskOf(men.m_squares[i]);
    }
    return true;
}

bool TPositionIndexing::TakeLetters(std::uint64_t fields, TMenSquares& men) const {
    for (std::size_t i = typeName.size(); i-- > 0;) {
        if (strides[i] == 0)
            continue;
        const std::uint64_t first = bPawnSquares[i] ? kFirstPawnSquare : 0;
        if (mappings[i] == nullptr) {
            const std::uint64_t value = bPawnSquares[i] ? TakeField(fields, kPawnSquares) : TakeField(fields, kSquares);
            men.m_squares[i] = static_cast<TSquare>(value + first);
            continue;
        }
        const unsigned char* set = mappings[i]->GetSet(TakeField(fields, groupCounts[i]));
        for (std::size_t man = 0; man < groupSizes[i]; ++man)
            men.m_squares[i + man] = static_cast<TSquare>(set[man] + first);
    }
    return fields == 0;
}

std::uint64_t TPositionIndexing::GetSize() const {
    if (custom)
        return custom->GetSize();
    std::uint64_t size = (bHasPawns || bHasSpecialPiece ? 32 : 10) * Power(kSquares, MenWithKings() - 1);
    for (std::size_t i = 0; bPawnRanks48 && i < typeName.size(); ++i)
        if (bPawnSquares[i])
            size = size * 3 / 4;
    if (bHasSpecialPiece)
        size >>= 3;
    for (std::size_t i = 0; bUseCombinations && i < typeName.size(); ++i)
        if (groupSizes[i] != 0)
            size = size / Power(bPawnSquares[i] ? kPawnSquares : kSquares, groupSizes[i]) * groupCounts[i];
    return size;
}

} // namespace quillon
