#pragma once
// Pause, stop and manual commands, as the nodes obey them.
//
// A request to one thread stands in its context (m_nStopRequest): from the program, a scheduler, the thread that formed
// its group. Commands of the user stand in the analysis' control record. The record is read without its lock while it
// is idle; under the lock a command is given, confirmed and cleared. No command takes back a stop: nothing overwrites
// one of all threads, and one for a single thread is noted beside the record.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// Obeys a pause or a stop of this thread (m_nStopRequest) or of the analysis (m_nCommand): sleeps while paused, in
/// steps of 10 ms, or until told where its requests reach it; true if the thread is to stop.
[[nodiscard]] bool PauseOrStop(const TChessboard& b);

/// As PauseOrStop, without a sleep: true if the thread is to stop.
[[nodiscard]] bool IsLeaving(const TChessboard& b);

/// Is this thread being stopped, or called back to a node above `b` by a manual command? A verdict found then is none.
[[nodiscard]] bool IsStopping(const TChessboard& b);

/// Is `b` in the line of the game itself? In looks aside m_nMoves is reset.
[[nodiscard]] bool IsInMainLine(const TChessboard& b);

/// Is anything but "run" asked for? Two relaxed reads.
[[nodiscard]] bool IsControlPending(const TChessboard& b);

/// Asks one thread to run, pause or stop. A stop stays; a bound that its thread has set itself gives way.
///   Threads any.
void AskThread(TSearchContext& context, std::uint8_t request);

/// Takes the control record's spin lock, stores command and addressee, and releases it. Stops stay: only kNoCommand
/// takes them back, of one thread or of all.
///   thread  number of a thread, or kAllThreads.
void GiveCommand(TAnalysis& analysis, std::uint8_t command, std::uint16_t thread);

/// Milliseconds of the analysis' clock, as TickCount64 but for the pauses of all threads (GiveCommand): it stands still
/// in them. Only differences mean something.
///   Threads any; takes the control record's lock.
[[nodiscard]] std::uint64_t AnalysisTicks(TAnalysis& analysis);

/// Pauses all threads, and the analysis' clock. Without effect while a stop of all threads is in force.
void PauseAll(TAnalysis& analysis);

/// Ends a pause of all threads, and nothing else.
void ResumeAll(TAnalysis& analysis);

/// Takes back a manual command, and nothing else.
void ClearManualCommand(TAnalysis& analysis);

/// What is asked of the thread of `context`, by request or by command: kRunRequest, kPauseRequest or kStopRequest. A
/// bound that the thread has set itself is none of it.
[[nodiscard]] std::uint8_t RequestFor(TAnalysis& analysis, const TSearchContext& context);

/// A manual command: what is to become of the moves of one node of one thread's line.
struct TManualCommand {
    std::uint16_t m_nThread = 65535;     // the thread meant; kAllThreads
    std::uint16_t m_nPlies = 0;          // m_nMoves of the node meant
    std::uint8_t m_nMoveOrderAction = 0; // kKeepOrder ...
    std::uint8_t m_nSkipAction = 1; // kSkipToMove, kSkipToNext, or so many moves; without effect on an order action
    TMove m_skipTarget{};
};

/// Gives a manual command; one that was given before and not obeyed yet is replaced.
void GiveManualCommand(TAnalysis& analysis, const TManualCommand& command);

/// A manual command that means the node `b` itself is obeyed on its list. Call it when a move has been tried, and
/// believe its answer only if this returns false.
///   i        index behind the move tried. It receives the index to go on with.
///   nSkipped receives the number of moves that will not be tried, the one just left among them: each is doubt.
///   Returns  true when the thread was called back here. A command that came when nothing of the list was in analysis
///   is
///            cleared all the same.
bool ObeyManualCommand(const TChessboard& b, TMove* list, int nMoves, int& i, int& nSkipped);

/// A thread that ends takes back what was meant for it alone: a later thread of its number is another.
void DropOwnCommand(TAnalysis& analysis, std::uint32_t thread);

/// A solve that ends takes back what was meant for it or for single threads of it: stops and pauses; another start is
/// another solve, whose threads have the same numbers. A pause of all threads stays: whoever has given it ends it.
/// Where all threads were stopped there is none: a stop takes the place of the pause in force and lets none follow.
void DropCommandsOfSolve(TAnalysis& analysis);

} // namespace quillon
