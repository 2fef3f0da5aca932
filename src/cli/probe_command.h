#pragma once
// `quillon probe`: what precalculated data say of a position.

#include <CLI/CLI.hpp>

#include "cli/chosen_command.h"

namespace quillon {

void AddProbeCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
