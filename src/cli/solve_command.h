#pragma once
// quillon solve: solves the problems of a file, or one position.

#include "cli/chosen_command.h"

namespace quillon {

void AddSolveCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
