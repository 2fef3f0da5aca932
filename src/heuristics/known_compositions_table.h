#pragma once
// The tables behind known_compositions.h. Each is sorted by placement; a placement with several texts has several rows,
// one behind the other, in the order in which they are applied. A new row is all it takes to store a setting.

#include <span>
#include <string_view>

namespace quillon {

struct TKnownRow {
    std::string_view m_placement; // board part of the FEN
    std::string_view m_text;      // an option word, a line of moves, a move
};

/// Option words.
[[nodiscard]] std::span<const TKnownRow> KnownOptionWords();

/// Lines of white and black moves from the position: "1. Rb8-b5 Bd5-e4 2. Rb5-a5".
[[nodiscard]] std::span<const TKnownRow> KnownSortLines();

/// Stages of endings: the moves that continue them.
[[nodiscard]] std::span<const TKnownRow> KnownEndings();

} // namespace quillon
