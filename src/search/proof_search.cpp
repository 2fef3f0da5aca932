#include "search/proof_search.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <new>
#include <vector>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/king_flights.h"
#include "core/makers.h"
#include "core/queries.h"
#include "core/search_context.h"
#include "search/analysis.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/helper_threads.h"
#include "search/proof_team.h"
#include "search/reply_count.h"

namespace quillon {

namespace {

/// With so many plies left the recursion answers faster than numbers could be kept.
constexpr int kAnsweredByRecursion = 3;

// What a position is estimated at before it is searched, as measured over some 200 mates in 11 to 30.
constexpr std::uint32_t kFewestNumber = 1;
constexpr std::uint32_t kWeightOfQuietMove = 2;            // of one that gives no check, in replies
constexpr std::uint32_t kWeightOfFlight = 2;               // of the black king
constexpr std::uint32_t kWhiteInCheck = 1, kWhiteFree = 3; // what Black has to refute

/// A thread at work in a position makes it seem harder to the others by this part.
constexpr std::uint32_t kShareOfOthers = 16;

std::uint32_t Capped(std::uint64_t number) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(number, kInfiniteNumber - 1));
}

struct TChild {
    TMove m_move;
    TProofNumbers m_numbers; // as the mover of the child sees them
    std::uint64_t m_hash;
};

/// A position on the way from the root to the one at work.
struct TPlace {
    std::uint64_t m_hash;
    int m_nPlies;
};

/// The work of one thread.
class CProofSearch {
  public:
    CProofSearch(CProofTable& table, CProofTeam& team) : m_table(table), m_team(team) {}

    /// Until the root is decided, by whichever thread, or the search is over.
    void Run(TChessboard& root) {
        const std::uint64_t hash = HashBoard(root);
        TProofNumbers numbers = Known(hash, root.m_nMoves);
        while (!IsDecided(numbers) && !m_team.IsOver(root))
            numbers = Expand(root, hash, kInfiniteNumber, kInfiniteNumber);
        m_team.CountNodes(m_nUncounted);
        if (IsDecided(numbers))
            m_team.Decide(numbers.m_phi == 0);
    }

  private:
    static constexpr std::size_t kNowhere = ~std::size_t{0};

    /// Puts a position on the way for as long as it lives, and marks it.
    class CStay {
      public:
        CStay(CProofSearch& search, const TPlace& place) : m_search(search) {
            if (search.m_team.IsAlone())
                return;
            search.m_way.push_back(place);
            search.m_team.Enter(place.m_hash, place.m_nPlies);
        }
        ~CStay() {
            if (m_search.m_team.IsAlone())
                return;
            const TPlace place = m_search.m_way.back();
            m_search.m_team.Leave(place.m_hash, place.m_nPlies);
            m_search.m_way.pop_back();
            if (m_search.m_way.size() <= m_search.m_nDecidedAt)
                m_search.m_nDecidedAt = kNowhere;
        }
        CStay(const CStay&) = delete;
        CStay& operator=(const CStay&) = delete;

      private:
        CProofSearch& m_search;
    };

    [[nodiscard]] TProofNumbers Known(std::uint64_t hash, int nPlies) const {
        const CProofTable::TFound found = m_table.Find(hash, nPlies);
        return found.m_bKnown ? found.m_numbers : TProofNumbers{};
    }

    void CountNode(TChessboard& p) {
        ++m_nExpanded;
        if (++m_nUncounted == m_team.Lot()) {
            m_team.CountNodes(m_nUncounted);
            m_nUncounted = 0;
        }
        CountTrialPosition(*p.m_pContext, *p.m_pAnalysis);
    }

    /// Works below `p` until its numbers reach a threshold; returns and stores them.
    TProofNumbers Expand(TChessboard& p, std::uint64_t hash, std::uint32_t phiBound, std::uint32_t deltaBound) {
        const CProofTable::TFound known = m_table.Find(hash, p.m_nMoves);
        if (known.m_bKnown && IsDecided(known.m_numbers)) // since its parent was expanded, here or by another thread
            return known.m_numbers;
        CountNode(p);
        if (p.m_nMoves == kAnsweredByRecursion)
            return Answer(p, hash);
        const std::uint64_t before = m_nExpanded - 1;
        const CStay stay(*this, {hash, p.m_nMoves});
        const std::size_t first = m_children.size();
        const bool bEnded = ListMoves(p, known.m_bKnown && !IsNullMove(known.m_move));
        if (IsStopping(p)) { // Black's certain escapes are searched for: a stop in between is none
            m_children.resize(first);
            return {};
        }
        TProofNumbers numbers;
        TMove best{};
        if (bEnded) { // the last child of the list decides
            numbers = kReachesAim;
            best = m_children.back().m_move;
        } else if (m_children.size() == first) {
            numbers = WithoutMoves(p);
        } else {
            numbers = WorkOnChildren(p, first, phiBound, deltaBound, best);
        }
        m_children.resize(first);
        return Keep(p, hash, numbers, best, known.m_nWork, m_nExpanded - before);
    }

