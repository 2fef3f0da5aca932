#pragma once
// quillon perft: counts the leaves of the tree of legal moves.

#include "cli/chosen_command.h"

namespace quillon {

void AddPerftCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
