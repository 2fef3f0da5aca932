#include "search/main_variant.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <new>

#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "search/bounded_look.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/helper_threads.h"
#include "search/hints.h"
#include "search/precalc_use.h"
#include "search/proof_guide.h"

namespace quillon {

namespace {

struct TReply {
    TMove m_move;
    int m_nPlies; // White mates within these plies after it
};

/// Makes a black move as the child of `b`, with `nPlies` left to White. The maker marks an en passant capture in
/// `move`.
TChessboard* MakeReply(TChessboard& b, TMove& move, int nPlies) {
    TChessboard* const child = CopyToChild(&b);
    if (MakeBlackMove<kLegalityOnly>(*child, move, false) == kIllegalMove)
        return nullptr;
    child->m_nMoves = static_cast<std::uint16_t>(nPlies);
    return child;
}

std::vector<TReply> LegalReplies(TChessboard& b) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackMoves(b, list);
    std::vector<TReply> replies;
    for (int i = 0; i < count; ++i)
        if (MakeReply(b, list[i], b.m_nMoves - 1) != nullptr)
            replies.push_back({list[i], b.m_nMoves - 1});
    return replies;
}

/// A reply with White's plies to mate as they are known, and the guide that knows them if it is not the solve's own.
struct TKnownReply {
    TReply m_reply;
    std::unique_ptr<CProofGuide> m_guide;
};

/// Trials of fewer plies end before a thread has started.
constexpr int kShortestSharedTrial = 7;

/// Which replies survive a trial of White's: he does not mate within so many plies. The replies are shared with helper
/// threads, and so is what the look may still cost.
class CTrial {
  public:
    CTrial(TChessboard& b, const std::vector<TReply>& replies, int nPlies)
        : m_b(b), m_replies(replies), m_nPlies(nPlies), m_bFirstDecides(nPlies == b.m_nMoves - 3),
          m_survives(replies.size()) {}

    /// The survivors in their order. Where the trial is only two plies shorter than what is left, each of them holds
    /// out longest, and one stands for all: the first, unless threads found another sooner.
    ///   Without meaning once IsCutShort.
    std::vector<TReply> Survivors() {
        const int threads = Threads();
        if (threads > 1)
            TryWithHelpers(threads);
        else
            TryReplies(m_b);
        std::vector<TReply> survivors;
        for (std::size_t i = 0; i < m_replies.size(); ++i)
            if (m_survives[i] != 0)
                survivors.push_back(m_replies[i]);
        return survivors;
    }

    /// A thread was stopped, or has used up its part of the look.
    [[nodiscard]] bool IsCutShort() const { return m_bCutShort.load(std::memory_order_relaxed) && !IsDecided(); }

  private:
    [[nodiscard]] bool IsDecided() const { return m_bFirstDecides && m_bAnySurvives.load(std::memory_order_relaxed); }

    /// Is there nothing more to find out? Where all survivors count, one reply that is not told spoils the trial.
    [[nodiscard]] bool IsOver() const {
        return m_bFirstDecides ? m_bAnySurvives.load(std::memory_order_relaxed)
                               : m_bCutShort.load(std::memory_order_relaxed);
    }

    [[nodiscard]] int Threads() const {
        if (m_nPlies < kShortestSharedTrial || !IsInMainStack(m_b))
            return 1;
        return std::min(ThreadsForLook(*m_b.m_pAnalysis), static_cast<int>(m_replies.size()));
    }

    /// Each thread that has come about gets a part of the bound; what is left of the parts goes back.
    void TryWithHelpers(int nThreads) {
        TSearchContext& context = *m_b.m_pContext;
        FlushPositions(context, *m_b.m_pAnalysis);
        const std::uint64_t part = context.m_nPositionsLeft / static_cast<std::uint64_t>(nThreads);
        CHelperThreads helpers;
        const int started = helpers.Start(m_b, nThreads - 1, [&](TChessboard& b) { Help(b, part); });
        context.m_nPositionsLeft -= part * static_cast<std::uint64_t>(started);
        TryReplies(m_b);
        if (IsOver())
            helpers.Stop();
        else
            helpers.Join();
        FlushPositions(context, *m_b.m_pAnalysis);
        context.m_nPositionsLeft += m_nGivenBack.load(std::memory_order_relaxed);
    }

