#include "platform/processors.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <sched.h>
#include <unistd.h>
#include <vector>

#include "platform/cgroup.h"

namespace quillon {

namespace {

// The set must be as large as the kernel's own, which is not told: it grows until the call accepts it.
int ProcessorsOfAffinity() {
    constexpr std::size_t kMaxSets = 64; // of 1024 processors each
    for (std::size_t sets = 1; sets <= kMaxSets; sets *= 2) {
        std::vector<cpu_set_t> mask(sets);
        const std::size_t bytes = sets * sizeof(cpu_set_t);
        if (sched_getaffinity(0, bytes, mask.data()) == 0)
            return CPU_COUNT_S(bytes, mask.data());
        if (errno != EINVAL)
            break;
    }
    return static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
}

} // namespace

int UsableProcessors() {
    int processors = ProcessorsOfAffinity();
    if (const auto quota = CgroupCpuQuota(); quota && *quota < processors)
        processors = static_cast<int>(std::ceil(*quota));
    return std::max(processors, 1);
}

} // namespace quillon
