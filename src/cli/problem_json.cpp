#include "cli/problem_json.h"

#include <array>
#include <nlohmann/json.hpp>

#include "cli/library_source.h"
#include "core/fen.h"
#include "core/notation.h"
#include "heuristics/heuristic_set.h"
#include "library/problem_writer.h"

namespace quillon {

namespace {

using TJson = nlohmann::ordered_json;

struct TFlagName {
    ProblemFlags m_flag;
    const char* m_name;
};

constexpr std::array kFlagNames{
    TFlagName{kFlagNoMirror, "NoMirror"},
    TFlagName{kFlagMirrorOnly, "MirrorOnly"},
    TFlagName{kFlagAllSolutions, "AllSolutions"},
    TFlagName{kFlagStopOnDual, "StopOnDual"},
    TFlagName{kFlagStopOn3Sol, "StopOn3Sol"},
    TFlagName{kFlagStopOn4Sol, "StopOn4Sol"},
    TFlagName{kFlagUseMainVariantAsSortIndications, "UseMainVariantAsSortIndications"},
    TFlagName{kFlagGuiCheck, "GuiCheck"},
    TFlagName{kFlagGuiCheckBestDefence, "GuiCheckBestDefence"},
    TFlagName{kFlagSafeMode, "SafeMode"},
    TFlagName{kFlagNoGlobReg, "NoGlobReg"},
    TFlagName{kFlagRequiresSyzygy, "RequiresSyzygy"},
    TFlagName{kFlagAllSolutionsRequiresSyzygy, "AllSolutionsRequiresSyzygy"},
    TFlagName{kFlagUsePredefinedSettings, "UsePredefinedSettings"},
    TFlagName{kFlagHybridBruteForce, "HybridBruteForce"},
    TFlagName{kFlagBruteForce, "BruteForce"},
};

void AddIfSet(TJson& object, const char* name, int value) {
    if (value >= 0)
        object[name] = value;
}

TJson OptionsObject(const ChessProblem& problem) {
    TJson options = TJson::object();
    for (const TFlagName& flag : kFlagNames)
        if ((problem.flags & flag.m_flag) != 0)
            options[flag.m_name] = true;
    if (problem.stopRelaxHeuristicsOnFirstSolution)
        options["StopRelaxHeuristicsOnFirstSolution"] = true;
    if (problem.guiCheckCount > 1)
        options["GuiCheckCount"] = problem.guiCheckCount;
    AddIfSet(options, "Threads", problem.threads);
    AddIfSet(options, "Levels", problem.levels);
    AddIfSet(options, "SchedulerLevels", problem.schedulerLevels);
    AddIfSet(options, "LichessLevels", problem.lichessLevels);
    AddIfSet(options, "GlobRegMB", problem.globRegMB);
    if (!problem.requiredMaterials.empty())
        options["Requires"] = problem.requiredMaterials;
    if (!problem.allSolutionsRequiredMaterials.empty())
        options["AllSolutionsRequires"] = problem.allSolutionsRequiredMaterials;
    for (const auto& [bit, argument] : problem.heuristicClauses)
        options["Heuristics"][std::string(HeuristicName(bit))] = argument;
    return options;
}

TJson MovesOf(const std::vector<TMove>& moves, const TChessboard& board) {
    TJson list = TJson::array();
    for (const TMove& move : moves)
        list.push_back(AnswerMoveText(move, board));
    return list;
}

TJson VariantObject(const Variant& variant) {
    TJson object;
    object["name"] = variant.name;
    object["moves"] = TJson::array();
    for (const VariantMove& move : variant.moves) {
        TJson element;
        element["move"] = move.text;
        if (!move.comment.empty())
            element["comment"] = move.comment;
        object["moves"].push_back(std::move(element));
    }
    return object;
}

void AddLines(TJson& object, const ChessProblem& problem) {
    if ((problem.flags & kFlagAnswer) != 0)
        object["answer"] = MovesOf(problem.answer, *problem.originalPosition);
    if (!problem.expectedWhiteMoves.empty()) // of later positions: no figure is known
        object["expectedWhiteMoves"] = MovesOf(problem.expectedWhiteMoves, EmptyChessboard());
    for (const auto& played : problem.playedPositions)
        object["moves"].push_back(WriteMove(played->m_lastMove, *played->m_pPrevious));
    for (const auto& [name, variant] : problem.variants)
        object["variants"].push_back(VariantObject(variant));
    if (!problem.sortIndications.empty())
        object["sortIndications"] = FormatSortIndications(problem.sortIndications);
}

} // namespace

nlohmann::ordered_json ProblemObject(const ChessProblem& problem) {
    TJson object;
    object["id"] = problem.id;
    object["kind"] = KindName(problem);
    if (StipulationMoves(problem) > 0)
        object["stipulation"] = StipulationMoves(problem);
    object["fen"] = WriteFEN(*problem.originalPosition, false);
    if (!problem.description.empty())
        object["description"] = problem.description;
    if (!problem.tags.empty())
        object["tags"] = problem.tags;
    TJson options = OptionsObject(problem);
    if (!options.empty())
        object["options"] = std::move(options);
    AddLines(object, problem);
    return object;
}

} // namespace quillon
