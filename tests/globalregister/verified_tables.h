#pragma once
// Tables of tests that are to be verified, and a user who looks on.

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "globalregister/table_files.h"
#include "globalregister/verification/verify_type.h"
#include "globalregister/verification/whole_list.h"
#include "platform/temporary_folder.h"

namespace quillon {

/// Hears all that is told, and answers as it is told before.
class CVerificationUser final : public IVerificationHost {
  public:
    void Inform(std::string_view text, std::string_view title) override {
        m_told.push_back(std::string(title) + ": " + std::string(text));
        m_onTold(text);
    }
    bool AskYesNo(std::string_view text, std::string_view) override {
        m_asked.emplace_back(text);
        return text == kTryFixQuestion ? m_bFixes : m_bSecondPass;
    }
    ESlowSetting AskAboutSlowSetting(std::string_view text) override {
        m_asked.emplace_back(text);
        return m_eSlow;
    }
    void ShowStatus(std::string_view text) override { m_status.emplace_back(text); }
    ERunState RunState() override { return m_runState(); }

    std::vector<std::string> m_told, m_asked, m_status;
    bool m_bFixes = true, m_bSecondPass = true; // the answers
    ESlowSetting m_eSlow = ESlowSetting::GoOn;
    std::function<void(std::string_view)> m_onTold = [](std::string_view) {};
    std::function<ERunState()> m_runState = [] { return ERunState::Run; };
};

/// A folder of tables, and the data that are loaded from there.
class CVerifiedTables {
  public:
    CVerifiedTables() {
        m_options.m_folders.m_installation = m_folder.Path();
        m_options.m_bGlobalRegisterForceDiskAccess = false;
    }

    [[nodiscard]] std::filesystem::path Path(const std::string& type, const std::string& extension = "") const {
        return m_folder.Path() / "Precalc" / (PrecalcBaseName(type) + ".precalc" + extension);
    }
    [[nodiscard]] std::filesystem::path Folder() const { return m_folder.Path(); }
    void Write(const std::string& type, const TElements& elements) const { WriteElements(Path(type), elements); }
    [[nodiscard]] TElements Read(const std::string& type) const { return ReadWholeFile(Path(type)).value(); }

    [[nodiscard]] CGlobalRegisters& Registers() {
        if (!m_registers)
            m_registers = std::make_unique<CGlobalRegisters>(m_options, m_user, m_nQuota);
        return *m_registers;
    }
    [[nodiscard]] CRegisterUse Use(const std::string& type) {
        return CRegisterUse(Registers().GetRegisterForTool(TPositionIndexing(type).nPositionType));
    }
    TVerifyResult Verify(TVerifyRequest request) {
        request.m_logFolder = m_folder.Path();
        return VerifyType(request, Registers(), m_user);
    }

    /// Says that the log of a type is a whole list for the plain files of these types as they are.
    void MarkWholeList(const std::string& type, const std::vector<std::string>& others, int nLimit) const {
        TFileStamps stamps;
        AddStamps(stamps, {Path(type)});
        for (const std::string& other : others)
            AddStamps(stamps, {Path(other)});
        const std::filesystem::path log = m_folder.Path() / FailureLogName(type, false);
        const std::string text = WholeListText(log, nLimit, stamps);
        WriteElements(log.string() + ".whole", TElements(text.begin(), text.end()));
    }

    /// The lines of a log.
    [[nodiscard]] std::vector<std::string> Log(const std::string& name) const {
        std::vector<std::string> lines;
        std::ifstream file(m_folder.Path() / name);
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        return lines;
    }

    TPrecalcOptions m_options; // until Registers is called
    std::uint64_t m_nQuota = std::uint64_t{1} << 30;
    CVerificationUser m_user;

  private:
    CTemporaryFolder m_folder;
    std::unique_ptr<CGlobalRegisters> m_registers;
};

} // namespace quillon
