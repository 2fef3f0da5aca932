#include "cli/uci_command.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "cli/uci_session.h"

namespace quillon {

namespace {

constexpr const char* kNotes = R"(
Reads commands from standard input and answers on standard output:

  position fen FEN|startpos [moves M...]
  go mate N                 is there a mate in N moves or less?
  go [depth D|infinite]     mates in 1, 2, 3 ... moves, up to D half-moves
  go ... movetime MS|nodes N|wtime MS btime MS [winc MS] [binc MS] [movestogo N]
  setoption name Threads|Hash value N
  uci, isready, ucinewgame, stop, ponderhit, quit

The side to move mates, White or Black; castling and en passant are as the FEN
and the moves have them. A mate that is told is proved, with its whole line; so
is "info string no mate in N". docs/uci.md tells the details.)";

EExitStatus RunUci() {
    std::cin.tie(nullptr); // reading must not flush what another thread writes
    CUciOutput output;
    return CUciSession(std::cin, output).Run();
}

} // namespace

void AddUciCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("uci", "Solve for a chess interface, by the UCI protocol");
    command->footer(kNotes);
    command->callback([&chosen] { chosen = RunUci; });
}

} // namespace quillon
