#pragma once
// `quillon convert`: a library in another format.

#include "cli/chosen_command.h"

namespace quillon {

void AddConvertCommand(CLI::App& app, TChosenCommand& chosen);

} // namespace quillon
