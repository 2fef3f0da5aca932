#pragma once
// CSearchRegister: the register of an analysis as the search asks it.

#include "tempregister/aggregated_register.h"
#include "tempregister/temporary_register.h"

namespace quillon {

/// Threads: as the aggregate; it has no state of its own.
class CSearchRegister final : public ITemporaryRegister {
  public:
    /// `known` is not owned and outlives this.
    explicit CSearchRegister(TAggregatedTemporaryChessboardRegister& known) : m_known(known) {}

    [[nodiscard]] TMateResult Find(const TChessboard& position, int nMoves, int nMaxMoves) override;
    void Insert(const TChessboard& position, int nMoves, TMateResult verdict) override;
    void InsertDoubtful(const TChessboard& position, int nMoves) override;
    void FreeMemory() override { m_known.EmptySomeDataWhenRegisterFull(false); }
    void FreeMemoryEarly() override { m_known.MakeRoomEarly(); }
    bool SetSideAnalysis(bool bOn) override { return m_known.bSideAnalysis.exchange(bOn, std::memory_order_relaxed); }
    void AddDoubtfulUser(std::uint32_t heuristics, std::uint32_t params) override;
    void ReleaseDoubtfulUser(std::uint32_t heuristics, std::uint32_t params) override;
    void ForgetDoubt() override;

  private:
    TAggregatedTemporaryChessboardRegister& m_known;
};

} // namespace quillon
