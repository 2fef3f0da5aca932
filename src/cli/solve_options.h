#pragma once
// The options of `solve`, and the request that they and a problem's own options make.

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/precalc_data.h"
#include "heuristics/solving_driver.h"
#include "library/chess_problem.h"

namespace quillon {

struct TSolveOptions {
    std::optional<std::string> m_file; // "-" for standard input
    std::vector<std::string> m_ids;
    std::optional<std::string> m_fen;
    std::optional<int> m_moves;

    bool m_bAll = false;
    std::optional<int> m_stopOn; // 1..4
    bool m_bHybrid = false;
    bool m_bBruteForce = false;
    bool m_bSafe = false;
    bool m_bNoRelax = false;
    bool m_bNoPass2 = false;
    std::optional<std::string> m_heuristics; // a set as printed, or "none"
    bool m_bPredefined = false;              // stored settings of known compositions
    bool m_bRelaxationLog = false;           // TryRelaxSpecialHeuristics.log
    std::optional<std::string> m_threads;    // "T" or "T^L"
    std::optional<int> m_schedulerLevels;
    bool m_bCustomScheduler = false;
    std::optional<double> m_secondsLimit;
    std::optional<int> m_memoryMB;       // of the register of solved positions; 0: none
    std::optional<int> m_shortMateDepth; // moves; 0: no short-mate search
    TPrecalcChoice m_precalc;

    bool m_bExplain = false; // tell the plan and what each pass came to
    bool m_bJson = false;
    bool m_bQuiet = false;
    bool m_bProgress = false;
};

/// Adds all of them to the command; `options` must outlive the reading of the command line.
void AddSolveOptions(CLI::App& command, TSolveOptions& options);

///   Errors  ChessException: --heuristics cannot be read.
/// A problem's own options hold unless the command line says otherwise.
[[nodiscard]] TSolveRequest MakeRequest(const ChessProblem& problem, const TSolveOptions& options);

/// What the problem says of the order of White's moves, by itself and by its variants.
///   nUseMainVariant  0: not by variants, 1: by the main variant, 2: by all.
[[nodiscard]] std::vector<SortIndication> IndicationsOf(const ChessProblem& problem, int nUseMainVariant);

} // namespace quillon
