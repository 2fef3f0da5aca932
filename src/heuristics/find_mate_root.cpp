#include "heuristics/find_mate_root.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <tuple>
#include <utility>

#include "core/generation.h"
#include "core/makers.h"
#include "core/notation.h"
#include "heuristics/forced_mate.h"
#include "heuristics/guided_set.h"
#include "heuristics/heuristic_text.h"
#include "heuristics/initial_analysis.h"
#include "heuristics/pass_plan.h"
#include "heuristics/relaxation_clock.h"
#include "heuristics/thread_demand.h"
#include "platform/processors.h"
#include "search/control.h"
#include "search/expected_white_moves.h"
#include "search/find_mate.h"
#include "search/helper_threads.h"
#include "search/move_sort.h"
#include "search/observed_lines.h"
#include "search/precalc_use.h"
#include "search/proof_guide.h"
#include "search/repetition.h"

namespace quillon {

namespace {

constexpr int kShortestAnalysedPlies = 5;   // shorter problems get no initial analysis
constexpr int kShortestDemandingPlies = 13; // and up to here no demand for threads

constexpr int kShortestRelaxedPlies = 2;

std::tuple<int, int, int> OrderOfKey(const TSolution& key) {
    return {key.m_move.m_nFrom, key.m_move.m_nTo, PromotionKind(key.m_move)};
}

bool IsOpen(const TRootMove& move) {
    return move.m_nResult == kRootMoveDoubtful || move.m_nResult == kRootMoveNotTried;
}

/// Doubt of a pass in the register: it holds under the heuristics of the pass only, so it dies with the pass, and the
/// pass without heuristics needs none at all.
class CDoubtOfPass {
  public:
    CDoubtOfPass(const TAnalysis& analysis, const TChessboard& root)
        : m_pRegister(analysis.m_pRegister), m_nHeuristics(root.m_nHeuristics), m_nHeurParams(root.m_nHeurParams) {
        if (m_pRegister == nullptr)
            return;
        if (m_nHeuristics != 0)
            m_pRegister->AddDoubtfulUser(m_nHeuristics, m_nHeurParams);
        else
            m_pRegister->ForgetDoubt();
    }
    ~CDoubtOfPass() {
        if (m_pRegister != nullptr && m_nHeuristics != 0)
            m_pRegister->ReleaseDoubtfulUser(m_nHeuristics, m_nHeurParams);
    }
    CDoubtOfPass(const CDoubtOfPass&) = delete;
    CDoubtOfPass& operator=(const CDoubtOfPass&) = delete;

  private:
    ITemporaryRegister* const m_pRegister;
    const std::uint32_t m_nHeuristics, m_nHeurParams;
};

// What the best-first proof of the guide may cost, in positions expanded (300,000 to 400,000 take a second). A short
// problem is solved by the passes before a long look would pay. Before the pass without heuristics, which may take
// days, there is a second look, as long again. A run that wants all keys gains little from the first: it only gets the
// brief look.
constexpr int kShortestLongLook = 13;
constexpr std::uint64_t kBriefLook = 100, kLongLook = 2500; // times the square of the plies
constexpr std::uint64_t kMostBriefLook = 30'000, kMostLongLook = 5'000'000;

/// Threads that share a look expand positions that one of them alone would have found needless, by chance of their
/// timing: two of them 1 % on the average of 49 mates, half as many again in some. What one may expand has to find its
/// mate with several, too; each further thread adds half of it, so that a look in vain is over sooner all the same.
std::uint64_t PositionsOfThreads(std::uint64_t nPositions, int nThreads) {
    return nPositions * static_cast<std::uint64_t>(nThreads + 1) / 2;
}

/// Plies from which on heuristics are worth their passes.
constexpr int kShortestHeuristicRun = 15;

/// One run over the root: the steps of FindMateRoot.
class CRootRun final : public IRootMoves {
  public:
    ///   bThreads  the moves of a pass are shared by the threads of the analysis.
    CRootRun(TSearchContext& context, TAnalysis& analysis, TRootRun& run, TChessboard& root, bool bThreads)
        : m_context(context), m_analysis(analysis), m_run(run), m_root(root), m_bThreads(bThreads) {}

