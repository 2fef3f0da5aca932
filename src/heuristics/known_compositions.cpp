#include "heuristics/known_compositions.h"

#include <algorithm>
#include <array>
#include <deque>
#include <exception>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "core/notation.h"
#include "core/printable.h"
#include "core/search_context.h"
#include "heuristics/chosen_figures.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/known_compositions_table.h"
#include "heuristics/plain_text.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr long kMostQuickerPlies = 2 * kMaxStipulation;

std::vector<std::string_view> TextsOf(std::span<const TKnownRow> rows, std::string_view placement) {
    std::vector<std::string_view> texts;
    for (const TKnownRow& row : std::ranges::equal_range(rows, placement, {}, &TKnownRow::m_placement))
        texts.push_back(row.m_text);
    return texts;
}

// --- Option words

[[noreturn]] void FailOption(std::string_view word) { throw ChessException("Unknown option: " + Printable(word)); }

/// What stands between the name with its bracket and the closing one; nothing if the word is another.
bool CutArgument(std::string_view word, std::string_view name, std::string_view& argument) {
    if (!word.starts_with(name) || !word.ends_with(')') || word.size() <= name.size())
        return false;
    argument = word.substr(name.size(), word.size() - name.size() - 1);
    return true;
}

void WatchFigures(TChessboard& root, std::string_view squares) {
    THeuristicParameters& p = *root.m_pContext;
    for (const TSquare square : ParseSquares(squares)) {
        if (!CanBeWatched(root, square))
            throw ChessException("Invalid square");
        AddWatchedFigure(p, root, square);
    }
    if (p.m_nBlockedFigures > 0)
        root.m_nHeuristics |= SH_DONTLETFIGUREUNBLOCK;
}

/// One of the three that hold the black king, instead of the other two.
void HoldKingBy(TChessboard& root, std::uint32_t bit) {
    root.m_nHeuristics &= ~(SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE | SH_ASSERTBLACKKINGSURROUNDED);
    root.m_nHeuristics |= bit;
}

void AssertSurrounded(TChessboard& root, bool bStrict) {
    HoldKingBy(root, SH_ASSERTBLACKKINGSURROUNDED);
    root.m_pContext->m_bAssertBKSStrict = bStrict;
}

void SetQuickerDepth(TChessboard& root, std::string_view word, std::string_view argument) {
    const bool bMoves = argument.starts_with('#');
    std::string_view digits = argument.substr(bMoves ? 1 : 0);
    const bool bNegative = digits.starts_with('-');
    digits.remove_prefix(bNegative ? 1 : 0);
    const long number = DigitsValue(digits, kMostQuickerPlies);
    if (number < 0)
        FailOption(word);
    const long plies = bMoves ? 2 * number - 1 : number;
    root.m_pAnalysis->m_shLookForQuickerMateDepth =
        bNegative || plies < 1 ? kDefaultQuickerMateDepth : static_cast<std::int16_t>(plies);
}

void AllowOrForbidPromotedQueen(TChessboard& root, std::string_view behind) {
    if (behind.find(" NO") != std::string_view::npos)
        root.m_nHeuristics &= ~SH_DONTLETPROMOTEDQUEENMOVE;
    else
        root.m_nHeuristics |= SH_DONTLETPROMOTEDQUEENMOVE;
}

// --- Lines of moves

bool IsMoveNumber(std::string_view token) {
    return token.size() > 1 && token.ends_with('.') && DigitsValue(token.substr(0, token.size() - 1), 999) > 0;
}

SortIndication IndicationOf(const TChessboard& before, const TChessboard& after, int nMove) {
    SortIndication told;
    told.m_nMove = nMove;
    told.m_figure = before.m_board[after.m_lastMove.m_nFrom];
    told.m_nFrom = after.m_lastMove.m_nFrom;
    told.m_nTo = after.m_lastMove.m_nTo;
    told.m_nPromotion = PromotionKind(after.m_lastMove);
    return told;
}

