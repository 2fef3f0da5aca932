#pragma once
// The material of custom types: which of them a position can be of, whatever its men's squares.

#include <cstdint>

#include "core/chessboard.h"
#include "globalregister/custom_type.h"

namespace quillon {

/// How many men there are of each kind besides the kings, four bits a kind.
using TMaterialKey = std::uint64_t;

[[nodiscard]] TMaterialKey MaterialOf(const TChessboard& b);

/// Of all its men, movable and frozen.
[[nodiscard]] TMaterialKey MaterialOf(const TCustomType& type);

} // namespace quillon
