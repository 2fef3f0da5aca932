#include "search/observed_lines.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/clock.h"
#include "search/analysis.h"
#include "search/control.h"

namespace quillon {

namespace {

// Levels below those shown whose nodes still tell how far the moves above have come.
constexpr int kIndexLevels = 2;

// Nodes with fewer plies left come and go faster than anyone can read, and they are many. Those of the shortest root
// whose moves are shown are a few, and the first to try replies that are known to be legal.
constexpr int kFewestShownPlies = 8, kFewestOfShortRoot = 6;

constexpr int kTriesToRead = 20;

// A move as a word: source 6 bits, target 6, promotion 5, kind that moves 5, capture 1, en passant 1.
std::uint32_t Packed(const TChessboard& node, const TMove& move) {
    const auto bit = [](bool b) { return b ? 1u : 0u; };
    return (move.m_nFrom & 63u) | (move.m_nTo & 63u) << 6 | std::uint32_t{PromotionKind(move)} << 12 |
           (node.m_board[move.m_nFrom & 63u] & std::uint32_t{kKindMask}) << 17 |
           bit(node.m_board[move.m_nTo & 63u] != kNoFigure && !IsNullMove(move)) << 22;
}

TObservedMove Unpacked(std::uint32_t word) {
    TObservedMove shown;
    shown.m_move.m_nFrom = word & 63;
    shown.m_move.m_nTo = word >> 6 & 63;
    shown.m_move.m_nPromotion = static_cast<std::uint8_t>(word >> 12 & kKindMask);
    shown.m_figure = static_cast<TFigure>(word >> 17 & kKindMask);
    const bool bSidewards = FileOf(shown.m_move.m_nFrom) != FileOf(shown.m_move.m_nTo);
    shown.m_bCapture = (word >> 22 & 1) != 0 || (shown.m_figure == kPawn && bSidewards);
    return shown;
}

std::uint32_t Head(int nPlies, int nCount, int nIndex) {
    return static_cast<std::uint32_t>(nPlies) << 16 | static_cast<std::uint32_t>(nCount) << 8 |
           static_cast<std::uint32_t>(nIndex);
}

} // namespace

void CObservedLevel::Show(const TChessboard& node, const TMove* list, int nMoves, int nIndex) {
    const int count = std::min(nMoves, kMostMoves);
    m_nHead.store(Head(node.m_nMoves, count, std::min(nIndex, 255)), std::memory_order_release);
    for (int i = 0; i < count; ++i)
        m_moves[static_cast<std::size_t>(i)].store(Packed(node, list[i]), std::memory_order_release);
}

void CObservedLevel::SetIndex(int nIndex) {
    const std::uint32_t head = m_nHead.load(std::memory_order_relaxed);
    m_nHead.store((head & ~0xffu) | static_cast<std::uint32_t>(nIndex & 0xff), std::memory_order_release);
}

void CObservedLevel::Clear() { m_nHead.store(0, std::memory_order_release); }

void CObservedLevel::CopyFrom(const CObservedLevel& other) {
    m_nHead.store(other.m_nHead.load(std::memory_order_relaxed), std::memory_order_release);
    for (std::size_t i = 0; i < m_moves.size(); ++i)
        m_moves[i].store(other.m_moves[i].load(std::memory_order_relaxed), std::memory_order_release);
}

std::optional<TObservedLevel> CObservedLevel::Read() const {
    const std::uint32_t head = m_nHead.load(std::memory_order_acquire);
    const std::size_t count = head >> 8 & 0xff;
    TObservedLevel level;
    level.m_nMoves = static_cast<int>(head >> 16);
    level.m_nIndex = static_cast<int>(head & 0xff);
    if (level.m_nIndex >= static_cast<int>(count))
        return std::nullopt;
    for (std::size_t i = 0; i < count; ++i)
        level.m_moves.push_back(Unpacked(m_moves[i].load(std::memory_order_acquire)));
    return level;
}

/// The line is being written. A reader that has met a word of the new line by acquiring it sees the odd version before
/// it, too, and so takes nothing.
class CObservedLine::CWriting {
  public:
    explicit CWriting(CObservedLine& line)
        : m_version(line.m_nVersion), m_nBefore(m_version.load(std::memory_order_relaxed)) {
        m_version.store(m_nBefore + 1, std::memory_order_relaxed);
    }
    CWriting(const CWriting&) = delete;
    CWriting& operator=(const CWriting&) = delete;
    ~CWriting() { m_version.store(m_nBefore + 2, std::memory_order_release); }