    void ListMoves() {
        TMove list[kMaxMoves];
        m_root.m_nHeuristics = 0; // none is chosen yet: the list is to be whole
        int count = GenerateWhiteMoves(m_root, list);
        m_nGoodMoves = 0;
        if (m_root.m_nMoves >= 4) {
            const TWhiteSort sort = SortWhiteMoves(m_root, count, list, m_root.m_nMoves <= 5);
            count = sort.m_nMoves;
            m_nGoodMoves = sort.m_nBest < count ? sort.m_nBest : 0;
        }
        m_run.m_moves.clear();
        for (int i = 0; i < count; ++i) {
            TMove move = list[i];
            TChessboard* const child = CopyToChild(&m_root);
            if (MakeWhiteMove<kLegalityOnly>(*child, move) != 0)
                m_run.m_moves.push_back({{list[i].m_nFrom, list[i].m_nTo, list[i].m_nPromotion, 0},
                                         IsSolved(move) ? kRootMoveMates : kRootMoveNotTried});
        }
    }

    /// Behind ListMoves: how many threads the root wants, 0 for no other number than it has.
    [[nodiscard]] int DemandedThreads() {
        TThreadDemandInput input{};
        input.m_nThreads = m_analysis.m_nThreads;
        input.m_nMoves = static_cast<int>(m_run.m_moves.size());
        input.m_nGoodMoves = m_nGoodMoves;
        input.m_nForcingMoves = static_cast<int>(
            std::ranges::count_if(m_run.m_moves, [this](const TRootMove& move) { return IsForcing(move.m_move); }));
        input.m_nProcessors = UsableProcessors();
        input.m_bPawnsOnly = WhiteMen(m_root) + BlackMen(m_root) == m_root.m_whitePawns + m_root.m_blackPawns;
        const int checker = m_root.m_whiteChecker;
        input.m_bLineChecker = checker != kNoChecker && checker != kDoubleCheck &&
                               (m_root.m_board[static_cast<std::size_t>(checker)] & kRook) != 0; // a queen has it, too
        return ComputeThreadDemand(input);
    }

    void ChooseHeuristics(bool bFirstTime) {
        if (m_root.m_nMoves > kShortestAnalysedPlies && bFirstTime)
            AnalysePosition();
        else if (m_run.m_bChosenHeuristics)
            m_run.m_nInitialHeuristics = m_run.m_nChosenHeuristics;
        if (m_run.m_bNoAids)
            SwitchAidsOff();
        m_nChosen = m_analysis.m_nHybridPhase == kHybridBruteForce ? 0 : m_run.m_nInitialHeuristics;
    }

    /// The second phase of a hybrid run goes without heuristics; the first has met what is required.
    [[nodiscard]] bool HasRequiredHeuristics() const {
        return m_analysis.m_nHybridPhase == kHybridBruteForce || (m_analysis.m_nRequiredHeuristics & ~m_nChosen) == 0;
    }

    /// Lets the guide look for a mate; what it finds goes first, and the bits that do not fit it are not chosen.
    void AskGuide() {
        m_analysis.m_pGuide = nullptr;
        m_bAnsweredByData = HalfMovesByData(m_root) != kUnknownHalfMoves;
        if (m_run.m_pGuide == nullptr || m_root.m_nMoves < kShortestGuidedRun || m_bAnsweredByData || IsEnded())
            return;
        const std::uint64_t square = std::uint64_t{m_root.m_nMoves} * m_root.m_nMoves;
        const bool bLongLook = IsLongLookWorthwhile();
        LetGuideSearch(bLongLook ? std::min(kLongLook * square, kMostLongLook)
                                 : std::min(kBriefLook * square, kMostBriefLook));
        if (m_run.m_pGuide->IsProved())
            LeaveOutWhatDoubtsGuide();
        else if (bLongLook)
            // Forced play is what the guide finds first: where a long look has found none, a run of it would find none
            // either.
            LeaveOut(SH_FINDFORCEDMATE, "there is no forced play");
    }

