#include "heuristics/heuristics_dialog.h"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <string_view>
#include <vector>

#include "core/chess_exception.h"
#include "core/notation.h"
#include "core/search_context.h"
#include "heuristics/chosen_figures.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/plain_text.h"
#include "heuristics/watched_set.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr const char* kTwoExtEdges =
    "Conflict of heuristics: select only one of 'Don't let black king out of ext.edge' and "
    "'(Don't let black king) move unless back to the edge'";
constexpr const char* kTwoEdges =
    "Conflict of heuristics (\"Don't let black king move\" and \"Don't let black king out of "
    "the edge and/or ext.edge\") ";
constexpr const char* kExceptionsAlone =
    "Heuristics 'Don't let black king move' is off, while 'allow exc' is on.\nIt requires correction.";
constexpr const char* kBadCornerDistance =
    "Invalid maximum distance from corner in the parameter of heuristics 'Keep king near corner'";
constexpr const char* kBadRelaxCaptures = "Invalid number of figures to capture for relaxation of edge heuristics";
constexpr const char* kBadDefer = "Invalid number of moves to defer";
constexpr const char* kDeferAlone =
    "Defer check is meaningful only when 'on advanced pawn' or 'on figure captured' selected.";
constexpr const char* kTwoPawnOptions = "Only one of additional options of Don't lose any figures (incl. pawns + "
                                        "incl.promotable pawns) can be selected.";
constexpr const char* kBadMainDiagonal = "Improper field (Black figure not let leave main diagonal)";
constexpr const char* kBadKeyFigure = "Invalid key white figure";
constexpr const char* kNothingPinned = "Invalid key white figure (pinned piece not found)";
constexpr const char* kBadKeyLine = "Invalid field Key line";
constexpr const char* kBadKeyDiagonal = "Invalid field Key diagonal";
constexpr const char* kForcedMateWithSeaSnake = "FindForcedMate cannot be used together with SeaSnake.";
constexpr const char* kBadZugzwangMove = "Invalid move for SH_ZUGZWANG";
constexpr const char* kBadSeaSnakeMove = "Invalid move for SH_SEASNAKE";
constexpr const char* kBadForcedMateCount =
    "Invalid value in field with number of heuristics relaxations for FFM (FindForcedMate)";
constexpr const char* kBadQuickerDepth = "Value of depth for quicker mate is out of range.";

constexpr TSquare kBadSquare = 254; // what a field that names no square gives

constexpr int kMostCornerSquares = 5, kMostCornerMoves = 2;
constexpr long kMostQuickerMoves = 16;

// Heuristics that the engine sets for a line; a set made by hand has none of them.
constexpr std::uint32_t kWithoutControl = SH_ZUGZWANGTRIANGLES | SH_USEBLOCKBLACKPAWNSLEVEL | SH_KEYSQUARE;

// Ends the checks; the message stands in the box already.
struct TStop {};

/// The steps of the check; those that fail throw TStop.
class CDialogReader {
  public:
    CDialogReader(TChessboard& board, const THeuristicsDialog& dialog, INotifier& notifier)
        : m_board(board), m_p(*board.m_pContext), m_analysis(*board.m_pAnalysis), m_d(dialog), m_notifier(notifier) {}

    void Read() {
        ReadEdges();
        ReadNearCorner();
        ReadSurrounded();
        ReadRelaxation();
        ReadPlainBoxes();
        ReadSavedFigures();
        ReadMainDiagonal();
        ReadPromoted();
        ReadBlockedFigures();
        ReadKeyFigure();
        ReadKeyLine();
        ReadKeyDiagonal();
        ReadSeaSnake();
        ReadZugzwang();
        ReadForcedMate();
        ReadQuickerDepth();
        m_board.m_nHeuristics &= ~kWithoutControl;
    }

  private:
    void Show(const std::string& text) { m_notifier.Inform(text, kHeuristicsDialogTitle); }
    [[noreturn]] void Stop(const std::string& text) {
        Show(text);
        throw TStop{};
    }
    bool Store(bool bChecked, std::uint32_t bit) {
        m_board.m_nHeuristics = bChecked ? m_board.m_nHeuristics | bit : m_board.m_nHeuristics & ~bit;
        return bChecked;
    }

