#pragma once
// The texts that tell how far a solve has come: the status line, and the lines of consoles and logs.

#include <cstddef>
#include <string>
#include <string_view>

#include "parallel/observer.h"

namespace quillon {

inline constexpr std::string_view kThreadStopped = "Thread stopped";

/// "A Pass 1b SH(SH_KEEPKINGWITHINEXTEDGE(A),  QuickMode) Safe mode ON TR=130MB GR=0MB Thrds=16+4 23.4% 12400000":
///   the thread choice   "A" for all threads, or a thread's number
///   the pass            and its heuristics in SH(...), if it has any
///   "Safe mode ON "     if so
///   TR, GR              memory of the register of this solve, and of the precalculated data
///   Thrds               threads running, "(forced)" when the engine asked for their number; + those of the scheduler
///   percent and nodes   of the pass that is done; of all passes
/// Outside passes what is done stands behind the choice instead, and for a thread that has ended, that.
///   nWidth  characters that it should keep to: the list of heuristics, and nothing else, is cut for it.
[[nodiscard]] std::string StatusLine(const TProgressState& state, std::size_t nWidth = std::string::npos);

/// "Pass 1b, 23.4% 12400000             \r"; with threads at the root "Pass 1b,  4thrd(s) AllSolutions, 23.4% ...".
/// The blanks erase what a longer line has left. Outside passes what is done.
[[nodiscard]] std::string RootLine(const TProgressState& state);

/// "4thrd(s)... 35 sec(s)...     \r": the threads that are waited for, and how long so far.
[[nodiscard]] std::string WaitLine(const TProgressState& state);

/// "3. SH:4h,TR:1200(300) 1.Kd6-e7 25.0% Kh8-g8 0.0%": a thread, the mask of its pass, elements of the register and the
/// doubtful among them, and for each level that is shown the move in analysis and how much of its list is done.
[[nodiscard]] std::string ThreadTrace(const TProgressState& state);

/// Without the blanks and the carriage return that a line ends with.
[[nodiscard]] std::string WithoutEnd(std::string_view line);

/// All of the state, in lines: status, root line, time, a line for each thread.
[[nodiscard]] std::string ProgressReport(const CObserver& observer);

} // namespace quillon
