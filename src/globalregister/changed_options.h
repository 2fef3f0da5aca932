#pragma once
// CChangedOptions: options of precalculated data that hold for one run.

#include <new>
#include <utility>

#include "globalregister/global_registers.h"

namespace quillon {

/// Those that are changed are back when this goes, and the folders are read again.
///   Precondition  nobody uses the data, at a change and at the end.
class CChangedOptions {
  public:
    explicit CChangedOptions(CGlobalRegisters& registers) : m_registers(registers), m_before(registers.Options()) {}
    ~CChangedOptions() {
        if (!m_bChanged)
            return;
        try {
            (void)m_registers.SetOptions(std::move(m_before));
        } catch (const std::bad_alloc&) { // the folders are read again when data are next unloaded
        }
    }
    CChangedOptions(const CChangedOptions&) = delete;
    CChangedOptions& operator=(const CChangedOptions&) = delete;

    ///   Result  as SetOptions.
    ///   Errors  std::bad_alloc.
    [[nodiscard]] bool Change(TPrecalcOptions options) {
        m_bChanged = true; // as far as it comes
        return m_registers.SetOptions(std::move(options));
    }

  private:
    CGlobalRegisters& m_registers;
    TPrecalcOptions m_before;
    bool m_bChanged = false;
};

} // namespace quillon
