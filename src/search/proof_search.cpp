#include "search/proof_search.h"

#include <algorithm>
#include <vector>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/queries.h"
#include "core/search_context.h"
#include "search/analysis.h"
#include "search/control.h"
#include "search/find_mate.h"

namespace quillon {

namespace {

/// With so many plies left the recursion answers faster than numbers could be kept.
constexpr int kAnsweredByRecursion = 3;

constexpr std::uint32_t kFewestNumber = 1;

std::uint32_t Capped(std::uint64_t number) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(number, kInfiniteNumber - 1));
}

struct TChild {
    TMove m_move;
    TProofNumbers m_numbers; // as the mover of the child sees them
    std::uint64_t m_hash;
};

class CProofSearch {
  public:
    CProofSearch(CProofTable& table, std::uint64_t nMostNodes) : m_table(table), m_nMostNodes(nMostNodes) {}

    TProofNumbers Run(TChessboard& root) {
        const std::uint64_t hash = HashBoard(root);
        TProofNumbers numbers = Known(hash, root.m_nMoves);
        while (!IsDecided(numbers) && !IsOver(root))
            numbers = Expand(root, hash, kInfiniteNumber, kInfiniteNumber);
        return numbers;
    }

    [[nodiscard]] std::uint64_t Nodes() const { return m_nNodes; }

  private:
    [[nodiscard]] bool IsOver(const TChessboard& b) const {
        return m_nNodes >= m_nMostNodes || (IsControlPending(b) && PauseOrStop(b));
    }

    [[nodiscard]] TProofNumbers Known(std::uint64_t hash, int nPlies) const {
        const CProofTable::TFound found = m_table.Find(hash, nPlies);
        return found.m_bKnown ? found.m_numbers : TProofNumbers{};
    }

    /// Works below `p` until its numbers reach a threshold; returns and stores them.
    TProofNumbers Expand(TChessboard& p, std::uint64_t hash, std::uint32_t phiBound, std::uint32_t deltaBound) {
        ++m_nNodes;
        CountTrialPosition(*p.m_pContext, *p.m_pAnalysis);
        if (p.m_nMoves == kAnsweredByRecursion)
            return Answer(p, hash);
        const std::size_t first = m_children.size();
        const bool bEnded = IsWhiteToMove(p) ? ListWhiteMoves(p) : ListBlackMoves(p);
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
        m_table.Store(hash, p.m_nMoves, numbers, best);
        return numbers;
    }

    /// Neither side has reached anything without a move but Black who is stalemated: White is then not to mate.
    static TProofNumbers WithoutMoves(const TChessboard& p) {
        const bool bMated = !IsWhiteToMove(p) && p.m_blackChecker != kNoChecker;
        return IsWhiteToMove(p) || bMated ? kMissesAim : kReachesAim;
    }

    TProofNumbers WorkOnChildren(TChessboard& p, std::size_t first, std::uint32_t phiBound, std::uint32_t deltaBound,
                                 TMove& best) {
        for (;;) {
            std::size_t chosen = first;
            std::uint32_t least = kInfiniteNumber + 1, second = kInfiniteNumber;
            std::uint64_t sum = 0;
            for (std::size_t i = first; i < m_children.size(); ++i) {
                const TProofNumbers& child = m_children[i].m_numbers;
                if (child.m_delta < least) {
                    second = least;
                    least = child.m_delta;
                    chosen = i;
                } else if (child.m_delta < second) {
                    second = child.m_delta;
                }
                sum += child.m_phi;
            }
            best = m_children[chosen].m_move;
            const std::uint32_t phi = std::min(least, kInfiniteNumber);
            const std::uint32_t delta = phi == 0 ? kInfiniteNumber : Capped(sum);
            if (phi == 0 || delta == 0 || phi >= phiBound || delta >= deltaBound || IsOver(p))
                return {phi, delta};
            const TChild child = m_children[chosen];
            const std::uint32_t room = deltaBound - (delta - child.m_numbers.m_phi);
            const std::uint32_t reach = Capped(std::min<std::uint64_t>(phiBound, second + second / 4 + 1ull));
            TProofNumbers now = kReachesAim;
            if (TChessboard* const made = Make(p, child.m_move); made != nullptr)
                now = Expand(*made, child.m_hash, std::min(room, kInfiniteNumber), reach);
            m_children[chosen].m_numbers = now;
        }
    }

    static TChessboard* Make(TChessboard& p, TMove move) {
        TChessboard* const child = CopyToChild(&p);
        const bool bMade =
            IsWhiteToMove(p) ? MakeWhiteMove(*child, move) != 0 : MakeBlackMove(*child, move, false) == kMoveStands;
        return bMade ? child : nullptr;
    }