  private:
    std::atomic<std::uint32_t>& m_version;
    const std::uint32_t m_nBefore;
};

CObservedLine::CObservedLine(int nLevels)
    : m_nLevels(nLevels), m_levels(std::make_unique<CObservedLevel[]>(static_cast<std::size_t>(nLevels))) {}

std::optional<std::uint32_t> CObservedLine::Thread() const {
    const std::uint64_t thread = m_nThread.load(std::memory_order_acquire);
    if (thread == kUnused)
        return std::nullopt;
    return static_cast<std::uint32_t>(thread);
}

std::vector<TObservedLevel> CObservedLine::Read() const {
    for (int tries = 0; tries < kTriesToRead; ++tries) {
        const std::uint32_t version = m_nVersion.load(std::memory_order_acquire);
        std::vector<TObservedLevel> line;
        for (int i = 0; i < m_nLevels; ++i) {
            std::optional<TObservedLevel> level = m_levels[static_cast<std::size_t>(i)].Read();
            if (!level || (!line.empty() && level->m_nMoves != line.back().m_nMoves - 1))
                break;
            line.push_back(std::move(*level));
        }
        if (version % 2 == 0 && m_nVersion.load(std::memory_order_relaxed) == version)
            return line;
    }
    return {};
}

/// Null beyond the levels that are shown.
CObservedLevel* CObservedLine::Level(int nRoot, int nPlies) const {
    const int i = nRoot - nPlies;
    return i >= 0 && i < m_nLevels ? &m_levels[static_cast<std::size_t>(i)] : nullptr;
}

/// How far the moves have come in the nodes from nFrom plies down to those with more than nAbove.
void CObservedLine::RefreshIndices(const TSearchContext& context, int nFrom, int nAbove) {
    const int root = context.m_pRoot->m_nInitialMoves;
    for (int plies = nFrom; plies > nAbove; --plies) {
        CObservedLevel* const level = Level(root, plies);
        if (level == nullptr)
            break;
        level->SetIndex(context.m_moveIndex[static_cast<std::size_t>(plies)].load(std::memory_order_relaxed));
    }
}

/// A reply in the line of the game.
bool CObservedLine::IsShown(const TChessboard& b) {
    return b.m_pPrevious != nullptr && b.m_pPrevious->m_nMoves == b.m_nMoves + 1 && IsInMainLine(b);
}

void CObservedLine::Show(const TChessboard& b) {
    const TSearchContext& context = *b.m_pContext;
    const TChessboard* const white = b.m_pPrevious;
    const int root = b.m_nInitialMoves;
    if (!IsShown(b))
        return;
    const auto show = [&](const TChessboard& node, int nIndex) {
        CObservedLevel* const level = Level(root, node.m_nMoves);
        const TMove* const list = context.m_moveList[node.m_nMoves].load(std::memory_order_relaxed);
        const int count = context.m_moveCount[node.m_nMoves].load(std::memory_order_relaxed);
        if (level != nullptr && list != nullptr)
            level->Show(node, list, count, nIndex);
    };
    const CWriting writing(*this);
    // What others have begun stays as it was found.
    RefreshIndices(context, context.m_nThreadPlies, white->m_nMoves);
    if (white->m_nMoves <= context.m_nThreadPlies)
        show(*white, context.m_moveIndex[white->m_nMoves].load(std::memory_order_relaxed));
    show(b, 0);
    if (CObservedLevel* const below = Level(root, b.m_nMoves - 1))
        below->Clear(); // and with it what stands below
    m_nShownTicks.store(TickCount64(), std::memory_order_relaxed);
}

void CObservedLine::ShowLowestIndex(const TChessboard& b, int nIndex) {
    CObservedLevel* const level = Level(b.m_nInitialMoves, b.m_nMoves);
    if (level == nullptr || !IsShown(b))
        return;
    const CWriting writing(*this);
    level->SetIndex(nIndex);
    m_nShownTicks.store(TickCount64(), std::memory_order_relaxed);
}

/// The levels above the node that the thread begins with: whoever has begun them waits.
void CObservedLine::Begin(const TSearchContext& context) {
    const CWriting writing(*this);
    for (int i = 0; i < m_nLevels; ++i)
        m_levels[static_cast<std::size_t>(i)].Clear();
    m_nShownTicks.store(TickCount64(), std::memory_order_relaxed);
    if (context.m_pSourceLine == nullptr)
        return;
    const int root = context.m_pRoot->m_nInitialMoves;
    for (int plies = root; plies > context.m_nThreadPlies; --plies) {
        CObservedLevel* const level = Level(root, plies);
        if (level == nullptr)
            break;
        level->CopyFrom(*context.m_pSourceLine->Level(root, plies));
    }
    RefreshIndices(context, root, context.m_nThreadPlies);
}

CObservedLines::~CObservedLines() {
    const CObservedLine* line = m_pFirst.load(std::memory_order_acquire);
    while (line != nullptr) {
        const CObservedLine* const next = line->m_pNext;
        delete line;
        line = next;
    }
}

CObservedLine* CObservedLines::TakeLine() {
    const std::lock_guard lock(m_mutex);
    if (!m_free.empty()) {
        CObservedLine* const line = m_free.back();
        m_free.pop_back();
        return line;
    }
    auto line = std::make_unique<CObservedLine>(m_nLevels);
    m_free.reserve(m_free.capacity() + 1); // to give it back must not fail
    line->m_pNext = m_pFirst.load(std::memory_order_relaxed);
    m_pFirst.store(line.get(), std::memory_order_release);
    return line.release();
}

void CObservedLines::Begin(TSearchContext& context) {
    context.m_pObservedLine = nullptr;
    context.m_nObservedPlies = kUnobserved;
    if (context.m_pRoot == nullptr)
        return;
    try {
        context.m_pObservedLine = TakeLine();
    } catch (const std::bad_alloc&) {
        return;
    }
    CObservedLine& line = *context.m_pObservedLine;
    line.Begin(context);
    const int root = context.m_pRoot->m_nInitialMoves;
    const int fewest = root > kFewestShownPlies ? kFewestShownPlies : kFewestOfShortRoot;
    const int lowest = std::max(root - m_nLevels - kIndexLevels, fewest);
    if (m_nLevels > 0) // Black's nodes show the lists, and theirs is the even number of plies
        context.m_nObservedPlies = static_cast<std::uint16_t>(lowest + lowest % 2);
    line.m_nThread.store(context.m_nThreadNumber, std::memory_order_release);
}

void CObservedLines::End(TSearchContext& context) {
    CObservedLine* const line = std::exchange(context.m_pObservedLine, nullptr);
    context.m_nObservedPlies = kUnobserved;
    if (line == nullptr)
        return;
    line->m_nThread.store(CObservedLine::kUnused, std::memory_order_release);
    const std::lock_guard lock(m_mutex);
    m_free.push_back(line);
}

std::vector<std::uint32_t> CObservedLines::Threads() const {
    std::vector<std::uint32_t> threads;
    for (const CObservedLine* p = m_pFirst.load(std::memory_order_acquire); p != nullptr; p = p->m_pNext)
        if (const std::optional<std::uint32_t> thread = p->Thread())
            threads.push_back(*thread);
    std::sort(threads.begin(), threads.end());
    threads.erase(std::unique(threads.begin(), threads.end()), threads.end());
    return threads;
}

std::optional<std::vector<TObservedLevel>> CObservedLines::Read(std::uint32_t nThread) const {
    const CObservedLine* last = nullptr;
    std::uint64_t ticks = 0;
    for (const CObservedLine* p = m_pFirst.load(std::memory_order_acquire); p != nullptr; p = p->m_pNext) {
        const std::uint64_t shown = p->m_nShownTicks.load(std::memory_order_relaxed);
        if (p->Thread() == nThread && (last == nullptr || shown > ticks)) {
            last = p;
            ticks = shown;
        }
    }
    if (last == nullptr)
        return std::nullopt;
    std::vector<TObservedLevel> line = last->Read();
    if (last->Thread() != nThread) // it has passed to another thread meanwhile
        line.clear();
    return line;
}

CObservedThread::CObservedThread(TAnalysis& analysis, TSearchContext& context)
    : m_pLines(analysis.m_pObservedLines), m_context(context) {
    if (m_pLines != nullptr)
        m_pLines->Begin(context);
}

CObservedThread::~CObservedThread() {
    if (m_pLines != nullptr)
        m_pLines->End(m_context);
}

void ShowObservedLine(const TChessboard& b) { b.m_pContext->m_pObservedLine->Show(b); }

void ShowLowestObservedIndex(const TChessboard& b, int nIndex) {
    b.m_pContext->m_pObservedLine->ShowLowestIndex(b, nIndex);
}

} // namespace quillon
