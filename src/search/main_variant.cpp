#include "search/main_variant.h"

#include <algorithm>

#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "search/control.h"
#include "search/find_mate.h"

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

/// Of replies that all lose within m_nMoves - 1 plies, the first that holds out longest: rising trial lengths sieve out
/// those that are mated sooner.
TReply LongestReply(TChessboard& b, std::vector<TReply> replies) {
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
        replies = std::move(surviving);
    }
    return replies.front();
}

/// The first white move that mates within m_nMoves plies, made as the child of `b`; null when the search was stopped.
TChessboard* MakeMatingMove(TChessboard& b, TMove& mating) {
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(b, list);
    for (int i = 0; i < count && !IsStopping(b); ++i) {
        TChessboard* const child = CopyToChild(&b);
        mating = list[i];
        if (MakeWhiteMove(*child, mating) != 0 && FindMateBlack(child) == MR_MATE && !IsStopping(b))
            return child;
    }
    return nullptr;
}

} // namespace

std::vector<TMove> BuildMainVariant(TChessboard& root, const TMove& key) {
    std::vector<TMove> line;
    TMove move = key;
    TChessboard* b = CopyToChild(&root);
    if (MakeWhiteMove(*b, move) == 0)
        return {};
    line.push_back(move);
    for (;;) {
        std::vector<TReply> replies = LegalReplies(*b);
        if (replies.empty())
            return line;
        TReply reply = LongestReply(*b, std::move(replies));
        TChessboard* const answered = MakeReply(*b, reply.m_move, reply.m_nPlies);
        line.push_back(reply.m_move);
        b = MakeMatingMove(*answered, move);
        if (b == nullptr)
            return {};
        line.push_back(move);
    }
}

} // namespace quillon
