#pragma once
// A sort indication: a user's word on where a white move belongs in the order of a node's moves.

#include <compare>
#include <cstdint>

#include "core/figures.h"
#include "core/square.h"

namespace quillon {

/// Values of SortIndication::m_nCapture.
inline constexpr std::uint8_t kMustNotCapture = 0;
inline constexpr std::uint8_t kMustCapture = 1;
inline constexpr std::uint8_t kMayCapture = 255;

struct SortIndication {
    int m_nMove = 0;              // number of the move, 0 for any
    TFigure m_figure = kNoFigure; // kind with kWhite, kNoFigure for any
    TSquare m_nFrom = kNoSquare;  // kNoSquare for any
    TSquare m_nTo = kNoSquare;
    TFigure m_nPromotion = kNoFigure; // kind, kNoFigure when none is named
    std::uint8_t m_nCapture = kMayCapture;
    std::uint8_t m_nCheck = 0;           // 0 does not matter, 1 check, 2 double check
    bool m_bOnlyIfNotCapturable = false; // only if the figure cannot be captured after the move
    bool m_bWorst = false;               // tried last instead of first

    friend auto operator<=>(const SortIndication&, const SortIndication&) = default;
};

} // namespace quillon
