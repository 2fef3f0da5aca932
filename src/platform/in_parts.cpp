#include "platform/in_parts.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <vector>

#include "platform/thread.h"

namespace quillon {

namespace {

constexpr std::size_t kStackBytes = std::size_t{256} << 10;

} // namespace

void InParts(std::size_t nCount, int nParts, const std::function<void(std::size_t begin, std::size_t end)>& work) {
    const std::size_t parts =
        std::clamp<std::size_t>(static_cast<std::size_t>(std::max(nParts, 1)), 1, std::max<std::size_t>(nCount, 1));
    const std::size_t part = nCount / parts;
    std::size_t left = nCount;
    std::vector<CThread> threads;
    try {
        threads.reserve(parts);
        for (; left > nCount - part * (parts - 1); left -= part)
            threads.emplace_back(kStackBytes, [&work, end = left, part] { work(end - part, end); });
    } catch (const std::bad_alloc&) {
    } catch (const std::system_error&) {
    }
    work(0, left);
}

} // namespace quillon
