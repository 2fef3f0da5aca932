#pragma once
// How many processors the process may really use.

namespace quillon {

/// Hardware processors, less those the process is bound away from, and no more than its container's quota pays for
/// (a part of a processor counts as one). At least 1.
[[nodiscard]] int UsableProcessors();

} // namespace quillon
