#include "cli/uci_search.h"

#include <algorithm>
#include <new>

#include "parallel/search_thread.h"

namespace quillon {

namespace {

using namespace std::chrono_literals;

constexpr const char* kNoMove = "0000";

constexpr auto kLookStep = 20ms;
constexpr auto kNodesStep = 2ms; // with a limit of nodes
constexpr auto kInfoStep = 1s;
constexpr std::chrono::milliseconds kLeastForImproving = 1s;

constexpr std::int64_t kLongestLimitMs = std::int64_t{1} << 40; // some thirty years: a clock can count as far

int StipulationOf(std::int64_t number) {
    return static_cast<int>(std::clamp<std::int64_t>(number, 1, kMaxStipulation));
}

/// Moves whose mate is within the plies.
int MovesWithin(std::int64_t plies) {
    return StipulationOf(std::min<std::int64_t>(plies, 2 * kMaxStipulation) / 2 + plies % 2);
}

} // namespace

std::string AnyMove(const TGamePosition& position) {
    const std::vector<TGameMove> moves = LegalMoves(position);
    return moves.empty() ? kNoMove : UciMove(moves.front().m_move);
}

CUciSearch::CUciSearch(TUciOrder order, CUciOutput& output)
    : m_order(std::move(order)), m_output(output), m_notifier(output), m_finder(m_order.m_request, m_notifier),
      m_improver(m_order.m_request, m_notifier), m_bestMove(AnyMove(m_order.m_position)),
      m_bHeld(m_order.m_go.m_bInfinite || m_order.m_go.m_bPonder), m_nextProgress(m_start + kInfoStep) {
    if (!m_bHeld)
        SetDeadline();
}

void CUciSearch::Run() {
    {
        const CThread solver = StartSolver();
        Watch();
        m_bEnding.store(true, std::memory_order_relaxed);
        m_output.Line("bestmove " + m_bestMove);
    }
    m_finder.Release();
    m_improver.Release();
}

/// No thread: the search is over, but its answer may have to wait.
CThread CUciSearch::StartSolver() {
    try {
        return {SearchStackBytes(kStackSlots), [this] { Search(); }};
    } catch (const std::exception& failure) { // of the system, which has no thread or no memory
        m_output.Failure(failure);
        NoteEnd();
        return {};
    }
}

void CUciSearch::Stop() {
    const std::lock_guard lock(m_mutex);
    m_bEnding.store(true, std::memory_order_relaxed);
    m_bHeld = false;
    StopAll();
    m_changed.notify_all();
}

void CUciSearch::PonderHit() {
    const std::lock_guard lock(m_mutex);
    if (!m_order.m_go.m_bPonder || !m_bHeld)
        return;
    m_bHeld = m_order.m_go.m_bInfinite;
    if (!m_bHeld)
        SetDeadline();
    m_changed.notify_all();
}

void CUciSearch::StopAll() {
    m_finder.RequestStop();
    m_improver.RequestStop();
}

void CUciSearch::SetDeadline() {
    if (const auto ms = TimeOf(m_order.m_go, m_order.m_position.m_bWhiteToMove))
        m_deadline = TClock::now() + std::chrono::milliseconds(std::min(*ms, kLongestLimitMs));
}

void CUciSearch::Watch() {
    std::unique_lock lock(m_mutex);
    while (!m_changed.wait_until(lock, NextLook(), [this] { return IsAnswerDue(); }))
        if (!m_bDone)
            Look();
}

/// With the mutex held. Where nothing is to come any more but memory given back, a stop does not wait for that.
bool CUciSearch::IsAnswerDue() const { return !m_bHeld && (m_bDone || (m_bReleasing && m_improver.IsStopping())); }

CUciSearch::TClock::time_point CUciSearch::NextLook() const {
    const auto step = m_order.m_go.m_nodes ? kNodesStep : kLookStep;
    const TClock::time_point next = TClock::now() + step;
    return m_deadline && !m_bDone ? std::min(next, std::max(*m_deadline, TClock::now() + 1ms)) : next;
}

/// With the mutex held.
void CUciSearch::Look() {
    const TClock::time_point now = TClock::now();
    const std::optional<std::int64_t>& nodes = m_order.m_go.m_nodes;
    if ((m_deadline && now >= *m_deadline) ||
        (nodes &&
         m_finder.Nodes() + m_improver.Nodes() >= static_cast<std::uint64_t>(std::max<std::int64_t>(*nodes, 0))))
        StopAll();
    else if (m_improvingEnd && now >= *m_improvingEnd)
        m_improver.RequestStop();
    if (now >= m_nextProgress) {
        m_nextProgress = now + kInfoStep;
        TellProgress();
    }
}

void CUciSearch::TellProgress() {
    try {
        m_output.Line(InfoLine(Progress()));
    } catch (const std::bad_alloc&) { // there may be memory for the next line
    }
}

TUciInfo CUciSearch::Progress() const {
    TUciInfo info;
    info.m_nDepth = m_nDepth.load(std::memory_order_relaxed);
    info.m_nNodes = m_finder.Nodes() + m_improver.Nodes();
    info.m_ms = std::chrono::duration_cast<std::chrono::milliseconds>(TClock::now() - m_start).count();
    return info;
}

/// Whatever fails, the interface gets its move.
void CUciSearch::Search() {
    try {
        FindMove();
    } catch (const std::exception& failure) {
        m_output.Failure(failure);
    }
    NoteEnd();
}

void CUciSearch::NoteEnd() {
    const std::lock_guard lock(m_mutex);
    m_bDone = true;
    m_changed.notify_all();
}

void CUciSearch::FindMove() {
    if (m_bestMove == kNoMove) {
        TellNoMove();
        return;
    }
    const TUciGo& go = m_order.m_go;
    if (go.m_mate)
        FindInOneGo(StipulationOf(*go.m_mate));
    else
        FindUpwards(go.m_depth ? MovesWithin(*go.m_depth) : kMaxStipulation);
}

void CUciSearch::TellNoMove() {
    const bool bMated = IsInCheck(m_order.m_position);
    m_output.Line(bMated ? "info depth 0 score mate 0" : "info depth 0 score cp 0");
}

void CUciSearch::FindInOneGo(int nMoves) {
    TMateAnswer answer = Find(nMoves);
    if (answer.m_verdict == EVerdict::Mate)
        Improve(std::move(answer), nMoves, nMoves == 1);
}

/// Mates in one, two, three: what has been refuted need not be asked again, and the first that is found is the
/// shortest.
void CUciSearch::FindUpwards(int nMost) {
    bool bShortest = true; // no length before was left in doubt
    const int nFirst = HasMatingMaterial(m_order.m_position) ? 1 : nMost;
    for (int nMoves = nFirst; nMoves <= nMost; ++nMoves) {
        if (nMoves > nFirst)
            ReleaseFinder();
        if (m_finder.IsStopping())
            return;
        TMateAnswer answer = Find(nMoves);
        if (answer.m_verdict == EVerdict::Mate) {
            Improve(std::move(answer), nMoves, bShortest);
            return;
        }
        bShortest = bShortest && answer.m_verdict == EVerdict::NoMate;
    }
}

TMateAnswer CUciSearch::Find(int nMoves) {
    m_nDepth.store(PliesOf(nMoves), std::memory_order_relaxed);
    TMateAnswer answer = m_finder.FindMate(m_order.m_position, nMoves);
    switch (answer.m_verdict) {
    case EVerdict::Mate:
        TellMate(answer, nMoves);
        break;
    case EVerdict::NoMate:
        m_output.Line(InfoLine(Progress()));
        m_output.Line(InfoString("no mate in " + std::to_string(nMoves)));
        break;
    case EVerdict::Doubtful:
        m_output.Line(InfoString("in doubt whether there is a mate in " + std::to_string(nMoves)));
        break;
    case EVerdict::Stopped:
        break;
    }
    return answer;
}

/// Is there more to find out about a mate in nMoves?
bool CUciSearch::IsImprovable(const TMateAnswer& answer, int nMoves, bool bShortest) const {
    return !m_improver.IsStopping() && (!answer.m_bToMate || (!bShortest && MovesOf(answer.m_line) < nMoves));
}

/// Makes the line complete where it is not; then, unless the length is known to be the shortest, tries whether the mate
/// comes as soon as the line shows it. The finder gives its memory back first: both together would have it twice.
void CUciSearch::Improve(TMateAnswer answer, int nMoves, bool bShortest) {
    if (!IsImprovable(answer, nMoves, bShortest))
        return;
    ReleaseFinder();
    AllowForImproving();
    while (IsImprovable(answer, nMoves, bShortest)) {
        if (!answer.m_bToMate) {
            m_improver.CompleteLine(m_order.m_position, nMoves, answer);
            TellMate(answer, nMoves);
            if (!answer.m_bToMate)
                return;
            continue;
        }
        const int nShown = MovesOf(answer.m_line);
        TMateAnswer sooner = m_improver.FindMate(m_order.m_position, nShown);
        if (sooner.m_verdict != EVerdict::Mate)
            return;
        answer = std::move(sooner);
        nMoves = nShown;
        TellMate(answer, nMoves);
    }
}

/// Gigabytes take their time. Meanwhile the answer may become due and be read: nothing of it changes till then, nor
/// behind a stop.
void CUciSearch::ReleaseFinder() {
    NoteReleasing(true);
    m_finder.Release();
    NoteReleasing(false);
}

void CUciSearch::NoteReleasing(bool bReleasing) {
    const std::lock_guard lock(m_mutex);
    m_bReleasing = bReleasing;
    m_changed.notify_all();
}

void CUciSearch::AllowForImproving() {
    const std::lock_guard lock(m_mutex);
    const TClock::time_point now = TClock::now();
    m_improvingEnd = now + std::max<TClock::duration>(kLeastForImproving, now - m_start);
}

void CUciSearch::TellMate(const TMateAnswer& answer, int nMoves) {
    TUciInfo info = Progress();
    info.m_nDepth = PliesOf(nMoves);
    info.m_nMate = nMoves;
    info.m_line = answer.m_line;
    m_bestMove = UciMove(answer.m_line.front());
    m_output.Line(InfoLine(info));
}

} // namespace quillon
