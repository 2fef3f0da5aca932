#pragma once
// One element of the hash table: a board and what is known of it.

#include <cstdint>
#include <utility>

#include "tempregister/register_item.h"

namespace quillon {

/// What is known of a board, in plies left; 0 for nothing known.
///                  register of final results       register of doubtful results, for one set of heuristics
///   nMovesMate     shortest proved mate            mate not doubtful up to
///   nMovesNoMate   longest proved absence of mate  mate doubtful up to
struct TCombinedLengths {
    std::uint16_t nMovesMate = 0;
    std::uint16_t nMovesNoMate = 0;

    friend bool operator==(const TCombinedLengths&, const TCombinedLengths&) = default;
};

/// 64 bytes of board, then the two lengths.
using TCombinedElement = std::pair<TChessboardRegisterItem, TCombinedLengths>;
static_assert(sizeof(TCombinedElement) == 68 && alignof(TCombinedElement) == 2);

} // namespace quillon
