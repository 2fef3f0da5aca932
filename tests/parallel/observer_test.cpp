// The progress of a running solve, read from outside.

#include "parallel/observer.h"

#include <chrono>
#include <cmath>
#include <thread>

#include "globalregister/active_tables.h"
#include "heuristics/heuristic_set.h"
#include "parallel/observed_solve.h"
#include "parallel/status_texts.h"
#include "search/control.h"
#include "support/reference_chess.h"

namespace quillon::test {
namespace {

constexpr const char* kManyKeys = "7k/8/6K1/8/8/8/8/1RRQRR2";
constexpr int kLevels = 4;

int LegalMoves(const char* placement) {
    return static_cast<int>(reference::LegalMoves(reference::ProblemFromFen(placement)).size());
}

/// Every level has legal moves of the position that the moves in analysis above it lead to.
void ExpectLegal(const std::vector<TObservedLevel>& levels, const char* placement, int nRootPlies) {
    reference::Position position = reference::ProblemFromFen(placement);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const TObservedLevel& level = levels[i];
        ASSERT_EQ(level.m_nMoves, nRootPlies - static_cast<int>(i));
        ASSERT_GE(level.m_nIndex, 0);
        ASSERT_LT(level.m_nIndex, static_cast<int>(level.m_moves.size()));
        const std::vector<reference::Move> legal = reference::LegalMoves(position);
        reference::Move played;
        for (std::size_t k = 0; k < level.m_moves.size(); ++k) {
            const TObservedMove& shown = level.m_moves[k];
            const auto found = std::find_if(legal.begin(), legal.end(), [&](const reference::Move& move) {
                return move.from == shown.m_move.m_nFrom && move.to == shown.m_move.m_nTo &&
                       (move.promotion != 0) == (PromotionKind(shown.m_move) != 0);
            });
            const bool bInAnalysis = static_cast<int>(k) == level.m_nIndex;
            // A list may hold moves that prove to be illegal when they are tried.
            ASSERT_TRUE(found != legal.end() || !bInAnalysis) << i << " " << reference::ToFen(position);
            ASSERT_NE(position.board[shown.m_move.m_nFrom], reference::kEmpty);
            if (bInAnalysis)
                played = *found;
        }
        position = reference::Play(position, played);
    }
}

TEST(Observer, BeforeTheStartThereIsNoPass) {
    CSolve solve(AllKeys(kManyKeys, 1, {}));
    const CObserver observer(solve, kLevels);
    const TProgressState state = observer.Read();
    EXPECT_EQ(state.m_pass.m_nPass, 0);
    EXPECT_EQ(state.m_status, "initial position check pending...");
    EXPECT_EQ(state.m_nRunningThreads, 0u);
    EXPECT_TRUE(state.m_levels.empty());
    EXPECT_TRUE(observer.Threads().empty());
    EXPECT_TRUE(observer.Read(0).m_bThreadStopped);
    EXPECT_EQ(StatusLine(observer.Read(0)), "0 Thread stopped");
}

/// The state at the moment of each key.
std::vector<TProgressState> StatesAtKeys(const TSolveRequest& request) {
    CSolve solve(request);
    const CObserver observer(solve, kLevels);
    std::vector<TProgressState> seen;
    solve.SetSink([&](const TMove&, std::string_view, long, std::string_view) { seen.push_back(observer.Read()); });
    CAgreeing notifier;
    (void)solve.StartSolving(notifier);
    EXPECT_EQ(observer.Read().m_nRunningThreads, 0u);
    return seen;
}

TEST(Observer, CountsTheMovesOfTheRoot) {
    const int count = LegalMoves(kManyKeys);
    const std::vector<TProgressState> seen = StatesAtKeys(AllKeys(kManyKeys, 1, {}));
    ASSERT_GT(seen.size(), 4u);
    for (std::size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i].m_pass.m_nPass, 2);
        EXPECT_EQ(seen[i].m_pass.m_heuristics, "");
        EXPECT_EQ(seen[i].m_status, "");
        EXPECT_EQ(seen[i].m_nRunningThreads, 1u);
        EXPECT_EQ(seen[i].m_nAwaitedThreads, 1u);
        const double moves = seen[i].m_part * count; // nothing below a mate in one divides further
        EXPECT_NEAR(moves, std::round(moves), 1e-9);
        EXPECT_TRUE(i == 0 || seen[i].m_part > seen[i - 1].m_part);
    }
}

