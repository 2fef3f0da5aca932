#include "cli/progress_text.h"

#include <cstdio>

namespace quillon {

namespace {

/// The move under analysis at a ply. A ply that has not been entered shows no moves.
struct TShownMove {
    int m_nIndex = 0;
    int m_nCount = 0;
};

TShownMove ShownMove(const TSearchContext& context, int ply) {
    if (ply < 0 || ply >= kStackSlots)
        return {};
    const auto slot = static_cast<std::size_t>(ply);
    return {context.m_moveIndexShown[slot].load(std::memory_order_relaxed),
            context.m_moveCount[slot].load(std::memory_order_relaxed)};
}

std::string Formatted(const char* format, double value) {
    char text[48];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string MoveText(const TProgress& progress) {
    return "Pass " + progress.m_pass + ", move " + std::to_string(progress.m_nMove) + " of " +
           std::to_string(progress.m_nMoves) + Formatted(", %.1f%%", 100 * progress.m_part);
}

std::string NodesText(const TProgress& progress) {
    std::string text = ", " + ShortNumber(progress.m_nPositions) + " nodes, ";
    const double speed = progress.m_seconds > 0 ? static_cast<double>(progress.m_nPositions) / progress.m_seconds : 0;
    return text + ShortNumber(static_cast<std::uint64_t>(speed)) + "/s";
}

} // namespace

double DonePart(const TSearchContext& context, int nRootPly) {
    double done = 0, share = 1;
    for (int ply = nRootPly; ply > nRootPly - kShownPlies; --ply) {
        const TShownMove shown = ShownMove(context, ply);
        if (shown.m_nIndex >= shown.m_nCount)
            break;
        share /= shown.m_nCount;
        done += share * shown.m_nIndex;
    }
    return done;
}

TProgress ReadProgress(const CSolve& solve, int nRootPly, double seconds) {
    const TAnalysis& analysis = solve.Analysis();
    TProgress progress;
    progress.m_pass = PassNameOf(analysis.m_nPassIndex.load(std::memory_order_relaxed));
    const TShownMove shown = ShownMove(solve.Context(), nRootPly);
    if (!progress.m_pass.empty() && shown.m_nIndex < shown.m_nCount) {
        progress.m_nMove = shown.m_nIndex + 1;
        progress.m_nMoves = shown.m_nCount;
        progress.m_part = DonePart(solve.Context(), nRootPly);
    }
    // Most work may be in the short-mate search for minutes: the line is to show that it goes on.
    progress.m_nPositions = analysis.m_nPositions.load(std::memory_order_relaxed) +
                            analysis.m_nTrialPositions.load(std::memory_order_relaxed);
    progress.m_seconds = seconds;
    progress.m_register = solve.RegisterFigures();
    progress.m_bGuide = analysis.m_pStatusText.load(std::memory_order_relaxed) == kGuideLooking;
    return progress;
}

std::string ProgressText(const TProgress& progress) {
    const bool bInPass = progress.m_nMoves > 0 && !progress.m_bGuide;
    std::string text = bInPass             ? MoveText(progress)
                       : progress.m_bGuide ? std::string(kGuideLooking)
                                           : "Initial analysis";
    text += Formatted(", %.1f s", progress.m_seconds);
    if (bInPass)
        text += NodesText(progress);
    if (progress.m_register.m_bInUse)
        text += ", register " + ShortNumber(progress.m_register.m_nElements) + " " +
                std::to_string(progress.m_register.m_nMegabytes) + " MB";
    return text;
}

std::string ShortNumber(std::uint64_t number) {
    constexpr const char* kUnits[] = {"", "k", "M", "G", "T", "P", "E"};
    double value = static_cast<double>(number);
    int unit = 0;
    for (; value >= 999.5 && unit < 6; value /= 1000)
        ++unit;
    if (unit == 0)
        return std::to_string(number);
    return Formatted(value < 9.995 ? "%.2f" : value < 99.95 ? "%.1f" : "%.0f", value) + kUnits[unit];
}

} // namespace quillon
