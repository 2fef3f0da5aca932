#pragma once
// How many threads, and multithreading levels, a machine gets where nobody has said how many.

#include "app/settings.h"

namespace quillon {

struct TDefaultThreads {
    int m_nThreads = 1; // of each group
    int m_nLevels = 1;
};

/// A machine of many processors shares two white moves of a line among groups of threads, whatever the settings say:
/// 16 cores make 4^2. A smaller one has a thread for each core, and the levels of the settings.
///   nCores       physical ones, at least 1 (UsableCores).
///   nProcessors  logical ones (UsableProcessors).
[[nodiscard]] TDefaultThreads ComputeDefaultThreads(const TSettings& settings, int nCores, int nProcessors);

} // namespace quillon
