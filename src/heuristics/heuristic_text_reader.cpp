#include "heuristics/heuristic_text_reader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "core/chess_exception.h"
#include "core/printable.h"
#include "heuristics/chosen_figures.h"
#include "heuristics/forced_mate_depth.h"
#include "heuristics/heuristic_set.h"
#include "heuristics/plain_text.h"

namespace quillon {

namespace {

constexpr std::string_view kNone = "none";
constexpr std::string_view kQuickMode = "QuickMode";
constexpr std::string_view kNoDynamicApplication = "(CannotApplyDLFUDynamically)";
constexpr std::string_view kStrictEdgeName = "SH_DONTLETKINGMOVE";
constexpr std::array<std::string_view, 4> kBishopModes{"", "WhiteSquaresOnly", "BlackSquaresOnly",
                                                       "SeparatedBlackBishop"};

/// A stretch of the text, with its place.
struct TPiece {
    std::string_view m_text;
    std::size_t m_nAt = 0; // index of its first character in the whole text
};

[[noreturn]] void Fail(const TPiece& piece, const std::string& what) {
    throw ChessException("Heuristics, character " + std::to_string(piece.m_nAt + 1) + ": " + what);
}

std::string Quoted(std::string_view text) { return "\"" + Printable(text) + "\""; }

/// Cuts at the commas that stand outside brackets, and drops blanks around the pieces.
std::vector<TPiece> CutAtCommas(const TPiece& whole) {
    std::vector<TPiece> pieces;
    std::size_t start = 0;
    int nDepth = 0;
    for (std::size_t i = 0; i <= whole.m_text.size(); ++i) {
        const char c = i < whole.m_text.size() ? whole.m_text[i] : ',';
        nDepth += (c == '(') - (c == ')');
        if (i < whole.m_text.size() && (c != ',' || nDepth > 0))
            continue;
        const std::string_view raw = whole.m_text.substr(start, i - start);
        const std::string_view text = WithoutBlanks(raw);
        const auto nBlanks = text.empty() ? 0 : static_cast<std::size_t>(text.data() - raw.data());
        pieces.push_back({text, whole.m_nAt + start + nBlanks});
        start = i + 1;
    }
    return pieces;
}

/// The relaxation of the edge heuristics as one item tells it.
struct TRelaxation {
    int m_nCaptures = 0;
    bool m_bInclPawns = false;
    bool m_bAdvancedPawn = false;
    int m_nDefer = 0, m_nDeferMax = 0;
    friend bool operator==(const TRelaxation&, const TRelaxation&) = default;
};

/// Reads the items of a set one by one into the record.
class CSetReader {
  public:
    TReadHeuristics Read(std::string_view text);

  private:
    void ReadItem(const TPiece& item);
    void ReadStrictEdge(const std::vector<TPiece>& parameters);
    void ReadParameters(const TPiece& item, std::uint32_t bit, const std::vector<TPiece>& parameters);
    void ReadEdge(const std::vector<TPiece>& parameters);
    void ReadExtEdge(const std::vector<TPiece>& parameters);
    void ReadWatchedFigures(const std::vector<TPiece>& parameters);
    void ReadForcedMate(const TPiece& parameter);
    void ReadKeyLine(const TPiece& parameter);
    void ReadKeyDiagonal(const TPiece& parameter);
    void ReadSaveFigures(const TPiece& parameter);
    void ReadNearCorner(const TPiece& parameter);
    void ReadSeaSnake(const std::vector<TPiece>& parameters);
    void ReadBishopMode(const TPiece& parameter);
    void ReadStrict(const TPiece& parameter, bool& bStrict);
    void StoreRelaxation();
    void CheckDiagonal(const TPiece& parameter) const;

    static bool ReadRelaxationItem(const TPiece& parameter, TRelaxation& relaxation);
    static TSquare ReadSquare(const TPiece& parameter);
    [[noreturn]] static void FailParameter(const TPiece& parameter) {
        Fail(parameter, "unknown parameter " + Quoted(parameter.m_text));
    }

    THeuristicParameters& P() { return m_read.m_parameters; }

