#pragma once
// The settings that keep data packed or on disk. They are made for the search, which looks up little; whoever looks up
// a whole table is asked about them.

#include "globalregister/changed_options.h"

namespace quillon {

class IVerificationHost;

/// Asks about the settings that are on. Those turned off are back when this goes.
class CSlowSettings {
  public:
    /// Precondition: nobody uses the data.
    CSlowSettings(CGlobalRegisters& registers, IVerificationHost& host);

    [[nodiscard]] bool MayGoOn() const { return m_bGoOn; }

  private:
    CChangedOptions m_changed;
    bool m_bGoOn = true;
};

} // namespace quillon