    /// The set of a short problem stays unused: the pass without heuristics has to come anyhow, and answers it sooner
    /// than the passes before it would have taken (three times as fast on mates in four to six with all keys). Where it
    /// is not to come, the set is all there is.
    void SpareShortProblem() {
        if (m_root.m_nMoves < kShortestHeuristicRun && m_context.m_bRunPass2)
            LeaveOut(m_nChosen, "a problem of this length is solved faster without");
    }

    /// The plan starts from the chosen set. Its length is what the display counts passes against; steps that the clock
    /// decides are counted when they come.
    void PlanPasses() {
        ClearRelaxationStamps(m_analysis);
        m_root.m_nHeuristics = m_nChosen;
        SetPassNumber();
        m_run.m_initialSet = m_nChosen != 0 ? HeuristicsText(m_root, false, m_analysis) : std::string();
        BeginPassPlan(m_root);
        const int planned = (m_root.m_nMoves < kShortestRelaxedPlies ? 0 : CountRelaxations(m_root)) +
                            (m_root.m_nHeuristics != 0 ? 1 : 0) + (m_context.m_bRunPass2 ? 1 : 0);
        m_analysis.m_nPassesPlanned.store(static_cast<std::uint64_t>(std::max(planned, 1)), std::memory_order_relaxed);
    }

    void TellPlan() {
        if (!m_run.m_planSink)
            return;
        TPlanReport report;
        report.m_rules.assign(m_run.m_initialRules.begin(), m_run.m_initialRules.end());
        if (m_root.m_nHeuristics != 0)
            report.m_initialSet = HeuristicsText(m_root, true, m_analysis);
        for (const TLeftOut& left : m_run.m_leftOut)
            report.m_leftOut.push_back(TextOfMask(left.m_nHeuristics) + " (" + left.m_reason + ")");
        report.m_passPlan = ShowPassPlan(m_root);
        report.m_bChosenByHand = m_run.m_bChosenHeuristics;
        report.m_bSafeModeForced = m_run.m_bSafeModeForced;
        report.m_bGuided = m_analysis.m_pGuide != nullptr;
        report.m_nGuideNodes = m_run.m_pGuide != nullptr ? m_run.m_pGuide->Nodes() : 0;
        report.m_bRelaxes = m_context.m_bLetRelaxHeuristics;
        report.m_bRunPass2 = m_context.m_bRunPass2;
        m_run.m_planSink(report);
    }

    /// The passes, until the run is settled, stopped, or has found enough.
    int RunPasses() {
        if (!HasEnough()) { // of keys that the initial analysis has found
            do
                RunPass();
            while (!IsEnded() && NextPass());
        }
        FlushPositions(m_context, m_analysis);
        m_run.m_bStopped = IsStopping(m_root) && HasOpenMoves(m_run) && !HasEnough();
        return m_run.m_solutions.empty() ? kNoSolutionFound : kSolutionsFound;
    }

  private:
    /// Does the move check, capture or promote?
    [[nodiscard]] bool IsForcing(TMove move) const {
        if (m_root.m_board[move.m_nTo] != kNoFigure || PromotionKind(move) != 0)
            return true;
        TChessboard* const child = CopyToChild(&m_root);
        return MakeWhiteMove(*child, move) != 0 && (child->m_blackChecker != kNoChecker || move.m_nEnPassant != 0);
    }

    [[nodiscard]] bool IsLongLookWorthwhile() const {
        return m_root.m_nMoves >= kShortestLongLook && (m_analysis.m_nSolveMode & kAllSolutions) == 0 &&
               m_run.m_solutions.empty();
    }

    /// A set made by hand stays as it is, and so does what the problem asks for.
    [[nodiscard]] std::uint32_t Dispensable() const {
        return m_run.m_bChosenHeuristics ? 0 : m_nChosen & ~m_run.m_nOfClauses;
    }

    void LeaveOut(std::uint32_t heuristics, const char* reason) {
        heuristics &= Dispensable();
        if (heuristics == 0)
            return;
        m_run.m_leftOut.push_back({heuristics, reason});
        m_nChosen &= ~heuristics;
    }

