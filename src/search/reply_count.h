#pragma once
// How many replies Black has, told from masks: a good deal faster than a list of them.

#include "core/mask_attacks.h"

namespace quillon {

struct TReplyCount {
    int m_nOthers; // moves of all but the king, pins not regarded; a promotion counts four times, en passant not at all
    int m_nFlights; // legal steps of the king; castling does not count

    [[nodiscard]] int All() const { return m_nOthers + m_nFlights; }
};

/// Black to move and not in check.
[[nodiscard]] TReplyCount CountRepliesOnMasks(const TFigureMasks& masks);

} // namespace quillon
