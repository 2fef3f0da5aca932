#pragma once
// A user who always gives the same answer, and what was asked.

#include <string>
#include <string_view>
#include <vector>

#include "core/notifier.h"

namespace quillon::test {

class CAnsweringNotifier : public INotifier {
  public:
    explicit CAnsweringNotifier(bool bYes = true) : m_bYes(bYes) {}
    void Inform(std::string_view, std::string_view) override {}
    [[nodiscard]] bool AskYesNo(std::string_view text, std::string_view) override {
        m_questions.emplace_back(text);
        return m_bYes;
    }
    std::vector<std::string> m_questions;

  private:
    bool m_bYes;
};

} // namespace quillon::test