    /// A verdict that another thread has stored meanwhile stays. `nEarlier` and `nWork`: positions expanded in earlier
    /// visits and in this one.
    TProofNumbers Keep(const TChessboard& p, std::uint64_t hash, const TProofNumbers& numbers, const TMove& best,
                       std::uint64_t nEarlier, std::uint64_t nWork) {
        if (m_team.IsAlone()) {
            m_table.Store(hash, p.m_nMoves, numbers, best, nEarlier + nWork);
            return numbers;
        }
        const CProofTable::TFound known = m_table.Find(hash, p.m_nMoves);
        const bool bKnown = known.m_bKnown && IsDecided(known.m_numbers); // or that of other plies, told to nobody here
        if (!bKnown)
            m_table.Store(hash, p.m_nMoves, numbers, best, std::max(nEarlier, known.m_nWork) + nWork);
        const TProofNumbers kept = bKnown ? known.m_numbers : numbers;
        if (IsDecided(kept) && m_team.ThreadsIn(hash, p.m_nMoves) > 1)
            m_team.TellDecision(); // behind the store: who looks at once is to find it
        return kept;
    }

    /// Neither side has reached anything without a move but Black who is stalemated: White is then not to mate.
    static TProofNumbers WithoutMoves(const TChessboard& p) {
        const bool bMated = !IsWhiteToMove(p) && p.m_blackChecker != kNoChecker;
        return IsWhiteToMove(p) || bMated ? kMissesAim : kReachesAim;
    }

    /// The child that is to be worked on next, and what the numbers of all come to.
    struct TChoice {
        std::size_t m_nChild;
        std::uint32_t m_least = kInfiniteNumber + 1; // delta of the child
        std::uint32_t m_seen = kInfiniteNumber + 1;  // the same, with what other threads at work there make of it
        std::uint32_t m_second = kInfiniteNumber;    // of the next best, as seen
        std::uint64_t m_sum = 0;                     // of phi
    };

    TChoice Choose(std::size_t first) const {
        TChoice choice{first};
        for (std::size_t i = first; i < m_children.size(); ++i) {
            const TProofNumbers& child = m_children[i].m_numbers;
            if (child.m_delta < choice.m_least) {
                choice.m_second = choice.m_least;
                choice.m_least = child.m_delta;
                choice.m_nChild = i;
            } else if (child.m_delta < choice.m_second) {
                choice.m_second = child.m_delta;
            }
            choice.m_sum += child.m_phi;
        }
        choice.m_seen = choice.m_least;
        return choice;
    }

    /// The same where others are at work: what they have found counts, and where they are there seems to be more to do
    /// than there is.
    TChoice ChooseAmongOthers(std::size_t first, int nChildPlies) {
        TChoice choice{first};
        for (std::size_t i = first; i < m_children.size(); ++i) {
            TChild& child = m_children[i];
            if (!IsDecided(child.m_numbers)) {
                const CProofTable::TFound found = m_table.Find(child.m_hash, nChildPlies);
                if (found.m_bKnown)
                    child.m_numbers = found.m_numbers;
            }
            const std::uint32_t seen = DeltaAsSeen(child, nChildPlies);
            if (seen < choice.m_seen) {
                choice.m_second = choice.m_seen;
                choice.m_seen = seen;
                choice.m_nChild = i;
            } else if (seen < choice.m_second) {
                choice.m_second = seen;
            }
            choice.m_least = std::min(choice.m_least, child.m_numbers.m_delta);
            choice.m_sum += child.m_numbers.m_phi;
        }
        return choice;
    }

    [[nodiscard]] std::uint32_t DeltaAsSeen(const TChild& child, int nPlies) const {
        const std::uint32_t delta = child.m_numbers.m_delta;
        if (IsDecided(child.m_numbers))
            return delta;
        return Capped(delta + m_team.ThreadsIn(child.m_hash, nPlies) * (delta / kShareOfOthers + std::uint64_t{1}));
    }

