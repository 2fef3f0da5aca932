#pragma once
// How the settings have problem files read and written by a command.

#include "library/problem_file.h"

namespace quillon {

/// By options.ini in the working folder: the language of names, and whether comments are kept apart.
[[nodiscard]] TProblemFileOptions SetFileOptions();

} // namespace quillon
