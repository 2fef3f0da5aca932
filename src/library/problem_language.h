#pragma once
// Names of tags and variants in the language of the program: a library written in one language is read in another.

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "library/chess_problem.h"

namespace quillon {

enum class ELanguage : std::uint8_t { Polish, English, Ukrainian };

/// What the main variant is called. In a file it always has the English name.
[[nodiscard]] std::string_view MainVariantName(ELanguage language);

/// Is it what the main variant is called in any language?
[[nodiscard]] bool IsMainVariantName(std::string_view name);

/// The name of a known tag in the language; the tag itself if it is unknown, or has no name in that language.
[[nodiscard]] std::string_view TagName(std::string_view tag, ELanguage language);

/// The names of every known tag in every language.
[[nodiscard]] std::set<std::string> KnownTags();

/// Renames the main variant and the known tags of a problem. Where the main variant has names in several languages, the
/// one named in `language` is kept, and without it the first in the order of the languages.
///   Returns  false if there were several, and all but one are gone.
bool BringToLanguage(ChessProblem& problem, ELanguage language);

} // namespace quillon
