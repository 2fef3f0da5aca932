#pragma once
// `quillon generate`: makes precalculated endgame data.

#include <CLI/CLI.hpp>

#include "cli/chosen_command.h"

namespace quillon {

void AddGenerateCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