/// The second phase leaves out the key that the first one has found.
TEST(Observer, CountsOnlyWhatThePassHasToDo) {
    TSolveRequest request = AllKeys(kManyKeys, 1, {});
    request.m_bHybrid = true;
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    const std::vector<TProgressState> seen = StatesAtKeys(request);
    ASSERT_GT(seen.size(), 4u);
    EXPECT_EQ(seen.front().m_pass.m_nPass, 1);
    EXPECT_EQ(seen.front().m_pass.m_heuristics, "SH_DONTRECEDEBLACKKING,  QuickMode");
    EXPECT_EQ(seen.front().m_pass.m_nHeuristics, SH_DONTRECEDEBLACKKING);
    EXPECT_FALSE(seen.front().m_pass.m_bSafeMode);
    EXPECT_EQ(seen.back().m_pass.m_nPass, 2);
    EXPECT_TRUE(seen.back().m_pass.m_bSafeMode);
    const double moves = seen.back().m_part * (LegalMoves(kManyKeys) - 1);
    EXPECT_NEAR(moves, std::round(moves), 1e-9);
}

TEST(Observer, TellsTheMemoryOfPrecalculatedData) {
    CActiveTables tables(true, {"BN"}); // two and a half megabytes
    TSolveRequest scheduled = AllKeys(kManyKeys, 1, {});
    scheduled.m_nSchedulerLevels = 2;
    for (const TSolveRequest& request : {AllKeys(kManyKeys, 1, {}), scheduled})
        for (const TProgressState& state : StatesAtKeys(request)) {
            EXPECT_EQ(state.m_nGlobalRegisterMegabytes, 2u);
            EXPECT_NE(StatusLine(state).find(" GR=2MB "), std::string::npos) << StatusLine(state);
        }
    tables.Activate(false);
    const std::vector<TProgressState> without = StatesAtKeys(scheduled);
    ASSERT_FALSE(without.empty());
    EXPECT_EQ(without.front().m_nGlobalRegisterMegabytes, 0u);
}

TEST(Observer, ShowsTheLineOfTheOneThread) {
    CObservedSolve run(Endless({}), kLevels);
    ASSERT_TRUE(run.WaitForState([](const TProgressState& state) { return state.m_levels.size() == kLevels; }));
    for (int i = 0; i < 50; ++i, SleepMs(2)) {
        const TProgressState state = run.m_observer.Read();
        ExpectLegal(state.m_levels, kEndless, PliesOf(kEndlessMoves));
        EXPECT_EQ(state.m_nRunningThreads, 1u);
    }
    EXPECT_EQ(run.m_observer.Threads(), std::vector<std::uint32_t>{0});
    TProgressState state;
    ASSERT_TRUE(run.WaitUntil([&] { return !(state = run.m_observer.Read(0)).m_levels.empty(); }));
    EXPECT_EQ(state.m_levels[0].m_moves.size(), static_cast<std::size_t>(LegalMoves(kEndless)));
}

/// Below it there is no level that could tell. White mates soon behind most replies, so one after the other is tried.
TEST(Observer, TheLowestLevelTellsTheReplyInAnalysisToo) {
    constexpr const char* kQueen = "8/8/8/3k4/8/8/8/KQ6";
    constexpr int kMoves = 10, kDeep = 12; // levels: down to eight plies left
    TSolveRequest request = AllKeys(kQueen, kMoves, {});
    request.m_nMemoryBudgetMB = 1;
    request.m_shLookForQuickerMateDepth = 0;
    request.m_heuristics.emplace();
    CObservedSolve run(request, kDeep);
    EXPECT_TRUE(run.WaitForState([](const TProgressState& state) {
        ExpectLegal(state.m_levels, kQueen, PliesOf(kMoves));
        return ::testing::Test::HasFatalFailure() ||
               (state.m_levels.size() == kDeep && state.m_levels.back().m_nIndex > 0);
    }));
}

TEST(Observer, AMateInFourShowsTheMovesOfItsRoot) {
    constexpr int kMoves = 4;
    int last = 0;
    for (const TProgressState& state : StatesAtKeys(AllKeys(kManyKeys, kMoves, {}))) {
        ExpectLegal(state.m_levels, kManyKeys, PliesOf(kMoves));
        if (!state.m_levels.empty())
            last = std::max(last, state.m_levels[0].m_nIndex);
    }
    EXPECT_GT(last, LegalMoves(kManyKeys) / 2);
}

