#pragma once
// The precalculated data that this process searches with. Most of the time, and in most runs, there are none.

#include "core/position_type.h"
#include "globalregister/global_registers.h"

namespace quillon {

/// Null: none are in use.
[[nodiscard]] CGlobalRegisters* ActiveRegisters();

/// Makes them the ones in use, while nothing is being searched; null: none. To be called again when the quota or the
/// folders have changed (SetQuota, UnloadAll), for the search asks only where data may be had.
void SetActiveRegisters(CGlobalRegisters* registers);

/// Can data of this type be had? Loads them, if they are not, and releases them at once.
[[nodiscard]] bool IsTypeAvailable(TPositionType type);

/// In use while this lives.
class CActiveRegisters {
  public:
    explicit CActiveRegisters(CGlobalRegisters& registers) { SetActiveRegisters(&registers); }
    ~CActiveRegisters() { SetActiveRegisters(nullptr); }
    CActiveRegisters(const CActiveRegisters&) = delete;
    CActiveRegisters& operator=(const CActiveRegisters&) = delete;
};

} // namespace quillon
