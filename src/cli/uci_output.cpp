#include "cli/uci_output.h"

#include "cli/output.h"

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

} // namespace quillon
