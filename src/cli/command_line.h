#pragma once
// The program `quillon`: reads the command line and runs the command.

namespace quillon {

/// Returns the exit status of the process; throws nothing.
[[nodiscard]] int RunCommandLine(int argc, const char* const* argv);

} // namespace quillon
