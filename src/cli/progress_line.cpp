#include "cli/progress_line.h"

#include <algorithm>
#include <iostream>

#include "cli/output.h"
#include "platform/terminal.h"

namespace quillon {

std::size_t CProgressLine::Width() {
    // The last column stays free: a terminal may go to the next line when it is written to.
    return static_cast<std::size_t>(std::max(TerminalWidth(EStream::Error) - 1, 1));
}

void CProgressLine::Show(std::string_view text) {
    if (!m_bShown)
        return;
    const std::lock_guard lock(m_mutex);
    const std::string_view line = text.substr(0, Width());
    const std::size_t blanks = m_nWritten > line.size() ? m_nWritten - line.size() : 0;
    std::cerr << "\r" + std::string(line) + std::string(blanks, ' ') << std::flush;
    m_nWritten = std::max(line.size(), m_nWritten);
}

void CProgressLine::Write(std::string_view text) {
    if (!m_bShown)
        return;
    const std::lock_guard lock(m_mutex);
    std::cerr << text << std::flush;
    m_nWritten = std::max(text.size(), m_nWritten);
}

void CProgressLine::Erase() {
    const std::lock_guard lock(m_mutex);
    EraseLocked();
}

void CProgressLine::EraseLocked() {
    if (m_nWritten > 0)
        std::cerr << "\r" + std::string(m_nWritten, ' ') + "\r" << std::flush;
    m_nWritten = 0;
}

void CProgressLine::WriteMessage(std::string_view message) {
    const std::lock_guard lock(m_mutex);
    EraseLocked();
    WriteDiagnostic(message);
}

void CProgressLine::WriteReport(std::string_view text) {
    const std::lock_guard lock(m_mutex);
    EraseLocked();
    std::cerr << text << std::flush;
}

void CProgressLine::WriteResult(std::string_view text) {
    const std::lock_guard lock(m_mutex);
    EraseLocked();
    WriteOutput(text);
}

} // namespace quillon