    /// kNoSquare for an empty field; stops for anything that is no square.
    TSquare ReadSquare(std::string_view text, std::string_view label);

    void ReadEdges();
    void ReadNearCorner();
    void ReadSurrounded();
    void ReadRelaxation();
    void ReadPlainBoxes();
    void ReadSavedFigures();
    void ReadMainDiagonal();
    void ReadPromoted();
    void ReadBlockedFigures();
    void ReadKeyFigure();
    void ReadKeyLine();
    void ReadKeyDiagonal();
    void ReadSeaSnake();
    void ReadZugzwang();
    void ReadForcedMate();
    void ReadForcedMateCount();
    void ReadQuickerDepth();

    long ReadCount(const std::string& text, long nMost, const char* fault);

    TChessboard& m_board;
    TSearchContext& m_p;
    TAnalysis& m_analysis;
    const THeuristicsDialog& m_d;
    INotifier& m_notifier;
};

TSquare SquareOfField(std::string_view text) {
    if (text.empty())
        return kNoSquare;
    if (text.size() == 3)
        text.remove_prefix(1);
    const TSquare square = SquareNamed(text);
    return square != kNoSquare ? square : kBadSquare;
}

TSquare CDialogReader::ReadSquare(std::string_view text, std::string_view label) {
    const TSquare square = SquareOfField(text);
    if (square == kBadSquare)
        Stop("Invalid piece (" + std::string(label) + ")");
    return square;
}

/// A number at the front of the field; 0 has to be typed as such.
long CDialogReader::ReadCount(const std::string& text, long nMost, const char* fault) {
    const long count = NumberInFront(text);
    if (count < 0 || count > nMost || (count == 0 && text != "0"))
        Stop(fault);
    return count;
}

void CDialogReader::ReadEdges() {
    m_p.m_bExtEdgeStrict = m_d.m_bMoveUnlessOnEdge;
    Store(m_d.m_bOutOfExtEdge || m_d.m_bMoveUnlessOnEdge, SH_KEEPKINGWITHINEXTEDGE);
    if (m_d.m_bOutOfExtEdge && m_d.m_bMoveUnlessOnEdge)
        Show(kTwoExtEdges); // either form will do
    m_p.m_bDontLetKingMove = m_d.m_bDontLetKingMove;
    m_p.m_bAllowExceptions = m_d.m_bAllowExceptions;
    m_p.m_bEdgeInclCornerSquares = m_d.m_bInclCornerSquares;
    Store(m_d.m_bDontLetKingMove || m_d.m_bOutOfEdge, SH_KEEPKINGONTHEEDGE);
    if (m_d.m_bDontLetKingMove && m_d.m_bOutOfEdge)
        Stop(kTwoEdges);
    if (!m_d.m_bDontLetKingMove && m_d.m_bAllowExceptions)
        Stop(kExceptionsAlone);
}

void CDialogReader::ReadNearCorner() {
    if (!Store(m_d.m_bNearCorner, SH_KEEPKINGNEARCORNER))
        return;
    const long distance = NumberInFront(m_d.m_nearCornerDistance);
    if (distance < 1 || distance > (m_d.m_bNearCornerMoves ? kMostCornerMoves : kMostCornerSquares))
        Stop(kBadCornerDistance);
    m_p.m_nKingNearCorner = static_cast<std::int8_t>(m_d.m_bNearCornerMoves ? -distance : distance);
}

void CDialogReader::ReadSurrounded() {
    m_p.m_bAssertBKSStrict = m_d.m_bAssertSurroundedStrict;
    Store(m_d.m_bAssertSurrounded || m_d.m_bAssertSurroundedStrict, SH_ASSERTBLACKKINGSURROUNDED);
}

