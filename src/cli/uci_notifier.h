#pragma once
// What the solver says beside its verdicts, for an interface that cannot be asked anything.

#include "cli/harmless_question.h"
#include "cli/uci_output.h"
#include "cli/uci_text.h"
#include "core/notifier.h"

namespace quillon {

/// Threads: any.
class CUciNotifier final : public INotifier {
  public:
    explicit CUciNotifier(CUciOutput& output) : m_output(output) {}

    void Inform(std::string_view text, std::string_view) override { m_output.Line(InfoString(text)); }
    [[nodiscard]] bool AskYesNo(std::string_view text, std::string_view) override { return IsHarmlessQuestion(text); }

  private:
    CUciOutput& m_output;
};

} // namespace quillon
