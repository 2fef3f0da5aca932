#pragma once
// How many processors the process may really use.

#include <filesystem>

namespace quillon {

/// Hardware processors, less those the process is bound away from, and no more than its container's quota pays for
/// (a part of a processor counts as one). At least 1.
[[nodiscard]] int UsableProcessors();

/// Physical cores of these: where a core has several hardware threads, there are fewer of them. At least 1.
///   cpus  the system's folder of processors; the tests have their own.
[[nodiscard]] int UsableCores(const std::filesystem::path& cpus = "/sys/devices/system/cpu");

} // namespace quillon
