#pragma once
// `quillon verify`: are tables of precalculated data right?

#include <CLI/CLI.hpp>

#include "cli/chosen_command.h"

namespace quillon {

void AddVerifyCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