    /// Before the passes are planned: the walk through the proof takes its time, and a set in use is not thinned out.
    void LeaveOutWhatDoubtsGuide() {
        if (const std::uint32_t asked = Dispensable())
            LeaveOut(HeuristicsAgainstGuide(m_root, *m_run.m_pGuide, asked), "it would doubt that mate");
    }

    ///   nPositions  that one thread may expand; the search goes on from the one before.
    void LetGuideSearch(std::uint64_t nPositions) {
        if (m_run.m_pGuide->IsProved() || IsStopping(m_root) || m_bAnsweredByData)
            return;
        m_root.m_nHeuristics = m_root.m_nHeurParams = 0;
        SetPassNumber();
        m_analysis.m_pStatusText.store(kGuideLooking, std::memory_order_relaxed);
        const int threads = ThreadsForLook(m_analysis);
        const EProofResult result = m_run.m_pGuide->Search(m_root, PositionsOfThreads(nPositions, threads), threads);
        m_analysis.m_pStatusText.store("", std::memory_order_relaxed);
        if (result != EProofResult::Proved)
            return;
        m_analysis.m_pGuide = m_run.m_pGuide;
        TMove key;
        if (!m_run.m_pGuide->Suggest(m_root, key))
            return;
        const auto found =
            std::ranges::find_if(m_run.m_moves, [&](const TRootMove& move) { return SameMove(move.m_move, key); });
        if (found != m_run.m_moves.end())
            std::rotate(m_run.m_moves.begin(), found, found + 1);
    }

    /// A queen alone against a rook alone gives one check after the other and comes back to the same positions by many
    /// ways, which quick mode doubts: threads that share the moves within such a line search what the others are
    /// searching. The moves of the root are shared all the same.
    [[nodiscard]] bool IsLineKeptTogether() const {
        const TChessboard& b = m_root;
        const bool bQueenAlone = b.m_whiteQueens == 1 && b.m_whiteRooks + b.m_whiteBishops + b.m_whiteKnights == 0;
        const bool bRookAlone = b.m_blackRooks == 1 && b.m_blackQueens + b.m_blackBishops + b.m_blackKnights == 0;
        return b.m_byPass < 2 && !m_analysis.m_bSafeMode && bQueenAlone && bRookAlone;
    }

    void SwitchAidsOff() {
        m_context.m_bDropBlockedFigures = false;
        m_context.m_bQueenCheckRelaxable = false;
        m_context.m_bPromotedQueenRelaxable = false;
        m_context.m_bEdgeToAssertBks = false;
    }

    std::string TextOfMask(std::uint32_t mask) {
        if (mask == 0)
            return {};
        TChessboard shown = m_root;
        shown.m_nHeuristics = mask;
        return HeuristicsText(shown, false, m_analysis);
    }

    void AnalysePosition() {
        TInitialAnalysisRequest request;
        request.m_bChosenHeuristics = m_run.m_bChosenHeuristics;
        request.m_nChosenHeuristics = m_run.m_nChosenHeuristics;
        request.m_pClauses = &m_run.m_clauses;
        request.m_pNotifier = m_run.m_pNotifier;
        const TInitialAnalysis initial = AnalyzeInitialPosition(m_root, request);
        m_run.m_nInitialHeuristics = initial.m_nHeuristics;
        m_run.m_nOfClauses = initial.m_nOfClauses;
        m_run.m_initialRules = initial.m_rules;
        m_run.m_bSafeModeForced = initial.m_bSafeModeForced;
        for (const TMove& move : initial.m_solvedMoves)
            if (!HasEnough())
                AddSolution(move, {});
        for (TRootMove& root : m_run.m_moves)
            if (IsSolved(root.m_move))
                root.m_nResult = kRootMoveMates;
    }

    /// Without heuristics there is nothing to doubt: that is pass 2, wherever it comes in the plan.
    void SetPassNumber() { m_root.m_byPass = m_root.m_nHeuristics != 0 ? 1 : 2; }

