#include "cli/bench_command.h"

#include <CLI/CLI.hpp>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/bench_positions.h"
#include "cli/output.h"
#include "cli/solve_report.h"
#include "core/fen.h"
#include "platform/clock.h"

namespace quillon {

namespace {

// Fixed, so that the search does not depend on the machine's memory.
constexpr std::int64_t kBenchMemoryMB = 256;

/// 64-bit FNV-1a over numbers and texts, each of them with an end.
class CFingerprint {
  public:
    void Add(std::string_view text) {
        for (const char c : text)
            AddByte(static_cast<unsigned char>(c));
        AddByte(0);
    }
    void Add(std::uint64_t number) { Add(std::to_string(number)); }

    [[nodiscard]] std::string Text() const {
        char text[24];
        std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(m_hash));
        return text;
    }

  private:
    void AddByte(unsigned char byte) { m_hash = (m_hash ^ byte) * 0x100000001b3; }

    std::uint64_t m_hash = 0xcbf29ce484222325;
};

TSolveRequest RequestOf(const TBenchPosition& position) {
    TSolveRequest request;
    request.m_board = ChessboardFromFEN(position.m_placement);
    request.m_nStipulation = position.m_nMoves;
    request.m_mode = ESolveMode::AllSolutions;
    request.m_nMemoryBudgetMB = kBenchMemoryMB;
    return request;
}

std::string KeysText(const std::vector<TSolution>& keys) {
    constexpr std::size_t kMostShown = 2;
    if (keys.size() > kMostShown)
        return std::to_string(keys.size()) + " keys";
    std::string text;
    for (const TSolution& key : keys)
        text += (text.empty() ? "1." : " 1.") + key.m_text + "!";
    return text.empty() ? "no solution" : text;
}

/// All positions: a change of the short-mate search is a change of the search.
std::uint64_t Searched(const TSolvingResult& result) { return result.m_nPositions + result.m_nTrialPositions; }

std::string LineText(const TBenchPosition& position, const TSolvingResult& result) {
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "%12llu nodes  #%d  ", static_cast<unsigned long long>(Searched(result)),
                  position.m_nMoves);
    return numbers + std::string(position.m_placement) + " " + KeysText(result.m_solutions) +
           (result.m_bComplete ? "" : " (doubtful)") + "\n";
}

EExitStatus RunBench() {
    CProgressLine line(false);
    static TUserSignals signals; // of pauses and reports; Ctrl+C ends a bench at once: a part of it says nothing
    InstallJobSignals(signals.m_jobs);
    CFingerprint fingerprint;
    std::uint64_t nodes = 0;
    double seconds = 0;
    const double cpuStart = ProcessCpuSeconds();
    for (const TBenchPosition& position : kBenchPositions) {
        const TSolvingResult result = SolveWatched(RequestOf(position), line, std::nullopt, signals).m_result;
        const std::uint64_t searched = Searched(result);
        nodes += searched;
        seconds += result.m_seconds;
        fingerprint.Add(searched);
        for (const TSolution& key : result.m_solutions)
            fingerprint.Add(key.m_text);
        fingerprint.Add(result.m_bComplete ? 1 : 0);
        WriteOutput(LineText(position, result));
    }
    const double cpuSeconds = ProcessCpuSeconds() - cpuStart;
    char text[200];
    std::snprintf(text, sizeof text,
                  "\nSeconds: %.3f (of the processor: %.3f)\nNodes per second: %.0f\nFingerprint: %s\nBench: %llu\n",
                  seconds, cpuSeconds, seconds > 0 ? static_cast<double>(nodes) / seconds : 0.0,
                  fingerprint.Text().c_str(), static_cast<unsigned long long>(nodes));
    WriteOutput(text);
    return EExitStatus::Answered;
}

} // namespace

void AddBenchCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command =
        app.add_subcommand("bench", "Solve a fixed set of problems and tell speed and fingerprint");
    command->footer(R"(
Every key of each problem is looked for, on one thread and without a clock.
"Bench" is the sum of all nodes; it and the fingerprint, which also has the
keys in it, change only when the search does.)");
    command->callback([&chosen] { chosen = RunBench; });
}

} // namespace quillon
