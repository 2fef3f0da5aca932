#include "cli/uci_output.h"

#include <new>

#include "cli/output.h"
#include "cli/uci_text.h"

namespace quillon {

void CUciOutput::Line(const std::string& text) {
    const std::lock_guard lock(m_mutex);
    if (IsBroken())
        return;
    try {
        WriteOutput(text + "\n");
    } catch (const COutputError&) {
        m_bBroken.store(true, std::memory_order_relaxed);
    }
}

void CUciOutput::Failure(const std::exception& failure) noexcept {
    try {
        Line(InfoString(failure.what()));
    } catch (const std::bad_alloc&) {
    }
}

} // namespace quillon
