#include "cli/uci_precalc.h"

#include <utility>

namespace quillon {

namespace {

/// How an interface writes a text without letters.
constexpr const char* kEmptyText = "<empty>";

bool AreSameFolders(const TPrecalcFolders& a, const TPrecalcFolders& b) {
    return a.m_installation == b.m_installation && a.m_secondRoot == b.m_secondRoot;
}

} // namespace

CUciPrecalc::CUciPrecalc(const TSettings& settings, TPrecalcChoice choice, CUciOutput& output)
    : m_settings(settings), m_usual(std::move(choice)), m_choice(m_usual), m_notifier(output),
      m_registers(MakePrecalcOptions(m_settings, m_choice), m_notifier, Quota(m_choice)), m_active(m_registers) {}

void CUciPrecalc::SetFolder(const std::string& folder) {
    TPrecalcChoice choice = m_choice;
    choice.m_folder.reset();
    if (!folder.empty() && folder != kEmptyText)
        choice.m_folder = folder;
    m_next = MakePrecalcOptions(m_settings, choice);
    m_choice = std::move(choice);
}

void CUciPrecalc::Apply() {
    // Interfaces send all options again before each game: what is loaded from the same folders stays.
    if (m_next && !AreSameFolders(m_next->m_folders, m_registers.Options().m_folders))
        m_registers.SetOptions(*std::move(m_next));
    m_next.reset();
    m_registers.SetQuota(Quota(m_choice));
    SetActiveRegisters(&m_registers); // whether there are any data may have changed
}

} // namespace quillon
