#pragma once
// Work on a range that threads share, each a part of it.

#include <cstddef>
#include <functional>

namespace quillon {

/// Calls `work(begin, end)` for `nParts` parts, or fewer, that are 0 to `nCount` - 1 together. All but the first run in
/// threads of their own; where the system gives no more of them the calling thread does the rest. Ends when all have
/// ended.
///   work  throws nothing.
void InParts(std::size_t nCount, int nParts, const std::function<void(std::size_t begin, std::size_t end)>& work);

} // namespace quillon
