#include "cli/solve_settings.h"

#include <algorithm>

#include "tempregister/register_log.h"

namespace quillon {

namespace {

constexpr std::int64_t kSharedMegabyte = 1 << 20;

/// Who names a number of levels on the command line has said all about the scheduler.
void ApplyScheduler(const TSettings& settings, const ChessProblem& problem, const TSolveOptions& options,
                    TSolveRequest& request) {
    if (options.m_schedulerLevels)
        return;
    request.m_bCustomScheduler |= settings.m_bCustomScheduler;
    if (problem.schedulerLevels == kUnset)
        request.m_nSchedulerLevels = settings.m_nSchedulerLevels;
}

} // namespace

TSettings CommandLineDefaults() {
    TSettings settings;
    settings.m_nSchedulerLevels = 0;
    settings.m_bCustomScheduler = false;
    return settings;
}

void ApplyRegisterSettings(const TSettings& settings) {
    RegisterOptions().m_bCheckTempRegCoherency = settings.m_bCheckTempRegCoherency;
    RegisterOptions().m_bRegisterInfoLog = settings.m_bRegisterInfoLog;
}

void ApplySettings(const TSettings& settings, const ChessProblem& problem, const TSolveOptions& options,
                   TSolveRequest& request) {
    request.m_bSafeMode |= !settings.m_bQuickMode;
    request.m_bUsePredefinedIndications |= settings.m_nUsePredefinedIndications > 0;
    request.m_bRelaxationLog |= settings.m_bTryRelaxSpecialHeuristicsLog;
    request.m_nMemoryShare = settings.m_nMaxMemRatioForTempReg;
    request.m_bClearRegister = settings.m_bClearRegisterOnStartSolving;
    if (!options.m_threads && problem.levels == kUnsetCount)
        request.m_nMultithreadingLevels = std::max(settings.m_nMultithreadingLevels, 1);
    ApplyScheduler(settings, problem, options, request);
    if (problem.lichessLevels == kUnset)
        request.m_nLichessLevels = std::max(settings.m_nLichessLevels, 0);
    if (problem.useMainVariantAsSortIndications == 0)
        request.m_sortIndications = IndicationsOf(problem, settings.m_nUseMainVariantAsSortIndications);
}

void ShareMemory(TSolveRequest& request, int nJobs, std::uint64_t nPhysicalBytes) {
    if (nJobs < 2)
        return;
    if (request.m_nMemoryBudgetMB < 0)
        request.m_nMemoryBudgetMB =
            static_cast<std::int64_t>(nPhysicalBytes / 100) * request.m_nMemoryShare / kSharedMegabyte;
    request.m_nMemoryBudgetMB /= nJobs;
}

} // namespace quillon