void ShowFault(INotifier* pNotifier, std::string_view text) {
    if (pNotifier != nullptr)
        pNotifier->Inform(text, kSortLineFaultTitle);
}

} // namespace

bool IsKnownComposition(std::string_view placement) {
    return std::ranges::any_of(std::array{KnownOptionWords(), KnownSortLines(), KnownEndings()},
                               [&](std::span<const TKnownRow> rows) { return !TextsOf(rows, placement).empty(); });
}

std::vector<std::string_view> KnownContinuations(std::string_view placement) {
    return TextsOf(KnownEndings(), placement);
}

void ApplyOptionWord(TChessboard& root, std::string_view word) {
    constexpr std::string_view kPromotedQueen = "DontLetPromotedQueenMove";
    std::string_view argument;
    if (CutArgument(word, "DLFU(", argument)) {
        WatchFigures(root, argument);
    } else if (EqualWords(word, "SafeMode")) {
        root.m_pAnalysis->m_bSafeMode = true;
    } else if (word == "AssertBKS" || word == "AssertBKS(strict)") {
        AssertSurrounded(root, word.ends_with(')'));
    } else if (word == "ExtEdge") {
        HoldKingBy(root, SH_KEEPKINGWITHINEXTEDGE);
    } else if (word == "DontLetKingMove") {
        HoldKingBy(root, SH_KEEPKINGONTHEEDGE);
        root.m_pContext->m_bDontLetKingMove = true;
    } else if (word == kPromotedQueen || word.starts_with(std::string(kPromotedQueen) + ' ')) {
        AllowOrForbidPromotedQueen(root, word.substr(kPromotedQueen.size()));
    } else if (CutArgument(word, "LFQMDepth(", argument)) {
        SetQuickerDepth(root, word, argument);
    } else {
        FailOption(word);
    }
}

void AppendSortLine(TChessboard& root, std::string_view line) {
    std::deque<TChessboard> positions{root}; // links stay good while it grows
    positions.front().m_pPrevious = nullptr;
    std::vector<SortIndication> told;
    for (const std::string_view token : CutAtBlanks(line)) {
        TChessboard& before = positions.back();
        if (IsMoveNumber(token))
            continue;
        if (before.m_nMoves == 0)
            break;
        TChessboard& after = positions.emplace_back();
        if (!MakeMoveFromText(before, token, after, nullptr))
            throw ChessException(kSortLineFault);
        if (IsWhiteToMove(before))
            told.push_back(IndicationOf(before, after, (root.m_nMoves - before.m_nMoves) / 2 + 1));
    }
    std::vector<SortIndication>& known = root.m_pAnalysis->m_sortIndications;
    for (const SortIndication& move : told)
        if (std::ranges::find(known, move) == known.end())
            known.push_back(move);
}

void ApplyOptionWords(TChessboard& root, const std::vector<std::string_view>& words, INotifier* pNotifier) {
    try {
        for (const std::string_view word : words)
            ApplyOptionWord(root, word);
    } catch (const ChessException& fault) {
        ShowFault(pNotifier, std::string(kOptionWordsFault) + " : " + fault.what());
    } catch (const std::exception&) {
        ShowFault(pNotifier, kOptionWordsFault);
    }
    root.m_nHeurParams = ComputeHeurParams(root);
}

void ApplySortLines(TChessboard& root, const std::vector<std::string_view>& lines, INotifier* pNotifier) {
    for (const std::string_view line : lines) {
        try {
            AppendSortLine(root, line);
        } catch (const ChessException&) {
            ShowFault(pNotifier, kSortLineFault);
        }
    }
}

void ApplyPredefinedAdditionalHeuristics(TChessboard& root, INotifier* pNotifier) {
    const std::string placement = WriteFEN(root, false);
    ApplyOptionWords(root, TextsOf(KnownOptionWords(), placement), pNotifier);
    ApplySortLines(root, TextsOf(KnownSortLines(), placement), pNotifier);
    ApplySortLines(root, KnownContinuations(placement), pNotifier);
}

} // namespace quillon
