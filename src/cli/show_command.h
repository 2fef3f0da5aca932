#pragma once
// quillon show: what a position is, without solving it.

#include "cli/chosen_command.h"

namespace quillon {

void AddShowCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
