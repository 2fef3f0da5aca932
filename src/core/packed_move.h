#pragma once
// A move in 16 bits, for tables: source, target, and the promotion as its place in kPackedPromotions.

#include <algorithm>
#include <array>
#include <cstdint>

#include "core/figures.h"
#include "core/move.h"

namespace quillon {

inline constexpr std::array<TFigure, 8> kPackedPromotions{kNoFigure, kQueen,    kRook,     kBishop,
                                                          kKnight,   kNoFigure, kNoFigure, kNoFigure};

/// Marks and scores are left out. A null move on a1 is 0.
[[nodiscard]] constexpr std::uint16_t PackMove(const TMove& move) {
    const auto place = std::find(kPackedPromotions.begin(), kPackedPromotions.end(), PromotionKind(move));
    return static_cast<std::uint16_t>(move.m_nFrom | move.m_nTo << 6 | (place - kPackedPromotions.begin()) << 12);
}

[[nodiscard]] constexpr TMove UnpackMove(std::uint16_t packed) {
    return {static_cast<std::uint8_t>(packed & 63), static_cast<std::uint8_t>(packed >> 6 & 63),
            kPackedPromotions[packed >> 12 & 7], 0};
}

} // namespace quillon