    void RunPass() {
        m_analysis.m_pStatusText.store("", std::memory_order_relaxed);
        m_analysis.m_nMultithreadingLevels = IsLineKeptTogether() ? 1 : m_nAskedLevels;
        m_passName = PassName(m_root.m_byPass, m_context.m_nRelaxations);
        m_run.m_passes.push_back(m_passName);
        const std::uint64_t start = AnalysisTicks(m_analysis);
        const std::size_t keysBefore = m_run.m_solutions.size();
        TPassRecord& record = BeginRecord();
        ShowPass(record);
        {
            const CDoubtOfPass doubt(m_analysis, m_root);
            TryOpenMoves();
        }
        if (m_bThreads) // they find keys in any order
            std::ranges::sort(m_run.m_solutions, {}, &OrderOfKey);
        record.m_seconds = static_cast<double>(AnalysisTicks(m_analysis) - start) / 1000.0;
        record.m_nKeys = static_cast<int>(m_run.m_solutions.size() - keysBefore);
    }

    TPassRecord& BeginRecord() {
        TPassRecord& record = m_run.m_passRecords.emplace_back();
        record.m_name = m_passName;
        if (m_root.m_nHeuristics != 0)
            record.m_heuristics = HeuristicsText(m_root, true, m_analysis);
        record.m_bTimeDependent = m_bByClock;
        return record;
    }

    void ShowPass(const TPassRecord& record) {
        TShownPass& shown = m_run.m_shownPasses.emplace_back();
        shown.m_nPass = m_root.m_byPass;
        shown.m_nRelaxations = m_context.m_nRelaxations;
        shown.m_nHeuristics = m_root.m_nHeuristics;
        shown.m_heuristics = record.m_heuristics;
        shown.m_bSafeMode = m_analysis.m_bSafeMode;
        shown.m_bThreadsForced = m_analysis.m_nForcedThreadsMode > 1;
        shown.m_nSolveMode = m_analysis.m_nSolveMode;
        shown.m_nThreads = m_bThreads ? m_analysis.m_nThreads : 1;
        shown.m_nRootPlies = m_root.m_nMoves;
        m_analysis.m_pShownPass.store(&shown, std::memory_order_release);
    }

    void TryOpenMoves() {
        m_open.clear();
        m_list.clear();
        m_places.assign(m_run.m_moves.size(), 0);
        for (std::size_t i = 0; i < m_run.m_moves.size(); ++i) {
            if (!IsOpen(m_run.m_moves[i]))
                continue;
            m_places[i] = static_cast<std::uint8_t>(m_open.size());
            m_open.push_back(i);
            m_list.push_back(m_run.m_moves[i].m_move);
        }
        m_context.m_moveList[m_root.m_nMoves].store(m_list.data(), std::memory_order_relaxed);
        m_nTried = 0;
        m_nEnded = 0;
        const int count = static_cast<int>(m_open.size());
        PublishIndex(0);
        m_context.m_moveCount[m_root.m_nMoves].store(static_cast<std::uint8_t>(count), std::memory_order_relaxed);
        m_analysis.m_nPassIndex.store(PassIndex(m_root.m_byPass, m_context.m_nRelaxations), std::memory_order_relaxed);
        m_context.m_nGroupSize = m_analysis.m_nThreads;
        const bool bShared =
            m_bThreads && count > 1 && TryRootMovesInThreads(m_context, m_analysis, m_run, *this, count);
        // Left are moves that threads stopped alone have given back. Or all: then this is the first thread, and may
        // form groups for the levels below.
        if (bShared && m_open.empty())
            return;
        const std::uint32_t number = std::exchange(m_context.m_nThreadNumber, 0u);
        {
            const CObservedThread observed(m_analysis, m_context);
            while (TryNext(m_context)) {
            }
        }
        if (number != m_context.m_nThreadNumber) // the number was lent
            DropOwnCommand(m_analysis, m_context.m_nThreadNumber);
        m_context.m_nThreadNumber = number;
    }

