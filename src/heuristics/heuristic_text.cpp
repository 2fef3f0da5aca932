#include "heuristics/heuristic_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "core/search_context.h"
#include "heuristics/forced_mate_depth.h"
#include "heuristics/heuristic_set.h"
#include "heuristics/plain_text.h"

namespace quillon {

namespace {

constexpr std::string_view kBetweenItems = ", ";
constexpr std::string_view kBetweenParameters = ",";

/// First pass number that runs without heuristics.
constexpr int kPassWithoutHeuristics = 2;

struct TShownForm {
    std::string_view m_item;
    std::string_view m_shown;
};

constexpr std::array kShownForms{
    TShownForm{"SH_KEEPKINGONTHEEDGE(strict)", "SH_DONTLETKINGMOVE"},
    TShownForm{"SH_KEEPKINGONTHEEDGE(STRICT)", "SH_DONTLETKINGMOVE"},
    TShownForm{"SH_KEEPKINGONTHEEDGE(ALMOST_STRICT)", "SH_DONTLETKINGMOVE(excptns)"},
};

/// Adds an item behind a separator; an empty item adds nothing.
void Append(std::string& list, std::string_view item, std::string_view separator) {
    if (item.empty())
        return;
    if (!list.empty())
        list += separator;
    list += item;
}

void AppendSquares(std::string& list, std::span<const TSquare> squares) {
    for (const TSquare square : squares)
        Append(list, SquareInCapitals(square), kBetweenParameters);
}

void AppendIf(std::string& list, bool bCondition, std::string_view item) {
    if (bCondition)
        Append(list, item, kBetweenParameters);
}

/// What relaxes the edge heuristics within a pass: "C2f,A,D3,M5".
void AppendRelaxation(std::string& list, const THeuristicParameters& p) {
    if (p.m_nRelaxCaptures > 0) // 0 switches it off
        Append(list, "C" + std::to_string(p.m_nRelaxCaptures) + (p.m_bRelaxCapturesInclPawns ? "" : "f"),
               kBetweenParameters);
    AppendIf(list, p.m_bRelaxOnAdvancedPawn, "A");
    if (p.m_shDeferMoves != 0)
        Append(list, "D" + std::to_string(p.m_shDeferMoves) + ",M" + std::to_string(p.m_shDeferMaxMoves),
               kBetweenParameters);
}

std::string EdgeText(const THeuristicParameters& p) {
    std::string text;
    AppendIf(text, p.m_bDontLetKingMove, p.m_bAllowExceptions ? "ALMOST_STRICT" : "STRICT");
    AppendIf(text, p.m_bEdgeInclCornerSquares, "incl.corner");
    if (!p.m_bRelaxExtEdgeOnly)
        AppendRelaxation(text, p);
    return text;
}

std::string ExtEdgeText(const THeuristicParameters& p) {
    std::string text;
    AppendRelaxation(text, p);
    AppendIf(text, p.m_bEdgeInclCornerSquares, "incl.corner");
    AppendIf(text, p.m_bExtEdgeStrict, "strict");
    return text;
}

std::string BishopModeText(const TChessboard& board) {
    static constexpr std::array<const char*, 4> kTexts{"", "WhiteSquaresOnly", "BlackSquaresOnly",
                                                       "SeparatedBlackBishop"};
    return kTexts[static_cast<std::size_t>(BishopMode(board))];
}

// The squares in the root tell the reader which figures are meant, wherever they stand in the line at hand.
std::string BlockedFiguresText(const THeuristicParameters& p) {
    std::string text;
    AppendIf(text, p.m_bBlockedFiguresEff, "EFF");
    const int nFigures = std::clamp<int>(p.m_nBlockedFigures, 0, kMaxBlockedFigures);
    AppendSquares(text, std::span(p.m_BlockedFigures).first(static_cast<std::size_t>(nFigures)));
    return text;
}

std::string ForcedMateText(const THeuristicParameters& p) {
    std::string text{ForcedMateDepthText(p.m_nFfmDepth)};
    if (p.m_bFfmPreliminary)
        text += "-Preliminary";
    if (p.m_bFfmCycleTwice)
        text += "-Custom";
    return text;
}

std::string KeyLineText(std::uint8_t file) { return file < 8 ? std::string(1, static_cast<char>('A' + file)) : ""; }

std::string KeyDiagonalText(std::uint16_t diagonal) {
    std::string text = SquareInCapitals(static_cast<TSquare>(diagonal & 0xff));
    Append(text, SquareInCapitals(static_cast<TSquare>(diagonal >> 8)), "-");
    return text;
}

std::string SaveFiguresText(std::uint8_t mode) {
    return mode == 0 ? "" : mode == 1 ? "incl.pawns" : "incl.pawnsBeforePromo";
}

/// "3S" squares, "2M" moves; 0 is no distance.
std::string NearCornerText(int distance) {
    return distance == 0 ? "" : distance > 0 ? std::to_string(distance) + "S" : std::to_string(-distance) + "M";
}

// The turn-back square may be left open, and shows nothing then.
std::string SeaSnakeText(const THeuristicParameters& p, const THeuristicAnalysisParameters& analysis) {
    std::string text;
    AppendSquares(text, std::array{p.m_nSeaSnakeApproach, p.m_nSeaSnakeTurnBack});
    const std::size_t nAfterMoves = analysis.m_seaSnakeAfterMoves.size();
    AppendIf(text, nAfterMoves > 0, std::to_string(nAfterMoves));
    return text;
}

std::string ItemText(const TChessboard& board, std::uint32_t bit, const THeuristicAnalysisParameters& analysis) {
    std::string item{HeuristicName(bit)};
    const std::string parameters = HeuristicParametersText(board, bit, analysis);
    if (!parameters.empty())
        item += "(" + parameters + ")";
    return item;
}

} // namespace

std::string HeuristicParametersText(const TChessboard& board, std::uint32_t bit,
                                    const THeuristicAnalysisParameters& analysis) {
    const THeuristicParameters& p = *board.m_pContext;
    switch (bit) {
    case SH_KEEPKINGONTHEEDGE:
        return EdgeText(p);
    case SH_ONECOLORPLAYPOSSIBLE:
        return BishopModeText(board);
    case SH_DONTLEAVEMAINDIAGONAL:
        return SquareInCapitals(p.m_nBlackFigureOnMainDiagonal);
    case SH_KEEPKINGWITHINEXTEDGE:
        return ExtEdgeText(p);
    case SH_DONTLETFIGUREUNBLOCK:
        return BlockedFiguresText(p);
    case SH_FINDFORCEDMATE:
        return ForcedMateText(p);
    case SH_DONTLETPROMOTEDQUEENMOVE:
    case SH_DONTLETPROMOTEDFIGUREMOVE:
        return p.m_bDontLetPromotedStrict ? "strict" : "";
    case SH_KEYLINE:
        return KeyLineText(analysis.m_nKeyLine);
    case SH_KEYDIAGONAL:
        return KeyDiagonalText(analysis.m_wKeyDiagonal);
    case SH_DONTLOSEANYFIGURES:
        return SaveFiguresText(p.m_nSaveFiguresMode);
    case SH_KEYSQUARE:
        return SquareInCapitals(p.m_nKeySquare);
    case SH_ASSERTBLACKKINGSURROUNDED:
        return p.m_bAssertBKSStrict ? "strict" : "";
    case SH_KEYWHITEFIGURE:
        return SquareInCapitals(p.m_nKeyWhiteFigure);
    case SH_KEEPKINGNEARCORNER:
        return NearCornerText(p.m_nKingNearCorner);
    case SH_SEASNAKE:
        return SeaSnakeText(p, analysis);
    default:
        return {};
    }
}

std::string_view ShownHeuristic(std::string_view item) {
    const auto form = std::ranges::find(kShownForms, item, &TShownForm::m_item);
    return form == kShownForms.end() ? item : form->m_shown;
}

std::string HeuristicsText(const TChessboard& board, bool withQuickMode, const THeuristicAnalysisParameters& analysis) {
    std::string text;
    for (const THeuristic& row : kHeuristics)
        if ((board.m_nHeuristics & row.m_nBit) != 0)
            Append(text, ShownHeuristic(ItemText(board, row.m_nBit, analysis)), kBetweenItems);
    if (withQuickMode && board.m_byPass < kPassWithoutHeuristics && !analysis.m_bSafeMode)
        Append(text, " QuickMode", kBetweenItems);
    if (!board.m_pContext->m_bApplyDlfuDynamically)
        text += " (CannotApplyDLFUDynamically)";
    return text;
}

} // namespace quillon
