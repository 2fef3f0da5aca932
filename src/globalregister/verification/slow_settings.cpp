#include "globalregister/verification/slow_settings.h"

#include <string>
#include <utility>

#include "globalregister/generator/generate_texts.h"
#include "globalregister/verification/verify_type.h"

namespace quillon {

CSlowSettings::CSlowSettings(CGlobalRegisters& registers, IVerificationHost& host) : m_changed(registers) {
    TPrecalcOptions options = registers.Options();
    bool bTurnedOff = false;
    const auto ask = [&](bool bOn, const std::string& question, auto turnOff) {
        if (!bOn || !m_bGoOn)
            return;
        const ESlowSetting answer = host.AskAboutSlowSetting(question);
        m_bGoOn = answer != ESlowSetting::End;
        if (answer == ESlowSetting::TurnOff) {
            turnOff();
            bTurnedOff = true;
        }
    };
    ask(options.m_nUseDataPackedForRandomAccess != 0, PackedDataQuestion(),
        [&] { options.m_nUseDataPackedForRandomAccess = 0; });
    ask(options.m_bGlobalRegisterForceDiskAccess, DiskAccessQuestion(),
        [&] { options.m_bGlobalRegisterForceDiskAccess = false; });
    if (bTurnedOff && m_bGoOn)
        (void)m_changed.Change(std::move(options));
}

} // namespace quillon
