#pragma once
// What every thread of the search has in common, whoever forms it.

#include <cstddef>
#include <exception>
#include <functional>

#include "core/search_context.h"
#include "search/analysis.h"

namespace quillon {

/// The stack that a search thread is created with, bytes.
///   nPlies  of the whole analysis.
[[nodiscard]] std::size_t SearchStackBytes(int nPlies);

/// The frame of a thread's work: its priority before, its line shown to observers meanwhile, its counts brought to the
/// analysis behind. Who formed the thread waits.
///   Returns  what `body` threw, null for nothing.
[[nodiscard]] std::exception_ptr RunSearchThread(TAnalysis& analysis, TSearchContext& context,
                                                 const std::function<void()>& body);

} // namespace quillon