void CDialogReader::ReadRelaxation() {
    m_p.m_bRelaxOnAdvancedPawn = m_d.m_bRelaxOnAdvancedPawn;
    m_p.m_bRelaxCapturesInclPawns = m_d.m_bRelaxInclPawns;
    m_p.m_bRelaxExtEdgeOnly = m_d.m_bRelaxExtEdgeOnly;
    m_p.m_bSkipDeferIfNoBalanceChange = m_d.m_bSkipDeferIfNoBalanceChange;
    m_p.m_bAutoDynRelax = m_d.m_bAutoDynRelax;
    m_p.m_nRelaxCaptures = static_cast<std::uint8_t>(ReadCount(m_d.m_relaxCaptures, 255, kBadRelaxCaptures));
    m_p.m_shDeferMoves = static_cast<std::uint16_t>(ReadCount(m_d.m_deferMoves, 65535, kBadDefer));
    if (m_p.m_shDeferMoves != 0 && m_p.m_nRelaxCaptures == 0 && !m_p.m_bRelaxOnAdvancedPawn)
        Stop(kDeferAlone);
}

void CDialogReader::ReadPlainBoxes() {
    Store(m_d.m_bSweepingWhiteRook, SH_SWEEPINGWHITEROOK);
    Store(m_d.m_bDontRecedeBlackKing, SH_DONTRECEDEBLACKKING);
    Store(m_d.m_bAreKingsNear, SH_AREKINGSNEAR);
    Store(m_d.m_bSaveQueenRook, SH_SAVEQUEENROOK);
    Store(m_d.m_bQueenCheckTwice, SH_DONTLETBLACKQUEENCHECKTWICE);
    Store(m_d.m_bReduceToGlobalRegister, SH_REDUCTIONTOGLOBREGPOS);
    Store(m_d.m_b3MovesToMate, SH_3MOVESTOMATE);
    Store(m_d.m_bSingleQueenMate, SH_SINGLEQUEENMATE);
    Store(m_d.m_bSkipWorstWhiteMoves, SH_SKIPWORSTWHITEMOVES);
    Store(m_d.m_bOneColorPlay, SH_ONECOLORPLAYPOSSIBLE);
    Store(m_d.m_bCaptureKnight, SH_CAPTUREKNIGHT);
    m_p.m_bLetRelaxHeuristics = m_d.m_bLetRelaxHeuristics;
    m_p.m_bRunPass2 = m_d.m_bRunPass2;
    m_p.m_bHeuristicsFallback = m_d.m_bHeuristicsFallback;
}

void CDialogReader::ReadSavedFigures() {
    Store(m_d.m_bDontLoseFigures || m_d.m_bInclPawns || m_d.m_bInclPromotablePawns, SH_DONTLOSEANYFIGURES);
    m_p.m_nSaveFiguresMode = m_d.m_bInclPawns ? 1 : m_d.m_bInclPromotablePawns ? 2 : 0;
    if (m_d.m_bInclPawns && m_d.m_bInclPromotablePawns)
        Stop(kTwoPawnOptions);
}

void CDialogReader::ReadMainDiagonal() {
    Store(m_d.m_bDontLeaveMainDiagonal, SH_DONTLEAVEMAINDIAGONAL);
    const TSquare square = ReadSquare(m_d.m_mainDiagonalFigure, "Black figure not let leave main diagonal");
    if (square != kNoSquare && !IsBlackFigureOnMainDiagonal(m_board, square))
        Stop(kBadMainDiagonal);
    m_p.m_nBlackFigureOnMainDiagonal = square;
}

void CDialogReader::ReadPromoted() {
    m_p.m_bDontLetPromotedStrict = m_d.m_bDontLetPromotedStrict;
    Store(m_d.m_bDontLetPromoted && m_d.m_promoted == EPromotedRadio::Queen, SH_DONTLETPROMOTEDQUEENMOVE);
    Store(m_d.m_bDontLetPromoted && m_d.m_promoted == EPromotedRadio::AnyFigure, SH_DONTLETPROMOTEDFIGUREMOVE);
}

void CDialogReader::ReadBlockedFigures() {
    Store(m_d.m_bDontLetFigureUnblock, SH_DONTLETFIGUREUNBLOCK);
    m_p.m_bApplyDlfuDynamically = m_d.m_bApplyDynamically;
    std::vector<TSquare> squares;
    for (std::size_t i = 0; i < m_d.m_blockedFigures.size(); ++i) {
        const std::string label = "Figure not let unblock #" + std::to_string(i + 1);
        const TSquare square = ReadSquare(m_d.m_blockedFigures[i], label);
        if (square == kNoSquare)
            continue;
        if (!CanBeWatched(m_board, square))
            Stop("Improper field: " + label);
        if (std::ranges::find(squares, square) == squares.end())
            squares.push_back(square);
    }
    SetWatchedFigures(m_p, m_board, squares);
    m_p.m_bBlockedFiguresByHand = !squares.empty();
}

