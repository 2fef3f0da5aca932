#pragma once
// The heuristics dialog without its window: its controls as a record, how they open on a set, how they are checked and
// stored. Fields that take text hold what was typed.
//
// A field for a square takes a file letter and a rank digit, in either case, behind a piece letter or without one.

#include <array>
#include <cstdint>
#include <string>

#include "core/chessboard.h"
#include "core/notifier.h"
#include "heuristics/forced_mate_depth.h"

namespace quillon {

/// Radio buttons of "Don't let promoted".
enum class EPromotedRadio { None, Queen, AnyFigure };

/// Radio buttons of "FindForcedMate with other heuristics".
enum class EForcedMateWithOther { No, Yes, Partially, PartiallyAfterInitialPass };

struct THeuristicsDialog {
    bool m_bDontLetKingMove = false;        // "Don't let bl.king move (unless immed.mate)"
    bool m_bAllowExceptions = false;        // "allow exc"
    bool m_bOutOfEdge = false;              // "Don't let bl.king out of the edge"
    bool m_bInclCornerSquares = false;      // "incl.b2/b7/g2/g7"
    bool m_bOutOfExtEdge = false;           // "out of ext.edge"
    bool m_bMoveUnlessOnEdge = false;       // "move unless on the edge"
    bool m_bNearCorner = false;             // "Keep king near corner, max."
    std::string m_nearCornerDistance;       //
    bool m_bNearCornerMoves = false;        // "moves" instead of "squares"
    bool m_bAssertSurrounded = false;       // "Assert black king surrounded"
    bool m_bAssertSurroundedStrict = false; // "strict (max 2 free sqrs)"

    // "Dynamically relax edge/ext.edge heuristics"
    bool m_bRelaxOnAdvancedPawn = false;        // "on advanced pawn"
    std::string m_relaxCaptures = "0";          // "on figure(s) captured", "(0 = off)"
    bool m_bRelaxInclPawns = false;             // "also pawn(s)"
    std::string m_deferMoves = "0";             // "defer check", "moves"
    bool m_bRelaxExtEdgeOnly = false;           // "applicable for ext.edge version ONLY"
    bool m_bSkipDeferIfNoBalanceChange = false; // "skip defer check if balance change impossible"
    bool m_bAutoDynRelax = false;               // "let program automatically dyn.relax heuristics"

    bool m_bSweepingWhiteRook = false;                // "Sweeping white rook"
    bool m_bDontRecedeBlackKing = false;              // "Don't recede black king"
    bool m_bAreKingsNear = false;                     // "Are kings near?"
    bool m_bSaveQueenRook = false;                    // "Save queen/rook"
    bool m_bDontLoseFigures = false;                  // "Don't lose any figures"
    bool m_bInclPawns = false;                        // "including pawns"
    bool m_bInclPromotablePawns = false;              // "including promotable pawns"
    bool m_bDontLeaveMainDiagonal = false;            // "Don't leave main diagonal (wh.bishop)"
    std::string m_mainDiagonalFigure;                 // "Black piece not let leave main diagonal: "
    bool m_bDontLetPromoted = false;                  // "Don't let promoted"
    EPromotedRadio m_promoted = EPromotedRadio::None; // "queen", "any figure move"
    bool m_bDontLetPromotedStrict = false;            // "strict (less exceptions)"
    bool m_bQueenCheckTwice = false;                  // "Don't let black queen check twice"
    bool m_bDontLetFigureUnblock = false;             // "Don't let unblock figure"
    std::array<std::string, 8> m_blockedFigures;      //
    bool m_bApplyDynamically = true;                  // "let program apply this heuristics dynamically"

    bool m_bReduceToGlobalRegister = false;               // "Try reduce pos.to global reg. (endgame tablebase)"
    bool m_b3MovesToMate = false;                         // "Check position on 3 moves to mate"
    bool m_bSingleQueenMate = false;                      // "Single queen mate"
    bool m_bSkipWorstWhiteMoves = false;                  // "Skip worst wh.moves"
    bool m_bOneColorPlay = false;                         // "One color play possible"
    bool m_bKeyWhiteFigure = false;                       // "Key white figure"
    std::string m_keyWhiteFigure;                         //
    bool m_bKeyLine = false;                              // "Key line (vertical)"
    std::string m_keyLine;                                //
    bool m_bKeyDiagonal = false;                          // "Key diagonal"
    std::string m_keyDiagonal1, m_keyDiagonal2;           //
    bool m_bZugzwang = false;                             // "Zugzwang position to return to"
    std::string m_zugzwangAfter;                          // "after": moves from the position, separated by blanks
    bool m_bCaptureKnight = false;                        // "Capture black knight"
    bool m_bSeaSnake = false;                             // "Sea snake"
    std::string m_seaSnakeApproach, m_seaSnakeTurnBack;   // "approach", "turn back"
    std::string m_seaSnakePendulum1, m_seaSnakePendulum2; // "pendulum", "-"
    std::string m_seaSnakeAfter;                          // "only after": white moves separated by blanks

    bool m_bFindForcedMate = false;                 // "First run FindForcedMate"
    std::uint8_t m_nFfmDepth = kMinForcedMateDepth; // code of the radio button (forced_mate_depth.h)
    bool m_bFfmAddCaptures = false;                 // "add captures of fig.in bl.king neighborh.in FFM #2/#2+..."
    EForcedMateWithOther m_ffmWithOther = EForcedMateWithOther::Partially; // "FFM with other heuristics"
    std::string m_ffmRelaxations = "0";                                    // "Let relax FFM", "time(s) and"
    bool m_bFfmCycleTwice = false; // "run the whole FFM cycle twice (first with all other heuristics on)"

    bool m_bLetRelaxHeuristics = true;  // "Let relax heuristics"
    bool m_bRunPass2 = true;            // "Let program run pass 2 (without heuristics)"
    bool m_bHeuristicsFallback = false; // "Enable heur.fallback"
    std::string m_quickerMateDepth;     // "Depth for quicker mate\n(empty for default)"
};

/// The title of every message below.
inline constexpr const char* kHeuristicsDialogTitle = "Information";

/// The dialog as it opens on the root's set. FindForcedMate is not offered together with the sea snake.
[[nodiscard]] THeuristicsDialog ReadHeuristicsDialog(const TChessboard& board);

/// Checks the dialog field by field and stores it into mask and parameters of the root: board, context and analysis.
/// The signature is computed, and an empty mask makes the pass the one without heuristics.
///   Returns  false after a message; the fields before the fault are stored then. Two messages do not stop: that of the
///            two forms of the extended edge, and the note on FindForcedMate's relaxations.
[[nodiscard]] bool ApplyHeuristicsDialog(TChessboard& board, const THeuristicsDialog& dialog, INotifier& notifier);

} // namespace quillon
