#include "library/problem_writer.h"

#include <array>
#include <string_view>
#include <utility>

#include "core/fen.h"
#include "core/notation.h"
#include "library/one_line.h"
#include "library/text_decoding.h"

namespace quillon {

namespace {

std::string HeaderText(const ChessProblem& problem) {
    const std::string id = std::to_string(problem.id);
    switch (problem.kind) {
    case kDirectMate:
        return id + " #" + std::to_string(StipulationMoves(problem));
    case kSelfmate:
        return id + " s#" + std::to_string(StipulationMoves(problem));
    case kNoStipulation:
        return id + " ";
    default:
        return {};
    }
}

std::string CountText(const ChessProblem& problem) {
    return problem.guiCheckCount > 1 ? " " + std::to_string(problem.guiCheckCount) : "";
}

std::string ThreadsText(const ChessProblem& problem) {
    return problem.threads >= 0 ? " THREADS " + std::to_string(problem.threads) : "";
}

/// An option with its leading blank: written if a flag is set, or (without a flag) whatever m_text makes of it.
struct TWrittenOption {
    ProblemFlags m_flag;
    std::string_view m_name;
    std::string (*m_text)(const ChessProblem&); // behind the name; null for nothing
};

// In the order of writing.
constexpr std::array kWrittenOptions{
    TWrittenOption{kFlagNoMirror, " NoMirror", nullptr},
    TWrittenOption{kFlagMirrorOnly, " MirrorOnly", nullptr},
    TWrittenOption{kFlagAllSolutions, " AllSolutions", nullptr},
    TWrittenOption{kFlagStopOnDual, " StopOnDual", nullptr},
    TWrittenOption{kFlagStopOn3Sol, " StopOn3Sol", nullptr},
    TWrittenOption{kFlagStopOn4Sol, " StopOn4Sol", nullptr},
    TWrittenOption{kFlagUseMainVariantAsSortIndications, " UseMainVariantAsSortIndications", nullptr},
    TWrittenOption{kFlagGuiCheck, " GUICHECK", CountText},
    TWrittenOption{kFlagGuiCheckBestDefence, " GUICHECKBESTDEFENCE", CountText},
    TWrittenOption{0, "", ThreadsText},
    TWrittenOption{kFlagSafeMode, " SAFEMODE", nullptr},
    TWrittenOption{kFlagRequiresSyzygy, " RequiresSyzygy", nullptr},
    TWrittenOption{kFlagAllSolutionsRequiresSyzygy, " AllSolutionsRequiresSyzygy", nullptr},
    TWrittenOption{kFlagUsePredefinedSettings, " UsePredefinedSettings", nullptr},
    TWrittenOption{kFlagHybridBruteForce, " HybridBruteForce", nullptr},
    TWrittenOption{kFlagBruteForce, " BruteForce", nullptr},
};

void AppendOptions(std::string& text, const ChessProblem& problem) {
    for (const TWrittenOption& option : kWrittenOptions) {
        if (option.m_flag != 0 && (problem.flags & option.m_flag) == 0)
            continue;
        text += option.m_name;
        if (option.m_text != nullptr)
            text += option.m_text(problem);
    }
    for (const std::string& material : problem.requiredMaterials)
        text += " Requires " + material;
}

void AppendSections(std::string& text, const ChessProblem& problem, bool bWithComments) {
    if (!problem.tags.empty()) {
        text += "//#TAGS\n";
        for (const std::string& tag : problem.tags)
            text += "//#" + OneLine(tag) + "\n";
    }
    if (!problem.variants.empty()) {
        text += "//!VARIANTS\n";
        for (const auto& [name, variant] : problem.variants)
            text += "//!" + FormatVariantLine(variant, bWithComments) + "\n";
        text += "//!ENDVARIANTS\n";
    }
    if (!problem.sortIndications.empty())
        text += "//@SortIndications: " + FormatSortIndications(problem.sortIndications) + "\n";
}

/// Two characters that the reader takes for this square. Answers may name squares beyond the board, which it counts as
/// file + 8 * rank in eight bits.
std::string AnswerSquare(TSquare square) {
    constexpr std::string_view kFiles = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    constexpr std::string_view kRanks = "123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ0";
    if (square < kSquares)
        return {static_cast<char>('a' + FileOf(square)), static_cast<char>('1' + RankOf(square))};
    for (const char file : kFiles)
        for (const char rank : kRanks)
            if (static_cast<TSquare>(file - 'A' + 8 * (rank - '1')) == square)
                return {file, rank};
    return "A9"; // no text is read as this square
}

/// Squares and promotion as they are, whatever stands on the board.
std::string PlainAnswerText(const TMove& move) {
    std::string text = AnswerSquare(move.m_nFrom) + "-" + AnswerSquare(move.m_nTo);
    const TFigure promotion = PromotionKind(move);
    if (promotion != kNoFigure)
        text += promotion == kPawn ? 'P' : KindToLetter(promotion);
    return text;
}

void AppendAnswer(std::string& text, const ChessProblem& problem) {
    text += "\tAnswer: ";
    for (std::size_t i = 0; i < problem.answer.size(); ++i)
        text += (i > 0 ? ",  " : " ") + AnswerMoveText(problem.answer[i], *problem.originalPosition);
    text += "\n";
}

void AppendPlayedMoves(std::string& text, const ChessProblem& problem) {
    text += "   Moves:    ";
    for (const auto& played : problem.playedPositions)
        text += " " + WriteMove(played->m_lastMove, *played->m_pPrevious);
    text += "\n";
}

void AppendBody(std::string& text, const ChessProblem& problem) {
    text += "{\n";
    const std::string description = OneLine(problem.description);
    if (!TrimText(description).empty())
        text += "\tDescription: " + std::string(TrimText(description)) + "\n";
    text += "\tFEN: " + WriteFEN(*problem.originalPosition, false) + "\n";
    if ((problem.flags & kFlagAnswer) != 0)
        AppendAnswer(text, problem);
    if (problem.kind == kNoStipulation && !problem.playedPositions.empty())
        AppendPlayedMoves(text, problem);
    text += "}\n";
}

} // namespace

std::string AnswerMoveText(const TMove& move, const TChessboard& board) {
    const bool bOnBoard = move.m_nFrom < kSquares && move.m_nTo < kSquares;
    if (!bOnBoard || IsNullMove(move) || board.m_board[move.m_nFrom] == kNoFigure || PromotionKind(move) == kPawn)
        return PlainAnswerText(move);
    const bool bCastling = move.m_nFrom == kE1 && (move.m_nTo == kG1 || move.m_nTo == kC1);
    const std::string text = WriteMove(move, board);
    return text.starts_with('0') && !bCastling ? PlainAnswerText(move) : text;
}

void AppendProblemText(std::string& text, const ChessProblem& problem, bool bWithComments) {
    text += "\n" + HeaderText(problem);
    AppendOptions(text, problem);
    text += "\n";
    AppendSections(text, problem, bWithComments);
    AppendBody(text, problem);
}

std::string FormatProblems(const TProblemMap& library, bool bWithComments) {
    std::string text = "UTF-8\n\n";
    for (const auto& [id, problem] : library)
        AppendProblemText(text, *problem, bWithComments);
    return text;
}

std::vector<std::string> UnwrittenParts(const ChessProblem& problem) {
    const std::pair<bool, const char*> parts[] = {
        {!problem.heuristicClauses.empty(), "heuristic clauses"},
        {problem.threads > 0 && problem.levels > 0, "the levels of THREADS"},
        {problem.schedulerLevels != kUnset, "SCHEDULERLEVELS"},
        {problem.lichessLevels != kUnset, "LICHESSLEVELS"},
        {(problem.flags & kFlagNoGlobReg) != 0, "NOGLOBREG"},
        {problem.globRegMB != kUnset, "GLOBREGMB"},
        {!problem.allSolutionsRequiredMaterials.empty(), "ALLSOLUTIONSREQUIRES"},
        {problem.stopRelaxHeuristicsOnFirstSolution, "STOPRELAXHEURISTICSONFIRSTSOLUTION"},
        {!problem.expectedWhiteMoves.empty(), "the expected white moves"},
    };
    std::vector<std::string> unwritten;
    for (const auto& [bSaid, name] : parts)
        if (bSaid)
            unwritten.emplace_back(name);
    return unwritten;
}

} // namespace quillon