    bool TryNext(TSearchContext& context) override {
        TChessboard& root = RootSlot(context, m_root.m_nMoves);
        if (IsControlPending(root) && PauseOrStop(root))
            return false;
        std::size_t i = 0;
        {
            const std::lock_guard lock(m_mutex);
            ClearCommandForRoot(root);
            if (m_open.empty() || HasEnough() || !HasOpenMoves(m_run))
                return false;
            i = m_open.front();
            m_open.pop_front();
            PublishIndex(m_places[i]);
            context.m_moveIndex[m_root.m_nMoves].store(m_places[i], std::memory_order_relaxed);
            m_nTried += &context == &m_context ? 1 : 0; // of several threads the ended moves are counted
        }
        TryMove(root, i);
        if (&context != &m_context) {
            const std::lock_guard lock(m_mutex);
            ++m_nEnded;
            PublishIndex(m_places[i]);
        }
        return true;
    }

    bool IsEnough() override {
        const std::lock_guard lock(m_mutex);
        return HasEnough();
    }

    /// The display counts the moves of this pass only, of several threads those that have ended. Below the root it is
    /// to see no line of the move before.
    void PublishIndex(std::uint8_t nPlace) {
        const int root = m_root.m_nMoves;
        const std::size_t done = m_nTried + m_nEnded;
        for (int ply = root - 1; ply >= 0 && ply > root - kShownPlies; --ply)
            m_context.m_moveCount[static_cast<std::size_t>(ply)].store(0, std::memory_order_relaxed);
        m_context.m_moveIndex[m_root.m_nMoves].store(nPlace, std::memory_order_relaxed);
        m_context.m_moveIndexShown[m_root.m_nMoves].store(
            static_cast<std::uint8_t>(m_list.empty() ? 0 : std::min(done, m_list.size() - 1)),
            std::memory_order_relaxed);
    }

    void TryMove(TChessboard& root, std::size_t i) {
        RepetitionMark(root, root.m_nMoves) = 0;
        const TMove tried = m_run.m_moves[i].m_move; // the list stays while a pass runs
        TMove move = tried;
        TChessboard* const child = CopyToChild(&root);
        if (MakeWhiteMove(*child, move) == 0) { // legal, but mate is impossible after it
            Note(i, kRootMoveRefuted);
            return;
        }
        const TMateResult result = SearchBehind(*child);
        if (m_analysis.m_pExpectedWhiteMoves != nullptr)
            m_analysis.m_pExpectedWhiteMoves->RootMoveEnded();
        if (result == MR_MATE) {
            const std::lock_guard lock(m_mutex);
            if (HasEnough()) // another thread was first
                return;
            m_run.m_moves[i].m_nResult = kRootMoveMates;
            AddSolution(tried, m_passName);
        } else if (!ObeyAtRoot(root, i)) {
            if (!IsStopping(root))
                Note(i, JudgeRootMove(result));
            else if (&root != &m_root)
                GiveBack(i);
        }
    }

    /// A thread that was stopped alone leaves its move to the others.
    void GiveBack(std::size_t i) {
        const std::lock_guard lock(m_mutex);
        m_open.push_front(i);
    }

    void Note(std::size_t i, std::uint8_t result) {
        const std::lock_guard lock(m_mutex);
        m_run.m_moves[i].m_nResult = result;
    }

    /// A command that came while no move of this thread was in analysis has nothing to change.
    static void ClearCommandForRoot(const TChessboard& root) {
        int i = 0, skipped = 0;
        if (IsControlPending(root))
            (void)ObeyManualCommand(root, nullptr, 0, i, skipped);
    }

    /// A manual command that calls back to the root: move i has been left. It and those skipped stay open, as doubt.
    bool ObeyAtRoot(const TChessboard& root, std::size_t i) {
        if (!IsControlPending(root))
            return false;
        const std::lock_guard lock(m_mutex);
        std::vector<std::size_t> order{i};
        order.insert(order.end(), m_open.begin(), m_open.end());
        std::vector<TMove> list;
        for (const std::size_t index : order)
            list.push_back(m_run.m_moves[index].m_move);
        const std::vector<TMove> before = list;
        int next = 1, skipped = 0;
        if (!ObeyManualCommand(root, list.data(), static_cast<int>(list.size()), next, skipped))
            return false;
        for (int k = 0; k < skipped; ++k)
            m_run.m_moves[order[static_cast<std::size_t>(k)]].m_nResult = kRootMoveDoubtful;
        m_open.clear();
        for (std::size_t k = static_cast<std::size_t>(next); k < list.size(); ++k) {
            const auto place = std::ranges::find_if(before, [&](const TMove& move) { return SameMove(move, list[k]); });
            m_open.push_back(order[static_cast<std::size_t>(place - before.begin())]);
        }
        return true;
    }

