#pragma once
// What stands behind standard output and standard error: a person at a terminal, or a file or another program.

namespace quillon {

enum class EStream { Output, Error };

inline constexpr int kDefaultTerminalWidth = 80;

[[nodiscard]] bool IsTerminal(EStream stream);

/// Columns of the terminal; kDefaultTerminalWidth when it does not tell, or when there is none.
[[nodiscard]] int TerminalWidth(EStream stream);

} // namespace quillon
