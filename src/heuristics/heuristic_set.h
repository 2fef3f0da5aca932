#pragma once
// The vocabulary of heuristic sets: one row per bit of the mask, and what can be looked up in the rows.
//
// Each heuristic says of certain positions that mate is doubtful there in this pass; none of them proves anything. A
// set is a mask of them (TChessboard::m_nHeuristics) with the parameters of its bits (core/heuristic_parameters.h). Its
// text is heuristic_text.h, its signature heuristic_signature.h.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "core/heuristic_parameters.h"

namespace quillon {

// Bits of m_wBlackState that change what a set of heuristics means in the line under analysis.
inline constexpr std::uint16_t kWhiteMajorFigureLost = 0x20;   // captured; the check of SH_SAVEQUEENROOK is running
inline constexpr std::uint16_t kLossesReleased = 0x2000;       // SH_DONTLOSEANYFIGURES does not hold in this line
inline constexpr std::uint16_t kKingMoveBanSuspended = 0x8000; // m_bDontLetKingMove does not hold in this line

/// What a bit that stands for no heuristic prints.
inline constexpr std::string_view kNoHeuristicName = "...";

struct THeuristic {
    std::uint32_t m_nBit;
    std::string_view m_name;                  // as printed and read
    std::array<std::string_view, 2> m_labels; // of the dialog's controls that set the bit; empty where there is none
    bool m_bEngineOnly;                       // no control sets it
    void (*m_pReset)(THeuristicParameters&);  // puts its parameters to their values at the start of a solve
};

// Resets of the rows. Parameters that serve two heuristics are reset in the row of the lower bit.
constexpr void ResetNothing(THeuristicParameters&) {}
constexpr void ResetEdge(THeuristicParameters& p) {
    p.m_bDontLetKingMove = true;
    p.m_bAllowExceptions = false;
    p.m_nRelaxCaptures = 0;
    p.m_bRelaxCapturesInclPawns = false;
    p.m_bRelaxOnAdvancedPawn = false;
    p.m_bEdgeInclCornerSquares = false;
}
constexpr void ResetMainDiagonal(THeuristicParameters& p) { p.m_nBlackFigureOnMainDiagonal = kNoSquare; }
constexpr void ResetExtEdge(THeuristicParameters& p) { p.m_bExtEdgeStrict = false; }
constexpr void ResetBlockedFigures(THeuristicParameters& p) {
    p.m_nBlockedFigures = 0;
    p.m_bApplyDlfuDynamically = true;
    p.m_bBlockedPawns = false;
    p.m_bBlockedFiguresByHand = false;
    p.m_bBishopIsMajor = false;
}
constexpr void ResetForcedMate(THeuristicParameters& p) { p.m_nFfmWithOther = -1; }
constexpr void ResetSaveQueenRook(THeuristicParameters& p) { p.m_bSaveRookQueenStrict = true; }
constexpr void ResetSaveFigures(THeuristicParameters& p) { p.m_nSaveFiguresMode = 0; }
constexpr void ResetAssertSurrounded(THeuristicParameters& p) { p.m_bAssertBKSStrict = false; }
constexpr void ResetNearCorner(THeuristicParameters& p) { p.m_nKingNearCorner = 0; }

/// Row i is bit i.
inline constexpr std::array<THeuristic, 32> kHeuristics{{
    {SH_AREKINGSNEAR, "SH_AREKINGSNEAR", {"Are kings near?"}, false, ResetNothing},
    {SH_SWEEPINGWHITEROOK, "SH_SWEEPINGWHITEROOK", {"Sweeping white rook"}, false, ResetNothing},
    {SH_KEEPKINGONTHEEDGE,
     "SH_KEEPKINGONTHEEDGE",
     {"Don't let bl.king move (unless immed.mate)", "Don't let bl.king out of the edge"},
     false,
     ResetEdge},
    {SH_ONECOLORPLAYPOSSIBLE, "SH_ONECOLORPLAYPOSSIBLE", {"One color play possible"}, false, ResetNothing},
    {SH_ZUGZWANGTRIANGLES, "SH_ZUGZWANGTRIANGLES", {}, true, ResetNothing},
    {SH_DONTLEAVEMAINDIAGONAL,
     "SH_DONTLEAVEMAINDIAGONAL",
     {"Don't leave main diagonal (wh.bishop)"},
     false,
     ResetMainDiagonal},
    {SH_KEEPKINGWITHINEXTEDGE,
     "SH_KEEPKINGWITHINEXTEDGE",
     {"out of ext.edge", "move unless on the edge"},
     false,
     ResetExtEdge},
    {SH_DONTLETFIGUREUNBLOCK, "SH_DONTLETFIGUREUNBLOCK", {"Don't let unblock figure"}, false, ResetBlockedFigures},
    {0x00000100, kNoHeuristicName, {}, false, ResetNothing},
    {SH_FINDFORCEDMATE, "SH_FINDFORCEDMATE", {"First run FindForcedMate"}, false, ResetForcedMate},
    {SH_DONTRECEDEBLACKKING, "SH_DONTRECEDEBLACKKING", {"Don't recede black king"}, false, ResetNothing},
    {SH_DONTLETPROMOTEDQUEENMOVE, "SH_DONTLETPROMOTEDQUEENMOVE", {"Don't let promoted", "queen"}, false, ResetNothing},
    {SH_KEYLINE, "SH_KEYLINE", {"Key line (vertical)"}, false, ResetNothing},
    {SH_KEYDIAGONAL, "SH_KEYDIAGONAL", {"Key diagonal"}, false, ResetNothing},
    {SH_SAVEQUEENROOK, "SH_SAVEQUEEN/ROOK", {"Save queen/rook"}, false, ResetSaveQueenRook},
    {SH_DONTLOSEANYFIGURES, "SH_DONTLOSEANYFIGURES", {"Don't lose any figures"}, false, ResetSaveFigures},
    {SH_DONTLETBLACKQUEENCHECKTWICE,
     "SH_DONTLETBLACKQUEENCHECKTWICE",
     {"Don't let black queen check twice"},
     false,
     ResetNothing},
    {SH_USEBLOCKBLACKPAWNSLEVEL, "SH_USEBLOCKBLACKPAWNSLEVEL", {}, true, ResetNothing},
    {SH_KEYSQUARE, "SH_KEYSQUARE", {}, true, ResetNothing},
    {SH_ASSERTBLACKKINGSURROUNDED,
     "SH_ASSERTBLACKKINGSURROUNDED",
     {"Assert black king surrounded"},
     false,
     ResetAssertSurrounded},
    {SH_SINGLEQUEENMATE, "SH_SINGLEQUEENMATE", {"Single queen mate"}, false, ResetNothing},
    {SH_3MOVESTOMATE, "SH_3MOVESTOMATE", {"Check position on 3 moves to mate"}, false, ResetNothing},
    {SH_KEYWHITEFIGURE, "SH_KEYWHITEFIGURE", {"Key white figure"}, false, ResetNothing},
    {SH_CAPTUREKNIGHT, "SH_CAPTUREKNIGHT", {"Capture black knight"}, false, ResetNothing},
    {SH_SKIPWORSTWHITEMOVES, "SH_SKIPWORSTWHITEMOVES", {"Skip worst wh.moves"}, false, ResetNothing},
    {SH_DONTLETPROMOTEDFIGUREMOVE,
     "SH_DONTLETPROMOTEDFIGUREMOVE",
     {"Don't let promoted", "any figure move"},
     false,
     ResetNothing},
    {SH_KEEPKINGNEARCORNER, "SH_KEEPKINGNEARCORNER", {"Keep king near corner, max."}, false, ResetNearCorner},
    {SH_SEASNAKE, "SH_SEASNAKE", {"Sea snake"}, false, ResetNothing},
    {0x10000000, kNoHeuristicName, {}, false, ResetNothing},
    {0x20000000, kNoHeuristicName, {}, false, ResetNothing},
    {SH_REDUCTIONTOGLOBREGPOS,
     "SH_REDUCTIONTOGLOBREGPOS",
     {"Try reduce pos.to global reg. (endgame tablebase)"},
     false,
     ResetNothing},
    {SH_ZUGZWANG, "SH_ZUGZWANG", {"Zugzwang position to return to"}, false, ResetNothing},
}};

[[nodiscard]] consteval bool RowsFollowTheBits() {
    for (std::size_t i = 0; i < kHeuristics.size(); ++i)
        if (kHeuristics[i].m_nBit != std::uint32_t{1} << i)
            return false;
    return true;
}
static_assert(RowsFollowTheBits());

/// The bits that stand for a heuristic; a mask never holds another one.
inline constexpr std::uint32_t kAllHeuristics = [] {
    std::uint32_t mask = 0;
    for (const THeuristic& row : kHeuristics)
        mask |= row.m_name == kNoHeuristicName ? 0 : row.m_nBit;
    return mask;
}();

/// Name of a single bit; "..." for a bit without a heuristic and for anything but a single bit.
[[nodiscard]] constexpr std::string_view HeuristicName(std::uint32_t bit) {
    return std::has_single_bit(bit) ? kHeuristics[static_cast<std::size_t>(std::countr_zero(bit))].m_name
                                    : kNoHeuristicName;
}

/// Bit of a name, in upper or lower case; nothing if it is no heuristic's name. Names of printed forms that are no bits
/// of their own, such as "SH_DONTLETKINGMOVE", are not found.
[[nodiscard]] std::optional<std::uint32_t> FindHeuristic(std::string_view name);

/// Puts the parameters to their values at the start of a solve: fields that core/heuristic_parameters.h marks "kept"
/// and the state of the pass plan stay as they are.
void ResetHeuristicParameters(THeuristicParameters& parameters);

} // namespace quillon
