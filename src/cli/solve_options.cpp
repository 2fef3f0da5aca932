#include "cli/solve_options.h"

#include <algorithm>
#include <cstdint>

#include "cli/option_values.h"
#include "heuristics/read_set_check.h"
#include "library/problem_language.h"

namespace quillon {

namespace {

constexpr int kMostMemoryMB = 1 << 20; // no machine has more: a greater number was meant in other units
constexpr int kDeepestShortMate = 16;  // moves

ESolveMode ModeOf(int nKeys) {
    switch (nKeys) {
    case 2:
        return ESolveMode::StopOnDual;
    case 3:
        return ESolveMode::StopOn3;
    case 4:
        return ESolveMode::StopOn4;
    default:
        return ESolveMode::FirstSolution;
    }
}

/// What the engine is told for a number of moves: plies, ending with White's mating move; 0 stays 0.
constexpr std::int16_t ShortMatePlies(int nMoves) {
    return static_cast<std::int16_t>(nMoves == 0 ? 0 : PliesOf(nMoves));
}

/// A limit is narrower than "all".
ESolveMode ModeOf(const ChessProblem& problem) {
    if ((problem.flags & kFlagStopOnDual) != 0)
        return ESolveMode::StopOnDual;
    if ((problem.flags & kFlagStopOn3Sol) != 0)
        return ESolveMode::StopOn3;
    if ((problem.flags & kFlagStopOn4Sol) != 0)
        return ESolveMode::StopOn4;
    return (problem.flags & kFlagAllSolutions) != 0 ? ESolveMode::AllSolutions : ESolveMode::FirstSolution;
}

void AddSources(CLI::App& command, TSolveOptions& options) {
    auto* const file = command.add_option("FILE", options.m_file,
                                          "Problem library (.cp) or EPD file; - is standard input. Without it the "
                                          "sample library of the program is solved");
    command
        .add_option("--id", options.m_ids, "Solve only these problems of the file: 7, or 1,5,10-20; may be repeated")
        ->type_name("N[,M-K]")
        ->allow_extra_args(false)
        ->check(ProblemIds());
    auto* const fen =
        command.add_option("--fen", options.m_fen, "Solve this position: a FEN, its placement alone, or a position id");
    fen->type_name("FEN")->excludes(file)->excludes("--id");
    auto* const moves = command.add_option("--moves", options.m_moves, "Mate in so many moves or less, with --fen");
    moves->type_name("N")->transform(WholeNumber(1, kMaxStipulation))->needs(fen);
    fen->needs(moves);
}

/// How much memory and how deep a look the search may spend.
void AddEffortOptions(CLI::App& command, TSolveOptions& options, CLI::Option* bruteForce) {
    constexpr const char* kGroup = "Search";
    command
        .add_option("--memory", options.m_memoryMB,
                    "Memory for the register of solved positions, in MiB; 0: no register. Without the option a fifth "
                    "of the memory of the machine")
        ->type_name("MB")
        ->transform(WholeNumber(0, kMostMemoryMB))
        ->group(kGroup);
    AddPrecalcOptions(command, options.m_precalc, kGroup);
    command
        .add_option("--short-mate-depth", options.m_shortMateDepth,
                    "In every position look first for a mate in so many moves or less (1 to 16); 0: do not look. "
                    "Without the option the engine chooses; so does brute force")
        ->type_name("N")
        ->transform(WholeNumber(0, kDeepestShortMate))
        ->excludes(bruteForce)
        ->group(kGroup);
}

/// Which heuristics the passes have, and how they go on.
void AddHeuristicOptions(CLI::App& command, TSolveOptions& options, CLI::Option* bruteForce) {
    constexpr const char* kGroup = "Heuristics";
    command
        .add_option("--heuristics", options.m_heuristics,
                    "The set of the first pass instead of the engine's choice: names as --explain prints them, "
                    "separated by commas, or none")
        ->type_name("LIST")
        ->excludes(bruteForce)
        ->group(kGroup);
    command.add_flag("--safe", options.m_bSafe, "Safe mode: without the implicit heuristics of the quick mode")
        ->group(kGroup);
    command.add_flag("--no-relax", options.m_bNoRelax, "Do not relax heuristics between passes")->group(kGroup);
    command
        .add_flag("--no-pass2", options.m_bNoPass2,
                  "Skip the last pass, which has no heuristics: keys may be found, absence cannot be proved")
        ->group(kGroup);
    command
        .add_flag("--predefined", options.m_bPredefined,
                  "Use the settings stored for some known compositions; they are tried first and proved as all others")
        ->excludes(bruteForce)
        ->group(kGroup);
    command
        .add_flag("--explain", options.m_bExplain, "Tell the chosen heuristics, the plan of passes and their outcome")
        ->group(kGroup);
    command
        .add_flag("--log-relaxation", options.m_bRelaxationLog,
                  "Append each step of the plan to TryRelaxSpecialHeuristics.log in the working folder")
        ->group(kGroup);
}

void AddSearchOptions(CLI::App& command, TSolveOptions& options) {
    constexpr const char* kGroup = "Search";
    auto* const all = command.add_flag("--all", options.m_bAll, "Find every key, instead of stopping at the first");
    all->group(kGroup);
    command.add_option("--stop-on", options.m_stopOn, "Stop when so many keys have been found (1 to 4)")
        ->type_name("K")
        ->transform(WholeNumber(1, 4))
        ->excludes(all)
        ->group(kGroup);
    auto* const hybrid =
        command.add_flag("--hybrid", options.m_bHybrid, "One key with heuristics, then the others by brute force");
    hybrid->group(kGroup);
    auto* const bruteForce = command.add_flag("--brute-force", options.m_bBruteForce, "No heuristics at all");
    bruteForce->excludes(hybrid)->group(kGroup);
    command
        .add_option("--threads", options.m_threads,
                    "Threads that share White's moves: of the key, or with T^L of the first L moves of a line. "
                    "Without the option the problem's own number, or one")
        ->type_name("T[^L]")
        ->check(Threads())
        ->group(kGroup);
    command
        .add_option("--scheduler-levels", options.m_schedulerLevels,
                    "Let White's moves take turns, so that a long first one does not starve "
                    "the next, for so many moves of a line behind the first; 0: off. Without "
                    "the option the problem's own number, or off")
        ->type_name("S")
        ->transform(WholeNumber(0, kMostSchedulerLevels))
        ->group(kGroup);
    command
        .add_flag("--custom-scheduler", options.m_bCustomScheduler,
                  "Let them take turns further down a line too; without effect where the scheduler is off")
        ->group(kGroup);
    command.add_option("--time-limit", options.m_secondsLimit, "Stop a problem after so many seconds")
        ->type_name("SECONDS")
        ->check(Seconds())
        ->group(kGroup);
    AddEffortOptions(command, options, bruteForce);
    AddHeuristicOptions(command, options, bruteForce);
}

void AddOutputOptions(CLI::App& command, TSolveOptions& options) {
    constexpr const char* kGroup = "Output";
    auto* const json = command.add_flag("--json", options.m_bJson, "One JSON object a problem, on one line");
    json->group(kGroup);
    command.add_flag("--quiet", options.m_bQuiet, "One line a problem")->excludes(json)->group(kGroup);
    command
        .add_flag("--progress", options.m_bProgress,
                  "Show the live line of progress even if standard error is no terminal")
        ->group(kGroup);
}

} // namespace

void AddSolveOptions(CLI::App& command, TSolveOptions& options) {
    AddSources(command, options);
    AddSearchOptions(command, options);
    AddOutputOptions(command, options);
}

namespace {

void SetThreads(TSolveRequest& request, const ChessProblem& problem, const TSolveOptions& options) {
    if (options.m_threads) {
        request.m_nThreads = ThreadsOf(*options.m_threads);
        request.m_nMultithreadingLevels = LevelsOf(*options.m_threads);
        return;
    }
    if (problem.threads > 0)
        request.m_nThreads = problem.threads;
    if (problem.levels > 0)
        request.m_nMultithreadingLevels = problem.levels;
}

void SetScheduler(TSolveRequest& request, const ChessProblem& problem, const TSolveOptions& options) {
    request.m_nSchedulerLevels = options.m_schedulerLevels.value_or(std::max<int>(problem.schedulerLevels, 0));
    request.m_bCustomScheduler = options.m_bCustomScheduler;
}

/// A set of the command line is one made by hand, as much as one of the dialog.
const TReadHeuristics& CheckedSet(const TReadHeuristics& read, const TChessboard& board) {
    CheckReadHeuristics(read, board);
    return read;
}

} // namespace

std::vector<SortIndication> IndicationsOf(const ChessProblem& problem, int nUseMainVariant) {
    SortIndications indications = problem.sortIndications;
    for (const auto& [name, variant] : problem.variants)
        if (nUseMainVariant > 1 || (nUseMainVariant > 0 && IsMainVariantName(name)))
            indications.merge(IndicationsOf(variant));
    return {indications.begin(), indications.end()};
}

TSolveRequest MakeRequest(const ChessProblem& problem, const TSolveOptions& options) {
    TSolveRequest request;
    request.m_board = *problem.originalPosition;
    request.m_nStipulation = StipulationMoves(problem);
    request.m_nProblemId = problem.id;
    request.m_description = problem.description;
    request.m_mode = options.m_bAll     ? ESolveMode::AllSolutions
                     : options.m_stopOn ? ModeOf(*options.m_stopOn)
                                        : ModeOf(problem);
    const bool bWayChosen = options.m_bHybrid || options.m_bBruteForce;
    request.m_bHybrid = options.m_bHybrid || (!bWayChosen && (problem.flags & kFlagHybridBruteForce) != 0);
    request.m_bBruteForce = options.m_bBruteForce || (!bWayChosen && (problem.flags & kFlagBruteForce) != 0);
    request.m_bSafeMode = options.m_bSafe || (problem.flags & kFlagSafeMode) != 0;
    request.m_sortIndications = IndicationsOf(problem, problem.useMainVariantAsSortIndications);
    request.m_bLetRelaxHeuristics = !options.m_bNoRelax;
    request.m_bStopRelaxingOnSolution = problem.stopRelaxHeuristicsOnFirstSolution;
    request.m_bRunPass2 = !options.m_bNoPass2;
    request.m_bUsePrecalculatedData = (problem.flags & kFlagNoGlobReg) == 0;
    request.m_nPrecalculatedBudgetMB = problem.globRegMB;
    request.m_nLichessLevels = std::max(problem.lichessLevels, 0);
    if (options.m_heuristics)
        request.m_heuristics = CheckedSet(ReadHeuristicsText(*options.m_heuristics), request.m_board);
    else
        request.m_heuristicClauses = problem.heuristicClauses;
    SetThreads(request, problem, options);
    SetScheduler(request, problem, options);
    request.m_bUsePredefinedIndications = options.m_bPredefined || (problem.flags & kFlagUsePredefinedSettings) != 0;
    request.m_bRelaxationLog = options.m_bRelaxationLog;
    if (options.m_memoryMB)
        request.m_nMemoryBudgetMB = *options.m_memoryMB;
    if (options.m_shortMateDepth)
        request.m_shLookForQuickerMateDepth = ShortMatePlies(*options.m_shortMateDepth);
    return request;
}

} // namespace quillon