    TProofNumbers Answer(TChessboard& p, std::uint64_t hash) {
        ++p.m_pContext->m_nQuickerLevel;
        const bool bMate = FindMateWhite(&p, false) == MR_MATE;
        --p.m_pContext->m_nQuickerLevel;
        const TProofNumbers numbers = bMate ? kReachesAim : kMissesAim;
        if (!IsStopping(p))
            m_table.Store(hash, p.m_nMoves, numbers, TMove{});
        return numbers;
    }

    /// The hash of a child that is going to be added: meanwhile the table's memory is on its way.
    std::uint64_t Announce(const TChessboard& child) const {
        const std::uint64_t hash = HashBoard(child);
        m_table.Prefetch(hash);
        return hash;
    }

    void Add(const TChessboard& child, std::uint64_t hash, const TMove& move, const TProofNumbers& fresh) {
        const CProofTable::TFound found = m_table.Find(hash, child.m_nMoves);
        m_children.push_back({move, found.m_bKnown ? found.m_numbers : fresh, hash});
    }

    /// True if a move mates at once; it is the last of the list then.
    bool ListWhiteMoves(TChessboard& p) {
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(p, list);
        for (int i = 0; i < count; ++i) {
            const TMove move = {list[i].m_nFrom, list[i].m_nTo, list[i].m_nPromotion, 0};
            TChessboard* const child = Make(p, move);
            if (child == nullptr)
                continue;
            const std::uint64_t hash = Announce(*child);
            const int replies = CountReplies(*child);
            const bool bCheck = child->m_blackChecker != kNoChecker;
            if (replies == 0 && bCheck) {
                m_children.push_back({move, kMissesAim, 0});
                return true;
            }
            if (replies == 0)
                continue; // stalemate
            Add(*child, hash, move, {kFewestNumber, static_cast<std::uint32_t>(bCheck ? replies : replies + 2)});
        }
        return false;
    }

    /// Legal ones in check, where few decide; else what the generator tells.
    int CountReplies(TChessboard& b) {
        TMove list[kMaxMoves];
        const int count = GenerateBlackMoves(b, list);
        if (b.m_blackChecker == kNoChecker && count > 8)
            return count;
        int legal = 0;
        for (int i = 0; i < count; ++i) {
            TChessboard* const child = CopyToChild(&b);
            legal += MakeBlackMove<kLegalityOnly>(*child, list[i], false) != kIllegalMove;
        }
        return legal;
    }

    /// True if a move escapes at once; it is the last of the list then. Replies that are mated on the move are left
    /// out, unless all are.
    bool ListBlackMoves(TChessboard& p) {
        TMove list[kMaxMoves];
        const int count = GenerateBlackMoves(p, list);
        const std::size_t first = m_children.size();
        TMove mated{};
        bool bAnyMated = false;
        for (int i = 0; i < count; ++i) {
            TMove move = {list[i].m_nFrom, list[i].m_nTo, list[i].m_nPromotion, 0};
            TChessboard* const child = CopyToChild(&p);
            const int made = MakeBlackMove(*child, move, false);
            if (made == kIllegalMove)
                continue;
            move = {list[i].m_nFrom, list[i].m_nTo, list[i].m_nPromotion, 0};
            if (made == kCertainEscape) {
                m_children.push_back({move, kMissesAim, 0});
                return true;
            }
            const std::uint64_t hash = Announce(*child);
            if (HasMateInOne(*child)) {
                bAnyMated = true;
                mated = move;
                continue;
            }
            if (child->m_nMoves == 1) {
                m_children.push_back({move, kMissesAim, 0});
                return true;
            }
            Add(*child, hash, move, {kFewestNumber, CountHopes(*child)});
        }
        if (m_children.size() == first && bAnyMated)
            m_children.push_back({mated, kReachesAim, 0});
        return false;
    }

    /// The more checks White has, the more there is to refute.
    static std::uint32_t CountHopes(const TChessboard& b) {
        if (b.m_whiteChecker != kNoChecker)
            return 1;
        TMove list[kMaxMoves];
        return 1 + static_cast<std::uint32_t>(GenerateWhiteChecks(b, list));
    }

    CProofTable& m_table;
    const std::uint64_t m_nMostNodes;
    std::uint64_t m_nNodes = 0;
    std::vector<TChild> m_children; // of all positions on the way to the one at work
};

} // namespace

EProofResult SearchProof(TChessboard& root, CProofTable& table, std::uint64_t nMostNodes, std::uint64_t& nNodes) {
    CProofSearch search(table, nMostNodes);
    const TProofNumbers numbers = search.Run(root);
    nNodes += search.Nodes();
    if (!IsDecided(numbers) || IsStopping(root))
        return EProofResult::Open;
    return numbers.m_phi == 0 ? EProofResult::Proved : EProofResult::Refuted;
}

} // namespace quillon
