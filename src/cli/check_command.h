#pragma once
// `quillon check`: what is wrong or odd in a library.

#include "cli/chosen_command.h"

namespace quillon {

void AddCheckCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
