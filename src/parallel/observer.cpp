#include "parallel/observer.h"

#include <algorithm>
#include <limits>

#include "globalregister/active_registers.h"
#include "heuristics/result_texts.h"
#include "search/control.h"

namespace quillon {

namespace {

/// The move under analysis at a ply. A ply that has not been entered shows no moves.
struct TShownIndex {
    int m_nIndex = 0;
    int m_nCount = 0;
};

TShownIndex ShownIndex(const TSearchContext& context, int ply) {
    if (ply < 0 || ply >= kStackSlots)
        return {};
    const auto slot = static_cast<std::size_t>(ply);
    return {context.m_moveIndexShown[slot].load(std::memory_order_relaxed),
            context.m_moveCount[slot].load(std::memory_order_relaxed)};
}

/// While threads begin and end, one may be taken off before it was added.
std::uint32_t Shown(const std::atomic<std::uint32_t>& count) {
    const std::uint32_t value = count.load(std::memory_order_relaxed);
    return value > std::uint32_t{std::numeric_limits<std::int32_t>::max()} ? 0 : value;
}

/// Of the data that the process searches with.
std::uint64_t PrecalcMegabytes() {
    constexpr int kMegabyteBits = 20;
    const CGlobalRegisters* const registers = ActiveRegisters();
    return registers != nullptr ? registers->MemoryShown() >> kMegabyteBits : 0;
}

} // namespace

double DonePart(const TSearchContext& context, int nRootPly) {
    double done = 0, share = 1;
    for (int ply = nRootPly; ply > nRootPly - kShownPlies; --ply) {
        const TShownIndex shown = ShownIndex(context, ply);
        if (shown.m_nIndex >= shown.m_nCount)
            break;
        share /= shown.m_nCount;
        done += share * shown.m_nIndex;
    }
    return done;
}

CObserver::CObserver(CSolve& solve, int nObserverLevels)
    : m_solve(solve), m_lines(std::max(nObserverLevels, 0)), m_nStart(AnalysisTicks(solve.Analysis())) {
    solve.Analysis().m_pObservedLines = &m_lines;
}

CObserver::~CObserver() { m_solve.Analysis().m_pObservedLines = nullptr; }

double CObserver::Seconds() const { return static_cast<double>(AnalysisTicks(m_solve.Analysis()) - m_nStart) / 1000.0; }

TProgressState CObserver::Read(std::optional<std::uint32_t> thread) const {
    const TAnalysis& analysis = m_solve.Analysis();
    TProgressState state;
    state.m_thread = thread;
    ReadPass(state);
    ReadThreads(state);
    state.m_bPaused = analysis.m_nCommand.load(std::memory_order_relaxed) == kPauseCommand &&
                      analysis.m_nCommandThread.load(std::memory_order_relaxed) == kAllThreads;
    // Who waits is to see that something moves: a root move may be nothing but short-mate search for minutes.
    state.m_nPositions = analysis.m_nPositions.load(std::memory_order_relaxed) +
                         analysis.m_nTrialPositions.load(std::memory_order_relaxed);
    state.m_register = m_solve.RegisterFigures();
    state.m_nGlobalRegisterMegabytes = PrecalcMegabytes();
    state.m_seconds = Seconds();
    return state;
}

void CObserver::ReadPass(TProgressState& state) const {
    const TAnalysis& analysis = m_solve.Analysis();
    state.m_status = analysis.m_pStatusText.load(std::memory_order_relaxed);
    state.m_nPasses = analysis.m_nPassesPlanned.load(std::memory_order_relaxed);
    const TShownPass* const pass = analysis.m_pShownPass.load(std::memory_order_acquire);
    if (pass == nullptr) {
        if (state.m_status.empty())
            state.m_status = kInitialCheckPending; // not started yet, or about to begin the first pass
        return;
    }
    state.m_pass = *pass;
    state.m_part = DonePart(m_solve.Context(), pass->m_nRootPlies);
}

void CObserver::ReadThreads(TProgressState& state) const {
    const TAnalysis& analysis = m_solve.Analysis();
    state.m_nRunningThreads = Shown(analysis.m_nRunningThreads);
    state.m_nSchedulerThreads = Shown(analysis.m_nSchedulerThreads);
    const std::vector<std::uint32_t> threads = m_lines.Threads();
    const auto share = static_cast<std::uint32_t>(state.m_pass.m_nThreads); // theirs are the lowest numbers
    state.m_nAwaitedThreads =
        static_cast<std::uint32_t>(std::ranges::count_if(threads, [&](std::uint32_t n) { return n < share; }));
    const std::optional<std::uint32_t> chosen =
        state.m_thread || threads.size() != 1 ? state.m_thread : std::optional(threads.front());
    if (!chosen)
        return;
    std::optional<std::vector<TObservedLevel>> levels = m_lines.Read(*chosen);
    state.m_bThreadStopped = state.m_thread && !levels;
    if (levels)
        state.m_levels = std::move(*levels);
}

} // namespace quillon
