#pragma once
// What reading the command line leads to.

#include <functional>

#include "cli/exit_status.h"

namespace CLI {
class App;
}

namespace quillon {

/// The command that was chosen, to be run when the whole command line has been read. A command's Add function gets the
/// place to put it, which must outlive the reading.
using TChosenCommand = std::function<EExitStatus()>;

} // namespace quillon
