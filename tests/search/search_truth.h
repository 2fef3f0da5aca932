#pragma once
// What the tests of short proofs and of the registers share: the reference solver's word on a board, a snapshot that
// tells whether a search has put everything back, a real register that can be looked into.

#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "search/repetition.h"
#include "search/searched_position.h"
#include "tempregister/aggregated_register.h"
#include "tempregister/search_register.h"

namespace quillon::test {

/// Does White, to move, mate in at most nMoves? Nothing when the tree is larger than maxNodes.
[[nodiscard]] inline std::optional<bool> MatesWithin(const std::string& placement, int nMoves,
                                                     std::uint64_t maxNodes = 200000) {
    const auto shortest = reference::ShortestMate(reference::ProblemFromFen(placement), nMoves, maxNodes);
    if (!shortest)
        return std::nullopt;
    return *shortest != 0;
}

[[nodiscard]] constexpr int MovesOf(int nPlies) { return (nPlies + 1) / 2; }

/// The state that a look at a position must leave as it was: its record, byte for byte, its repetition mark, and what
/// the context says of nested searches.
class CUntouched {
  public:
    explicit CUntouched(TChessboard& p) : m_p(p), m_nMark(RepetitionMark(p, p.m_nMoves)) {
        std::memcpy(m_bytes.data(), &p, sizeof p);
    }

    [[nodiscard]] testing::AssertionResult Holds() const {
        const TSearchContext& context = *m_p.m_pContext;
        if (std::memcmp(m_bytes.data(), &m_p, sizeof m_p) != 0)
            return testing::AssertionFailure() << "the record has changed";
        if (RepetitionMark(m_p, m_p.m_nMoves) != m_nMark)
            return testing::AssertionFailure() << "the repetition mark of the ply has changed";
        if (context.m_nQuickerLevel != 0 || context.m_nSortNesting != 0)
            return testing::AssertionFailure() << "a nesting depth is not back at 0";
        if (context.m_nQuickerSpare != 0 || context.m_nAdditionalMoves != 0 || context.m_nLineHorizon != 0)
            return testing::AssertionFailure() << "an allowance is not back at 0";
        return testing::AssertionSuccess();
    }

  private:
    TChessboard& m_p;
    std::uint16_t m_nMark;
    std::array<unsigned char, sizeof(TChessboard)> m_bytes{};
};

/// A register as an analysis has it. Every verdict that it was given is written down.
class CRealRegister : public ITemporaryRegister {
  public:
    explicit CRealRegister(std::uint64_t budget = 32 << 20, std::uint32_t nBuckets = 1024)
        : m_known(budget, nBuckets), m_asked(m_known) {}

    [[nodiscard]] TMateResult Find(const TChessboard& position, int nMoves, int nMaxMoves) override {
        const TMateResult found = m_asked.Find(position, nMoves, nMaxMoves);
        m_nAnswers += found > MR_NONE ? 1u : 0u;
        return found;
    }
    void Insert(const TChessboard& position, int nMoves, TMateResult verdict) override {
        if (m_bWriteDown)
            m_stored.push_back({PlacementOf(position), nMoves, verdict});
        m_asked.Insert(position, nMoves, verdict);
    }
    void InsertDoubtful(const TChessboard& position, int nMoves) override { m_asked.InsertDoubtful(position, nMoves); }

    TAggregatedTemporaryChessboardRegister m_known;
    std::vector<TRegisterCall> m_stored;
    bool m_bWriteDown = true;
    std::uint64_t m_nAnswers = 0; // questions that it had an answer to

  private:
    CSearchRegister m_asked;
};

/// Every entry told is true: a mate exists within the plies stored, or none does. Returns how many could be judged.
inline int ExpectTrueEntries(const std::vector<TRegisterCall>& stored, std::size_t nMost, std::uint64_t maxNodes) {
    int judged = 0;
    for (std::size_t i = 0; i < stored.size(); i += stored.size() / nMost + 1) {
        const TRegisterCall& entry = stored[i];
        const auto truth = MatesWithin(entry.m_position, MovesOf(entry.m_nPlies), maxNodes);
        if (!truth)
            continue;
        EXPECT_EQ(entry.m_nVerdict == MR_MATE, *truth) << entry.m_position << " within " << entry.m_nPlies << " plies";
        ++judged;
    }
    return judged;
}

/// A position with one key at its length and no shorter mate.
struct TComposedPosition {
    int m_nMoves = 0;
    std::string m_placement, m_key;
};

[[nodiscard]] inline std::vector<TComposedPosition> ComposedPositions() {
    std::ifstream file(QUILLON_TEST_DATA_DIR "/composed_positions.tsv");
    std::vector<TComposedPosition> rows;
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        TComposedPosition row;
        fields >> row.m_nMoves >> row.m_placement >> row.m_key;
        rows.push_back(row);
    }
    return rows;
}

} // namespace quillon::test
