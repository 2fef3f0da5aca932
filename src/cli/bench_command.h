#pragma once
// quillon bench: a fixed set of problems, its speed, and a fingerprint of the search.

#include "cli/chosen_command.h"

namespace quillon {

void AddBenchCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
