#include "parallel/status_texts.h"

#include <algorithm>
#include <cstdio>

#include "core/notation.h"
#include "heuristics/pass_plan.h"

namespace quillon {

namespace {

constexpr std::size_t kMostTraces = 64; // a report is to be read
constexpr std::string_view kCut = "...";

template <class... TArguments> std::string Formatted(const char* format, TArguments... arguments) {
    char text[160];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

std::string Megabytes(std::uint64_t megabytes) {
    constexpr std::uint64_t kGigabyte = 1024;
    return megabytes >= kGigabyte ? Formatted("%0.1fGB", static_cast<double>(megabytes) / kGigabyte)
                                  : Formatted("%dMB", static_cast<int>(megabytes));
}

std::string ChoiceText(const TProgressState& state) {
    return state.m_thread ? Formatted("%d", static_cast<int>(*state.m_thread)) : "A";
}

bool IsInPass(const TProgressState& state) { return state.m_status.empty(); }

std::string NameOf(const TShownPass& pass) { return PassName(pass.m_nPass, pass.m_nRelaxations); }

std::string ThreadsText(const TProgressState& state) {
    const auto running = static_cast<int>(state.m_nRunningThreads);
    const char* const kind = state.m_pass.m_bThreadsForced ? "(forced)" : "";
    return " Thrds=" + (state.m_nSchedulerThreads == 0
                            ? Formatted("%d%s", running, kind)
                            : Formatted("%d%s+%d", running, kind, static_cast<int>(state.m_nSchedulerThreads)));
}

std::string DoneText(const TProgressState& state) {
    return Formatted("%0.1f%% %lld", 100 * state.m_part, static_cast<long long>(state.m_nPositions));
}

std::string RootThreadsText(const TShownPass& pass) {
    if (pass.m_nThreads < 2)
        return {};
    std::string text = Formatted("%2zdthrd(s) ", static_cast<std::size_t>(pass.m_nThreads));
    if ((pass.m_nSolveMode & kSingleSolution) != 0)
        text += "SnglSolution, ";
    else if ((pass.m_nSolveMode & kAllSolutions) != 0)
        text += "AllSolutions, ";
    return text;
}

std::string LevelText(const TObservedLevel& level, int nRootPlies) {
    const TObservedMove& move = level.m_moves[static_cast<std::size_t>(level.m_nIndex)];
    const bool bWhite = level.m_nMoves % 2 != 0;
    const std::string number = bWhite ? std::to_string((nRootPlies - level.m_nMoves) / 2 + 1) + "." : "";
    return " " + number + WriteMove(move.m_move, move.m_figure, move.m_bCapture) +
           Formatted(" %0.1f%%", 100.0 * level.m_nIndex / static_cast<double>(level.m_moves.size()));
}

} // namespace

std::string StatusLine(const TProgressState& state, std::size_t nWidth) {
    const std::string choice = ChoiceText(state) + " ";
    if (state.m_bThreadStopped)
        return choice + std::string(kThreadStopped);
    if (!IsInPass(state))
        return choice + state.m_status;
    const std::string head = choice + "Pass " + NameOf(state.m_pass);
    const std::string tail = std::string(state.m_pass.m_bSafeMode ? "Safe mode ON " : "") +
                             "TR=" + Megabytes(state.m_register.m_nMegabytes) +
                             " GR=" + Megabytes(state.m_nGlobalRegisterMegabytes) + ThreadsText(state) + " " +
                             DoneText(state);
    std::string set = state.m_pass.m_heuristics;
    if (set.empty())
        return head + " " + tail;
    const std::string open = " SH(", close = ") ";
    const std::size_t rest = head.size() + open.size() + close.size() + tail.size();
    const std::size_t room = std::max(nWidth > rest ? nWidth - rest : 0, kCut.size());
    if (set.size() > room)
        set = set.substr(0, room - kCut.size()) + std::string(kCut);
    return head + open + set + close + tail;
}

std::string RootLine(const TProgressState& state) {
    const std::string text =
        IsInPass(state) ? "Pass " + NameOf(state.m_pass) + ", " + RootThreadsText(state.m_pass) + DoneText(state)
                        : state.m_status;
    return text + "             \r";
}

std::string WaitLine(const TProgressState& state) {
    const std::uint32_t threads = state.m_nAwaitedThreads != 0 ? state.m_nAwaitedThreads : state.m_nRunningThreads;
    return Formatted("%d%s... %d sec(s)...     \r", static_cast<int>(threads), "thrd(s)",
                     static_cast<int>(state.m_seconds));
}

std::string ThreadTrace(const TProgressState& state) {
    std::string text = Formatted("%d. ", static_cast<int>(state.m_thread.value_or(0)));
    if (state.m_bThreadStopped)
        return text + std::string(kThreadStopped);
    text += Formatted("SH:%xh", static_cast<unsigned>(state.m_pass.m_nHeuristics));
    text += Formatted(",TR:%lld(%lld)", static_cast<long long>(state.m_register.m_nElements),
                      static_cast<long long>(state.m_register.m_nDoubtfulElements));
    for (const TObservedLevel& level : state.m_levels)
        text += LevelText(level, state.m_pass.m_nRootPlies);
    return text;
}

std::string WithoutEnd(std::string_view line) {
    const std::size_t end = line.find_last_not_of(" \r");
    return std::string(line.substr(0, end == std::string_view::npos ? 0 : end + 1));
}

std::string ProgressReport(const CObserver& observer) {
    const TProgressState all = observer.Read();
    std::string text = StatusLine(all) + "\n";
    if (IsInPass(all))
        text += WithoutEnd(RootLine(all)) + "\n";
    text += WithoutEnd(WaitLine(all)) + (all.m_bPaused ? " paused" : "") + "\n";
    const std::vector<std::uint32_t> threads = observer.Threads();
    for (std::size_t i = 0; i < std::min(threads.size(), kMostTraces); ++i)
        text += ThreadTrace(observer.Read(threads[i])) + "\n";
    if (threads.size() > kMostTraces)
        text += "(" + std::to_string(threads.size() - kMostTraces) + " more threads)\n";
    return text;
}

} // namespace quillon
