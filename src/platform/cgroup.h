#pragma once
// What a container may use: the limits that control groups, version 1 or 2, put on this process.
//
// A limit holds for a group and for all groups below it, so the tightest one from the process's group up to the root
// counts. A container often sees its own group as the root while its path is still told from outside: folders that do
// not exist are passed over.

#include <cstdint>
#include <filesystem>
#include <optional>

namespace quillon {

/// Where control groups are read from; the tests read their own folders.
struct TCgroupPlace {
    std::filesystem::path m_membership = "/proc/self/cgroup"; // the groups of this process, one line a hierarchy
    std::filesystem::path m_root = "/sys/fs/cgroup";          // the groups as folders
};

/// Memory limit in bytes; nothing without a limit.
[[nodiscard]] std::optional<std::uint64_t> CgroupMemoryLimit(const TCgroupPlace& place = {});

/// Processors' worth of time the process may use (1.5: one and a half); nothing without a quota.
[[nodiscard]] std::optional<double> CgroupCpuQuota(const TCgroupPlace& place = {});

} // namespace quillon
