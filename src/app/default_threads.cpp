#include "app/default_threads.h"

#include <algorithm>

namespace quillon {

namespace {

int IntegerRoot(int number) {
    int root = 0;
    while ((root + 1) * (root + 1) <= number)
        ++root;
    return root;
}

} // namespace

TDefaultThreads ComputeDefaultThreads(const TSettings& settings, int nCores, int nProcessors) {
    const bool bMany = nCores >= 8 || (nCores >= 6 && nProcessors >= 12);
    if (bMany)
        return {std::max(IntegerRoot(nCores), 4), 2};
    return {nCores, std::max(settings.m_nMultithreadingLevels, 1)};
}

} // namespace quillon