/// For a second, at any moment: whatever is shown is sound, whichever threads come and go.
TEST(Observer, ReadsATreeOfThreads) {
    CObservedSolve run(Endless({4, 2}), kLevels);
    ASSERT_TRUE(run.WaitForState([](const TProgressState& state) { return state.m_nRunningThreads > 4; }));
    std::mt19937_64 rng(5201);
    std::uint64_t positions = 0;
    std::size_t lines = 0;
    std::uint32_t most = 0, mostAwaited = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (std::chrono::steady_clock::now() < end) {
        const std::vector<std::uint32_t> threads = run.m_observer.Threads();
        for (const std::uint32_t thread : threads) {
            const TProgressState state = run.m_observer.Read(thread);
            ExpectLegal(state.m_levels, kEndless, PliesOf(kEndlessMoves));
            if (::testing::Test::HasFatalFailure())
                return;
            EXPECT_GE(state.m_part, 0.0);
            EXPECT_LT(state.m_part, 1.0);
            EXPECT_GE(state.m_nPositions, positions);
            EXPECT_LE(state.m_nRunningThreads, 16u);
            positions = state.m_nPositions;
            lines += state.m_levels.size() == kLevels ? 1 : 0;
            most = std::max(most, state.m_nRunningThreads);
            mostAwaited = std::max(mostAwaited, state.m_nAwaitedThreads);
        }
        EXPECT_NE(ProgressReport(run.m_observer).find("Pass "), std::string::npos);
        std::this_thread::sleep_for(std::chrono::microseconds(reference::DrawInt(rng, 5000)));
    }
    EXPECT_GT(lines, 0u);
    EXPECT_GT(most, 4u) << "members of a level group count, those who wait for them do not";
    EXPECT_EQ(mostAwaited, 4u);
}

/// The workers of a scheduler have the number of the thread that they work for: its line is that of the last to show
/// one.
TEST(Observer, FollowsTheTurnsOfAScheduler) {
    TSolveRequest request = Endless({2, 1});
    request.m_nSchedulerLevels = 6;
    request.m_nQuantumSecondMs = 5;
    CObservedSolve run(request, kLevels);
    ASSERT_TRUE(run.WaitForState([](const TProgressState& state) { return state.m_nAwaitedThreads == 2; }));
    std::size_t whole = 0;
    for (int i = 0; i < 6000 && (i < 100 || whole == 0); ++i, SleepMs(5)) {
        const TProgressState state = run.m_observer.Read(static_cast<std::uint32_t>(i) % 2);
        ExpectLegal(state.m_levels, kEndless, PliesOf(kEndlessMoves));
        EXPECT_LE(state.m_nRunningThreads, 2u) << "a worker stands in for who waits for it";
        EXPECT_LE(run.m_observer.Threads().size(), 2u);
        whole += state.m_levels.size() == kLevels ? 1 : 0;
    }
    EXPECT_GT(whole, 0u);
}

TEST(Observer, AChosenThreadThatHasEndedShowsNothing) {
    CObservedSolve run(Endless({4, 1}), kLevels);
    ASSERT_TRUE(run.WaitForState([](const TProgressState& state) { return state.m_nAwaitedThreads == 4; }));
    EXPECT_FALSE(run.m_observer.Read(2).m_bThreadStopped);
    EXPECT_TRUE(run.m_observer.Read(4).m_bThreadStopped);
    GiveCommand(run.m_solve.Analysis(), kStopCommand, 2);
    ASSERT_TRUE(run.WaitForState(
        [](const TProgressState& state) { return state.m_nAwaitedThreads == 3 && state.m_nRunningThreads == 3; }));
    const TProgressState state = run.m_observer.Read(2);
    EXPECT_TRUE(state.m_bThreadStopped);
    EXPECT_TRUE(state.m_levels.empty());
    EXPECT_EQ(StatusLine(state), "2 Thread stopped");
    EXPECT_EQ(run.m_observer.Threads(), (std::vector<std::uint32_t>{0, 1, 3}));
}

TEST(Observer, WithoutLevelsItShowsNoMoves) {
    CObservedSolve run(Endless({}), 0);
    ASSERT_TRUE(run.WaitForState([](const TProgressState& state) { return state.m_nAwaitedThreads == 1; }));
    EXPECT_TRUE(run.m_observer.Read().m_levels.empty());
    EXPECT_EQ(run.m_observer.Threads(), std::vector<std::uint32_t>{0});
}

