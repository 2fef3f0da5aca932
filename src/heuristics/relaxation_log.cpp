#include "heuristics/relaxation_log.h"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "core/search_context.h"
#include "heuristics/heuristic_text.h"
#include "search/analysis.h"

namespace quillon {

namespace {

std::mutex& LogMutex() {
    static std::mutex mutex;
    return mutex;
}

std::string Signed(std::uint32_t word) { return std::to_string(static_cast<std::int32_t>(word)); }

} // namespace

std::string RelaxationLogLine(const TChessboard& board) {
    const char letter = static_cast<char>('a' + board.m_pContext->m_nRelaxations % 26);
    return std::string("1") + letter + " Heur=" + Signed(board.m_nHeuristics) +
           " HeurParams=" + Signed(board.m_nHeurParams) + " " + HeuristicsText(board, false, *board.m_pAnalysis);
}

void LogRelaxation(const TChessboard& board, std::string_view line) {
    if (!board.m_pAnalysis->m_bTryRelaxSpecialHeuristicsLog)
        return;
    const std::lock_guard guard(LogMutex());
    try {
        std::ofstream(std::filesystem::path(kRelaxationLogName), std::ios::binary | std::ios::app)
            << std::string(line) + "\n";
    } catch (const std::exception&) {
        // A solve does not end for want of a log.
    }
}

} // namespace quillon
