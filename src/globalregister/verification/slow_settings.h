#pragma once
// The settings that keep data packed or on disk. They are made for the search, which looks up little; whoever looks up
// a whole table is asked about them.

#include "globalregister/global_registers.h"

namespace quillon {

class IVerificationHost;

/// Asks about the settings that are on. Those turned off are back when this goes.
class CSlowSettings {
  public:
    /// Precondition: nobody uses the data.
    CSlowSettings(CGlobalRegisters& registers, IVerificationHost& host);
    ~CSlowSettings();
    CSlowSettings(const CSlowSettings&) = delete;
    CSlowSettings& operator=(const CSlowSettings&) = delete;

    [[nodiscard]] bool MayGoOn() const { return m_bGoOn; }

  private:
    CGlobalRegisters& m_registers;
    const TPrecalcOptions m_before;
    bool m_bChanged = false;
    bool m_bGoOn = true;
};

} // namespace quillon