    /// What a helping thread does with its part of the bound. Without memory it leaves the trial cut short.
    void Help(TChessboard& b, std::uint64_t nPart) {
        const CBoundedLook look(*b.m_pContext, *b.m_pAnalysis, nPart);
        try {
            TryReplies(b);
        } catch (const std::bad_alloc&) {
            m_bCutShort.store(true, std::memory_order_relaxed);
        }
        FlushPositions(*b.m_pContext, *b.m_pAnalysis);
        m_nGivenBack.fetch_add(b.m_pContext->m_nPositionsLeft, std::memory_order_relaxed);
    }

    /// One thread's work.
    void TryReplies(TChessboard& b) {
        const auto next = [this] { return m_nNext.fetch_add(1, std::memory_order_relaxed); };
        for (std::size_t i = next(); i < m_replies.size(); i = next()) {
            if (IsOver())
                return;
            TMove move = m_replies[i].m_move;
            const bool bMated = FindMateWhite(MakeReply(b, move, m_nPlies), true) == MR_MATE;
            if (IsStopping(b)) { // then it is no verdict
                m_bCutShort.store(true, std::memory_order_relaxed);
                return;
            }
            if (!bMated) {
                m_survives[i] = 1;
                m_bAnySurvives.store(true, std::memory_order_relaxed);
            }
        }
    }

    TChessboard& m_b;
    const std::vector<TReply>& m_replies;
    const int m_nPlies;
    const bool m_bFirstDecides;
    std::vector<std::uint8_t> m_survives; // each written by one thread
    std::atomic<std::size_t> m_nNext{0};
    std::atomic<bool> m_bAnySurvives{false}, m_bCutShort{false};
    std::atomic<std::uint64_t> m_nGivenBack{0};
};

/// Of replies that all lose within m_nMoves - 1 plies, the first that holds out longest: rising trial lengths sieve out
/// those that are mated sooner. A stop, the bound of a look among them, leaves those that were not told apart.
///   bCutShort  receives whether that has come to pass.
std::vector<TReply> LongestReplies(TChessboard& b, std::vector<TReply> replies, bool& bCutShort) {
    bCutShort = IsStopping(b);
    for (int plies = 1; plies < b.m_nMoves - 1 && !bCutShort; plies += 2) {
        CTrial trial(b, replies, plies);
        std::vector<TReply> survivors = trial.Survivors();
        bCutShort = trial.IsCutShort();
        if (bCutShort)
            break;
        if (survivors.empty())
            return {{replies.front().m_move, plies}};
        replies = std::move(survivors);
    }
    return replies;
}

TChessboard* MakeIfItMates(TChessboard& b, TMove& move) {
    TChessboard* const child = CopyToChild(&b);
    return MakeWhiteMove(*child, move) != 0 && FindMateBlack(child) == MR_MATE && !IsStopping(b) ? child : nullptr;
}

/// Do the data mate after every reply to a white move, made in `child`?
bool MatesByDataAlone(TChessboard& child) {
    const std::vector<TReply> replies = LegalReplies(child);
    if (replies.empty())
        return child.m_blackChecker != kNoChecker;
    return std::ranges::all_of(replies, [&child](TReply reply) {
        return AskPrecalcData(*MakeReply(child, reply.m_move, reply.m_nPlies)) == MR_MATE;
    });
}

/// A move that data of a custom type mate by. They cannot refute the others: each of those would take a search, and of
/// a mate as long as these know it none would end.
TChessboard* MakeMoveOfCustomData(TChessboard& b, TMove& mating) {
    if ((b.m_wKingState & kCustomDataMayMate) == 0 || AskPrecalcData(b) != MR_MATE)
        return nullptr;
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(b, list);
    for (int i = 0; i < count; ++i) {
        TChessboard* const child = CopyToChild(&b);
        mating = list[i];
        if (MakeWhiteMove(*child, mating) != 0 && MatesByDataAlone(*child))
            return child;
    }
    return nullptr;
}

/// With fewer plies left all moves are tried in turn; with more, the node that finds the mate is asked which it was.
constexpr int kShortestAskedNode = 9;

/// A white move that mates within m_nMoves plies, made as the child of `b`; null when the search was stopped.
TChessboard* MakeMatingMove(TChessboard& b, TMove& mating) {
    const CProofGuide* const guide = b.m_pAnalysis->m_pGuide;
    if (guide != nullptr && guide->Suggest(b, mating)) // the lengths of the replies to come are told along its moves
        if (TChessboard* const child = MakeIfItMates(b, mating))
            return child;
    if (TChessboard* const child = MakeMoveOfCustomData(b, mating))
        return child;
    if (b.m_nMoves >= kShortestAskedNode && FindMateWhite(&b, false) == MR_MATE) {
        mating = b.m_pContext->m_hints[b.m_nMoves];
        if (!IsNullMove(mating) && CHints(b).Knows(mating))
            if (TChessboard* const child = MakeIfItMates(b, mating))
                return child;
    }
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(b, list);
    for (int i = 0; i < count && !IsStopping(b); ++i) {
        mating = list[i];
        if (TChessboard* const child = MakeIfItMates(b, mating))
            return child;
    }
    return nullptr;
}

/// Spent on every turn: short mates are told from long ones even when the bound is used up.
constexpr std::uint64_t kFewestPositions = 20'000;

/// Of what is left, for the length of the mate behind an only reply: no choice of Black's depends on it.
constexpr std::uint64_t kShareOfOnlyReply = 8;

// What best-first proofs may expand to tell replies apart that the bound has left: for one length of one reply, and in
// all.
constexpr std::uint64_t kProofNodes = 20'000, kAllProofNodes = 200'000;
constexpr std::size_t kProofTable = std::size_t{4} << 20;

/// With so few plies left a guide is silent; it may be with more of them, where the line has left its proof.
constexpr int kShorterThanGuided = 3;

class CVariant {
  public:
    CVariant(TChessboard& root, std::uint64_t nMostPositions)
        : m_context(*root.m_pContext), m_analysis(*root.m_pAnalysis), m_pGuideOfSolve(m_analysis.m_pGuide),
          m_nMostPositions(nMostPositions), m_nLeft(nMostPositions) {}
    ~CVariant() { m_analysis.m_pGuide = m_pGuideOfSolve; }
    CVariant(const CVariant&) = delete;
    CVariant& operator=(const CVariant&) = delete;

