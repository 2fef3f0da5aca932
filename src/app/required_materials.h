#pragma once
// What a problem of a regression needs to be there: precalculated data, the online tablebase.

#include <set>
#include <string>
#include <string_view>

#include "core/position_type.h"
#include "library/chess_problem.h"

namespace quillon {

/// Where precalculated data come from.
class IPrecalcData {
  public:
    virtual ~IPrecalcData() = default;

    /// Loads the data of the type, if they are to be had, and counts one more use of them. Type 0 has none.
    [[nodiscard]] virtual bool Acquire(TPositionType type) = 0;

    /// Takes one use back and stamps the time of the last one. For a type that Acquire has granted.
    virtual void Release(TPositionType type) = 0;
};

/// The data that the search itself would be given. They are nobody's to count: a use costs nothing.
class CPrecalcDataAtHand : public IPrecalcData {
  public:
    [[nodiscard]] bool Acquire(TPositionType type) override;
    void Release(TPositionType) override {}
};

/// The type of a material as files name it: FEN letters, "RRk" for two white rooks. Kings count for nothing. 0 if it is
/// no type: no figure besides the kings, more than five, or another letter.
[[nodiscard]] TPositionType TypeOfMaterial(std::string_view material);

/// Are the data of all materials to be had? None is in use when this returns.
[[nodiscard]] bool AreMaterialsAvailable(const std::set<std::string>& materials, IPrecalcData& data);

/// Why the problem is not run, as a line of the log; empty for a problem that can be.
///   nLichessLevels  the setting; 0 or less: the online tablebase is off.
[[nodiscard]] std::string_view UnmetRequirement(const ChessProblem& problem, IPrecalcData& data, int nLichessLevels);

} // namespace quillon
