#include "tempregister/register_log.h"

#include <fstream>
#include <string>

namespace quillon {

namespace {

std::string Lines(const TRegisterLogEntry& entry) {
    std::string lines(entry.m_text);
    lines += ", msg params: " + std::to_string(entry.m_nParam1) + ", " + std::to_string(entry.m_nParam2) + "\n";
    lines += "\t\t\tElementsIn= " + std::to_string(entry.m_nElements);
    lines += ", DoubtfulElementsIn=" + std::to_string(entry.m_nDoubtfulElements) + "\n";
    return lines;
}

} // namespace

TRegisterOptions& RegisterOptions() {
    static TRegisterOptions options;
    return options;
}

void AppendRegisterLog(const TRegisterLogEntry& entry) {
    if (!RegisterOptions().m_bRegisterInfoLog)
        return;
    // One write to a file opened for appending keeps the lines together, whoever else writes to it.
    std::ofstream(RegisterOptions().m_registerInfoLog, std::ios::binary | std::ios::app) << Lines(entry);
}

} // namespace quillon
