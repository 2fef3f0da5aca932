#include "heuristics/solving_driver.h"

#include <algorithm>
#include <cassert>

#include "core/chess_exception.h"
#include "core/notation.h"
#include "core/precalc_at_hand.h"
#include "heuristics/heuristic_text.h"
#include "heuristics/result_texts.h"
#include "platform/clock.h"
#include "platform/memory_info.h"
#include "search/control.h"
#include "search/expected_white_moves.h"
#include "search/main_variant.h"
#include "search/proof_guide.h"
#include "tempregister/bucket_count.h"
#include "tempregister/bucket_pool.h"
#include "tempregister/search_register.h"

namespace quillon {

namespace {

constexpr std::int64_t kMegabyte = 1 << 20;
constexpr std::int64_t kMostGuideBytes = 128 * kMegabyte; // more than an entry for each position of its longest look
constexpr std::int64_t kGuideBytesAlone = 8 * kMegabyte;  // where the register is given no memory to share
constexpr std::int64_t kFewestSharedBytes = 2 * kMegabyte;
constexpr std::uint64_t kLastEffective = 999'999; // threads; no machine starts so many
constexpr int kShortestRegisterPlies = 10;        // in shorter problems the search does not ask a register

std::int64_t BudgetBytes(const TSolveRequest& request) {
    if (request.m_nMemoryBudgetMB >= 0)
        return request.m_nMemoryBudgetMB * kMegabyte;
    return static_cast<std::int64_t>(ShareMB(PhysicalMemory(), request.m_nMemoryShare)) * kMegabyte;
}

std::vector<std::string> LineTexts(TChessboard position, const std::vector<TMove>& line) {
    std::vector<std::string> texts;
    for (const TMove& move : line) {
        texts.push_back(WriteMove(move, position));
        // Only the board is needed to name the next move.
        const bool bKing = KindOf(position.m_board[move.m_nFrom]) == kKing;
        if (move.m_nEnPassant != 0)
            position.m_board[SquareAt(FileOf(move.m_nTo), RankOf(move.m_nFrom))] = kNoFigure;
        position.m_board[move.m_nTo] = position.m_board[move.m_nFrom];
        position.m_board[move.m_nFrom] = kNoFigure;
        if (PromotionKind(move) != 0)
            position.m_board[move.m_nTo] =
                static_cast<TFigure>((position.m_board[move.m_nTo] & (kWhite | kBlack)) | PromotionKind(move));
        if (bKing && AbsDiff(move.m_nFrom, move.m_nTo) == 2) {
            const int base = move.m_nTo & 56;
            const bool bKingSide = FileOf(move.m_nTo) == 6;
            std::swap(position.m_board[static_cast<std::size_t>(base + (bKingSide ? 7 : 0))],
                      position.m_board[static_cast<std::size_t>(base + (bKingSide ? 5 : 3))]);
        }
    }
    return texts;
}

/// Those of all levels of the tree, should every group be full. Where the engine has forced the root's number the
/// groups below keep to the one that was asked for.
std::uint64_t EffectiveThreads(const TAnalysis& analysis) {
    const bool bLimited = analysis.m_nForcedThreadsMode > 1 && analysis.m_nGroupLimit != 0;
    const std::uint8_t group = bLimited ? std::min(analysis.m_nThreads, analysis.m_nGroupLimit) : analysis.m_nThreads;
    std::uint64_t threads = analysis.m_nThreads;
    for (int level = 1; level < analysis.m_nMultithreadingLevels && threads <= kLastEffective; ++level)
        threads *= group;
    return std::min(threads, kLastEffective);
}

/// Stops end with the start that they were given in, and so does what was meant for single threads. They are taken back
/// at its end, not at the beginning of the next: whoever starts a solve on another thread may stop it before it runs.
class CCommandsOfSolve {
  public:
    CCommandsOfSolve(TAnalysis& analysis, TSearchContext& context) : m_analysis(analysis), m_context(context) {}
    ~CCommandsOfSolve() {
        DropCommandsOfSolve(m_analysis);
        m_context.m_nStopRequest.store(kRunRequest, std::memory_order_relaxed);
    }
    CCommandsOfSolve(const CCommandsOfSolve&) = delete;
    CCommandsOfSolve& operator=(const CCommandsOfSolve&) = delete;