    TProofNumbers WorkOnChildren(TChessboard& p, std::size_t first, std::uint32_t phiBound, std::uint32_t deltaBound,
                                 TMove& best) {
        for (bool bFresh = true;; bFresh = false) {
            const bool bOthers = AreOthersHere();
            const TChoice choice = bOthers ? ChooseAmongOthers(first, p.m_nMoves - 1) : Choose(first);
            best = m_children[choice.m_nChild].m_move;
            const std::uint32_t phi = std::min(choice.m_least, kInfiniteNumber);
            const std::uint32_t delta = phi == 0 ? kInfiniteNumber : Capped(choice.m_sum);
            if (phi == 0 || delta == 0)
                return {phi, delta};
            // Where the marks of others have led here, some step is made at least.
            const bool bReached = choice.m_seen >= phiBound || delta >= deltaBound;
            if ((bReached && !(bOthers && bFresh)) || m_team.IsOver(p) || IsDecidedElsewhere())
                return {phi, delta};
            const TChild child = m_children[choice.m_nChild];
            std::uint32_t childPhiBound = deltaBound - (delta - child.m_numbers.m_phi);
            const std::uint32_t second = choice.m_second;
            std::uint32_t childDeltaBound = std::min({phiBound, second + second / 4 + 1, kInfiniteNumber});
            if (bReached) {
                childPhiBound = child.m_numbers.m_phi + 1;
                childDeltaBound = std::max(childDeltaBound, child.m_numbers.m_delta + 1);
            }
            m_children[choice.m_nChild].m_numbers =
                ExpandChild(p, child, std::min(childPhiBound, kInfiniteNumber), childDeltaBound);
        }
    }

    TProofNumbers ExpandChild(TChessboard& p, const TChild& child, std::uint32_t phiBound, std::uint32_t deltaBound) {
        if (TChessboard* const made = Make(p, child.m_move); made != nullptr)
            return Expand(*made, child.m_hash, phiBound, deltaBound);
        if (IsStopping(p))
            return {};
        return IsWhiteToMove(p) ? kReachesAim : kMissesAim;
    }

    /// Do other threads work below the last position of the way, too?
    [[nodiscard]] bool AreOthersHere() const {
        return !m_team.IsAlone() && m_team.ThreadsIn(m_way.back().m_hash, m_way.back().m_nPlies) > 1;
    }

    /// Has another thread decided a position of the way? Then there is nothing to do below it.
    [[nodiscard]] bool IsDecidedElsewhere() {
        if (const std::uint32_t decisions = m_team.Decisions(); decisions != m_nDecisionsSeen) {
            m_nDecisionsSeen = decisions;
            const auto decided = std::ranges::find_if(
                m_way, [&](const TPlace& place) { return IsDecided(Known(place.m_hash, place.m_nPlies)); });
            m_nDecidedAt = decided != m_way.end() ? static_cast<std::size_t>(decided - m_way.begin()) : kNowhere;
        }
        return m_nDecidedAt < m_way.size();
    }

    /// In the copy of a position: kIllegalMove, kMoveStands or, for Black, kCertainEscape.
    static int Play(TChessboard& child, TMove move) {
        if (IsWhiteToMove(child))
            return MakeWhiteMove(child, move) != 0 ? kMoveStands : kIllegalMove;
        return MakeBlackMove(child, move, false);
    }

    static TChessboard* Make(TChessboard& p, TMove move) {
        TChessboard* const child = CopyToChild(&p);
        return Play(*child, move) == kMoveStands ? child : nullptr;
    }

    /// What a recursion says that was stopped is no answer.
    TProofNumbers Answer(TChessboard& p, std::uint64_t hash) {
        const bool bMate = FindMateWhite(&p, false) == MR_MATE;
        if (IsStopping(p))
            return {};
        const TProofNumbers numbers = bMate ? kReachesAim : kMissesAim;
        m_table.Store(hash, p.m_nMoves, numbers, TMove{}, 1);
        return numbers;
    }

    /// What a move comes to before anything is searched behind it.
    struct TEstimate {
        enum EKind { Open, Decides, Stalemates, IsMatedOnTheMove } m_kind;
        TProofNumbers m_numbers; // of the child
    };

