#pragma once
// The words of the UCI protocol: what an interface sends, taken apart, and the lines that are sent back.
//
// Nothing here throws on what comes from outside: a word that cannot be read counts as not said.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/move.h"

namespace quillon {

/// The words of a line: blanks, tabs and carriage returns separate them.
[[nodiscard]] std::vector<std::string> WordsOf(std::string_view line);

/// Small ASCII letters.
[[nodiscard]] std::string Lowered(std::string_view text);

/// A whole number, with a sign or without. A number that is out of range is the nearest one that is not.
[[nodiscard]] std::optional<std::int64_t> ReadNumber(std::string_view word);

/// "e2e4", "e7e8q", castling as "e1g1".
[[nodiscard]] std::string UciMove(const TMove& move);

/// The inverse; either case.
[[nodiscard]] std::optional<TMove> ReadUciMove(std::string_view word);

/// What a "go" asks for.
struct TUciGo {
    std::optional<std::int64_t> m_mate;      // moves
    std::optional<std::int64_t> m_depth;     // plies
    std::optional<std::int64_t> m_nodes;     //
    std::optional<std::int64_t> m_msMove;    // ms for this move
    std::optional<std::int64_t> m_msWhite;   // ms on the clocks, and what each move adds
    std::optional<std::int64_t> m_msBlack;   //
    std::int64_t m_msIncrementWhite = 0;     //
    std::int64_t m_msIncrementBlack = 0;     //
    std::optional<std::int64_t> m_movesToGo; // to the next time control
    bool m_bInfinite = false;                // the answer waits for "stop"
    bool m_bPonder = false;                  // the answer waits for "ponderhit" or "stop", and the time starts then
    std::vector<std::string> m_unused;       // words that have no effect here
};

/// words: of the line, without "go". Words in any order; of a word said twice the last counts.
[[nodiscard]] TUciGo ReadGo(const std::vector<std::string>& words);

/// Milliseconds for the move, by the time of the move or a share of the clock of the side to move; none: no limit.
[[nodiscard]] std::optional<std::int64_t> TimeOf(const TUciGo& go, bool bWhiteToMove);

struct TUciOption {
    std::string m_name;  // small letters, words separated by one blank
    std::string m_value; // as given, with the blanks inside; empty if there is none
};

/// line: of the command, with "setoption" or without it.
[[nodiscard]] TUciOption ReadOption(std::string_view line);

/// What is told of a search.
struct TUciInfo {
    int m_nDepth = 0; // plies
    int m_nMate = 0;  // moves; 0 for no score
    std::uint64_t m_nNodes = 0;
    std::int64_t m_ms = 0;
    std::vector<TMove> m_line; // empty for none
};

/// "info depth 5 score mate 3 nodes 1200 nps 60000 time 20 pv e2e4 ...".
[[nodiscard]] std::string InfoLine(const TUciInfo& info);

/// "info string ..." in one line, whatever the text.
[[nodiscard]] std::string InfoString(std::string_view text);

} // namespace quillon
