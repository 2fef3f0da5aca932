#include "cli/uci_precalc.h"

#include <utility>

namespace quillon {

namespace {

/// How an interface writes a text without letters.
constexpr const char* kEmptyText = "<empty>";

} // namespace

CUciPrecalc::CUciPrecalc(const TSettings& settings, TPrecalcChoice choice, CUciOutput& output)
    : m_settings(settings), m_choice(std::move(choice)), m_notifier(output),
      m_registers(MakePrecalcOptions(m_settings, m_choice), m_notifier, Quota()), m_active(m_registers) {}

void CUciPrecalc::SetFolder(const std::string& folder) {
    TPrecalcChoice choice = m_choice;
    choice.m_folder.reset();
    if (!folder.empty() && folder != kEmptyText)
        choice.m_folder = folder;
    m_next = MakePrecalcOptions(m_settings, choice);
    m_choice = std::move(choice);
}

void CUciPrecalc::Apply() {
    if (m_next) {
        m_registers.SetOptions(*std::move(m_next));
        m_next.reset();
    }
    m_registers.SetQuota(Quota());
    SetActiveRegisters(&m_registers); // whether there are any data may have changed
}

} // namespace quillon
