#include "cli/uci_command.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>

#include "cli/console_notifier.h"
#include "cli/output.h"
#include "cli/solve_settings.h"
#include "cli/uci_session.h"
#include "core/chess_exception.h"

namespace quillon {

namespace {

constexpr const char* kNotes = R"(
Reads commands from standard input and answers on standard output:

  position fen FEN|startpos [moves M...]
  go mate N                 is there a mate in N moves or less?
  go [depth D|infinite]     mates in 1, 2, 3 ... moves, up to D half-moves
  go ... movetime MS|nodes N|wtime MS btime MS [winc MS] [binc MS] [movestogo N]
  setoption name Threads|Hash|PrecalcMemory value N
  setoption name PrecalcPath value DIR
  uci, isready, ucinewgame, stop, ponderhit, quit

The side to move mates, White or Black; castling and en passant are as the FEN
and the moves have them. A mate that is told is proved, with its whole line; so
is "info string no mate in N". docs/uci.md tells the details.)";

TSettings UciSettings() {
    CProgressLine line(false);
    CConsoleNotifier notifier(line);
    return LoadSettings(notifier, CommandLineDefaults());
}

EExitStatus RunUci(const TPrecalcChoice& choice) {
    std::cin.tie(nullptr); // reading must not flush what another thread writes
    CUciOutput output;
    std::optional<CUciPrecalc> precalc;
    try {
        precalc.emplace(UciSettings(), choice, output);
    } catch (const ChessException& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::BadInput;
    }
    return CUciSession(std::cin, output, *precalc).Run();
}

} // namespace

void AddUciCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("uci", "Solve for a chess interface, by the UCI protocol");
    command->footer(kNotes);
    const auto choice = std::make_shared<TPrecalcChoice>();
    AddPrecalcOptions(*command, *choice, "Data");
    command->callback([choice, &chosen] { chosen = [choice] { return RunUci(*choice); }; });
}

} // namespace quillon