void CDialogReader::ReadKeyFigure() {
    if (!Store(m_d.m_bKeyWhiteFigure, SH_KEYWHITEFIGURE))
        return;
    const TSquare key = ReadSquare(m_d.m_keyWhiteFigure, "Key white figure");
    if (!CanBeKeyFigure(m_board, key))
        Stop(kBadKeyFigure);
    const TSquare pinned = FindPinnedByKeyFigure(m_board, key);
    if (pinned == kNoSquare)
        Stop(kNothingPinned);
    SetKeyFigure(m_p, m_board, key, pinned);
}

void CDialogReader::ReadKeyLine() {
    if (!Store(m_d.m_bKeyLine, SH_KEYLINE))
        return;
    const char letter = m_d.m_keyLine.size() == 1 ? UpperLetter(m_d.m_keyLine[0]) : '\0';
    if (letter < 'A' || letter > 'H')
        Stop(kBadKeyLine);
    m_analysis.m_nKeyLine = static_cast<std::uint8_t>(letter - 'A');
}

void CDialogReader::ReadKeyDiagonal() {
    if (!Store(m_d.m_bKeyDiagonal, SH_KEYDIAGONAL))
        return;
    const TSquare first = ReadSquare(m_d.m_keyDiagonal1, "Key diagonal - field 1");
    const TSquare second = ReadSquare(m_d.m_keyDiagonal2, "Key diagonal - field 2");
    // Nor is one square a diagonal: nothing moves along it.
    if (first == kNoSquare || second == kNoSquare || first == second ||
        AbsDiff(FileOf(first), FileOf(second)) != AbsDiff(RankOf(first), RankOf(second)))
        Stop(kBadKeyDiagonal);
    m_analysis.m_wKeyDiagonal = static_cast<std::uint16_t>(second << 8 | first);
}

void CDialogReader::ReadSeaSnake() {
    constexpr std::string_view kApproach = "Sea snake - approach square";
    m_p.m_bSeaSnake = m_d.m_bSeaSnake;
    if (!Store(m_d.m_bSeaSnake, SH_SEASNAKE))
        return;
    m_p.m_nSeaSnakeApproach = ReadSquare(m_d.m_seaSnakeApproach, kApproach);
    if (m_p.m_nSeaSnakeApproach == kNoSquare)
        Stop("Invalid piece (" + std::string(kApproach) + ")");
    m_p.m_nSeaSnakeTurnBack = ReadSquare(m_d.m_seaSnakeTurnBack, "Sea snake - turn back square");
    m_p.m_nSeaSnakePendulum1 = ReadSquare(m_d.m_seaSnakePendulum1, "Sea snake - pendulum square 1 (approachable)");
    m_p.m_nSeaSnakePendulum2 = ReadSquare(m_d.m_seaSnakePendulum2, "Sea snake - pendulum square 2");
    std::vector<TMove> after;
    try {
        for (const std::string_view move : CutAtBlanks(m_d.m_seaSnakeAfter))
            after.push_back(ParseMove(move, true));
    } catch (const ChessException&) {
        Stop(kBadSeaSnakeMove);
    }
    m_analysis.m_seaSnakeAfterMoves = after;
    if (m_d.m_bFindForcedMate)
        Stop(kForcedMateWithSeaSnake);
}

void CDialogReader::ReadZugzwang() {
    if (!Store(m_d.m_bZugzwang, SH_ZUGZWANG))
        return;
    if (m_analysis.m_zugzwangPositions.contains(m_d.m_zugzwangAfter))
        return; // known already
    std::deque<TChessboard> positions{m_board};
    for (const std::string_view move : CutAtBlanks(m_d.m_zugzwangAfter)) {
        TChessboard& before = positions.back();
        if (!MakeMoveFromText(before, move, positions.emplace_back(), nullptr))
            Stop(kBadZugzwangMove);
    }
    m_analysis.m_zugzwangPositions.clear();
    m_analysis.m_zugzwangPositions[m_d.m_zugzwangAfter] = positions.back().m_board;
}

