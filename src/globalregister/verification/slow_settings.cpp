#include "globalregister/verification/slow_settings.h"

#include "globalregister/verification/verify_type.h"

namespace quillon {

namespace {

constexpr std::string_view kPackedQuestion =
    "Option to use compressed data \"random access\" (ini: UseDataPackedForRandomAccess) is on - it slows down data "
    "generation process.\nDo you want to continue?\n\nNOTE: Select CANCEL, to continue with changed setting to force "
    "unpack data to memory (for better performance)";

constexpr std::string_view kDiskQuestion =
    "Option to use data from disk (ini: GlobalRegisterForceDiskAccess) without loading to memory is on - it "
    "SIGNIFICANTLY slows down data generation process.\nDo you want to continue?\n\nNOTE: Select CANCEL, to continue "
    "with changed setting to force load data to memory (for better performance)";

} // namespace

CSlowSettings::CSlowSettings(CGlobalRegisters& registers, IVerificationHost& host)
    : m_registers(registers), m_before(registers.Options()) {
    TPrecalcOptions options = m_before;
    const auto ask = [&](bool bOn, std::string_view question, auto turnOff) {
        if (!bOn || !m_bGoOn)
            return;
        const ESlowSetting answer = host.AskAboutSlowSetting(question);
        m_bGoOn = answer != ESlowSetting::End;
        if (answer == ESlowSetting::TurnOff) {
            turnOff();
            m_bChanged = true;
        }
    };
    ask(options.m_nUseDataPackedForRandomAccess != 0, kPackedQuestion,
        [&] { options.m_nUseDataPackedForRandomAccess = 0; });
    ask(options.m_bGlobalRegisterForceDiskAccess, kDiskQuestion,
        [&] { options.m_bGlobalRegisterForceDiskAccess = false; });
    m_bChanged = m_bChanged && m_bGoOn && m_registers.SetOptions(options);
}

CSlowSettings::~CSlowSettings() {
    if (m_bChanged)
        (void)m_registers.SetOptions(m_before);
}

} // namespace quillon
