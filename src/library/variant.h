#pragma once
// A variant: a named line of moves that a problem file carries, with a comment on any move.

#include <string>
#include <string_view>
#include <vector>

#include "core/move.h"

namespace quillon {

struct VariantMove {
    TMove move{};
    std::string text;    // as it stands in the file, ASCII
    std::string comment; // UTF-8; cannot hold "]", which closes it in the file
};

struct Variant {
    std::string name; // UTF-8
    std::vector<VariantMove> moves;
};

/// Reads "{Name} move move[comment] ...", White moving first. Without a name in braces the name is empty.
///   Shape   text: UTF-8, one line without its "//!".
///   Errors  ChessException of ParseMove (core/notation.h) for a move that cannot be read. No position is looked at.
void ParseVariantLine(Variant& variant, std::string_view text);

/// The line that reads back to the variant: "{Name} move move[comment]". A main variant has its English name, whatever
/// the language it is named in. What would end the name, a comment or the line early is left out, a line end is a
/// blank.
[[nodiscard]] std::string FormatVariantLine(const Variant& variant, bool bWithComments);

} // namespace quillon
