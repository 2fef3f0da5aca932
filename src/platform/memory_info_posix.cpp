#include "platform/memory_info.h"

#include <algorithm>
#include <fstream>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/cgroup.h"

namespace quillon {

namespace {

std::uint64_t PageSize() { return static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)); }

} // namespace

std::uint64_t PhysicalMemory() {
    const std::uint64_t machine = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * PageSize();
    return std::min(machine, CgroupMemoryLimit().value_or(machine));
}

std::uint64_t ResidentMemory() {
    std::ifstream file("/proc/self/statm"); // pages: of the address space, resident, ...
    std::uint64_t total = 0;
    std::uint64_t resident = 0;
    if (!(file >> total >> resident))
        return 0;
    return resident * PageSize();
}

std::uint64_t PeakResidentMemory() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const std::uint64_t peak = static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
    return std::max(peak, ResidentMemory()); // the peak is brought up to date in steps only
}

} // namespace quillon
