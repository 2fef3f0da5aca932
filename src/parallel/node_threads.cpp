// Threads below the root. There are none yet: every node goes on by itself.

#include "search/search_hooks.h"

namespace quillon {

int AnalyseInThreads(TChessboard&, int, TMove*) { return kContinueHere; }

} // namespace quillon
