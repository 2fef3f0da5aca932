#pragma once
// The sample library against two independent proofs: the solver, and the reference that shares no code with it.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "core/fen.h"
#include "core/notation.h"
#include "heuristics/solving_driver.h"
#include "library/embedded_sample_library.h"
#include "library/problem_file.h"
#include "library/problem_input.h"
#include "support/reference_solver.h"

namespace quillon::sample_proofs {

struct TSample {
    int m_nId = 0;
    int m_nStipulation = 0;
    TChessboard m_board = EmptyChessboard();
    std::string m_fen;
    std::vector<std::string> m_keys; // sorted
    bool m_bAllSolutions = false;    // the answer is every key, otherwise the one that is found first
};

inline std::vector<TSample> Samples() {
    std::vector<TSample> samples;
    const TProblemInput input{"sample library", std::string(EmbeddedSampleLibrary()), EProblemFormat::Library};
    const TProblemMap problems = CollectProblems(input, [](const ProblemFileError& error) { throw error; });
    for (const auto& [id, problem] : problems) {
        TSample sample;
        sample.m_nId = id;
        sample.m_nStipulation = StipulationMoves(*problem);
        sample.m_bAllSolutions = (problem->flags & kFlagAllSolutions) != 0;
        sample.m_board = *problem->originalPosition;
        sample.m_fen = WriteFEN(sample.m_board, false);
        for (const TMove& move : problem->answer)
            sample.m_keys.push_back(WriteMove(move, sample.m_board));
        std::sort(sample.m_keys.begin(), sample.m_keys.end());
        samples.push_back(std::move(sample));
    }
    return samples;
}

class CSilentNotifier final : public INotifier {
  public:
    void Inform(std::string_view, std::string_view) override {}
    [[nodiscard]] bool AskYesNo(std::string_view, std::string_view) override { return false; }
};

/// The keys that the solver finds as the problem asks for them, sorted; where it asks for all, all or an empty list.
inline std::vector<std::string> KeysBySolver(const TSample& sample) {
    TSolveRequest request;
    request.m_board = sample.m_board;
    request.m_nStipulation = sample.m_nStipulation;
    request.m_mode = sample.m_bAllSolutions ? ESolveMode::AllSolutions : ESolveMode::FirstSolution;
    CSolve solve(request);
    CSilentNotifier notifier;
    const TSolvingResult result = solve.StartSolving(notifier);
    std::vector<std::string> keys;
    if (result.m_bComplete || !sample.m_bAllSolutions)
        for (const TSolution& solution : result.m_solutions)
            keys.push_back(solution.m_text);
    std::sort(keys.begin(), keys.end());
    return keys;
}

/// All keys by the reference; nothing when it would take more positions than allowed.
inline std::optional<std::vector<std::string>> KeysByReference(const TSample& sample, std::uint64_t maxNodes) {
    const auto answer =
        reference::SolveAllWithTable(reference::ProblemFromFen(sample.m_fen), sample.m_nStipulation, maxNodes);
    return answer ? std::optional(answer->keys) : std::nullopt;
}

} // namespace quillon::sample_proofs