    /// True if a move decides at once: White mates or Black escapes; it is the last of the list then. White's
    /// stalemates are left out, and Black's replies that are mated on the move, unless all are.
    ///
    /// Two steps, so that nothing waits for the table's memory: every move is made and its entry announced, then the
    /// table is asked. At the first visit the moves are estimated as they are made. The estimates of what stays in
    /// the list are kept as far as the table has room: every third visit is a further one.
    bool ListMoves(TChessboard& p, bool bVisited) {
        TMove list[kMaxMoves];
        const int count = IsWhiteToMove(p) ? GenerateWhiteMoves(p, list) : GenerateBlackMoves(p, list);
        const std::size_t first = m_children.size();
        TMove mated{};
        for (int i = 0; i < count; ++i) {
            TChild added{{list[i].m_nFrom, list[i].m_nTo, list[i].m_nPromotion, 0}, {}, 0};
            TChessboard* const child = CopyToChild(&p);
            const int made = Play(*child, added.m_move);
            if (made == kIllegalMove)
                continue;
            if (made == kCertainEscape) {
                m_children.push_back({added.m_move, kMissesAim, 0});
                return true;
            }
            added.m_hash = HashBoard(*child);
            m_table.Prefetch(added.m_hash);
            if (!bVisited && !Takes(added, Estimate(*child), mated))
                continue;
            m_children.push_back(added);
            if (IsDecided(added.m_numbers))
                return true;
        }
        return LookUp(p, first, bVisited, mated);
    }

    /// The second step, with the same result.
    bool LookUp(TChessboard& p, std::size_t first, bool bVisited, TMove& mated) {
        std::size_t kept = first;
        for (std::size_t i = first; i < m_children.size(); ++i) {
            TChild child = m_children[i];
            const CProofTable::TFound found = m_table.Find(child.m_hash, p.m_nMoves - 1);
            if (found.m_bKnown) {
                child.m_numbers = found.m_numbers;
            } else {
                TChessboard* const made = bVisited ? Make(p, child.m_move) : nullptr;
                if (made != nullptr && !Takes(child, Estimate(*made), mated))
                    continue;
                if (bVisited && made == nullptr) // as an escape; only behind a stop it comes to that
                    child.m_numbers = kMissesAim;
                if (IsDecided(child.m_numbers)) {
                    m_children.push_back(child);
                    return true;
                }
                m_table.StoreEstimate(child.m_hash, p.m_nMoves - 1, child.m_numbers);
            }
            if (!IsDecided(child.m_numbers) && IsNullMove(found.m_move)) // an estimate
                child.m_numbers = {std::max(child.m_numbers.m_phi, found.m_atLeast.m_phi),
                                   std::max(child.m_numbers.m_delta, found.m_atLeast.m_delta)};
            m_children[kept++] = child;
        }
        m_children.resize(kept);
        if (kept == first && !IsNullMove(mated))
            m_children.push_back({mated, kReachesAim, 0});
        return false;
    }

    /// Enters what a move is estimated at. False if it does not stay in the list.
    static bool Takes(TChild& child, const TEstimate& estimate, TMove& mated) {
        if (estimate.m_kind == TEstimate::IsMatedOnTheMove)
            mated = child.m_move;
        child.m_numbers = estimate.m_numbers;
        return estimate.m_kind == TEstimate::Open || estimate.m_kind == TEstimate::Decides;
    }

    /// `b`: the move is made.
    TEstimate Estimate(TChessboard& b) { return IsWhiteToMove(b) ? EstimateReply(b) : EstimateWhiteMove(b); }

    /// The freer the black king is, the farther is mate, on either side of a reply: without the flights half as many
    /// positions again are expanded behind replies, and up to a third more behind White's moves.
    TEstimate EstimateWhiteMove(TChessboard& b) {
        const bool bCheck = b.m_blackChecker != kNoChecker;
        const TFigureMasks masks = TakeMasks(b);
        int replies = 0, flights = 0;
        if (bCheck) {
            replies = CountLegalReplies(b);
            flights = CountSquares(BlackKingFreeSquares(masks));
        } else {
            const TReplyCount count = CountRepliesOnMasks(masks);
            flights = count.m_nFlights;
            replies = count.All() != 0 ? count.All() : CountLegalReplies(b); // en passant is all there may be
        }
        if (replies == 0)
            return {bCheck ? TEstimate::Decides : TEstimate::Stalemates, kMissesAim};
        return {TEstimate::Open,
                {kFewestNumber, static_cast<std::uint32_t>(replies) + (bCheck ? 0 : kWeightOfQuietMove) +
                                    kWeightOfFlight * static_cast<std::uint32_t>(flights)}};
    }

    static TEstimate EstimateReply(const TChessboard& b) {
        const TLookForMate look = LookForMateInOne(b);
        if (look.m_bMate)
            return {TEstimate::IsMatedOnTheMove, kReachesAim};
        if (b.m_nMoves == 1)
            return {TEstimate::Decides, kMissesAim};
        return {TEstimate::Open,
                {kFewestNumber + kWeightOfFlight * static_cast<std::uint32_t>(look.m_nFlights),
                 b.m_whiteChecker != kNoChecker ? kWhiteInCheck : kWhiteFree}};
    }