    /// The best reply of `b`, in the plies that White needs behind it.
    TReply LongestReply(TChessboard& b, std::vector<TReply> replies) {
        const bool bOnly = replies.size() == 1;
        bool bCutShort = false;
        {
            const std::uint64_t most = std::max(bOnly ? m_nLeft / kShareOfOnlyReply : m_nLeft, kFewestPositions);
            const CBoundedLook look(m_context, m_analysis, most);
            replies = LongestReplies(b, std::move(replies), bCutShort);
            FlushPositions(m_context, m_analysis);
            // Threads that were cut short, by the bound or for want of memory, have parts of it left, which would serve
            // no later turn better.
            const std::uint64_t spent = bCutShort ? most : most - m_context.m_nPositionsLeft;
            m_nLeft -= std::min(spent, m_nLeft);
        }
        if (!bCutShort)
            return replies.front();
        return bOnly ? TReply{replies.front().m_move, KnownPlies(b, replies.front().m_move)}
                     : LongestAsKnown(b, std::move(replies));
    }

    /// A white move that mates. Of a mate too long to be proved again within the bound a best-first proof has to do.
    TChessboard* MatingMove(TChessboard& b, TMove& mating) {
        {
            const CBoundedLook look(m_context, m_analysis, m_nMostPositions);
            if (TChessboard* const child = MakeMatingMove(b, mating))
                return child;
        }
        if (TChessboard* const child = MakeGuidedMove(b, mating))
            return child;
        auto guide = std::make_unique<CProofGuide>(kProofTable);
        if (IsStopping(b) || guide->Search(b, kAllProofNodes, ThreadsForLook(m_analysis)) != EProofResult::Proved)
            return nullptr;
        Follow(std::move(guide));
        return MakeGuidedMove(b, mating);
    }

  private:
    void Follow(std::unique_ptr<CProofGuide> guide) {
        m_guide = std::move(guide);
        m_analysis.m_pGuide = m_guide.get();
    }

    /// The move of the guide's proof, if it knows one here.
    [[nodiscard]] TChessboard* MakeGuidedMove(TChessboard& b, TMove& move) const {
        const CProofGuide* const guide = m_analysis.m_pGuide;
        if (guide == nullptr || !guide->Suggest(b, move))
            return nullptr;
        TChessboard* const child = CopyToChild(&b);
        return MakeWhiteMove(*child, move) != 0 ? child : nullptr;
    }