    TMateResult SearchBehind(TChessboard& child) const {
        if ((m_root.m_nHeuristics & SH_FINDFORCEDMATE) != 0 && m_root.m_nMoves >= kFewestForcedMatePlies)
            return FindForcedMateRoot(child, m_run.m_bLog);
        return m_run.m_bLog ? FindMateBlack<kLoggingNode>(&child) : FindMateBlack<kPlainNode>(&child);
    }

    /// A line that went back to the root itself has gained White nothing; with heuristics in force that is doubt, safe
    /// mode or not, as everywhere.
    [[nodiscard]] std::uint8_t JudgeRootMove(TMateResult result) const {
        if (result == MR_NOMATE || result == MR_NONE)
            return kRootMoveRefuted;
        if (result == MR_REPETITION && m_root.m_byPass >= 2)
            return kRootMoveRefuted;
        return kRootMoveDoubtful;
    }

    /// After a pass that left doubt: the next set of the plan, or none for the last pass.
    bool NextPass() {
        if (m_root.m_byPass >= 2)
            return false;
        const int result = Relax();
        const bool bProofIsNext = m_root.m_nHeuristics == 0 && m_context.m_bRunPass2;
        if (bProofIsNext && m_run.m_pGuide != nullptr && IsLongLookWorthwhile())
            LetGuideSearch(std::min(kLongLook * m_root.m_nMoves * m_root.m_nMoves, kMostLongLook));
        SetPassNumber();
        m_bByClock = result < 0;
        if (m_bByClock)
            m_analysis.m_nPassesPlanned.fetch_add(1, std::memory_order_relaxed);
        return m_root.m_byPass < 2 || m_context.m_bRunPass2;
    }

    int Relax() {
        // A run that looks for duals and has a key goes straight to the proof, and so does one that was told to.
        const bool bProofIsNext = !m_run.m_solutions.empty() &&
                                  ((m_analysis.m_nSolveMode & kAllSolutions) == 0 || m_run.m_bStopRelaxingOnSolution);
        if (m_root.m_nMoves >= kShortestRelaxedPlies && !bProofIsNext) {
            const bool bWasSafe = m_analysis.m_bSafeMode;
            const int result = TryRelaxSpecialHeuristics(m_root);
            m_run.m_bSafeModeForced = m_run.m_bSafeModeForced || (m_analysis.m_bSafeMode && !bWasSafe);
            return result;
        }
        PlanProofOnly();
        m_root.m_nHeuristics = m_root.m_nHeurParams = 0;
        return kNothingLeftToRelax;
    }

    /// Behind the passes there have been only the proof is left: what was planned between is not announced any more.
    void PlanProofOnly() {
        const std::size_t planned = m_run.m_passRecords.size() + (m_context.m_bRunPass2 ? 1 : 0);
        m_analysis.m_nPassesPlanned.store(planned, std::memory_order_relaxed);
    }

    [[nodiscard]] bool HasEnough() const {
        const int limit = SolutionLimit(m_analysis);
        return limit != 0 && static_cast<int>(m_run.m_solutions.size()) >= limit;
    }

    [[nodiscard]] bool IsEnded() const { return IsStopping(m_root) || HasEnough() || !HasOpenMoves(m_run); }

    [[nodiscard]] bool IsSolved(const TMove& move) const {
        return std::any_of(m_run.m_solutions.begin(), m_run.m_solutions.end(),
                           [&](const TSolution& known) { return SameMove(known.m_move, move); });
    }

