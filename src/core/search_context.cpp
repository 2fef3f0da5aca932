#include "core/search_context.h"

#include <cstddef>
#include <functional>

namespace quillon {

namespace {

std::atomic<int> g_nLiveContexts{0};

/// The slot of `clone` that corresponds to a slot of `source`; a pointer from elsewhere stays as it is.
TChessboard* Moved(TChessboard* p, const TSearchContext& source, TSearchContext& clone) {
    const auto within = [p](const auto& stack) {
        return !std::less<const TChessboard*>()(p, stack.data()) &&
               std::less<const TChessboard*>()(p, stack.data() + stack.size());
    };
    if (p != nullptr && within(source.m_stack))
        return clone.m_stack.data() + (p - source.m_stack.data());
    if (p != nullptr && within(source.m_sideStack))
        return clone.m_sideStack.data() + (p - source.m_sideStack.data());
    return p;
}

template <class TArray> void CopyRelaxed(const TArray& source, TArray& target) {
    for (std::size_t i = 0; i < source.size(); ++i)
        target[i].store(source[i].load(std::memory_order_relaxed), std::memory_order_relaxed);
}

template <class TStack> void Relink(TStack& stack, const TSearchContext& source, TSearchContext& clone) {
    for (TChessboard& slot : stack) {
        slot.m_pContext = &clone;
        slot.m_pPrevious = Moved(slot.m_pPrevious, source, clone);
    }
}

} // namespace

TSearchContext::TSearchContext() {
    g_nLiveContexts.fetch_add(1, std::memory_order_relaxed);
    m_stack.fill(EmptyChessboard());
    m_sideStack.fill(EmptyChessboard());
    for (TChessboard& slot : m_stack)
        slot.m_pContext = this;
    for (TChessboard& slot : m_sideStack)
        slot.m_pContext = this;
}

TSearchContext::~TSearchContext() { g_nLiveContexts.fetch_sub(1, std::memory_order_relaxed); }

int LiveSearchContexts() { return g_nLiveContexts.load(std::memory_order_relaxed); }

std::unique_ptr<TSearchContext> NewSearchContext() { return std::make_unique<TSearchContext>(); }

void CloneSearchContext(const TSearchContext& source, TSearchContext& clone) {
    static_cast<THeuristicParameters&>(clone) = source;
    clone.m_stack = source.m_stack;
    clone.m_sideStack = source.m_sideStack;
    Relink(clone.m_stack, source, clone);
    Relink(clone.m_sideStack, source, clone);
    clone.m_nSideStackIndex = source.m_nSideStackIndex;
    clone.m_pRoot = Moved(source.m_pRoot, source, clone);
    static_cast<TSearchMarks&>(clone) = source;
    clone.m_pQuickerRoot = Moved(source.m_pQuickerRoot, source, clone);
    clone.m_nUncounted = 0; // the source reports what it has counted
    clone.m_nTrialPositions = 0;
    clone.m_nCalledBackTo = 0;
    clone.m_nObservedPlies = kUnobserved;
    clone.m_pObservedLine = nullptr;
    clone.m_pSourceLine = source.m_pObservedLine;
    CopyRelaxed(source.m_moveIndex, clone.m_moveIndex);
    CopyRelaxed(source.m_moveIndexShown, clone.m_moveIndexShown);
    CopyRelaxed(source.m_moveCount, clone.m_moveCount);
    CopyRelaxed(source.m_moveList, clone.m_moveList);
    clone.m_nStopRequest.store(source.m_nStopRequest.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

} // namespace quillon
