#pragma once
// TSearchContext: everything one search thread owns: its stack of positions, marks per ply, heuristic parameters.
//
// Threads: one thread writes. The fields of type std::atomic are also read by the progress display of another thread,
//          relaxed and without a lock; it survives any value. m_nStopRequest is written by others.

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"
#include "core/move.h"

namespace quillon {

class CObservedLine;

inline constexpr int kStackSlots = 600;    // the longest analysis, in plies
inline constexpr int kSideStackSlots = 13; // a nested search needs no more
inline constexpr int kMaxStipulation = 299;
inline constexpr std::uint16_t kNoSideStack = 65535;
inline constexpr std::uint16_t kUnobserved = 65535;

class TScheduler;

/// Values of m_nStopRequest; anything above kPauseRequest stops the thread.
inline constexpr std::uint8_t kRunRequest = 0;
inline constexpr std::uint8_t kPauseRequest = 1;
inline constexpr std::uint8_t kStopRequest = 2;
inline constexpr std::uint8_t kBoundRequest = 3; // a bounded look has used up its positions; its own thread asks

/// One of the first three captured figures of a colour, in the line under analysis.
struct TCaptureRecord {
    TFigure m_figure = kNoFigure;
    TSquare m_square = kNoSquare; // where the figure stood; for en passant the pawn's own square
};

/// What a context holds besides its stacks, in plain fields: cloned by one assignment.
struct TSearchMarks {
    // Entry p + 1 belongs to the node with m_nMoves = p: the highest m_nMoves of an earlier position that a repetition
    // in its subtree went back to, 0 for none. The makers clear the entry of the position they produce.
    std::array<std::uint16_t, kStackSlots + 1> m_repetition{};
    std::array<std::uint16_t, kStackSlots + 1> m_repetitionSaved{};

    std::uint32_t m_lastDoubtCause = 0; // flag that made the last line doubtful; -1 register doubt, 0 register no mate

    // Figures captured so far in this line, the first three of each colour (m_bySideState counts them).
    std::array<TCaptureRecord, 3> m_capturedBlack{};
    std::array<TCaptureRecord, 3> m_capturedWhite{};

    // Short-mate search.
    std::uint8_t m_nQuickerLevel = 0;      // nesting depth of FindQuickerMate, 0 in the main search
    std::int16_t m_nAdditionalMoves = 0;   // white moves by which a stored answer may exceed the trial
    std::int16_t m_nQuickerSpare = 0;      // (plies left - trial plies) / 2, summed over nested levels
    bool m_bAdditionalMovesUsed = false;   // an answer needed the allowance
    bool m_bAllowAdditionalAlways = false; // grant it only to one white figure against none
    std::uint16_t m_nQuickerStart = 0;     // m_nMoves of the outermost trial's position
    TChessboard* m_pQuickerRoot = nullptr; // that position
    bool m_bNoQuicker = false;             // work in progress must not run a nested trial
    std::uint16_t m_nQuickerCap = 0;       // cap on the horizon when bit 2 of m_wBlackState is set
    std::uint16_t m_nLineHorizon = 0;      // cap on the horizon inside an attempt at a long line; 0: no attempt runs
    bool m_bNoForcingProof = false;        // the proof by forcing moves is not to be tried

    // Move sorts.
    std::uint8_t m_nSortNesting = 0;          // sorts in progress: a sort may search
    const TChessboard* m_pSortRoot = nullptr; // the position of the thread's first black sort

    // A list handed in for the next white node: it takes this list instead of generating one and clears the byte;
    // above 1 it does not store its verdict either.
    std::uint8_t m_byResumeList = 0;
    std::uint8_t m_nResumeCount = 0;
    const TMove* m_pResumeList = nullptr;

    // Under-promotions that a mate by capture of the promoted figure covers need no analysis of their own.
    bool m_bUnderPromotionEqual = false;

    // The ply (m_nMoves before the move) at which a heuristic forbids black pawn moves; kNoPawnMovePly for none.
    static constexpr std::uint16_t kNoPawnMovePly = 65535;
    std::uint16_t m_nNoPawnMovePly = kNoPawnMovePly;

    bool m_bBlockedSubtreeTrial = false; // option of the trial with SH_DONTLETFIGUREUNBLOCK added, first plies only
    bool m_bEdgeTrial = false;           // SH_KEEPKINGONTHEEDGE is in force as a trial of this line
    bool m_bNoStore = false;             // verdicts are not stored
    bool m_bNoThreadDemand = false;      // the driver must not ask for threads
    std::int8_t m_nVerifyDepth = 0;      // nesting depth of VerifyHeuristics
    std::uint32_t m_nThreadNumber = 0;   // number of the thread in the tree
    std::uint8_t m_nGroupSize = 1;       // threads of a group below this one, 1 to 255
    std::uint16_t m_nThreadPlies = 0;    // m_nMoves of the node that the thread begins with
    const TScheduler* m_pScheduler = nullptr; // the innermost one that the line stands in
    bool m_bRequestsReach = false; // who formed the thread passes on all that is asked: paused, it sleeps soundly

    // FindForcedMate.
    bool m_bFFM = false;                   // a FindForcedMate run is in progress
    std::uint32_t m_nFfmHeldBack = 0;      // heuristics that come into force only later in its lines
    std::uint16_t m_nFfmHeldBackUntil = 0; // plies left from which on they are