void CDialogReader::ReadForcedMateCount() {
    const long count = DigitsValue(m_d.m_ffmRelaxations, 1'000'000);
    if (count < 0)
        Stop(kBadForcedMateCount);
    if (m_d.m_nFfmDepth + count > kMaxForcedMateDepth)
        Stop("Number of heuristics relaxations for FFM is too large (max = " +
             std::to_string(kMaxForcedMateDepth - m_d.m_nFfmDepth) + " => #5)");
    m_p.m_nFfmRelaxations = static_cast<std::uint8_t>(count);
    m_p.m_nFfmCycleRelaxations = m_d.m_bFfmCycleTwice ? m_p.m_nFfmRelaxations : 0;
    if (count > 0 && !m_d.m_bLetRelaxHeuristics)
        Show("Note: relaxation of heuristics is off, so setting for FFM (" + std::to_string(count) +
             " time(s)) will be ignored");
}

void CDialogReader::ReadForcedMate() {
    if (!Store(m_d.m_bFindForcedMate, SH_FINDFORCEDMATE))
        return;
    m_p.m_nFfmDepth = m_p.m_nFfmStartDepth = m_d.m_nFfmDepth;
    m_p.m_bFfmAddCaptures = m_d.m_bFfmAddCaptures;
    m_p.m_nFfmWithOther = m_d.m_ffmWithOther == EForcedMateWithOther::No    ? std::int8_t{0}
                          : m_d.m_ffmWithOther == EForcedMateWithOther::Yes ? std::int8_t{1}
                                                                            : std::int8_t{-1};
    m_p.m_bFfmPreliminary = m_d.m_ffmWithOther == EForcedMateWithOther::PartiallyAfterInitialPass;
    m_p.m_bFfmCycleTwice = m_d.m_bFfmCycleTwice;
    ReadForcedMateCount();
}

void CDialogReader::ReadQuickerDepth() {
    if (m_d.m_quickerMateDepth.empty())
        return;
    const long moves = NumberInFront(m_d.m_quickerMateDepth);
    if (moves < 1 || moves > kMostQuickerMoves)
        Stop(kBadQuickerDepth);
    m_analysis.m_shLookForQuickerMateDepth = static_cast<std::int16_t>(2 * moves - 1);
}

// --- Opening
// -----------------------------------------------------------------------------------------------------------

void OpenEdges(THeuristicsDialog& d, std::uint32_t mask, const THeuristicParameters& p) {
    const bool bEdge = (mask & SH_KEEPKINGONTHEEDGE) != 0, bExtEdge = (mask & SH_KEEPKINGWITHINEXTEDGE) != 0;
    d.m_bDontLetKingMove = bEdge && p.m_bDontLetKingMove;
    d.m_bAllowExceptions = d.m_bDontLetKingMove && p.m_bAllowExceptions;
    d.m_bOutOfEdge = bEdge && !p.m_bDontLetKingMove;
    d.m_bInclCornerSquares = p.m_bEdgeInclCornerSquares;
    d.m_bOutOfExtEdge = bExtEdge && !p.m_bExtEdgeStrict;
    d.m_bMoveUnlessOnEdge = bExtEdge && p.m_bExtEdgeStrict;
    d.m_bNearCorner = (mask & SH_KEEPKINGNEARCORNER) != 0;
    d.m_bNearCornerMoves = p.m_nKingNearCorner < 0;
    if (p.m_nKingNearCorner != 0)
        d.m_nearCornerDistance = std::to_string(std::abs(p.m_nKingNearCorner));
    d.m_bAssertSurrounded = (mask & SH_ASSERTBLACKKINGSURROUNDED) != 0;
    d.m_bAssertSurroundedStrict = d.m_bAssertSurrounded && p.m_bAssertBKSStrict;
}

