#pragma once
// The heuristic mask and its parameters.
//
// The mask (TChessboard::m_nHeuristics) rides on every position. The parameters that belong to its bits come in two
// records: THeuristicParameters, one copy per search thread, and THeuristicAnalysisParameters, one per problem being
// solved. What they mean together (names, texts, signature) is told by the heuristic_*.h headers of heuristics/.

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "core/figures.h"
#include "core/move.h"
#include "core/square.h"

namespace quillon {

// Bits 0x100, 0x10000000 and 0x20000000 stand for no heuristic and are never set.
inline constexpr std::uint32_t SH_AREKINGSNEAR = 0x00000001;
inline constexpr std::uint32_t SH_SWEEPINGWHITEROOK = 0x00000002;
inline constexpr std::uint32_t SH_KEEPKINGONTHEEDGE = 0x00000004;
inline constexpr std::uint32_t SH_ONECOLORPLAYPOSSIBLE = 0x00000008;
inline constexpr std::uint32_t SH_ZUGZWANGTRIANGLES = 0x00000010;
inline constexpr std::uint32_t SH_DONTLEAVEMAINDIAGONAL = 0x00000020;
inline constexpr std::uint32_t SH_KEEPKINGWITHINEXTEDGE = 0x00000040;
inline constexpr std::uint32_t SH_DONTLETFIGUREUNBLOCK = 0x00000080;
inline constexpr std::uint32_t SH_FINDFORCEDMATE = 0x00000200;
inline constexpr std::uint32_t SH_DONTRECEDEBLACKKING = 0x00000400;
inline constexpr std::uint32_t SH_DONTLETPROMOTEDQUEENMOVE = 0x00000800;
inline constexpr std::uint32_t SH_KEYLINE = 0x00001000;
inline constexpr std::uint32_t SH_KEYDIAGONAL = 0x00002000;
inline constexpr std::uint32_t SH_SAVEQUEENROOK = 0x00004000; // prints as "SH_SAVEQUEEN/ROOK"
inline constexpr std::uint32_t SH_DONTLOSEANYFIGURES = 0x00008000;
inline constexpr std::uint32_t SH_DONTLETBLACKQUEENCHECKTWICE = 0x00010000;
inline constexpr std::uint32_t SH_USEBLOCKBLACKPAWNSLEVEL = 0x00020000;
inline constexpr std::uint32_t SH_KEYSQUARE = 0x00040000;
inline constexpr std::uint32_t SH_ASSERTBLACKKINGSURROUNDED = 0x00080000;
inline constexpr std::uint32_t SH_SINGLEQUEENMATE = 0x00100000;
inline constexpr std::uint32_t SH_3MOVESTOMATE = 0x00200000;
inline constexpr std::uint32_t SH_KEYWHITEFIGURE = 0x00400000;
inline constexpr std::uint32_t SH_CAPTUREKNIGHT = 0x00800000;
inline constexpr std::uint32_t SH_SKIPWORSTWHITEMOVES = 0x01000000;
inline constexpr std::uint32_t SH_DONTLETPROMOTEDFIGUREMOVE = 0x02000000;
inline constexpr std::uint32_t SH_KEEPKINGNEARCORNER = 0x04000000;
inline constexpr std::uint32_t SH_SEASNAKE = 0x08000000;
inline constexpr std::uint32_t SH_REDUCTIONTOGLOBREGPOS = 0x40000000;
inline constexpr std::uint32_t SH_ZUGZWANG = 0x80000000;

inline constexpr int kMaxBlockedFigures = 8;
using TBlockedSquares = std::array<TSquare, kMaxBlockedFigures>;
inline constexpr TBlockedSquares kNoBlockedSquares{kNoSquare, kNoSquare, kNoSquare, kNoSquare,
                                                   kNoSquare, kNoSquare, kNoSquare, kNoSquare};

/// Parameters that belong to the bits; one copy per search thread.
///   Reset   ResetHeuristicParameters (heuristics/heuristic_set.h) puts a field back to its initialiser when a solve
///           begins, unless the field is marked "kept": those hold a choice of the user, or are written together with
///           their bit before anything reads them.
///   Squares kNoSquare for none.
struct THeuristicParameters {
    // SH_KEEPKINGONTHEEDGE. Without the first field the bit means "stay on the edge line".
    bool m_bDontLetKingMove = true;  // the black king may not move at all
    bool m_bAllowExceptions = false; // with it: a king move is tolerated if the king is forced straight back