    /// White's plies to mate behind a reply as the guide knows them, at most those left.
    [[nodiscard]] int KnownPlies(TChessboard& b, TMove move) const {
        const CProofGuide* const guide = m_analysis.m_pGuide;
        if (guide == nullptr || !guide->IsProved())
            return b.m_nMoves - 1;
        if (const int known = guide->KnownPlies(*MakeReply(b, move, b.m_nMoves - 1)); known != 0)
            return known;
        const int least = std::min(kShorterThanGuided, b.m_nMoves - 1);
        return FindMateWhite(MakeReply(b, move, least), true) == MR_MATE ? least : b.m_nMoves - 1;
    }

    /// Looks for shorter mates behind a reply.
    TKnownReply Shortened(TChessboard& b, TReply reply) {
        TKnownReply known{reply, nullptr};
        while (known.m_reply.m_nPlies > kShorterThanGuided && m_nProofNodes < kAllProofNodes && !IsStopping(b)) {
            TChessboard* const child = MakeReply(b, reply.m_move, known.m_reply.m_nPlies - 2);
            auto guide = std::make_unique<CProofGuide>(kProofTable);
            const EProofResult result = guide->Search(*child, kProofNodes, ThreadsForLook(m_analysis));
            m_nProofNodes += guide->Nodes();
            if (result != EProofResult::Proved || guide->KnownPlies(*child) == 0)
                break;
            known.m_reply.m_nPlies = guide->KnownPlies(*child);
            known.m_guide = std::move(guide);
        }
        return known;
    }

    /// Of replies that could not be told apart the one that holds out longest as far as can be seen.
    TReply LongestAsKnown(TChessboard& b, std::vector<TReply> replies) {
        for (TReply& reply : replies)
            reply.m_nPlies = KnownPlies(b, reply.m_move);
        std::ranges::stable_sort(replies, std::greater{}, &TReply::m_nPlies);
        TKnownReply best{{}, nullptr};
        for (const TReply& reply : replies) {
            if (best.m_reply.m_nPlies >= reply.m_nPlies)
                break;
            TKnownReply known = Shortened(b, reply);
            if (known.m_reply.m_nPlies > best.m_reply.m_nPlies)
                best = std::move(known);
        }
        if (best.m_guide != nullptr)
            Follow(std::move(best.m_guide));
        return best.m_reply;
    }

    TSearchContext& m_context;
    TAnalysis& m_analysis;
    const CProofGuide* const m_pGuideOfSolve;
    std::unique_ptr<CProofGuide> m_guide; // a mate that the solve's guide does not know
    const std::uint64_t m_nMostPositions;
    std::uint64_t m_nLeft; // for telling replies apart
    std::uint64_t m_nProofNodes = 0;
};

/// The variant is built on proofs, whatever was in force in the run that found the key.
class CPlainRoot {
  public:
    explicit CPlainRoot(TChessboard& root) : m_root(root), m_saved(root) {
        root.m_byPass = 2;
        root.m_nHeuristics = root.m_nHeurParams = 0;
    }
    ~CPlainRoot() { m_root = m_saved; }
    CPlainRoot(const CPlainRoot&) = delete;
    CPlainRoot& operator=(const CPlainRoot&) = delete;

  private:
    TChessboard& m_root;
    const TChessboard m_saved;
};

} // namespace

std::vector<TMove> BuildMainVariant(TChessboard& root, const TMove& key, std::uint64_t nMostPositions) {
    const CPlainRoot plain(root);
    CVariant variant(root, nMostPositions);
    std::vector<TMove> line;
    TMove move = key;
    TChessboard* b = CopyToChild(&root);
    if (MakeWhiteMove(*b, move) == 0)
        return {};
    line.push_back(move);
    for (;;) {
        std::vector<TReply> replies = LegalReplies(*b);
        if (replies.empty()) // a line that the guide led astray is none
            return b->m_blackChecker != kNoChecker ? line : std::vector<TMove>();
        TReply reply = variant.LongestReply(*b, std::move(replies));
        TChessboard* const answered = MakeReply(*b, reply.m_move, reply.m_nPlies);
        line.push_back(reply.m_move);
        b = variant.MatingMove(*answered, move);
        if (b == nullptr)
            return {};
        line.push_back(move);
    }
}

} // namespace quillon
