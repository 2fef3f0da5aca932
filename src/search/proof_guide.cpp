#include "search/proof_guide.h"

#include <algorithm>
#include <bit>
#include <new>

#include "core/generation.h"
#include "core/makers.h"
#include "core/queries.h"
#include "core/search_context.h"
#include "search/control.h"
#include "search/hints.h"

namespace quillon {

namespace {

constexpr std::size_t kBytesOfKnown = 64; // of one element of the map, with what the allocator adds
constexpr std::size_t kShareOfTable = 4;  // the map gets a quarter of what the table had

/// The table may have lost a position of the proof; to find it again takes so many positions at most.
constexpr std::uint64_t kNodesForLost = 20'000;

/// To touch a large table for the first time takes longer than most proofs: it begins small, and grows with the search.
constexpr std::size_t kFirstTable = std::size_t{8} << 20;
constexpr std::size_t kGrowth = 4;

/// Six entries of 16 bytes for every expanded position: its own and, as far as they go, estimates of its children. Over
/// 150 mates in 6 to 30 as many positions are expanded with 8 MiB throughout as with 128 MiB, up to a million of them;
/// so the table grows late, for the searches that are longer.
constexpr std::uint64_t kBytesOfNode = 96;

/// With fewer plies left the recursion needs no guide. Leaves are kept all the same: met again with more plies left,
/// such a mate is one among many moves.
constexpr int kShortestGuided = 5;

/// By whole steps of growth smaller than the last one: what both take while it grows is then known.
std::size_t FirstTable(std::size_t nMostBytes) {
    std::size_t bytes = std::bit_floor(nMostBytes);
    while (bytes > kFirstTable)
        bytes /= kGrowth;
    return bytes;
}

} // namespace

CProofGuide::CProofGuide(std::size_t nTableBytes)
    : m_nTableBytes(nTableBytes), m_table(std::make_unique<CProofTable>(FirstTable(nTableBytes))),
      m_nMostKnown(std::max<std::size_t>(nTableBytes / kShareOfTable / kBytesOfKnown, 1)) {}

EProofResult CProofGuide::Search(TChessboard& root, std::uint64_t nMostNodes, int nThreads) {
    if (m_result != EProofResult::Open)
        return m_result;
    const std::uint64_t before = m_nNodes;
    while (m_result == EProofResult::Open && m_nNodes - before < nMostNodes && !IsStopping(root)) {
        if (RoomOfTable() == 0)
            GrowTable(nThreads);
        const std::uint64_t left = nMostNodes - (m_nNodes - before);
        m_result = SearchProof(root, *m_table, std::min(left, RoomOfTable()), m_nNodes, nThreads);
    }
    if (m_result == EProofResult::Proved)
        Collect(root);
    if (m_result != EProofResult::Open)
        m_table.reset();
    return m_result;
}

/// For so many more positions the table is large enough, or has to be.
std::uint64_t CProofGuide::RoomOfTable() const {
    if (m_table->Bytes() > m_nTableBytes / 2)
        return ~std::uint64_t{0};
    const std::uint64_t most = m_table->Bytes() / kBytesOfNode;
    return most > m_nNodes ? most - m_nNodes : 0;
}

/// Where there is no memory for a larger one the search goes on in the table that it has.
void CProofGuide::GrowTable(int nThreads) {
    const std::size_t bytes = m_table->Bytes();
    try {
        m_table->Grow(std::min(bytes * kGrowth, m_nTableBytes), nThreads);
    } catch (const std::bad_alloc&) {
    }
    if (m_table->Bytes() == bytes)
        m_nTableBytes = bytes;
}

/// White's position with everything that follows from it. Returns the plies to mate along the proof, or those left
/// where the proof is not followed any further.
int CProofGuide::Collect(TChessboard& p) {
    if (p.m_nMoves < kPliesOfLeaf)
        return p.m_nMoves;
    const std::uint64_t hash = HashBoard(p);
    const auto known = m_known.find(hash);
    if (known != m_known.end() && known->second.m_nPlies <= p.m_nMoves)
        return known->second.m_nPlies;
    TMove move;
    if (m_known.size() >= MostKnown(p.m_nMoves) || IsStopping(p) || !FindMove(p, hash, move))
        return HasMateInOne(p) ? 1 : p.m_nMoves;
    TChessboard* const child = CopyToChild(&p);
    TMove made = move;
    if (MakeWhiteMove(*child, made) == 0)
        return p.m_nMoves;
    const int plies = 1 + CollectReplies(*child);
    // The proof may have come back to the position with fewer plies left: what it does there stays, or whoever follows
    // the guide goes round in circles.
    const auto [entry, bNew] = m_known.try_emplace(hash, TKnown{static_cast<std::uint16_t>(plies), move});
    if (!bNew && plies < entry->second.m_nPlies)
        entry->second = {static_cast<std::uint16_t>(plies), move};
    return entry->second.m_nPlies;
}

/// The leaves, which are most of the positions, leave room for what is longer.
std::size_t CProofGuide::MostKnown(int nPlies) const {
    return nPlies == kPliesOfLeaf ? m_nMostKnown / 2 : m_nMostKnown;
}

/// Returns the plies to mate behind the reply that holds out longest; 0 if it is mate.
int CProofGuide::CollectReplies(TChessboard& p) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackMoves(p, list);
    int longest = 0;
    for (int i = 0; i < count; ++i) {
        TChessboard* const child = CopyToChild(&p);
        if (MakeBlackMove<kLegalityOnly>(*child, list[i], false) != kIllegalMove)
            longest = std::max(longest, 1 + Collect(*child));
    }
    return longest;
}

bool CProofGuide::FindMove(TChessboard& p, std::uint64_t hash, TMove& move) {
    if (p.m_nMoves == kPliesOfLeaf)
        return FindShortMate(p, move);
    CProofTable::TFound found = m_table->Find(hash, p.m_nMoves);
    if (!found.m_bKnown || found.m_numbers.m_phi != 0) {
        if (SearchProof(p, *m_table, kNodesForLost, m_nNodes) != EProofResult::Proved)
            return false;
        found = m_table->Find(hash, p.m_nMoves);
    }
    if (found.m_bKnown && found.m_numbers.m_phi == 0 && IsNullMove(found.m_move))
        return FindShortMate(p, move);
    move = found.m_move;
    // The entry may be another position's of the same hash, or of the same board with other rights.
    return found.m_bKnown && found.m_numbers.m_phi == 0 && CanMake(p, move);
}

const CProofGuide::TKnown* CProofGuide::Find(const TChessboard& b) const {
    if (b.m_nMoves < kShortestGuided)
        return nullptr;
    const auto known = m_known.find(HashBoard(b));
    if (known == m_known.end() || known->second.m_nPlies > b.m_nMoves)
        return nullptr;
    // A board alone does not tell whether a pawn may be taken in passing, nor who may castle.
    return CanMake(b, known->second.m_move) ? &known->second : nullptr;
}

bool CProofGuide::Suggest(const TChessboard& b, TMove& move) const {
    const TKnown* const known = Find(b);
    if (known != nullptr)
        move = known->m_move;
    return known != nullptr;
}

int CProofGuide::KnownPlies(const TChessboard& b) const {
    const TKnown* const known = Find(b);
    return known != nullptr ? known->m_nPlies : 0;
}

} // namespace quillon
