#include "cli/file_settings.h"

#include "app/settings.h"

namespace quillon {

namespace {

/// What is odd about the settings is told where a solve takes them.
class CUnheardNotifier : public INotifier {
  public:
    void Inform(std::string_view, std::string_view) override {}
    [[nodiscard]] bool AskYesNo(std::string_view, std::string_view) override { return false; }
};

} // namespace

TProblemFileOptions SetFileOptions() {
    CUnheardNotifier unheard;
    const TSettings settings = LoadSettings(unheard);
    TProblemFileOptions options;
    options.m_language = static_cast<ELanguage>(settings.m_nLanguageId);
    options.m_bCommentCompatibility = settings.m_bCommentCompatibilityMode;
    return options;
}

} // namespace quillon
