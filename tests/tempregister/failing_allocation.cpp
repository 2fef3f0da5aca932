#include "tempregister/failing_allocation.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr long kAll = std::numeric_limits<long>::max();

thread_local long t_nAllocations = 0;
thread_local long t_nLimit = kAll;          // the last allocation that succeeds
thread_local std::size_t t_nLeastBytes = 0; // of those that fail

std::atomic<std::size_t> g_nWatchedBytes = 0; // 0: none are
const std::function<void()>* g_pBeforeDelete = nullptr;

void Free(void* memory, std::size_t bytes) noexcept {
    if (bytes != 0 && bytes == g_nWatchedBytes.load(std::memory_order_acquire))
        (*g_pBeforeDelete)();
    std::free(memory);
}

void* TryAllocate(std::size_t bytes) noexcept {
    if (t_nAllocations >= t_nLimit && bytes >= t_nLeastBytes)
        return nullptr;
    ++t_nAllocations;
    return std::malloc(bytes != 0 ? bytes : 1);
}

void* Allocate(std::size_t bytes) {
    if (void* const memory = TryAllocate(bytes))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t bytes) { return Allocate(bytes); }
void* operator new[](std::size_t bytes) { return Allocate(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return TryAllocate(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return TryAllocate(bytes); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t bytes) noexcept { Free(memory, bytes); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace quillon::test {

long AllocationsOfThisThread() { return t_nAllocations; }

CFailingAllocations::CFailingAllocations(long nAllowed, std::size_t nLeastBytes) {
    t_nLimit = t_nAllocations + nAllowed;
    t_nLeastBytes = nLeastBytes;
}
CFailingAllocations::~CFailingAllocations() { t_nLimit = kAll; }

CBeforeDelete::CBeforeDelete(std::size_t nBytes, std::function<void()> body) : m_body(std::move(body)) {
    g_pBeforeDelete = &m_body;
    g_nWatchedBytes.store(nBytes, std::memory_order_release);
}
CBeforeDelete::~CBeforeDelete() { g_nWatchedBytes.store(0, std::memory_order_release); }

} // namespace quillon::test
