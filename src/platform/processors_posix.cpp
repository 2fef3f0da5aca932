#include "platform/processors.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fstream>
#include <sched.h>
#include <set>
#include <string>
#include <unistd.h>
#include <utility>
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

namespace {

int ReadNumber(const std::filesystem::path& path, int nDefault) {
    int number = 0;
    return std::ifstream(path) >> number ? number : nDefault;
}

bool IsProcessor(const std::string& name) {
    return name.size() > 3 && name.starts_with("cpu") && name.find_first_not_of("0123456789", 3) == std::string::npos;
}

} // namespace

int UsableCores(const std::filesystem::path& cpus) {
    std::set<std::pair<int, int>> cores; // package, core within it
    std::error_code missing;             // then nothing is known of them
    for (const auto& entry : std::filesystem::directory_iterator(cpus, missing)) {
        const std::filesystem::path topology = entry.path() / "topology";
        const int core = ReadNumber(topology / "core_id", -1);
        if (IsProcessor(entry.path().filename().string()) && core >= 0)
            cores.emplace(ReadNumber(topology / "physical_package_id", 0), core);
    }
    const int processors = UsableProcessors();
    return cores.empty() ? processors : std::min(static_cast<int>(cores.size()), processors);
}

} // namespace quillon
