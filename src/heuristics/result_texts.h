#pragma once
// What a solve says at its end, and what it says of its settings.

#include <string>

#include "heuristics/find_mate_root.h"

namespace quillon {

inline constexpr const char* kMateSearchTitle = "Mate search result";
inline constexpr const char* kAnalysisResultTitle = "Result of analysis";
inline constexpr const char* kStoppedByUser = "Analysis stopped by user";
inline constexpr const char* kStoppedByUserSuffix = " (stopped by user)";
inline constexpr const char* kFromRegisterSuffix = " (from register)";
inline constexpr const char* kInitialCheckPending = "initial position check pending...";
inline constexpr const char* kTooManyProblems = "Too many problems being solved at the same time.";
inline constexpr const char* kRepetitionNote =
    "Program detected position repetition\n"
    "For optimization reasons every postion repetition is treated as preventing mate and, thus, program terminates "
    "analysis in such case.";
inline constexpr const char* kBruteForceQuestion =
    "Brute force run is a run without any heuristics and with many settings overridden for optimized search to exclude "
    "existence of any solutions.\n\nDo you want to continue?";

// Analysis of a black move.
inline constexpr const char* kNoDefence = "Not found any defence against mate. The best looks: ";
inline constexpr const char* kOnlyReplyToShortMateNoDefence =
    "The only reply that prevents short mate (not a defence against mate) : ";
inline constexpr const char* kRefutedWith = "Mate in the requested stipulation was refuted with: ";
inline constexpr const char* kOnlyReplyToShortMate = "The only reply that prevents short mate: ";
inline constexpr const char* kOnlyReplyNoDefence = "The only reply (not a defence against mate) : ";
inline constexpr const char* kOnlyReply = "The only reply: ";
inline constexpr const char* kEquivalentMoves = "\nEquivalent moves: ";
inline constexpr const char* kNoValidMove = "No valid move found";
inline constexpr const char* kMovesFound = "The following moves have been found:";

/// "Search for solutions has been stopped after ..." or "More than one solution found: %d"; empty when neither applies.
///   bStoppedAtLimit  the run ended because it had found as many solutions as it was to find.
[[nodiscard]] std::string SolutionCountText(const TAnalysis& analysis, int nSolutions, bool bStoppedAtLimit);

/// "Not found any solutions for #n" with the notes that apply to what was left out.
[[nodiscard]] std::string NothingFoundText(int nStipulation, bool bNoRelaxation, bool bNoPass2);

/// "No solution found (#n or less) (x sec.)", with the note on the pass without heuristics.
[[nodiscard]] std::string NoSolutionText(int nStipulation, double seconds, bool bNoPass2);

/// "Engine has completed: %s", "Engine stopped: %s" of the log.
[[nodiscard]] std::string EngineEndText(bool bStopped, const std::string& problem);

/// "Engine wants to force a different number of threads (n). Do you accept it?"
[[nodiscard]] std::string ThreadDemandQuestion(int nThreads);

/// What a run ends with that has found no memory for what it cannot do without.
inline constexpr char kOutOfMemory[] = "Out of memory.";

/// The line of the mode in the summary: "* Search for single solution\n".
[[nodiscard]] std::string ModeText(const TAnalysis& analysis, bool bAnySolution);

} // namespace quillon
