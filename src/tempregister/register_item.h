#pragma once
// TChessboardRegisterItem: the key of a solved subposition, the bare 64 bytes of its board.
//
// Who moves, castling and en passant are no part of it: the mover follows from the parity of the plies left, and the
// registers are asked only where the rights do not matter or have been folded into the board.

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/figures.h"
#include "core/square.h"

namespace quillon {

/// The squares of a board, as TChessboard::m_board holds them.
using TBoardBytes = std::array<TFigure, kSquares>;

inline constexpr int kBoardWords = 8; // of 64 bits: one rank each

/// One rank of the board as a number: the figure on the h file is its top byte.
[[nodiscard]] inline std::uint64_t BoardWord(const TBoardBytes& board, int rank) {
    std::uint64_t word;
    std::memcpy(&word, board.data() + rank * 8, sizeof word);
    return word;
}

/// True for equal boards. All words are compared at once, which costs less than a branch that cannot be foretold.
[[nodiscard]] inline bool SameBoard(const TBoardBytes& a, const TBoardBytes& b) {
    std::uint64_t difference = 0;
    for (int i = 0; i < kBoardWords; ++i)
        difference |= BoardWord(a, i) ^ BoardWord(b, i);
    return difference == 0;
}

/// Order of the keys: the words in turn, as signed numbers; the first difference decides.
///
/// The sign of the wrapped difference of two words will not do, although it needs no comparison of signs: by it an
/// empty h-file square comes before a white figure there, a white figure before a black one, and a black one before an
/// empty square. Sorted arrays would lose elements in that circle. As signed numbers, black comes before empty and
/// empty before white; only white against black differs from the wrapped sign.
[[nodiscard]] inline std::strong_ordering CompareBoards(const TBoardBytes& a, const TBoardBytes& b) {
    for (int i = 0; i < kBoardWords; ++i) {
        const auto left = static_cast<std::int64_t>(BoardWord(a, i));
        const auto right = static_cast<std::int64_t>(BoardWord(b, i));
        if (left != right)
            return left <=> right;
    }
    return std::strong_ordering::equal;
}

/// Two-byte alignment lets an element of a key and two lengths take 68 bytes.
struct alignas(2) TChessboardRegisterItem {
    TBoardBytes m_board;

    friend bool operator==(const TChessboardRegisterItem& a, const TChessboardRegisterItem& b) {
        return SameBoard(a.m_board, b.m_board);
    }
    friend std::strong_ordering operator<=>(const TChessboardRegisterItem& a, const TChessboardRegisterItem& b) {
        return CompareBoards(a.m_board, b.m_board);
    }
};
static_assert(sizeof(TChessboardRegisterItem) == 64 && alignof(TChessboardRegisterItem) == 2);
static_assert(std::is_trivially_copyable_v<TChessboardRegisterItem>);

/// Weight of a square in the hash: (square + 1) squared, at most 4096.
inline constexpr std::array<std::int16_t, kSquares> kHashWeights = [] {
    std::array<std::int16_t, kSquares> weights{};
    for (int i = 0; i < kSquares; ++i)
        weights[static_cast<std::size_t>(i)] = static_cast<std::int16_t>((i + 1) * (i + 1));
    return weights;
}();

/// The sum of figure code times weight over all squares, in 32 bits. The same value as BoardHash.
[[nodiscard]] constexpr std::uint32_t BoardHashPlain(const TBoardBytes& board) {
    std::uint32_t hash = 0;
    for (std::size_t i = 0; i < board.size(); ++i)
        hash += board[i] * static_cast<std::uint32_t>(kHashWeights[i]);
    return hash;
}

#if defined(__SSE2__)

// NOLINTBEGIN(portability-simd-intrinsics): other processors have the plain sum.

/// Codes and weights fit signed 16-bit numbers, which the processor multiplies and adds eight at a time.
[[nodiscard]] inline std::uint32_t BoardHash(const TBoardBytes& board) {
    const auto load = [](const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); };
    const __m128i zero = _mm_setzero_si128();
    __m128i even = zero;
    __m128i odd = zero;
    for (std::size_t i = 0; i < board.size(); i += 16) {
        const __m128i codes = load(board.data() + i);
        const __m128i low = _mm_unpacklo_epi8(codes, zero);
        const __m128i high = _mm_unpackhi_epi8(codes, zero);
        even = _mm_add_epi32(even, _mm_madd_epi16(low, load(kHashWeights.data() + i)));
        odd = _mm_add_epi32(odd, _mm_madd_epi16(high, load(kHashWeights.data() + i + 8)));
    }
    __m128i sum = _mm_add_epi32(even, odd);
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(1, 0, 3, 2)));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(2, 3, 0, 1)));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(sum));
}

// NOLINTEND(portability-simd-intrinsics)

#else

[[nodiscard]] inline std::uint32_t BoardHash(const TBoardBytes& board) { return BoardHashPlain(board); }

#endif

} // namespace quillon