/// However many threads begin and end moves of the root: what is done of a pass stays done.
TEST(Observer, ThePartGoesBackWithANewPassOnly) {
    CObservedSolve run(AllKeys("7k/5p2/5P1p/2K4P/8/8/8/8", 11, {4, 1}), kLevels);
    double part = 0, most = 0;
    std::size_t back = 0;
    while (!run.m_bDone) {
        const double now = run.m_observer.Read().m_part;
        back += now < part ? 1 : 0;
        part = now;
        most = std::max(most, part);
    }
    run.m_thread.Join();
    EXPECT_GT(most, 0.0);
    EXPECT_LE(back, 2 * run.m_result.m_passes.size()) << "one may be read with index and count of two passes";
}

/// The search is the same whether it is observed or not.
TEST(Observer, ChangesNothing) {
    const char* const placement = "7k/5p2/3K1P1p/7P/1p6/1P6/8/8";
    CAgreeing notifier;
    CSolve alone(AllKeys(placement, 10, {})), watched(AllKeys(placement, 10, {}));
    const CObserver observer(watched, kLevels);
    const TSolvingResult truth = alone.StartSolving(notifier), result = watched.StartSolving(notifier);
    EXPECT_EQ(SortedKeys(result), SortedKeys(truth));
    EXPECT_EQ(result.m_nPositions, truth.m_nPositions);
    EXPECT_EQ(result.m_nTrialPositions, truth.m_nTrialPositions);
}

TEST(Observer, CountsTheShortMateSearchToo) {
    CAgreeing notifier;
    CSolve solve(AllKeys("7k/5p2/3K1P1p/7P/1p6/1P6/8/8", 10, {}));
    const CObserver observer(solve, kLevels);
    const TSolvingResult result = solve.StartSolving(notifier);
    EXPECT_GT(result.m_nTrialPositions, 0u);
    EXPECT_EQ(observer.Read().m_nPositions, result.m_nPositions + result.m_nTrialPositions);
}

// ---- a level by itself

TEST(ObservedLevel, AnyValueIsSurvived) {
    const TChessboard board = ChessboardFromFEN("4k3/8/8/8/8/8/4P3/R3K3");
    const TMove list[] = {{4, 2, 0, 0}, {12, 28, 0, 0}, {0, 56, 0, 0}};
    CObservedLevel level;
    EXPECT_FALSE(level.Read()) << "empty";
    level.Show(board, list, 3, 1);
    ASSERT_TRUE(level.Read());
    EXPECT_EQ(level.Read()->m_moves.size(), 3u);
    EXPECT_EQ(level.Read()->m_moves[0].m_figure, kKing);
    EXPECT_EQ(level.Read()->m_moves[2].m_figure, kRook);
    EXPECT_EQ(level.Read()->m_moves[1].m_move.m_nTo, 28);
    for (const int index : {3, 254, 255}) {
        level.SetIndex(index);
        EXPECT_FALSE(level.Read()) << index;
    }
    level.SetIndex(2);
    EXPECT_EQ(level.Read()->m_nIndex, 2);
    level.Clear();
    EXPECT_FALSE(level.Read());
}

// ---- the part that is done

class DonePartOf : public ::testing::Test {
  protected:
    void Show(int nPly, int nIndex, int nCount) {
        const auto slot = static_cast<std::size_t>(nPly);
        m_context->m_moveIndexShown[slot] = static_cast<std::uint8_t>(nIndex);
        m_context->m_moveCount[slot] = static_cast<std::uint8_t>(nCount);
    }
    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
};

TEST_F(DonePartOf, TheRootAlone) {
    EXPECT_EQ(DonePart(*m_context, 9), 0.0);
    Show(9, 3, 12);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12);
}

TEST_F(DonePartOf, RepliesDivideTheShareOfTheirMove) {
    Show(9, 3, 12);
    Show(8, 1, 4);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12 + 1.0 / 48);
    Show(7, 1, 2);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12 + 1.0 / 48 + 1.0 / 96);
    Show(6, 4, 5);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12 + 1.0 / 48 + 1.0 / 96 + 4.0 / 480);
    Show(5, 1, 2);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12 + 1.0 / 48 + 1.0 / 96 + 4.0 / 480) << "four plies are enough";
}

TEST_F(DonePartOf, APlyThatShowsNothingEndsIt) {
    Show(9, 3, 12);
    Show(7, 1, 2);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12);
}

TEST_F(DonePartOf, AnyValueIsSurvived) {
    Show(9, 12, 12);
    EXPECT_EQ(DonePart(*m_context, 9), 0.0);
    Show(9, 11, 12);
    Show(8, 255, 254);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 11.0 / 12);
    Show(0, 1, 2);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 0), 0.5) << "no ply below";
    EXPECT_EQ(DonePart(*m_context, kStackSlots), 0.0);
}

} // namespace
} // namespace quillon::test
