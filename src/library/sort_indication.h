#pragma once
// Sort indications: what a user tells the engine about the order in which White's moves are to be tried.
//
//   [ ~ ] [n.] [F] sqrFrom [| - | : | > ] sqrTo [ + | * ]          for instance "3.Qd8:f6+", "~Ke1-e2", "0-0", "Rh8"
//
//   ~  as the worst move    n.  in move n only    F  figure    :  captures only    >  no captures
//   +  with check           ++  threatening mate  *  only where the figure cannot be captured after the move

#include <compare>
#include <cstdint>
#include <set>
#include <string_view>

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
    std::uint8_t m_nCheck = 0;           // 0 does not matter, 1 check, 2 threat of mate
    bool m_bOnlyIfNotCapturable = false; // only if the figure cannot be captured after the move
    bool m_bWorst = false;               // tried last instead of first

    friend auto operator<=>(const SortIndication&, const SortIndication&) = default;
};

using SortIndications = std::set<SortIndication>;

/// Reads indications separated by commas or, if the text holds no comma, by semicolons, into `indications`.
///   Errors  ChessException: "Invalid description of SortIndication" for an empty one, the same with ": " and the text
///   of
///           the indication for a bad one, "Move description too long (note that moves should be separated with a comma
///           or semicolon)", "Unknown figure letter: " and the letter.
void ParseSortIndications(SortIndications& indications, std::string_view text);

} // namespace quillon
