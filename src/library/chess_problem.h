#pragma once
// ChessProblem: one problem of a library, as its file tells it. Nothing here needs the engine to be started.

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "core/chessboard.h"
#include "core/move.h"
#include "library/sort_indication.h"
#include "library/variant.h"

namespace quillon {

/// Values of ChessProblem::kind.
inline constexpr std::uint16_t kDirectMate = 1;
inline constexpr std::uint16_t kSelfmate = 2;
inline constexpr std::uint16_t kHelpmate = 3;
inline constexpr std::uint16_t kNoStipulation = 4; // a position; its plies mean nothing

/// Plies of a problem without a stipulation. A mate in 128 has as many: the kind decides.
inline constexpr std::uint16_t kNoPlies = 255;

/// Value of ChessProblem::threads and ChessProblem::levels where the file says nothing: 255 in eight bits.
inline constexpr std::int8_t kUnsetCount = -1;
inline constexpr int kUnset = -1;

/// A set of the bits below. They are stored, so the values are fixed.
using ProblemFlags = std::uint32_t;
inline constexpr ProblemFlags kFlagNoMirror = 0x1;                         // regression: no mirrored copies
inline constexpr ProblemFlags kFlagAllSolutions = 0x2;                     // search on after the first solution
inline constexpr ProblemFlags kFlagAnswer = 0x4;                           // an expected answer is stored
inline constexpr ProblemFlags kFlagStopOnDual = 0x8;                       // stop at the second solution
inline constexpr ProblemFlags kFlagStopOn3Sol = 0x10;                      // stop at the third
inline constexpr ProblemFlags kFlagUseMainVariantAsSortIndications = 0x20; //
inline constexpr ProblemFlags kFlagNoGlobReg = 0x40;                       // no precalculated data
inline constexpr ProblemFlags kFlagSafeMode = 0x80;                        //
inline constexpr ProblemFlags kFlagMirrorOnly = 0x100;                     // regression: only mirrored copies
inline constexpr ProblemFlags kFlagExpectedSortWhiteMoves = 0x200;         // expectedWhiteMoves is stored
inline constexpr ProblemFlags kFlagExpectedSortWhiteMovesOnly = 0x400;     //
inline constexpr ProblemFlags kFlagGuiCheckBestDefence = 0x800;            // regression: best defence
inline constexpr ProblemFlags kFlagGuiCheck = 0x1000;                      // regression: best defence, auxiliary mate
inline constexpr ProblemFlags kFlagRequiresSyzygy = 0x2000;                // needs the online tablebase
inline constexpr ProblemFlags kFlagAllSolutionsRequiresSyzygy = 0x4000;    //
inline constexpr ProblemFlags kFlagStopOn4Sol = 0x8000;                    // stop at the fourth; one bit with the next
inline constexpr ProblemFlags kFlagUsePredefinedSettings = 0x8000;         //
inline constexpr ProblemFlags kFlagHybridBruteForce = 0x10000;             //
inline constexpr ProblemFlags kFlagBruteForce = 0x20000;                   //

struct ChessProblem {
    std::uint16_t kind = kDirectMate;
    std::int32_t id = 0;     // key of the library
    std::uint16_t plies = 3; // half-moves: 2N - 1 for a mate in N, 2N + 1 for a selfmate in N
    int line = 0;            // line of the file where the problem begins, from 1; 0 for one that is from no file

    std::unique_ptr<TChessboard> originalPosition; // set in every problem that has been read

    // A problem without a stipulation may have moves played from there: the position after each of them, each linked to
    // the one before it, the first to originalPosition. Other problems have none.
    std::vector<std::unique_ptr<TChessboard>> playedPositions;
    TChessboard* currentPosition = nullptr; // the last of them, originalPosition where there are none

    std::vector<TMove> answer;             // expected keys; meaningful with kFlagAnswer
    std::vector<TMove> expectedWhiteMoves; // expected best white moves, move by move
    ProblemFlags flags = 0;

    // Run options of this problem; unset ones are left to the settings.
    std::int8_t threads = kUnsetCount;
    std::int8_t levels = kUnsetCount; // multithreading levels
    std::int16_t schedulerLevels = kUnset;
    std::int32_t lichessLevels = kUnset;
    std::int32_t globRegMB = kUnset;
    bool stopRelaxHeuristicsOnFirstSolution = false;
    int useMainVariantAsSortIndications = 0; // 0 no, 1 main variant, 2 other variants too

    std::string description; // UTF-8

    unsigned guiCheckCount = 1;                          // repeats of the regression check
    std::set<std::string> requiredMaterials;             // FEN letters without the kings: "RRk" is for two rooks
    std::set<std::string> allSolutionsRequiredMaterials; // needed only for a run for all solutions

    /// What the problem says about heuristics: bit -> "OFF", or the text between the brackets of its clause.
    std::map<std::uint32_t, std::string> heuristicClauses;

    std::map<std::string, Variant> variants; // by name
    std::set<std::string> tags;              // UTF-8
    SortIndications sortIndications;
};

/// Problems by id. The map owns them.
using TProblemMap = std::map<std::int32_t, std::unique_ptr<ChessProblem>>;

/// Enters a problem under its id, in the place of an earlier one of that id.
void PutById(TProblemMap& problems, std::unique_ptr<ChessProblem> problem);

/// Sets kind and plies.
///   Unit    nMoves: full moves.
///   Errors  ChessException if nMoves is below 1 or above kMaxStipulation.
void SetStipulation(ChessProblem& problem, std::uint16_t kind, int nMoves);

/// Makes a board (of which only m_board counts) the starting position, with the plies of the problem.
///   Errors  ChessException: those of RecountFigures, "Black is in check with White to move.".
void SetOriginalPosition(ChessProblem& problem, const TChessboard& board);

/// N of "#N" and "s#N"; 0 for a problem without a stipulation.
[[nodiscard]] int StipulationMoves(const ChessProblem& problem);

/// "#5", "s#3"; "-" for a problem without a stipulation.
[[nodiscard]] std::string StipulationText(const ChessProblem& problem);

/// "direct mate", "selfmate", "helpmate", "position".
[[nodiscard]] const char* KindName(const ChessProblem& problem);

} // namespace quillon