    void AddSolution(const TMove& move, const std::string& pass) {
        if (IsSolved(move))
            return;
        m_run.m_solutions.push_back({move, WriteMove(move, m_root), pass});
        if (m_run.m_sink)
            m_run.m_sink(move, m_run.m_solutions.back().m_text, m_run.m_nProblemId, pass);
    }

    TSearchContext& m_context;
    TAnalysis& m_analysis;
    TRootRun& m_run;
    TChessboard& m_root;
    std::string m_passName;
    int m_nGoodMoves = 0;               // of the root, at the head of its list
    std::uint32_t m_nChosen = 0;        // mask that the plan starts from
    bool m_bByClock = false;            // the pass to come is there because the ones before were quick
    bool m_bAnsweredByData = false;     // the root itself: no guide is needed
    std::vector<TMove> m_list;          // the moves of this pass as observers see them, in their order at its start
    std::vector<std::uint8_t> m_places; // in m_list, of each root move

    const bool m_bThreads;
    const std::uint8_t m_nAskedLevels = m_analysis.m_nMultithreadingLevels; // of threads
    std::mutex m_mutex;             // guards what follows, and the moves' results and solutions while a pass runs
    std::deque<std::size_t> m_open; // indices of the moves of this pass that nobody has begun, in order
    std::size_t m_nTried = 0;       // moves of this pass begun by the one thread,
    std::size_t m_nEnded = 0;       // or ended by the threads
};

} // namespace

int SolutionLimit(const TAnalysis& analysis) {
    if ((analysis.m_nSolveMode & kSingleSolution) != 0)
        return 1;
    if ((analysis.m_nStopFlags & kStopOnDual) != 0)
        return 2;
    if ((analysis.m_nStopFlags & kStopOn3Solutions) != 0)
        return 3;
    if ((analysis.m_nStopFlags & kStopOn4Solutions) != 0)
        return 4;
    return 0;
}

std::string PassNameOf(std::uint32_t nPassIndex) {
    return nPassIndex == 0 ? std::string() : PassName(static_cast<int>(nPassIndex >> 16), nPassIndex & 0xffff);
}

bool HasOpenMoves(const TRootRun& run) { return std::any_of(run.m_moves.begin(), run.m_moves.end(), IsOpen); }

namespace {

int RunRoot(TSearchContext& context, TAnalysis& analysis, const TChessboard& board, int nPlies, TRootRun& run,
            bool bFirstTime, bool bAllowThreadDemand, bool bThreads) {
    TChessboard& root = *MakeRoot(context, analysis, board, nPlies, 1);
    ClearManualCommand(analysis);
    CRootRun driver(context, analysis, run, root, bThreads);
    driver.ListMoves();
    if (nPlies > kShortestDemandingPlies && bAllowThreadDemand && !analysis.m_bThreadsForced &&
        !context.m_bNoThreadDemand) {
        if (const int demand = driver.DemandedThreads()) {
            analysis.m_bThreadsForced = true;
            return -demand;
        }
    }
    driver.ChooseHeuristics(bFirstTime);
    if (!driver.HasRequiredHeuristics())
        return kRequiredHeuristicsUnmet;
    if (run.m_bAnalysisOnly)
        return kInitialAnalysisOnly;
    driver.AskGuide();
    driver.SpareShortProblem();
    driver.PlanPasses();
    driver.TellPlan();
    return driver.RunPasses();
}

} // namespace

int FindMateRoot(TSearchContext& context, TAnalysis& analysis, const TChessboard& board, int nPlies, TRootRun& run,
                 bool bFirstTime, bool bAllowThreadDemand) {
    context.m_nThreadNumber = 0;
    return RunRoot(context, analysis, board, nPlies, run, bFirstTime, bAllowThreadDemand, false);
}

int FindMateRootThreads(TSearchContext& context, TAnalysis& analysis, const TChessboard& board, int nPlies,
                        TRootRun& run, bool bFirstTime, bool bAllowThreadDemand) {
    context.m_nThreadNumber = kNoThreadNumber; // this thread waits; the root's threads have the numbers from 0 on
    return RunRoot(context, analysis, board, nPlies, run, bFirstTime, bAllowThreadDemand, true);
}

} // namespace quillon
