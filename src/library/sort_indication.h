#pragma once
// The text form of sort indications: what a user tells the engine about the order in which White's moves are to be
// tried.
//
//   [ ~ ] [n.] [F] sqrFrom [| - | : | > ] sqrTo [ + | * ]          for instance "3.Qd8:f6+", "~Ke1-e2", "0-0", "Rh8"
//
//   ~  as the worst move    n.  in move n only    F  figure    :  captures only    >  no captures
//   +  with check           ++  with double check  *  only where the figure cannot be captured after the move

#include <set>
#include <string>
#include <string_view>

#include "library/variant.h"
#include "search/sort_indication.h"

namespace quillon {

using SortIndications = std::set<SortIndication>;

/// Reads indications separated by commas or, if the text holds no comma, by semicolons, into `indications`.
///   Errors  ChessException: "Invalid description of SortIndication" for an empty one, the same with ": " and the text
///   of
///           the indication for a bad one, "Move description too long (note that moves should be separated with a comma
///           or semicolon)", "Unknown figure letter: " and the letter.
///   bPolish  the first two messages begin "Niepoprawny opis SortIndication" instead.
void ParseSortIndications(SortIndications& indications, std::string_view text, bool bPolish = false);

/// The text that reads back to these indications, separated by "; ".
[[nodiscard]] std::string FormatSortIndications(const SortIndications& indications);

/// White's moves of a variant as indications for their move numbers. No position is looked at.
[[nodiscard]] SortIndications IndicationsOf(const Variant& variant);

} // namespace quillon
