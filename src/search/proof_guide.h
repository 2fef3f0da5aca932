#pragma once
// A guide for the passes: White's moves in a forced mate that a best-first search has found (proof_search.h).
//
// The passes try the guide's move first and prove it by themselves; where the guide errs they go on with the other
// moves. So it bears on the time a solve takes and on nothing else.
//
// Threads: Search is called while no other thread looks; Suggest from any thread in between.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>

#include "core/chessboard.h"
#include "core/move.h"
#include "search/proof_search.h"

namespace quillon {

/// Mates of so many plies are the leaves of a guide.
inline constexpr int kPliesOfLeaf = 3;

class CProofGuide {
  public:
    /// The table of the search takes at most `nTableBytes` until a proof is found, for a moment a quarter more, the
    /// guide itself a fraction of it from then on. Throws std::bad_alloc.
    explicit CProofGuide(std::size_t nTableBytes);

    /// Goes on with the proof for at most `nMostNodes` positions of all threads. `root` and `nThreads` as for
    /// SearchProof, the root the same in every call.
    ///   Errors  std::bad_alloc
    EProofResult Search(TChessboard& root, std::uint64_t nMostNodes, int nThreads = 1);

    /// Is there a forced mate to suggest from?
    [[nodiscard]] bool IsProved() const { return m_result == EProofResult::Proved; }

    /// White to move: the move that mates within the plies left of `b`; it is pseudo-legal there. False if the position
    /// is none of the proof's, or has fewer plies left than there; `move` is then as it was.
    [[nodiscard]] bool Suggest(const TChessboard& b, TMove& move) const;

    /// White to move: within how many plies the guide's moves mate; 0 where Suggest would be false.
    [[nodiscard]] int KnownPlies(const TChessboard& b) const;

    /// Positions that were expanded so far, and White's positions in the proof.
    [[nodiscard]] std::uint64_t Nodes() const { return m_nNodes; }
    [[nodiscard]] std::size_t Positions() const { return m_known.size(); }

  private:
    struct TKnown {
        std::uint16_t m_nPlies; // White mates within them if he follows the guide
        TMove m_move;
    };

    [[nodiscard]] const TKnown* Find(const TChessboard& b) const;
    [[nodiscard]] std::size_t MostKnown(int nPlies) const;
    int Collect(TChessboard& p);
    int CollectReplies(TChessboard& p);
    [[nodiscard]] bool FindMove(TChessboard& p, std::uint64_t hash, TMove& move);

    [[nodiscard]] std::uint64_t RoomOfTable() const;
    void GrowTable(int nThreads);

    std::size_t m_nTableBytes;            // as far as the table may grow
    std::unique_ptr<CProofTable> m_table; // none once the proof is found, or is known not to exist
    std::unordered_map<std::uint64_t, TKnown> m_known;
    std::size_t m_nMostKnown;
    EProofResult m_result = EProofResult::Open;
    std::uint64_t m_nNodes = 0;
};

} // namespace quillon
