#pragma once
// An independent, slow numbering of positions, for comparison: boards are texts of 64 letters from a1 on with '.' for
// an empty square, symmetries are tried one after the other, combinations are counted.

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/chessboard.h"

namespace quillon::indexing_reference {

using TBoardText = std::string;

inline constexpr std::string_view kLetters = "QRBNPqrbnp";

inline TBoardText TextOf(const TChessboard& b) {
    constexpr std::string_view letters = "KPBRQNkpbrqn";
    constexpr std::array<int, 12> codes{65, 66, 68, 72, 76, 80, 129, 130, 132, 136, 140, 144};
    TBoardText text(64, '.');
    for (std::size_t square = 0; square < 64; ++square)
        for (std::size_t i = 0; i < codes.size(); ++i)
            if (b.m_board[square] == codes[i])
                text[square] = letters[i];
    return text;
}

inline void SetBoard(TChessboard& b, const TBoardText& text) {
    constexpr std::string_view letters = "KPBRQNkpbrqn";
    constexpr std::array<int, 12> codes{65, 66, 68, 72, 76, 80, 129, 130, 132, 136, 140, 144};
    for (std::size_t square = 0; square < 64; ++square)
        b.m_board[square] = text[square] == '.' ? TFigure{0} : static_cast<TFigure>(codes[letters.find(text[square])]);
    const auto white = static_cast<int>(text.find('K')), black = static_cast<int>(text.find('k'));
    b.m_whiteKingFile = static_cast<std::int8_t>(white % 8);
    b.m_whiteKingRank = static_cast<std::int8_t>(white / 8);
    b.m_blackKingFile = static_cast<std::int8_t>(black % 8);
    b.m_blackKingRank = static_cast<std::int8_t>(black / 8);
}

inline bool HasPawns(std::string_view type) { return type.find_first_of("Pp") != std::string_view::npos; }
inline bool IsPawn(char letter) { return letter == 'P' || letter == 'p'; }

struct TSymmetry {
    bool m_bFiles, m_bRanks, m_bSwap;
};

inline int Moved(int square, const TSymmetry& symmetry) {
    int file = square % 8, rank = square / 8;
    if (symmetry.m_bFiles)
        file = 7 - file;
    if (symmetry.m_bRanks)
        rank = 7 - rank;
    return symmetry.m_bSwap ? file * 8 + rank : rank * 8 + file;
}

// The number of the white king's square; none outside the part of the board that he is folded into.
inline std::optional<std::uint64_t> Slot(int square, bool bPawns) {
    static const std::vector<int> triangle{0, 1, 2, 3, 9, 10, 11, 18, 19, 27};
    if (bPawns)
        return square % 8 < 4 ? std::optional<std::uint64_t>(square / 8 * 4 + square % 8) : std::nullopt;
    const auto found = std::ranges::find(triangle, square);
    return found == triangle.end() ? std::nullopt : std::optional<std::uint64_t>(found - triangle.begin());
}

// The first that folds the king, reflections in the diagonal last.
inline TSymmetry FoldingOf(int whiteKing, bool bPawns) {
    for (const bool bSwap : {false, true})
        for (const bool bRanks : {false, true})
            for (const bool bFiles : {false, true}) {
                const TSymmetry symmetry{bFiles, bRanks, bSwap};
                if (Slot(Moved(whiteKing, symmetry), bPawns) && (!bPawns || (!bSwap && !bRanks)))
                    return symmetry;
            }
    return {};
}

inline TBoardText Folded(const TBoardText& board, bool bPawns) {
    const TSymmetry symmetry = FoldingOf(static_cast<int>(board.find('K')), bPawns);
    TBoardText folded(64, '.');
    for (int square = 0; square < 64; ++square)
        folded[static_cast<std::size_t>(Moved(square, symmetry))] = board[static_cast<std::size_t>(square)];
    return folded;
}

inline std::uint64_t Choose(std::uint64_t n, std::uint64_t k) {
    if (k == 0 || n < k)
        return k == 0;
    return Choose(n - 1, k - 1) * n / k;
}

// How many combinations of the same size out of `n` come before this one in lexicographic order.
inline std::uint64_t RankOfCombination(const std::vector<int>& members, int n) {
    std::uint64_t rank = 0;
    int first = 0;
    for (std::size_t i = 0; i < members.size(); ++i) {
        for (int smaller = first; smaller < members[i]; ++smaller)
            rank += Choose(static_cast<std::uint64_t>(n - 1 - smaller), members.size() - i - 1);
        first = members[i] + 1;
    }
    return rank;
}

inline std::uint64_t Index(std::string_view type, const TBoardText& board, bool bCombinations) {
    const bool bPawns = HasPawns(type);
    const TSymmetry folding = FoldingOf(static_cast<int>(board.find('K')), bPawns);
    std::uint64_t index = 0;
    for (std::size_t i = 0; i < type.size();) {
        std::size_t end = i + 1;
        while (end < type.size() && type[end] == type[i])
            ++end;
        const int n = IsPawn(type[i]) ? 48 : 64;
        std::vector<int> fields;
        std::size_t square = 0;
        for (std::size_t man = i; man < end; ++man, ++square) {
            square = board.find(type[i], square);
            fields.push_back(Moved(static_cast<int>(square), folding) - (IsPawn(type[i]) ? 8 : 0));
        }
        if (bCombinations && fields.size() > 1) {
            std::ranges::sort(fields);
            index = index * Choose(static_cast<std::uint64_t>(n), fields.size()) + RankOfCombination(fields, n);
        } else {
            for (const int field : fields)
                index = index * static_cast<std::uint64_t>(n) + static_cast<std::uint64_t>(field);
        }
        i = end;
    }
    index = index * 64 + static_cast<std::uint64_t>(Moved(static_cast<int>(board.find('k')), folding));
    return index * (bPawns ? 32 : 10) + *Slot(Moved(static_cast<int>(board.find('K')), folding), bPawns);
}

// Without combinations: the index that names the same position with the squares of equal letters in order.
inline std::uint64_t InOrder(std::string_view type, std::uint64_t index) {
    const std::uint64_t nLow = (HasPawns(type) ? 32 : 10) * 64;
    std::uint64_t fields = index / nLow;
    std::array<std::uint64_t, 8> values{};
    for (std::size_t i = type.size(); i-- > 0;) {
        const std::uint64_t n = IsPawn(type[i]) ? 48 : 64;
        values[i] = fields % n;
        fields /= n;
    }
    for (std::size_t i = 0; i < type.size(); ++i)
        for (std::size_t j = i + 1; j < type.size() && type[j] == type[i]; ++j)
            if (values[j] < values[i])
                std::swap(values[i], values[j]);
    for (std::size_t i = 0; i < type.size(); ++i)
        fields = fields * (IsPawn(type[i]) ? 48 : 64) + values[i];
    return fields * nLow + index % nLow;
}

// Number of boards with the white king folded, kings apart and all men on different squares, equal men told apart.
inline std::uint64_t CountPlacements(std::string_view type) {
    std::uint64_t count = 0;
    for (int white = 0; white < 64; ++white)
        for (int black = 0; black < 64; ++black) {
            if (!Slot(white, HasPawns(type)) ||
                std::max(std::abs(white % 8 - black % 8), std::abs(white / 8 - black / 8)) < 2)
                continue;
            std::uint64_t nPawnSquares = 48, nSquares = 62, ways = 1;
            for (const int king : {white, black})
                nPawnSquares -= king >= 8 && king < 56;
            for (const bool bPawns : {true, false}) // pawns first: they have fewer squares
                for (const char letter : type)
                    if (IsPawn(letter) == bPawns) {
                        ways *= bPawns ? nPawnSquares-- : nSquares;
                        --nSquares;
                    }
            count += ways;
        }
    return count;
}

// Every material of `nLetters` men besides the kings.
inline std::vector<std::string> TypesOf(std::size_t nLetters) {
    std::vector<std::string> types{""};
    for (std::size_t i = 0; i < nLetters; ++i) {
        std::vector<std::string> longer;
        for (const std::string& type : types)
            for (const char letter : kLetters.substr(type.empty() ? 0 : kLetters.find(type.back())))
                longer.push_back(type + letter);
        types = std::move(longer);
    }
    return types;
}

} // namespace quillon::indexing_reference
