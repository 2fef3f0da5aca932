#pragma once
// Pause and stop, as the nodes obey them.

#include "core/chessboard.h"

namespace quillon {

/// Obeys a pause or a stop of this thread (m_nStopRequest) or of the analysis (m_nCommand): sleeps while paused, in
/// steps of 10 ms; true if the thread is to stop.
[[nodiscard]] bool PauseOrStop(const TChessboard& b);

/// Is this thread being stopped? A verdict found then is none.
[[nodiscard]] bool IsStopping(const TChessboard& b);

/// Is anything but "run" asked for? Two relaxed reads.
[[nodiscard]] bool IsControlPending(const TChessboard& b);

/// Takes the control record's spin lock, stores command and addressee, and releases it.
///   thread  number of a thread, or kAllThreads.
void GiveCommand(TAnalysis& analysis, std::uint8_t command, std::uint16_t thread);

} // namespace quillon
