#pragma once
// `quillon regress`: solves every problem of a file and holds the results against what the file expects.

#include "cli/chosen_command.h"

namespace quillon {

void AddRegressCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
