#pragma once
// `quillon list`: the problems of a file, a line each.

#include "cli/chosen_command.h"

namespace quillon {

void AddListCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
