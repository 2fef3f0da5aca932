#pragma once
// Where to go on in a text of problems after one of them could not be read.

#include "library/lexer.h"

namespace quillon {

/// The beginning of the next problem behind one that failed, or the end of the text. It is a line that looks like a
/// problem's first ("12 #3", "12 s#3"), in no comment, and not in the body that failed: inside a body such a line
/// counts only if an opening bracket follows before any closing one, as happens when the closing bracket is what is
/// missing.
///   begin    where the failed problem begins; the result is always behind its first lexeme, so that reading ends.
///   reached  how far its reader came; its last lexeme is looked at again.
///   bInBody  the reader had passed the opening bracket.
///   Cost     a text of any number of failures is passed a bounded number of times.
[[nodiscard]] CTextPosition FindNextProblem(const CTextPosition& begin, const CTextPosition& reached, bool bInBody);

/// Does the line begin as a problem with a stipulation does? "12 #3", "12#3", "12 s#3"; blanks in front do not matter.
[[nodiscard]] bool LooksLikeHeader(std::string_view line);

} // namespace quillon