void OpenRelaxation(THeuristicsDialog& d, const THeuristicParameters& p) {
    d.m_bRelaxOnAdvancedPawn = p.m_bRelaxOnAdvancedPawn;
    d.m_relaxCaptures = std::to_string(p.m_nRelaxCaptures);
    d.m_bRelaxInclPawns = p.m_bRelaxCapturesInclPawns;
    d.m_deferMoves = std::to_string(p.m_shDeferMoves);
    d.m_bRelaxExtEdgeOnly = p.m_bRelaxExtEdgeOnly;
    d.m_bSkipDeferIfNoBalanceChange = p.m_bSkipDeferIfNoBalanceChange;
    d.m_bAutoDynRelax = p.m_bAutoDynRelax;
}

void OpenPlainBoxes(THeuristicsDialog& d, std::uint32_t mask, const THeuristicParameters& p) {
    d.m_bSweepingWhiteRook = (mask & SH_SWEEPINGWHITEROOK) != 0;
    d.m_bDontRecedeBlackKing = (mask & SH_DONTRECEDEBLACKKING) != 0;
    d.m_bAreKingsNear = (mask & SH_AREKINGSNEAR) != 0;
    d.m_bSaveQueenRook = (mask & SH_SAVEQUEENROOK) != 0;
    d.m_bQueenCheckTwice = (mask & SH_DONTLETBLACKQUEENCHECKTWICE) != 0;
    d.m_bReduceToGlobalRegister = (mask & SH_REDUCTIONTOGLOBREGPOS) != 0;
    d.m_b3MovesToMate = (mask & SH_3MOVESTOMATE) != 0;
    d.m_bSingleQueenMate = (mask & SH_SINGLEQUEENMATE) != 0;
    d.m_bSkipWorstWhiteMoves = (mask & SH_SKIPWORSTWHITEMOVES) != 0;
    d.m_bOneColorPlay = (mask & SH_ONECOLORPLAYPOSSIBLE) != 0;
    d.m_bCaptureKnight = (mask & SH_CAPTUREKNIGHT) != 0;
    d.m_bLetRelaxHeuristics = p.m_bLetRelaxHeuristics;
    d.m_bRunPass2 = p.m_bRunPass2;
    d.m_bHeuristicsFallback = p.m_bHeuristicsFallback;
}

void OpenFigures(THeuristicsDialog& d, std::uint32_t mask, const THeuristicParameters& p) {
    const bool bSave = (mask & SH_DONTLOSEANYFIGURES) != 0;
    d.m_bDontLoseFigures = bSave;
    d.m_bInclPawns = bSave && p.m_nSaveFiguresMode == 1;
    d.m_bInclPromotablePawns = bSave && p.m_nSaveFiguresMode > 1;
    d.m_bDontLeaveMainDiagonal = (mask & SH_DONTLEAVEMAINDIAGONAL) != 0;
    d.m_mainDiagonalFigure = SquareInCapitals(p.m_nBlackFigureOnMainDiagonal);
    d.m_bDontLetPromoted = (mask & (SH_DONTLETPROMOTEDQUEENMOVE | SH_DONTLETPROMOTEDFIGUREMOVE)) != 0;
    if (d.m_bDontLetPromoted)
        d.m_promoted = (mask & SH_DONTLETPROMOTEDFIGUREMOVE) != 0 ? EPromotedRadio::AnyFigure : EPromotedRadio::Queen;
    d.m_bDontLetPromotedStrict = p.m_bDontLetPromotedStrict;
    d.m_bDontLetFigureUnblock = (mask & SH_DONTLETFIGUREUNBLOCK) != 0;
    for (std::size_t i = 0; static_cast<int>(i) < std::min<int>(p.m_nBlockedFigures, kMaxBlockedFigures); ++i)
        d.m_blockedFigures[i] = SquareInCapitals(p.m_BlockedFigures[i]);
    d.m_bApplyDynamically = p.m_bApplyDlfuDynamically;
}

std::string AfterMovesText(const std::vector<TMove>& moves) {
    std::string text;
    for (const TMove& move : moves)
        text += (text.empty() ? "" : " ") + WriteTerseMove(move);
    return text;
}

