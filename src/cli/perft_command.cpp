#include "cli/perft_command.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/given_position.h"
#include "cli/option_values.h"
#include "cli/output.h"
#include "core/chess_exception.h"
#include "core/notation.h"
#include "core/perft.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr const char* kInitialPosition = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
constexpr int kMostDepth = 40;

constexpr const char* kPerftExamples = R"(
Examples:
  quillon perft --depth 5
  quillon perft --fen "8/8/8/8/8/1K5Q/1p6/kn6 b" --depth 4 --divide

All castlings that the board allows are possible, and no en passant capture in
the first move, whatever the FEN says of them.)";

struct TPerftOptions {
    std::string m_fen = kInitialPosition;
    int m_depth = 0;
    bool m_bDivide = false;
    bool m_bJson = false;
};

struct TBranch {
    std::string m_move;
    std::uint64_t m_nLeaves = 0;
};

struct TPerftResult {
    std::vector<TBranch> m_branches; // by root move, with --divide
    std::uint64_t m_nLeaves = 0;
    double m_seconds = 0;
};

/// Plies of a root whose parity is that of the side to move, and which are enough for the depth.
int RootPlies(char sideToMove, int depth) {
    const int plies = depth + 1;
    return plies % 2 == (sideToMove == 'w' ? 1 : 0) ? plies : plies + 1;
}

TPerftResult CountLeaves(const TGivenPosition& position, const TPerftOptions& options) {
    const std::unique_ptr<TSearchContext> context = NewSearchContext();
    TAnalysis analysis;
    const int plies = RootPlies(position.m_fields.m_cSideToMove, options.m_depth);
    TChessboard& root = *MakeRoot(*context, analysis, position.m_board, plies, 1);
    TPerftResult result;
    const auto start = std::chrono::steady_clock::now();
    if (options.m_bDivide && options.m_depth > 0)
        result.m_nLeaves = PerftDivide(root, options.m_depth, [&](const TMove& move, std::uint64_t leaves) {
            result.m_branches.push_back({WriteMove(move, root), leaves});
        });
    else
        result.m_nLeaves = Perft(root, options.m_depth);
    result.m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

std::string PersonText(const TPerftResult& result) {
    std::string text;
    for (const TBranch& branch : result.m_branches)
        text += branch.m_move + ": " + std::to_string(branch.m_nLeaves) + "\n";
    char line[120];
    std::snprintf(line, sizeof line, "%llu leaves; %.3f s; %.0f leaves per second\n",
                  static_cast<unsigned long long>(result.m_nLeaves), result.m_seconds,
                  result.m_seconds > 0 ? static_cast<double>(result.m_nLeaves) / result.m_seconds : 0.0);
    return text + line;
}

std::string JsonText(const TGivenPosition& position, const TPerftOptions& options, const TPerftResult& result) {
    nlohmann::ordered_json object;
    object["fen"] = WriteFEN(position.m_board, false) + " " + position.m_fields.m_cSideToMove;
    object["depth"] = options.m_depth;
    object["leaves"] = result.m_nLeaves;
    object["seconds"] = result.m_seconds;
    if (options.m_bDivide) {
        object["divide"] = nlohmann::ordered_json::object();
        for (const TBranch& branch : result.m_branches)
            object["divide"][branch.m_move] = branch.m_nLeaves;
    }
    return object.dump() + "\n";
}

EExitStatus RunPerft(const TPerftOptions& options) {
    try {
        const TGivenPosition position = ReadGivenPosition(options.m_fen);
        CheckSideToMove(position);
        if (!position.m_note.empty())
            WriteDiagnostic(position.m_note);
        const TPerftResult result = CountLeaves(position, options);
        WriteOutput(options.m_bJson ? JsonText(position, options, result) : PersonText(result));
        return EExitStatus::Answered;
    } catch (const ChessException& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::BadInput;
    }
}

} // namespace

void AddPerftCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("perft", "Count the leaves of the tree of legal moves");
    const auto options = std::make_shared<TPerftOptions>();
    command->add_option("--fen", options->m_fen, "Position; without it the initial position of a game")
        ->type_name("FEN");
    command->add_option("--depth", options->m_depth, "Half-moves to the leaves, 0 to 40")
        ->type_name("D")
        ->transform(WholeNumber(0, kMostDepth))
        ->required();
    command->add_flag("--divide", options->m_bDivide, "Also the leaves below each move");
    command->add_flag("--json", options->m_bJson, "One JSON object");
    command->footer(kPerftExamples);
    command->callback([options, &chosen] { chosen = [options] { return RunPerft(*options); }; });
}

} // namespace quillon
