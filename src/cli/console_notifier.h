#pragma once
// How the engine speaks to the person at the command line.

#include "cli/progress_line.h"
#include "core/notifier.h"

namespace quillon {

/// Messages go to standard error. Questions are answered without asking: Yes to what an option asked for and to what
/// harms nobody, No to the rest.
class CConsoleNotifier : public INotifier {
  public:
    explicit CConsoleNotifier(CProgressLine& line) : m_line(line) {}

    void Inform(std::string_view text, std::string_view title) override;

    [[nodiscard]] bool AskYesNo(std::string_view text, std::string_view title) override;

  private:
    CProgressLine& m_line;
};

} // namespace quillon