    /// One by one.
    static int CountLegalReplies(TChessboard& b) {
        TMove list[kMaxMoves];
        const int count = GenerateBlackMoves(b, list);
        int legal = 0;
        for (int i = 0; i < count; ++i) {
            TChessboard* const child = CopyToChild(&b);
            legal += MakeBlackMove<kLegalityOnly>(*child, list[i], false) != kIllegalMove;
        }
        return legal;
    }

    CProofTable& m_table;
    CProofTeam& m_team;
    std::uint64_t m_nExpanded = 0;
    std::uint32_t m_nUncounted = 0; // of them, that the team does not know of yet
    std::vector<TChild> m_children; // of all positions on the way to the one at work
    std::vector<TPlace> m_way;
    std::size_t m_nDecidedAt = kNowhere; // place on the way that another thread has decided
    std::uint32_t m_nDecisionsSeen = 0;
};

/// Puts the plies left back.
class CPliesLent {
  public:
    explicit CPliesLent(TChessboard& b) : m_b(b), m_nPlies(b.m_nMoves) {}
    ~CPliesLent() { m_b.m_nMoves = m_nPlies; }
    CPliesLent(const CPliesLent&) = delete;
    CPliesLent& operator=(const CPliesLent&) = delete;

  private:
    TChessboard& m_b;
    const std::uint16_t m_nPlies;
};

/// The search is a look aside: commands that mean the line of the solve do not mean its lines.
class CLookAsideOfProof {
  public:
    explicit CLookAsideOfProof(TSearchContext& context) : m_context(context) { ++context.m_nQuickerLevel; }
    ~CLookAsideOfProof() { --m_context.m_nQuickerLevel; }
    CLookAsideOfProof(const CLookAsideOfProof&) = delete;
    CLookAsideOfProof& operator=(const CLookAsideOfProof&) = delete;

  private:
    TSearchContext& m_context;
};

/// To start a thread pays only for a search of some length.
constexpr std::uint64_t kFewestNodesForThreads = 2000;

/// Ends the search of all threads where the calling one leaves it, however that comes about.
class CEndOfTeam {
  public:
    explicit CEndOfTeam(CProofTeam& team) : m_team(team) {}
    ~CEndOfTeam() { m_team.End(); }
    CEndOfTeam(const CEndOfTeam&) = delete;
    CEndOfTeam& operator=(const CEndOfTeam&) = delete;

  private:
    CProofTeam& m_team;
};

/// What a helping thread does. Without memory it leaves the work to the others.
void Help(TChessboard& root, CProofTable& table, CProofTeam& team) {
    try {
        CProofSearch(table, team).Run(root);
    } catch (const std::bad_alloc&) {
    }
}

int UsefulThreads(const TChessboard& root, std::uint64_t nMostNodes, int nThreads) {
    const bool bLong = nMostNodes >= kFewestNodesForThreads && root.m_nMoves > kAnsweredByRecursion;
    return bLong && IsInMainStack(root) ? std::max(nThreads, 1) : 1;
}

} // namespace

EProofResult SearchProof(TChessboard& root, CProofTable& table, std::uint64_t nMostNodes, std::uint64_t& nNodes,
                         int nThreads) {
    const CLookAsideOfProof aside(*root.m_pContext);
    const auto team = std::make_unique<CProofTeam>(root, UsefulThreads(root, nMostNodes, nThreads), nMostNodes);
    {
        CHelperThreads helpers;
        helpers.Start(root, team->Threads() - 1, [&](TChessboard& b) { Help(b, table, *team); });
        {
            const CEndOfTeam end(*team);
            CProofSearch(table, *team).Run(root);
        }
        helpers.Stop();
    }
    nNodes += team->Nodes();
    return IsStopping(root) ? EProofResult::Open : team->Result();
}

bool FindShortMate(TChessboard& p, TMove& move) {
    assert(p.m_nMoves >= kAnsweredByRecursion);
    const CLookAsideOfProof aside(*p.m_pContext);
    const CPliesLent lent(p);
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(p, list);
    const auto mates = [&](TMove made) {
        TChessboard* const child = CopyToChild(&p);
        return MakeWhiteMove(*child, made) != 0 && FindMateBlack(child) == MR_MATE && !IsStopping(p);
    };
    const TMove* found = list + count;
    for (p.m_nMoves = 1; p.m_nMoves <= kAnsweredByRecursion && found == list + count; p.m_nMoves += 2)
        found = std::find_if(list, list + count, mates);
    if (found == list + count)
        return false;
    move = {found->m_nFrom, found->m_nTo, found->m_nPromotion, 0};
    return true;
}

} // namespace quillon
