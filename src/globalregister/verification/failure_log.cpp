#include "globalregister/verification/failure_log.h"

#include <algorithm>
#include <charconv>

#include "core/chess_exception.h"
#include "globalregister/disk_access.h"

namespace quillon {

std::string FailureLogName(std::string_view typeName, bool bSecondPass) {
    return "PrecalcFailures" + std::string(typeName) + (bSecondPass ? "_pass2" : "") + ".txt";
}

CFailureLog::CFailureLog(const std::filesystem::path& path) : m_path(path), m_file(path) {
    if (!m_file)
        throw CWriteFailure("Cannot open file " + path.string());
}

void CFailureLog::Write(const TPrecalcFault& fault) {
    m_file << fault.m_nIndex << ',' << fault.m_fen << ',' << fault.m_nStored << ',' << fault.m_nComputed << '\n';
    if (!m_file.flush())
        throw CWriteFailure("Error writing to file: " + m_path.string());
}

std::vector<std::uint64_t> ReadFailureLog(const std::filesystem::path& path, std::uint64_t nElements) {
    std::ifstream file(path);
    if (!file)
        throw CDiskFailure("Cannot open file " + path.string());
    std::vector<std::uint64_t> indexes;
    std::size_t nLine = 0;
    for (std::string line; std::getline(file, line);) {
        ++nLine;
        std::uint64_t index = 0;
        const char* const end = line.data() + line.size();
        const auto [rest, error] = std::from_chars(line.data(), end, index);
        if (error != std::errc() || rest == end || *rest != ',' || index >= nElements)
            throw ChessException(path.string() + ", line " + std::to_string(nLine) + ": no index of this type");
        indexes.push_back(index);
    }
    std::ranges::sort(indexes);
    indexes.erase(std::ranges::unique(indexes).begin(), indexes.end());
    return indexes;
}

} // namespace quillon
