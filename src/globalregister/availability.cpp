// Which precalculated data are at hand: what the core asks, and the one place that knows the data in use.

#include <atomic>

#include "core/precalc_at_hand.h"
#include "core/queries.h"
#include "globalregister/active_registers.h"

namespace quillon {

namespace {

std::atomic<CGlobalRegisters*> g_active{nullptr};

} // namespace

CGlobalRegisters* ActiveRegisters() { return g_active.load(std::memory_order_acquire); }

void SetActiveRegisters(CGlobalRegisters* registers) {
    g_active.store(registers, std::memory_order_release);
    g_bPrecalcDataAtHand.store(registers != nullptr && registers->IsAnyAvailable(), std::memory_order_relaxed);
}

bool IsTypeAvailable(TPositionType type) {
    CGlobalRegisters* const registers = ActiveRegisters();
    return registers != nullptr && CRegisterUse(registers->GetRegisterForTool(type));
}

bool IsPrecalcDataAvailable(TPositionType type) {
    const CGlobalRegisters* const registers = ActiveRegisters();
    return registers != nullptr && registers->IsTypeAvailable(type);
}

bool IsCustomPrecalcDataAvailable(const TChessboard& b) {
    const CGlobalRegisters* const registers = ActiveRegisters();
    return registers != nullptr && registers->IsCustomMaterialAvailable(b);
}

} // namespace quillon