    // What the initial analysis found out about the root.
    std::uint16_t m_nWhiteMaterial = 0, m_nBlackMaterial = 0; // queen 9, rook 5, bishop and knight 3, pawn 1
    std::uint8_t m_nClassFigures = 0;                         // figure count of the position class
    std::uint8_t m_nKingsNearBonus = 0;                       // by so much the kings may stand further apart
    std::uint8_t m_nEdgeHeavyFigures = 0; // the strict edge lets the king move once Black is stripped and White has
    std::uint8_t m_nEdgeMinorFigures = 0; // so many heavy and minor figures; both 0: never
    std::uint8_t m_nRootBlackQueens = 0, m_nRootBlackRooks = 0, m_nRootBlackBishops = 0, m_nRootBlackKnights = 0;

    TMove m_zugzwangMove{}; // the winning move that SH_ZUGZWANGTRIANGLES keeps

    // What is tried first at the next node (search/hints.h): the move that answered the last node of the same ply, and
    // the move that last answered the same move of the other side, [White's answers, Black's][source, target].
    std::array<TMove, kStackSlots> m_hints{};
    std::array<std::array<std::uint16_t, kSquares * kSquares>, 2> m_answers{};

    // How often a black figure's move to a square has refuted lately, [kind][target].
    std::array<std::array<std::uint16_t, kSquares>, kKindMask + 1> m_refutations{};

    // Positions counted by this thread and not yet added to the analysis' total.
    std::uint32_t m_nUncounted = 0;
    static constexpr std::uint64_t kNoBound = ~std::uint64_t{0};
    std::uint64_t m_nPositionsLeft = kNoBound; // of a bounded look; at 0 the thread asks itself to stop
    std::uint64_t m_nTrialPositions = 0;       // counted inside the short-mate search, which the statistics leave out
};

struct TSearchContext : THeuristicParameters, TSearchMarks {
    TSearchContext();
    ~TSearchContext();
    TSearchContext(const TSearchContext&) = delete;
    TSearchContext& operator=(const TSearchContext&) = delete;

    // The child of a position is built in slot m_nMoves of its parent, so a position stands in slot m_nMoves + 1.
    std::array<TChessboard, kStackSlots> m_stack;

    // While the index is set, a child of a position whose m_nMoves is not above it is built in slot m_nMoves of this
    // stack, so that a nested search from deep in the main line cannot overwrite the main line above it.
    std::array<TChessboard, kSideStackSlots> m_sideStack;
    std::uint16_t m_nSideStackIndex = kNoSideStack;

    TChessboard* m_pRoot = nullptr; // position of the start of this problem; castling compares against it

    // Per ply: index of the move under analysis (twice: engine and display), size of the list, the list itself.
    std::array<std::atomic<std::uint8_t>, kStackSlots> m_moveIndex{};
    std::array<std::atomic<std::uint8_t>, kStackSlots> m_moveIndexShown{};
    std::array<std::atomic<std::uint8_t>, kStackSlots> m_moveCount{};
    std::array<std::atomic<const TMove*>, kStackSlots> m_moveList{};

    // Nodes with so many plies or more show their moves to an observer (search/observed_lines.h). A clone has no line,
    // but knows that of its source, which outlives it: its thread begins in the middle of that.
    std::uint16_t m_nObservedPlies = kUnobserved;
    CObservedLine* m_pObservedLine = nullptr; // not owned; set while nodes are observed
    const CObservedLine* m_pSourceLine = nullptr;

    std::atomic<std::uint8_t> m_nStopRequest{kRunRequest};

    // m_nMoves of the node that a manual command calls this thread back to, 0 for none: what it returns on the way up
    // is no verdict, whoever else has obeyed the command meanwhile. Its own thread writes and reads it.
    std::uint16_t m_nCalledBackTo = 0;
};

/// The contexts that exist in this process now: none is to outlive its solve.
[[nodiscard]] int LiveSearchContexts();

/// A context on the heap, its stack cleared and every slot pointing at its owner.
[[nodiscard]] std::unique_ptr<TSearchContext> NewSearchContext();

/// Copies `source` whole and makes the copied slots point at the clone: the links between slots (m_pPrevious) and the
/// root pointer are moved over when they point into the source's own stacks.
void CloneSearchContext(const TSearchContext& source, TSearchContext& clone);

/// The slot of the main stack that a root with `nMoves` plies left belongs in.
[[nodiscard]] inline TChessboard& RootSlot(TSearchContext& context, int nMoves) {
    return context.m_stack[static_cast<std::size_t>(nMoves) + 1];
}

/// The slot that a child of `parent` is built in.
[[nodiscard]] inline TChessboard* ChildSlot(const TChessboard& parent) {
    TSearchContext& context = *parent.m_pContext;
    const std::uint16_t ply = parent.m_nMoves;
    if (context.m_nSideStackIndex == kNoSideStack || ply > context.m_nSideStackIndex) [[likely]]
        return &context.m_stack[ply];
    return &context.m_sideStack[ply];
}

/// Copies `parent` into its child's slot and links the copy.
inline TChessboard* CopyToChild(TChessboard* parent) {
    TChessboard* child = ChildSlot(*parent);
    *child = *parent;
    child->m_pPrevious = parent;
    return child;
}

} // namespace quillon