  private:
    TAnalysis& m_analysis;
    TSearchContext& m_context;
};

bool HadPassWithHeuristics(const TSolvingResult& result) {
    return std::ranges::any_of(result.m_passRecords,
                               [](const TPassRecord& pass) { return !pass.m_heuristics.empty(); });
}

bool HadPassWithoutHeuristics(const TSolvingResult& result) {
    return std::ranges::any_of(result.m_passRecords, [](const TPassRecord& pass) { return pass.m_heuristics.empty(); });
}

} // namespace

CSolve::CSolve(TSolveRequest request) : m_request(std::move(request)), m_context(NewSearchContext()) {
    m_run.m_nProblemId = m_request.m_nProblemId;
    m_run.m_bLog = m_request.m_bLog;
    m_run.m_bStopRelaxingOnSolution = m_request.m_bStopRelaxingOnSolution;
    m_analysis.m_bTryRelaxSpecialHeuristicsLog = m_request.m_bRelaxationLog;
    if (!m_request.m_bUsePrecalculatedData)
        m_request.m_board.m_wKingState |= kNoPrecalcData;
    TakeRequest();
}

/// By command, for what stands in the driver's context alone would be passed on from thread to thread, level by level.
void CSolve::RequestStop() {
    AskThread(*m_context, kStopRequest);
    GiveCommand(m_analysis, kStopCommand, kAllThreads);
}

/// A solve may be started again: what an earlier run has found, forced, relaxed or switched to is forgotten.
void CSolve::TakeRequest() {
    static_cast<TRootFindings&>(m_run) = {};
    m_run.m_bNoAids = m_analysis.m_bThreadsForced = false;
    m_analysis.m_bUsePredefinedIndications = m_request.m_bUsePredefinedIndications;
    SetMode();
    TakeChosenHeuristics();
    if (m_request.m_bBruteForce)
        SwitchToBruteForce();
}

CSolve::~CSolve() {
    if (m_register == nullptr)
        return;
    m_searchRegister.reset();
    m_register.reset();
    ReleaseFreeBuckets(); // or they would stay with the process
}

void CSolve::TakeChosenHeuristics() {
    m_run.m_bChosenHeuristics = m_request.m_heuristics.has_value();
    m_run.m_nChosenHeuristics = 0;
    m_run.m_clauses.clear();
    if (!m_request.m_heuristics) {
        m_run.m_clauses = m_request.m_heuristicClauses;
        return;
    }
    StoreReadHeuristics(*m_request.m_heuristics, m_request.m_board, *m_context, m_analysis);
    m_run.m_nChosenHeuristics = m_request.m_heuristics->m_nHeuristics;
}

void CSolve::SetMode() {
    TAnalysis& a = m_analysis;
    a.m_nSolveMode = 0;
    a.m_nStopFlags = 0;
    switch (m_request.m_mode) {
    case ESolveMode::FirstSolution:
        a.m_nSolveMode = kSingleSolution;
        break;
    case ESolveMode::StopOnDual:
        a.m_nStopFlags = kStopOnDual;
        break;
    case ESolveMode::StopOn3:
        a.m_nStopFlags = kStopOn3Solutions;
        break;
    case ESolveMode::StopOn4:
        a.m_nStopFlags = kStopOn4Solutions;
        break;
    case ESolveMode::AllSolutions:
        a.m_nSolveMode = kAllSolutions;
        break;
    }
    a.m_nHybridPhase = m_request.m_bHybrid ? kHybridHeuristical : kNotHybrid;
    a.m_bSafeMode = m_request.m_bSafeMode;
    a.m_nRequiredHeuristics = m_request.m_nRequiredHeuristics;
    a.m_shLookForQuickerMateDepth = m_request.m_shLookForQuickerMateDepth;
    a.m_nThreads = static_cast<std::uint8_t>(std::clamp(m_request.m_nThreads, 1, 255));
    a.m_nMultithreadingLevels = static_cast<std::uint8_t>(std::clamp(m_request.m_nMultithreadingLevels, 1, 255));
    a.m_nForcedThreadsMode = 0;
    a.m_nSchedulerLevels = static_cast<std::uint8_t>(std::clamp(m_request.m_nSchedulerLevels, 0, kMostSchedulerLevels));
    a.m_nQuantumSecondMs = static_cast<std::uint16_t>(std::clamp(m_request.m_nQuantumSecondMs, 1, 60000));
    a.m_bCustomScheduler = m_request.m_bCustomScheduler && a.m_nSchedulerLevels != 0;
    m_context->m_bLetRelaxHeuristics = m_request.m_bLetRelaxHeuristics;
    m_context->m_bRunPass2 = m_request.m_bRunPass2;
    if (m_request.m_bExpectedWhiteMovesOnly) // moves tried in turn tell when the line has been left
        SetOneThread();
}

void CSolve::SetOneThread() {
    m_analysis.m_nThreads = 1;
    m_analysis.m_nMultithreadingLevels = 1;
    m_analysis.m_nSchedulerLevels = 0;
    m_analysis.m_bCustomScheduler = false;
}

/// What brute force overrides: no heuristics, stored ones neither, one thread, no scheduler, safe mode, the default
/// depth of the short-mate search, no guide.
void CSolve::SwitchToBruteForce() {
    m_analysis.m_pGuide = m_run.m_pGuide = nullptr;
    m_guide.reset();
    m_analysis.m_bUsePredefinedIndications = false;
    m_run.m_bChosenHeuristics = true;
    m_run.m_nChosenHeuristics = m_run.m_nOfClauses = 0;
    m_run.m_clauses.clear();
    SetOneThread();
    m_analysis.m_bSafeMode = true;
    m_analysis.m_shLookForQuickerMateDepth = kDefaultQuickerMateDepth;
}

void CSolve::SetRegisterMemory() {
    const std::int64_t budget = std::min(BudgetBytes(m_request), static_cast<std::int64_t>(PhysicalMemory()));
    m_analysis.m_nRegisterBudget = (m_analysis.m_nStopFlags & kNoRegisterBudget) != 0 ? 0 : budget;
    m_analysis.m_nRegisterScale =
        BucketsByLength(PliesOf(m_request.m_nStipulation), static_cast<std::uint64_t>(budget / kMegabyte));
}

bool CSolve::IsRegisterWorthwhile() const {
    const bool bNoLimit = (m_analysis.m_nStopFlags & kNoRegisterBudget) != 0;
    return PliesOf(m_request.m_nStipulation) >= kShortestRegisterPlies &&
           (bNoLimit || m_analysis.m_nRegisterBudget >= kMegabyte);
}

/// The best-first proof of the first key. Its table is taken out of the register's memory, unless that is hardly enough
/// for the register alone. Brute force has none: it is there to exclude solutions. Nor has a test of the sort, alone or
/// not: it would put its moves before those that are sorted.
void CSolve::PrepareGuide() {
    m_analysis.m_pGuide = m_run.m_pGuide = nullptr;
    m_guide.reset();
    std::int64_t& budget = m_analysis.m_nRegisterBudget;
    if (m_request.m_bBruteForce || m_request.m_bExpectedWhiteMovesOnly || !m_request.m_expectedWhiteMoves.empty() ||
        PliesOf(m_request.m_nStipulation) < kShortestGuidedRun || (budget > 0 && budget < kFewestSharedBytes))
        return;
    const std::int64_t share = budget > 0 ? std::min(budget / 4, kMostGuideBytes) : kGuideBytesAlone;
    m_guide = std::make_unique<CProofGuide>(static_cast<std::size_t>(share));
    m_run.m_pGuide = m_guide.get();
    if (budget > 0)
        budget -= share;
}

void CSolve::PrepareExpectedWhiteMoves() {
    m_expectedWhiteMoves.reset();
    if (m_request.m_bExpectedWhiteMovesOnly || !m_request.m_expectedWhiteMoves.empty())
        m_expectedWhiteMoves = std::make_unique<CExpectedWhiteMoves>(
            m_request.m_expectedWhiteMoves, m_request.m_bExpectedWhiteMovesOnly, [this] { RequestStop(); });
    m_analysis.m_pExpectedWhiteMoves = m_expectedWhiteMoves.get();
}

/// Made once and kept across the restarts within a solve. A further start finds it empty, or, if it is told to use it,
/// with all that the one before has proved: a stop leaves it as it is.
void CSolve::PrepareRegister(INotifier& notifier) {
    if (!IsRegisterWorthwhile())
        return;
    nLastRemovedLevel.store(0, std::memory_order_relaxed);
    if (m_register == nullptr) {
        const std::int64_t told = m_analysis.m_nRegisterBudget;
        const std::uint64_t budget = told > 0 ? static_cast<std::uint64_t>(told) : PhysicalMemory();
        m_register = std::make_unique<TAggregatedTemporaryChessboardRegister>(
            budget, BucketCount(PliesOf(m_request.m_nStipulation), budget / kMegabyte));
        m_searchRegister = std::make_unique<CSearchRegister>(*m_register);
        m_pShownRegister.store(m_register.get(), std::memory_order_release);
    } else if (m_request.m_bClearRegister) {
        m_register->Clear(0, true);
    }
    m_register->m_hooks.m_showMessage = [&notifier](std::string_view text, std::string_view title) {
        notifier.Inform(text, title);
    };
    m_analysis.m_pRegister = m_searchRegister.get();
}

void CSolve::Prepare(INotifier& notifier) {
    if (m_request.m_nStipulation < 1 || m_request.m_nStipulation > kMaxStipulation)
        throw ChessException("The number of moves must be from 1 to " + std::to_string(kMaxStipulation) + ".");
    CheckNumberOfMen(m_request.m_board);
    if (m_request.m_board.m_blackChecker != kNoChecker)
        throw ChessException("Black is in check with White to move.");
    m_analysis.m_nPositions.store(0, std::memory_order_relaxed);
    m_analysis.m_nPassesPlanned.store(1, std::memory_order_relaxed);
    m_analysis.m_nPassIndex.store(0, std::memory_order_relaxed);
    m_analysis.m_pShownPass.store(nullptr, std::memory_order_relaxed);
    m_analysis.m_nTrialPositions.store(0, std::memory_order_relaxed);
    m_analysis.m_nFinishedThreads.store(0, std::memory_order_relaxed);
    m_context->m_nUncounted = 0;
    m_context->m_nTrialPositions = 0;
    m_analysis.m_sortIndications = m_request.m_sortIndications;
    m_analysis.m_mainVariant = m_request.m_mainVariant;
    TakeRequest();
    m_run.m_pNotifier = &notifier;
    SetRegisterMemory();
    PrepareGuide();
    PrepareExpectedWhiteMoves();
    PrepareRegister(notifier);
}

int CSolve::RunOnce(bool bFirstTime) {
    m_analysis.m_pStatusText.store(kInitialCheckPending, std::memory_order_relaxed);
    m_analysis.m_nStartTicks.store(AnalysisTicks(m_analysis), std::memory_order_relaxed);
    m_analysis.m_nProgressTicks.store(TickCount64(), std::memory_order_relaxed);
    const auto root = m_analysis.m_nThreads < 2 ? FindMateRoot : FindMateRootThreads;
    return root(*m_context, m_analysis, m_request.m_board, PliesOf(m_request.m_nStipulation), m_run, bFirstTime,
                m_analysis.m_bAllowForcedThreads);
}

int CSolve::RunRoot(INotifier& notifier) {
    m_analysis.m_bAllowForcedThreads = m_request.m_bAllowThreadDemand;
    const int result = RunOnce(true);
    m_analysis.m_bAllowForcedThreads = false;
    if (result >= 0)
        return result;
    assert(result != kInitialAnalysisOnly); // which a solve never asks for
    if (IsStopping(*m_context->m_pRoot)) {
        m_run.m_bStopped = true;
        return kNoSolutionFound;
    }
    const int demand = -result;
    if (notifier.AskYesNo(ThreadDemandQuestion(demand), "Quillon")) {
        m_analysis.m_nForcedThreadsMode = 2; // the root alone: the groups below it stay as large as was asked for
        m_analysis.m_nGroupLimit = m_analysis.m_nThreads;
        m_analysis.m_nThreads = static_cast<std::uint8_t>(demand);
    } else {
        m_run.m_bNoAids = true;
    }
    return RunOnce(true);
}

TSolvingResult CSolve::StartSolving(INotifier& notifier) {
    const std::uint64_t start = AnalysisTicks(m_analysis); // what is made ready counts as well
    const CCountedThread running(m_analysis.m_nRunningThreads);
    const CCommandsOfSolve commands(m_analysis, *m_context);
    Prepare(notifier);
    if (m_request.m_bBruteForce && !notifier.AskYesNo(kBruteForceQuestion, "Quillon")) {
        m_run.m_bStopped = true;
        return Collect(0);
    }
    if (m_analysis.m_nHybridPhase == kHybridHeuristical)
        m_analysis.m_nSolveMode = kSingleSolution;
    const int result = RunRoot(notifier);
    if (m_analysis.m_nHybridPhase == kHybridHeuristical && result == kSolutionsFound && !m_run.m_bStopped) {
        SetMode();
        m_analysis.m_nHybridPhase = kHybridBruteForce;
        if (m_request.m_mode == ESolveMode::FirstSolution) // the second phase is there for the duals
            m_analysis.m_nSolveMode = kAllSolutions;
        SwitchToBruteForce();
        (void)RunOnce(false);
    }
    return Collect(static_cast<double>(AnalysisTicks(m_analysis) - start) / 1000.0);
}

/// The guide's key if it is one, for the guide tells the lengths behind it; else the first.
TMove CSolve::KeyOfVariant() const {
    TMove guided;
    if (m_analysis.m_pGuide != nullptr && m_analysis.m_pGuide->Suggest(*m_context->m_pRoot, guided))
        for (const TSolution& solution : m_run.m_solutions)
            if (SameMove(solution.m_move, guided))
                return solution.m_move;
    return m_run.m_solutions.front().m_move;
}

std::vector<std::string> CSolve::VariantTexts() {
    if (m_run.m_solutions.empty())
        return {};
    TChessboard& root = *m_context->m_pRoot;
    const std::vector<TMove> line = BuildMainVariant(root, KeyOfVariant());
    return LineTexts(root, line);
}

TSolvingResult CSolve::Collect(double seconds) {
    ClearManualCommand(m_analysis); // it means a line of the solve, not one of the main variant
    m_context->m_nCalledBackTo = 0;
    TSolvingResult result;
    result.m_solutions = m_run.m_solutions;
    result.m_passes = m_run.m_passes;
    result.m_passRecords = m_run.m_passRecords;
    result.m_bStopped = m_run.m_bStopped;
    result.m_bComplete = !m_run.m_bStopped && !HasOpenMoves(m_run);
    if (!result.m_solutions.empty())
        result.m_verdict = EVerdict::Mate;
    else if (m_run.m_bStopped)
        result.m_verdict = EVerdict::Stopped;
    else
        result.m_verdict = result.m_bComplete ? EVerdict::NoMate : EVerdict::Doubtful;
    TakeExpectedWhiteMoves(result);
    result.m_variant = VariantTexts();
    FlushPositions(*m_context, m_analysis);
    result.m_nPositions = m_analysis.m_nPositions.load(std::memory_order_relaxed);
    result.m_nTrialPositions = m_analysis.m_nTrialPositions.load(std::memory_order_relaxed);
    result.m_seconds = seconds;
    result.m_register = RegisterFigures();
    FillTexts(result);
    return result;
}

/// What is sorted from here on, for the main variant, is not what the solve has sorted.
void CSolve::TakeExpectedWhiteMoves(TSolvingResult& result) {
    m_analysis.m_pExpectedWhiteMoves = nullptr;
    if (m_expectedWhiteMoves == nullptr)
        return;
    result.m_expectedWhiteMoves = m_expectedWhiteMoves->Moves();
    result.m_bExpectedWhiteMovesCompared = m_expectedWhiteMoves->HasCompared();
    result.m_bStoppedByExpectation = m_expectedWhiteMoves->HasStopped();
}

TRegisterFigures CSolve::RegisterFigures() const {
    const TAggregatedTemporaryChessboardRegister* const known = m_pShownRegister.load(std::memory_order_acquire);
    if (known == nullptr)
        return {};
    const TRegisterStatistics told = known->Statistics();
    TRegisterFigures figures;
    figures.m_bInUse = true;
    figures.m_nElements = told.m_nElements;
    figures.m_nDoubtfulElements = told.m_nDoubtfulElements;
    figures.m_nLookups = told.m_nLookups;
    figures.m_nHits = told.m_nHits;
    figures.m_nEvictions = told.m_nEvictions;
    figures.m_nEvictedElements = told.m_nEvictedElements;
    figures.m_nMegabytes = (told.m_nBytes + kMegabyte - 1) / kMegabyte;
    return figures;
}

void CSolve::FillTexts(TSolvingResult& result) const {
    const int count = static_cast<int>(result.m_solutions.size());
    const bool bNoPass2 = !m_context->m_bRunPass2 && !HadPassWithoutHeuristics(result);
    const bool bNoRelaxation = !m_context->m_bLetRelaxHeuristics && HadPassWithHeuristics(result);
    const int limit = SolutionLimit(m_analysis);
    result.m_title = kMateSearchTitle;
    result.m_logLine = EngineEndText(result.m_bStopped, m_request.m_description);
    if (result.m_bStopped && count == 0) {
        result.m_text = kStoppedByUser;
    } else if (result.m_verdict == EVerdict::NoMate) {
        result.m_text = NoSolutionText(m_request.m_nStipulation, result.m_seconds, bNoPass2);
        result.m_title = kAnalysisResultTitle;
    } else if (count == 0) {
        result.m_text = NothingFoundText(m_request.m_nStipulation, bNoRelaxation, bNoPass2);
    } else {
        result.m_text = SolutionCountText(m_analysis, count, limit != 0 && count >= limit);
        if (result.m_bStopped)
            result.m_text += kStoppedByUserSuffix;
    }
}

namespace {

/// White's moves of a line are counted from 1.
std::string SchedulerText(const TAnalysis& a) {
    const int first = a.m_nMultithreadingLevels + 1, last = a.m_nMultithreadingLevels + a.m_nSchedulerLevels;
    std::string text = a.m_nSchedulerLevels == 0 ? "* Scheduler is off\n"
                                                 : "* Scheduler is on: moves from " + std::to_string(first) + " to " +
                                                       std::to_string(last) + " are 'juggled' by scheduler\n";
    return text + (a.m_bCustomScheduler ? "* Custom scheduler is on\n" : "* Custom scheduler is off\n");
}

} // namespace

std::string CSolve::ShowAnalysisSettings() const {
    const TAnalysis& a = m_analysis;
    std::string text = ModeText(a, !m_run.m_solutions.empty());
    if (m_run.m_bSafeModeForced)
        text += "> Safe Mode forced by engine\n";
    text += a.m_bSafeMode ? "* Safe mode is on (implicit quick mode heuristics is off)\n"
                          : "* Quick mode implicit heuristics is on, but it does not affect second pass (without "
                            "heuristics), which is/will be run is safe mode\n";
    text += a.m_shLookForQuickerMateDepth >= 0
                ? "* Custom depth of search for short mate: #" + std::to_string(a.m_shLookForQuickerMateDepth / 2 + 1) +
                      "\n"
                : "* Default depth of search for short mate (typically #7, sometimes #6 or #8)\n";
    text += "* Threads = " + std::to_string(m_request.m_nThreads);
    if (a.m_nThreads != m_request.m_nThreads)
        text += " (but forced by engine to " + std::to_string(a.m_nThreads) + ")";
    text += "\n* Multithreading levels = " + std::to_string(a.m_nMultithreadingLevels);
    text += "\n* Effective number of main threads = " + std::to_string(EffectiveThreads(a));
    const std::string set = InitialSetText();
    return text + "\n" + SchedulerText(a) + "* Initial set of heuristics: " + (set.empty() ? "none" : set) + "\n";
}

/// As it was when the passes were planned: since then its parameters may have been relaxed.
std::string CSolve::InitialSetText() const {
    if (m_run.m_initialSet || m_run.m_nChosenHeuristics == 0)
        return m_run.m_initialSet.value_or("");
    TChessboard shown = m_request.m_board;
    shown.m_pContext = m_context.get();
    shown.m_nHeuristics = m_run.m_nChosenHeuristics;
    return HeuristicsText(shown, false, m_analysis);
}

} // namespace quillon