    bool m_bExtEdgeStrict = false;     // SH_KEEPKINGWITHINEXTEDGE: from the adjacent line only to the edge line
    bool m_bAssertBKSStrict = false;   // SH_ASSERTBLACKKINGSURROUNDED: at most 2 free squares
    std::int8_t m_nKingNearCorner = 0; // SH_KEEPKINGNEARCORNER: > 0 squares (1..5), < 0 negated king moves (1..2)

    // Dynamic relaxation of the two edge heuristics.
    std::uint8_t m_nRelaxCaptures = 0;          // black figures to capture, 0 = off
    bool m_bRelaxCapturesInclPawns = false;     // black pawns count as captures
    bool m_bRelaxExtEdgeOnly = false;           // kept; spares SH_KEEPKINGONTHEEDGE
    bool m_bRelaxOnAdvancedPawn = false;        // a white pawn near promotion relaxes
    bool m_bSkipDeferIfNoBalanceChange = false; // kept; no deferring when the balance cannot change
    bool m_bAutoDynRelax = false;               // kept; the program chooses the relaxation
    std::uint16_t m_shDeferMoves = 0;           // kept; white moves by which a violation may stay unpunished, 0 = off
    std::uint16_t m_shDeferMaxMoves = 0;        // kept; plies left at which deferring ends, set by the engine

    bool m_bEdgeInclCornerSquares = false; // b2, b7, g2, g7 count as edge

    std::uint8_t m_nSaveFiguresMode = 0; // SH_DONTLOSEANYFIGURES: 0 figures, 1 pawns too, 2 pawns before promotion
    bool m_bSaveRookQueenStrict = true;  // SH_SAVEQUEENROOK, set by the engine
    bool m_bBishopIsMajor = false;       // a white bishop is a major figure there, and relaxes SH_DONTLETFIGUREUNBLOCK

    TSquare m_nKeySquare = kNoSquare;                 // kept; SH_KEYSQUARE
    TSquare m_nKeyWhiteFigure = kNoSquare;            // kept; SH_KEYWHITEFIGURE
    TSquare m_nPinnedFigure = kNoSquare;              // kept; the black figure that it pins
    bool m_bKeyFigureIsRook = false;                  // kept
    TSquare m_nBlackFigureOnMainDiagonal = kNoSquare; // SH_DONTLEAVEMAINDIAGONAL: may not leave it

    // SH_DONTLETFIGUREUNBLOCK. Entries of the lists beyond the count mean nothing; entry i of both is one figure.
    std::int8_t m_nBlockedFigures = 0;                       // watched figures, at most kMaxBlockedFigures
    TBlockedSquares m_BlockedFigures = kNoBlockedSquares;    // kept; their squares in the root
    TBlockedSquares m_BlockedFiguresNow = kNoBlockedSquares; // kept; as set when it was applied dynamically
    bool m_bBlockedFiguresEff = false;                       // kept; the watched set is the effective, reduced one
    bool m_bApplyDlfuDynamically = true;                     // the program may apply the heuristic dynamically
    bool m_bBlockedPawns = false;                            // at least one watched figure is a black pawn
    bool m_bBlockedFiguresByHand = false;                    // the squares were entered by hand

    // SH_SEASNAKE; all kept.
    bool m_bSeaSnake = false; // the dialog's box
    TSquare m_nSeaSnakeApproach = kNoSquare;
    TSquare m_nSeaSnakeTurnBack = kNoSquare;
    TSquare m_nSeaSnakePendulum1 = kNoSquare;
    TSquare m_nSeaSnakePendulum2 = kNoSquare;

    // SH_SINGLEQUEENMATE, SH_CAPTUREKNIGHT; all kept.
    std::array<TSquare, 4> m_SingleQueenSquares{kNoSquare, kNoSquare, kNoSquare, kNoSquare}; // mating squares, to 255
    std::uint8_t m_nSingleQueenMode = 0;                                                     // 0..3
    std::uint8_t m_nCaptureKnightMode = 0;                                                   // a flag, 0 or 1

    // The plan of passes as the user wants it; all kept.
    bool m_bLetRelaxHeuristics = true;
    bool m_bHeuristicsFallback = false;
    bool m_bRunPass2 = true; // run the pass without heuristics