void OpenKeys(THeuristicsDialog& d, std::uint32_t mask, const THeuristicParameters& p,
              const THeuristicAnalysisParameters& analysis) {
    d.m_bKeyWhiteFigure = (mask & SH_KEYWHITEFIGURE) != 0;
    d.m_keyWhiteFigure = SquareInCapitals(p.m_nKeyWhiteFigure);
    d.m_bKeyLine = (mask & SH_KEYLINE) != 0;
    if (analysis.m_nKeyLine < 8)
        d.m_keyLine = static_cast<char>('A' + analysis.m_nKeyLine);
    d.m_bKeyDiagonal = (mask & SH_KEYDIAGONAL) != 0;
    d.m_keyDiagonal1 = SquareInCapitals(static_cast<TSquare>(analysis.m_wKeyDiagonal & 0xff));
    d.m_keyDiagonal2 = SquareInCapitals(static_cast<TSquare>(analysis.m_wKeyDiagonal >> 8));
    d.m_bZugzwang = (mask & SH_ZUGZWANG) != 0;
    if (!analysis.m_zugzwangPositions.empty())
        d.m_zugzwangAfter = analysis.m_zugzwangPositions.begin()->first;
    d.m_bSeaSnake = (mask & SH_SEASNAKE) != 0;
    d.m_seaSnakeApproach = SquareInCapitals(p.m_nSeaSnakeApproach);
    d.m_seaSnakeTurnBack = SquareInCapitals(p.m_nSeaSnakeTurnBack);
    d.m_seaSnakePendulum1 = SquareInCapitals(p.m_nSeaSnakePendulum1);
    d.m_seaSnakePendulum2 = SquareInCapitals(p.m_nSeaSnakePendulum2);
    d.m_seaSnakeAfter = AfterMovesText(analysis.m_seaSnakeAfterMoves);
}

void OpenForcedMate(THeuristicsDialog& d, std::uint32_t mask, const THeuristicParameters& p) {
    d.m_bFindForcedMate = (mask & SH_FINDFORCEDMATE) != 0 && (mask & SH_SEASNAKE) == 0;
    d.m_nFfmDepth = std::clamp(p.m_nFfmDepth, kMinForcedMateDepth, kMaxForcedMateDepth);
    d.m_bFfmAddCaptures = p.m_bFfmAddCaptures;
    d.m_ffmWithOther = p.m_nFfmWithOther == 1   ? EForcedMateWithOther::Yes
                       : p.m_nFfmWithOther == 0 ? EForcedMateWithOther::No
                       : p.m_bFfmPreliminary    ? EForcedMateWithOther::PartiallyAfterInitialPass
                                                : EForcedMateWithOther::Partially;
    d.m_ffmRelaxations = std::to_string(p.m_nFfmRelaxations);
    d.m_bFfmCycleTwice = p.m_bFfmCycleTwice;
}

} // namespace

THeuristicsDialog ReadHeuristicsDialog(const TChessboard& board) {
    const THeuristicParameters& p = *board.m_pContext;
    const THeuristicAnalysisParameters& analysis = *board.m_pAnalysis;
    THeuristicsDialog d;
    OpenEdges(d, board.m_nHeuristics, p);
    OpenRelaxation(d, p);
    OpenPlainBoxes(d, board.m_nHeuristics, p);
    OpenFigures(d, board.m_nHeuristics, p);
    OpenKeys(d, board.m_nHeuristics, p, analysis);
    OpenForcedMate(d, board.m_nHeuristics, p);
    if (analysis.m_shLookForQuickerMateDepth > 0)
        d.m_quickerMateDepth = std::to_string(analysis.m_shLookForQuickerMateDepth / 2 + 1);
    return d;
}

bool ApplyHeuristicsDialog(TChessboard& board, const THeuristicsDialog& dialog, INotifier& notifier) {
    try {
        CDialogReader(board, dialog, notifier).Read();
    } catch (const TStop&) {
        return false;
    }
    WriteWatchedSquares(board, *board.m_pContext);
    board.m_nHeurParams = ComputeHeurParams(board);
    if (board.m_nHeuristics == 0)
        board.m_byPass = 2;
    return true;
}

} // namespace quillon