    TReadHeuristics m_read;
    TRelaxation m_edgeRelaxation, m_extEdgeRelaxation;
    TPiece m_extEdge; // where the item stands
};

TSquare CSetReader::ReadSquare(const TPiece& parameter) {
    const TSquare square = SquareNamed(parameter.m_text);
    if (square == kNoSquare)
        Fail(parameter, "no square: " + Quoted(parameter.m_text));
    return square;
}

/// "C2f", "C2", "A", "D3", "M5".
bool CSetReader::ReadRelaxationItem(const TPiece& parameter, TRelaxation& relaxation) {
    std::string_view text = parameter.m_text;
    if (EqualWords(text, "A")) {
        relaxation.m_bAdvancedPawn = true;
        return true;
    }
    if (text.size() < 2)
        return false;
    const char kind = UpperLetter(text[0]);
    if (kind != 'C' && kind != 'D' && kind != 'M')
        return false;
    text.remove_prefix(1);
    const bool bFiguresOnly = kind == 'C' && UpperLetter(text.back()) == 'F';
    if (bFiguresOnly)
        text.remove_suffix(1);
    const long value = DigitsValue(text, kind == 'C' ? 255 : 65535);
    if (value < (kind == 'M' ? 0 : 1))
        return false;
    const int number = static_cast<int>(value);
    if (kind == 'C') {
        relaxation.m_nCaptures = number;
        relaxation.m_bInclPawns = !bFiguresOnly;
    } else {
        (kind == 'D' ? relaxation.m_nDefer : relaxation.m_nDeferMax) = number;
    }
    return true;
}

void CSetReader::ReadEdge(const std::vector<TPiece>& parameters) {
    P().m_bDontLetKingMove = P().m_bAllowExceptions = false;
    for (const TPiece& parameter : parameters) {
        if (EqualWords(parameter.m_text, "STRICT")) {
            P().m_bDontLetKingMove = true;
        } else if (EqualWords(parameter.m_text, "ALMOST_STRICT")) {
            P().m_bDontLetKingMove = P().m_bAllowExceptions = true;
        } else if (EqualWords(parameter.m_text, "incl.corner")) {
            P().m_bEdgeInclCornerSquares = true;
        } else if (!ReadRelaxationItem(parameter, m_edgeRelaxation)) {
            FailParameter(parameter);
        }
    }
}

void CSetReader::ReadStrictEdge(const std::vector<TPiece>& parameters) {
    std::vector<TPiece> others;
    for (const TPiece& parameter : parameters)
        if (!EqualWords(parameter.m_text, "excptns"))
            others.push_back(parameter);
    ReadEdge(others);
    P().m_bDontLetKingMove = true;
    P().m_bAllowExceptions = P().m_bAllowExceptions || others.size() != parameters.size();
}

void CSetReader::ReadExtEdge(const std::vector<TPiece>& parameters) {
    for (const TPiece& parameter : parameters) {
        if (EqualWords(parameter.m_text, "incl.corner"))
            P().m_bEdgeInclCornerSquares = true;
        else if (EqualWords(parameter.m_text, "strict"))
            P().m_bExtEdgeStrict = true;
        else if (!ReadRelaxationItem(parameter, m_extEdgeRelaxation))
            FailParameter(parameter);
    }
}

void CSetReader::ReadWatchedFigures(const std::vector<TPiece>& parameters) {
    int count = 0;
    for (const TPiece& parameter : parameters) {
        if (EqualWords(parameter.m_text, "EFF")) {
            P().m_bBlockedFiguresEff = true;
            continue;
        }
        const TSquare square = ReadSquare(parameter);
        if (std::ranges::find(P().m_BlockedFigures, square) != P().m_BlockedFigures.end())
            Fail(parameter, "square told twice: " + Quoted(parameter.m_text));
        if (count == kMaxBlockedFigures)
            Fail(parameter, "more than " + std::to_string(kMaxBlockedFigures) + " squares");
        P().m_BlockedFigures[static_cast<std::size_t>(count++)] = square;
    }
    P().m_nBlockedFigures = static_cast<std::int8_t>(count);
    P().m_bBlockedFiguresByHand = count > 0;
}

/// "#1+", "#2-Preliminary", "CheckOnly-Custom", "#3-Preliminary-Custom".
void CSetReader::ReadForcedMate(const TPiece& parameter) {
    std::string_view text = parameter.m_text;
    const auto CutEnd = [&text](std::string_view end) {
        if (text.size() < end.size() || !EqualWords(text.substr(text.size() - end.size()), end))
            return false;
        text.remove_suffix(end.size());
        return true;
    };
    P().m_bFfmCycleTwice = CutEnd("-Custom");
    P().m_bFfmPreliminary = CutEnd("-Preliminary");
    for (const TForcedMateDepth& depth : kForcedMateDepths) {
        if (EqualWords(depth.m_text, text)) {
            P().m_nFfmDepth = P().m_nFfmStartDepth = depth.m_nCode;
            return;
        }
    }
    FailParameter(parameter);
}

void CSetReader::ReadKeyLine(const TPiece& parameter) {
    const char letter = parameter.m_text.size() == 1 ? UpperLetter(parameter.m_text[0]) : '\0';
    if (letter < 'A' || letter > 'H')
        Fail(parameter, "no file letter: " + Quoted(parameter.m_text));
    m_read.m_nKeyLine = static_cast<std::uint8_t>(letter - 'A');
}

void CSetReader::CheckDiagonal(const TPiece& parameter) const {
    const int first = m_read.m_wKeyDiagonal & 0xff, second = m_read.m_wKeyDiagonal >> 8;
    // Nor is one square a diagonal: nothing moves along it.
    if (first == second || AbsDiff(FileOf(first), FileOf(second)) != AbsDiff(RankOf(first), RankOf(second)))
        Fail(parameter, "no diagonal: " + Quoted(parameter.m_text));
}

void CSetReader::ReadKeyDiagonal(const TPiece& parameter) {
    const auto dash = parameter.m_text.find('-');
    if (dash == std::string_view::npos)
        Fail(parameter, "no diagonal: " + Quoted(parameter.m_text));
    const TSquare first = ReadSquare({parameter.m_text.substr(0, dash), parameter.m_nAt});
    const TSquare second = ReadSquare({parameter.m_text.substr(dash + 1), parameter.m_nAt + dash + 1});
    m_read.m_wKeyDiagonal = static_cast<std::uint16_t>(second << 8 | first);
    CheckDiagonal(parameter);
}

void CSetReader::ReadSaveFigures(const TPiece& parameter) {
    if (EqualWords(parameter.m_text, "incl.pawns"))
        P().m_nSaveFiguresMode = 1;
    else if (EqualWords(parameter.m_text, "incl.pawnsBeforePromo"))
        P().m_nSaveFiguresMode = 2;
    else
        FailParameter(parameter);
}

/// "3S": three squares; "2M": two moves.
void CSetReader::ReadNearCorner(const TPiece& parameter) {
    const std::string_view text = parameter.m_text;
    const char unit = text.empty() ? '\0' : UpperLetter(text.back());
    const long distance = unit == 'S' || unit == 'M' ? DigitsValue(text.substr(0, text.size() - 1), 9) : -1;
    if (distance < 1 || distance > (unit == 'S' ? 5 : 2))
        Fail(parameter, "no distance from the corner (1S to 5S, 1M, 2M): " + Quoted(text));
    P().m_nKingNearCorner = static_cast<std::int8_t>(unit == 'S' ? distance : -distance);
}

/// The squares in their order; the printed form tells the first two.
void CSetReader::ReadSeaSnake(const std::vector<TPiece>& parameters) {
    const std::array squares{&P().m_nSeaSnakeApproach, &P().m_nSeaSnakeTurnBack, &P().m_nSeaSnakePendulum1,
                             &P().m_nSeaSnakePendulum2};
    if (parameters.size() > squares.size())
        FailParameter(parameters[squares.size()]);
    for (std::size_t i = 0; i < parameters.size(); ++i)
        *squares[i] = ReadSquare(parameters[i]);
    P().m_bSeaSnake = true;
}

void CSetReader::ReadBishopMode(const TPiece& parameter) {
    for (std::size_t mode = 1; mode < kBishopModes.size(); ++mode) {
        if (EqualWords(parameter.m_text, kBishopModes[mode])) {
            m_read.m_nBishopMode = static_cast<std::uint8_t>(mode);
            return;
        }
    }
    FailParameter(parameter);
}

void CSetReader::ReadStrict(const TPiece& parameter, bool& bStrict) {
    if (!EqualWords(parameter.m_text, "strict"))
        FailParameter(parameter);
    bStrict = true;
}

/// Heuristics that mean nothing without their parameter.
constexpr std::uint32_t kParameterNeeded =
    SH_KEEPKINGNEARCORNER | SH_KEYLINE | SH_KEYDIAGONAL | SH_KEYSQUARE | SH_KEYWHITEFIGURE;

void CSetReader::ReadParameters(const TPiece& item, std::uint32_t bit, const std::vector<TPiece>& parameters) {
    // Lists first, then the heuristics with one parameter at most.
    switch (bit) {
    case SH_KEEPKINGONTHEEDGE:
        return ReadEdge(parameters);
    case SH_KEEPKINGWITHINEXTEDGE:
        m_extEdge = item;
        return ReadExtEdge(parameters);
    case SH_DONTLETFIGUREUNBLOCK:
        return ReadWatchedFigures(parameters);
    case SH_SEASNAKE:
        return ReadSeaSnake(parameters);
    default:
        break;
    }
    if (parameters.size() > 1)
        Fail(parameters[1], "one parameter too many: " + Quoted(parameters[1].m_text));
    if (parameters.empty()) {
        if ((bit & kParameterNeeded) != 0)
            Fail(item, std::string(HeuristicName(bit)) + " needs a parameter");
        return;
    }
    const TPiece& parameter = parameters.front();
    switch (bit) {
    case SH_ONECOLORPLAYPOSSIBLE:
        return ReadBishopMode(parameter);
    case SH_DONTLEAVEMAINDIAGONAL:
        P().m_nBlackFigureOnMainDiagonal = ReadSquare(parameter);
        return;
    case SH_FINDFORCEDMATE:
        return ReadForcedMate(parameter);
    case SH_DONTLETPROMOTEDQUEENMOVE:
    case SH_DONTLETPROMOTEDFIGUREMOVE:
        return ReadStrict(parameter, P().m_bDontLetPromotedStrict);
    case SH_KEYLINE:
        return ReadKeyLine(parameter);
    case SH_KEYDIAGONAL:
        return ReadKeyDiagonal(parameter);
    case SH_DONTLOSEANYFIGURES:
        return ReadSaveFigures(parameter);
    case SH_KEYSQUARE:
        P().m_nKeySquare = ReadSquare(parameter);
        return;
    case SH_ASSERTBLACKKINGSURROUNDED:
        return ReadStrict(parameter, P().m_bAssertBKSStrict);
    case SH_KEYWHITEFIGURE:
        P().m_nKeyWhiteFigure = ReadSquare(parameter);
        return;
    case SH_KEEPKINGNEARCORNER:
        return ReadNearCorner(parameter);
    default:
        Fail(parameter, std::string(HeuristicName(bit)) + " takes no parameter");
    }
}

void CSetReader::ReadItem(const TPiece& item) {
    if (item.m_text.empty())
        Fail(item, "a heuristic is missing");
    if (EqualWords(item.m_text, kQuickMode)) {
        m_read.m_bQuickMode = true;
        return;
    }
    const auto open = item.m_text.find('(');
    const TPiece name{WithoutBlanks(item.m_text.substr(0, open)), item.m_nAt};
    std::vector<TPiece> parameters;
    if (open != std::string_view::npos) {
        if (!item.m_text.ends_with(')'))
            Fail({item.m_text, item.m_nAt + open}, "bracket without its end");
        parameters = CutAtCommas({item.m_text.substr(open + 1, item.m_text.size() - open - 2), item.m_nAt + open + 1});
        for (const TPiece& parameter : parameters)
            if (parameter.m_text.empty())
                Fail(parameter, "a parameter is missing");
    }
    const bool bStrictEdge = EqualWords(name.m_text, kStrictEdgeName);
    const std::optional<std::uint32_t> bit = bStrictEdge ? SH_KEEPKINGONTHEEDGE : FindHeuristic(name.m_text);
    if (!bit)
        Fail(name, "unknown heuristic " + Quoted(name.m_text));
    if ((m_read.m_nHeuristics & *bit) != 0)
        Fail(name, std::string(HeuristicName(*bit)) + " told twice");
    m_read.m_nHeuristics |= *bit;
    if (bStrictEdge)
        ReadStrictEdge(parameters);
    else
        ReadParameters(name, *bit, parameters);
}

/// Both edge heuristics are relaxed alike, or the second alone.
void CSetReader::StoreRelaxation() {
    const bool bEdge = (m_read.m_nHeuristics & SH_KEEPKINGONTHEEDGE) != 0;
    const bool bExtEdge = (m_read.m_nHeuristics & SH_KEEPKINGWITHINEXTEDGE) != 0;
    if (bEdge && bExtEdge && m_edgeRelaxation != m_extEdgeRelaxation) {
        if (m_edgeRelaxation != TRelaxation{})
            Fail(m_extEdge, "the two edge heuristics tell different relaxations");
        P().m_bRelaxExtEdgeOnly = true;
    }
    const TRelaxation& told = bExtEdge ? m_extEdgeRelaxation : m_edgeRelaxation;
    P().m_nRelaxCaptures = static_cast<std::uint8_t>(told.m_nCaptures);
    P().m_bRelaxCapturesInclPawns = told.m_bInclPawns;
    P().m_bRelaxOnAdvancedPawn = told.m_bAdvancedPawn;
    P().m_shDeferMoves = static_cast<std::uint16_t>(told.m_nDefer);
    P().m_shDeferMaxMoves = static_cast<std::uint16_t>(told.m_nDeferMax);
}

TReadHeuristics CSetReader::Read(std::string_view text) {
    ResetHeuristicParameters(P());
    std::string_view rest = text;
    const auto end = rest.find_last_not_of(" \t");
    rest = rest.substr(0, end == std::string_view::npos ? 0 : end + 1);
    if (rest.size() >= kNoDynamicApplication.size() &&
        EqualWords(rest.substr(rest.size() - kNoDynamicApplication.size()), kNoDynamicApplication)) {
        P().m_bApplyDlfuDynamically = false;
        rest.remove_suffix(kNoDynamicApplication.size());
    }
    const std::string_view set = WithoutBlanks(rest);
    if (set.empty() && !P().m_bApplyDlfuDynamically)
        return m_read;
    if (EqualWords(set, kNone))
        return m_read;
    for (const TPiece& item : CutAtCommas({rest, 0}))
        ReadItem(item);
    StoreRelaxation();
    return m_read;
}

// --- Storing
// -----------------------------------------------------------------------------------------------------------

void CheckWatchedFigures(const TReadHeuristics& read, const TChessboard& board) {
    for (const TSquare square : read.m_parameters.m_BlockedFigures)
        if (square != kNoSquare && !CanBeWatched(board, square))
            throw ChessException("Heuristics: SH_DONTLETFIGUREUNBLOCK needs a black figure on " +
                                 SquareInCapitals(square));
}

TSquare CheckedPinnedFigure(const TReadHeuristics& read, const TChessboard& board) {
    const TSquare key = read.m_parameters.m_nKeyWhiteFigure;
    if (!CanBeKeyFigure(board, key))
        throw ChessException("Heuristics: SH_KEYWHITEFIGURE needs a white queen, rook or bishop on " +
                             SquareInCapitals(key));
    const TSquare pinned = FindPinnedByKeyFigure(board, key);
    if (pinned == kNoSquare)
        throw ChessException("Heuristics: the key white figure on " + SquareInCapitals(key) + " pins no black figure");
    return pinned;
}

void CheckMainDiagonal(const TReadHeuristics& read, const TChessboard& board) {
    const TSquare square = read.m_parameters.m_nBlackFigureOnMainDiagonal;
    if (square != kNoSquare && !IsBlackFigureOnMainDiagonal(board, square))
        throw ChessException("Heuristics: SH_DONTLEAVEMAINDIAGONAL needs a black figure of a main diagonal on " +
                             SquareInCapitals(square));
}

/// What the person wants of the plan of passes is no part of a set.
void KeepPlan(THeuristicParameters& parameters, const THeuristicParameters& known) {
    parameters.m_bLetRelaxHeuristics = known.m_bLetRelaxHeuristics;
    parameters.m_bHeuristicsFallback = known.m_bHeuristicsFallback;
    parameters.m_bRunPass2 = known.m_bRunPass2;
}

} // namespace

TReadHeuristics ReadHeuristicsText(std::string_view text) { return CSetReader().Read(text); }

void StoreReadHeuristics(const TReadHeuristics& read, const TChessboard& board, THeuristicParameters& parameters,
                         THeuristicAnalysisParameters& analysis) {
    if (read.m_nBishopMode != 0)
        throw ChessException("Heuristics: SH_ONECOLORPLAYPOSSIBLE takes no parameter in a set to start with");
    THeuristicParameters stored = read.m_parameters;
    CheckWatchedFigures(read, board);
    CheckMainDiagonal(read, board);
    const auto count = static_cast<std::size_t>(read.m_parameters.m_nBlockedFigures);
    SetWatchedFigures(stored, board, std::span(read.m_parameters.m_BlockedFigures).first(count));
    stored.m_bBlockedFiguresEff = read.m_parameters.m_bBlockedFiguresEff;
    if ((read.m_nHeuristics & SH_KEYWHITEFIGURE) != 0)
        SetKeyFigure(stored, board, read.m_parameters.m_nKeyWhiteFigure, CheckedPinnedFigure(read, board));
    KeepPlan(stored, parameters);
    parameters = stored;
    analysis.m_nKeyLine = read.m_nKeyLine;
    analysis.m_wKeyDiagonal = read.m_wKeyDiagonal;
    analysis.m_seaSnakeAfterMoves.clear();
    analysis.m_zugzwangPositions.clear();
    if ((read.m_nHeuristics & SH_ZUGZWANG) != 0)
        analysis.m_zugzwangPositions[""] = board.m_board; // no moves lead to the root: the text tells none
}

} // namespace quillon
