#pragma once
// `quillon precalc`: the files of precalculated data.

#include <CLI/CLI.hpp>

#include "cli/chosen_command.h"

namespace quillon {

void AddPrecalcCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
