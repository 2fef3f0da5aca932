#include "search/main_variant.h"

#include <algorithm>

#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "search/bounded_look.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/hints.h"
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

/// Replies that are mated within so many plies are not in the guide.
constexpr int kShorterThanGuided = 3;

/// White's plies to mate behind a reply as the guide knows them, at most those left.
int KnownPlies(TChessboard& b, TMove move) {
    const CProofGuide* const guide = b.m_pAnalysis->m_pGuide;
    if (guide == nullptr || !guide->IsProved())
        return b.m_nMoves - 1;
    const int known = guide->KnownPlies(*MakeReply(b, move, b.m_nMoves - 1));
    return known != 0 ? known : std::min(kShorterThanGuided, b.m_nMoves - 1);
}

/// Of replies that all lose within m_nMoves - 1 plies, the first that holds out longest: rising trial lengths sieve out
/// those that are mated sooner. When the look is used up the guide's word on those left has to do.
TReply LongestReply(TChessboard& b, std::vector<TReply> replies, const CBoundedLook& look) {
    for (int plies = 1; plies < b.m_nMoves - 1 && !IsStopping(b); plies += 2) {
        std::vector<TReply> surviving;
        for (TReply& reply : replies) {
            TChessboard* const child = MakeReply(b, reply.m_move, plies);
            if (FindMateWhite(child, true) != MR_MATE)
                surviving.push_back(reply);
            if (!surviving.empty() && plies == b.m_nMoves - 3)
                break; // it needs the full length: none is longer
        }
        if (surviving.empty())
            return {replies.front().m_move, plies};
        if (!IsStopping(b))
            replies = std::move(surviving);
    }
    if (look.IsUsedUp())
        for (TReply& reply : replies)
            reply.m_nPlies = KnownPlies(b, reply.m_move);
    return *std::ranges::max_element(replies, {}, &TReply::m_nPlies);
}

TChessboard* MakeIfItMates(TChessboard& b, TMove& move) {
    TChessboard* const child = CopyToChild(&b);
    return MakeWhiteMove(*child, move) != 0 && FindMateBlack(child) == MR_MATE && !IsStopping(b) ? child : nullptr;
}

/// With fewer plies left all moves are tried in turn; with more, the node that finds the mate is asked which it was.
constexpr int kShortestAskedNode = 9;

/// A white move that mates within m_nMoves plies, made as the child of `b`; null when the search was stopped.
TChessboard* MakeMatingMove(TChessboard& b, TMove& mating) {
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
    TSearchContext& context = *root.m_pContext;
    std::vector<TMove> line;
    TMove move = key;
    TChessboard* b = CopyToChild(&root);
    if (MakeWhiteMove(*b, move) == 0)
        return {};
    line.push_back(move);
    std::uint64_t left = nMostPositions;
    for (;;) {
        std::vector<TReply> replies = LegalReplies(*b);
        if (replies.empty())
            return line;
        TReply reply;
        {
            CBoundedLook look(context, *root.m_pAnalysis, std::max(left, kFewestPositions));
            reply = LongestReply(*b, std::move(replies), look);
            FlushPositions(context, *root.m_pAnalysis);
            left = context.m_nPositionsLeft;
        }
        CBoundedLook look(context, *root.m_pAnalysis, nMostPositions);
        TChessboard* const answered = MakeReply(*b, reply.m_move, reply.m_nPlies);
        line.push_back(reply.m_move);
        b = MakeMatingMove(*answered, move);
        if (b == nullptr)
            return {};
        line.push_back(move);
    }
}

} // namespace quillon
