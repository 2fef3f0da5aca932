#include "platform/cgroup.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

namespace {

namespace fs = std::filesystem;

// Version 1 writes "no limit" as the largest multiple of a page; no machine comes near this.
constexpr std::uint64_t kUnlimitedFrom = std::uint64_t{1} << 60;

// A line of the membership file: "id:controller,controller:/path". Version 2 has the id 0 and no controllers.
struct TMembership {
    std::string m_controllers;
    std::string m_path;
};

std::vector<TMembership> ReadMemberships(const TCgroupPlace& place) {
    std::vector<TMembership> memberships;
    std::ifstream file(place.m_membership);
    for (std::string line; std::getline(file, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = first == std::string::npos ? first : line.find(':', first + 1);
        if (second != std::string::npos)
            memberships.push_back({line.substr(first + 1, second - first - 1), line.substr(second + 1)});
    }
    return memberships;
}

bool HasController(const TMembership& membership, std::string_view controller) {
    std::istringstream list(membership.m_controllers);
    for (std::string name; std::getline(list, name, ',');)
        if (name == controller)
            return true;
    return false;
}

// The folders of a group and of all groups above it, up to `root`.
std::vector<fs::path> FoldersUpTo(const fs::path& root, const std::string& path) {
    std::vector<fs::path> folders;
    fs::path relative = fs::path(path).relative_path().lexically_normal();
    while (!relative.empty() && relative.has_filename()) {
        folders.push_back(root / relative);
        relative = relative.parent_path();
    }
    folders.push_back(root);
    return folders;
}

template <typename T> std::optional<T> Smaller(std::optional<T> a, std::optional<T> b) {
    if (!a || !b)
        return a ? a : b;
    return std::min(*a, *b);
}

// The tightest limit that `read` finds in the groups of the process: read(folder, bVersion2).
template <typename T, typename TRead>
std::optional<T> Tightest(const TCgroupPlace& place, std::string_view controller, TRead read) {
    std::optional<T> tightest;
    for (const TMembership& membership : ReadMemberships(place)) {
        const bool bVersion2 = membership.m_controllers.empty();
        if (!bVersion2 && !HasController(membership, controller))
            continue;
        const fs::path root = bVersion2 ? place.m_root : place.m_root / controller;
        for (const fs::path& folder : FoldersUpTo(root, membership.m_path))
            tightest = Smaller<T>(tightest, read(folder, bVersion2));
    }
    return tightest;
}

std::optional<std::uint64_t> ReadMemoryLimit(const fs::path& folder, bool bVersion2) {
    std::ifstream file(folder / (bVersion2 ? "memory.max" : "memory.limit_in_bytes"));
    std::uint64_t limit = 0; // version 2 writes "max" for no limit, which is no number
    if (!(file >> limit) || limit >= kUnlimitedFrom)
        return std::nullopt;
    return limit;
}

// Version 2 has "QUOTA PERIOD" in one file, version 1 a file for each; "max" or -1 is no quota.
std::optional<double> ReadCpuQuota(const fs::path& folder, bool bVersion2) {
    double quota = 0;
    double period = 0;
    if (bVersion2) {
        std::ifstream(folder / "cpu.max") >> quota >> period;
    } else {
        std::ifstream(folder / "cpu.cfs_quota_us") >> quota;
        std::ifstream(folder / "cpu.cfs_period_us") >> period;
    }
    if (quota <= 0 || period <= 0)
        return std::nullopt;
    return quota / period;
}

} // namespace

std::optional<std::uint64_t> CgroupMemoryLimit(const TCgroupPlace& place) {
    return Tightest<std::uint64_t>(place, "memory", ReadMemoryLimit);
}

std::optional<double> CgroupCpuQuota(const TCgroupPlace& place) { return Tightest<double>(place, "cpu", ReadCpuQuota); }

} // namespace quillon
