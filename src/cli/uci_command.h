#pragma once
// quillon uci: the solver behind a chess interface.

#include "cli/chosen_command.h"

namespace quillon {

void AddUciCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