    // SH_FINDFORCEDMATE; depth codes are those of heuristics/forced_mate_depth.h.
    std::uint8_t m_nFfmDepth = 2;            // kept; depth code in force
    std::uint8_t m_nFfmStartDepth = 2;       // kept; depth code at which relaxation began
    std::uint8_t m_nFfmRelaxations = 0;      // kept
    bool m_bFfmAddCaptures = false;          // kept; captures next to the black king are added from code 5 on
    std::int8_t m_nFfmWithOther = -1;        // run with the other heuristics: 1 yes, 0 no, -1 partially
    bool m_bFfmCycleTwice = false;           // kept; first with all other heuristics on
    std::uint8_t m_nFfmCycleRelaxations = 0; // kept; relaxations of the first of the two cycles
    bool m_bFfmPreliminary = false;          // kept; the initial pass with the edge heuristic is still pending
    std::uint32_t m_nFfmSavedHeuristics = 0; // kept; mask to restore after that pass

    // SH_DONTLETPROMOTEDQUEENMOVE, SH_DONTLETPROMOTEDFIGUREMOVE: fewer exceptions; kept.
    bool m_bDontLetPromotedStrict = false;

    // SH_ZUGZWANGTRIANGLES: its two squares, as they enter the signature; kept.
    TSquare m_nZugzwangTriangle1 = 0;
    TSquare m_nZugzwangTriangle2 = 0;

    // State of the pass plan between passes; the plan itself keeps it.
    std::uint8_t m_nRelaxations = 0;      // relaxation steps so far in this solve
    bool m_bBlockedFiguresParked = false; // SH_DONTLETFIGUREUNBLOCK is off for one pass and comes back
    bool m_bKeyFigureSwapPending = false; // it and SH_KEYWHITEFIGURE are to be tried one at a time
    bool m_bFallbackPending = false;      // the watched figures ran out and fallback is on
    bool m_bDropBlockedFigures = false;   // a list of figures to take out of the watched set is in force
    bool m_bDlfuDynamic = false;          // SH_DONTLETFIGUREUNBLOCK may be applied dynamically in this solve
    std::int8_t m_nDropThreshold = 0;     // figures are dropped early only above 2
    std::uint8_t m_nDropCount = 0;        // entries of the list that follows
    TBlockedSquares m_DropList = kNoBlockedSquares;
    std::uint8_t m_nPreviousBlockedCount = 0; // watched count before the first drop
    bool m_bQueenCheckRelaxable = false;      // SH_DONTLETBLACKQUEENCHECKTWICE goes early
    bool m_bPromotedQueenRelaxable = false;   // SH_DONTLETPROMOTEDQUEENMOVE goes early
    bool m_bEdgeToAssertBks = false;          // the almost strict edge becomes SH_ASSERTBLACKKINGSURROUNDED
    std::uint8_t m_nMoveCategory = 0;         // position class: how far the black king can go
    bool m_bSeaSnakeKeepQuick = false;        // relaxing SH_SEASNAKE leaves quick mode on

    [[nodiscard]] friend constexpr bool operator==(const THeuristicParameters&, const THeuristicParameters&) = default;
};
static_assert(std::is_trivially_copyable_v<THeuristicParameters>);

/// Values of the fields below that stand for "none".
inline constexpr std::uint8_t kNoKeyLine = 255;
inline constexpr std::uint16_t kNoKeyDiagonal = 0xffff;
inline constexpr std::int16_t kDefaultQuickerMateDepth = -1;

/// Parameters that apply to every thread of an analysis alike.
///   Threads written before the threads start and between passes.
struct THeuristicAnalysisParameters {
    bool m_bSafeMode = false; // off: quick mode, the implicit heuristic of the passes with heuristics

    // Depth of the short-mate search in plies: 2n - 1 for a user value of n moves (1..16).
    std::int16_t m_shLookForQuickerMateDepth = kDefaultQuickerMateDepth;

    std::uint8_t m_nKeyLine = kNoKeyLine;          // SH_KEYLINE: file, 0..7 for a..h
    std::uint16_t m_wKeyDiagonal = kNoKeyDiagonal; // SH_KEYDIAGONAL: first square in the low byte, second in the high

    std::vector<TMove> m_seaSnakeAfterMoves; // SH_SEASNAKE applies only after one of these; empty: always

    // SH_ZUGZWANG: the board to return to, under the list of moves (as typed) that leads to it.
    std::map<std::string, std::array<TFigure, kSquares>> m_zugzwangPositions;
};

} // namespace quillon
