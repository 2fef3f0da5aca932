#include "cli/console_notifier.h"

#include "heuristics/result_texts.h"

namespace quillon {

void CConsoleNotifier::Inform(std::string_view text, std::string_view title) {
    m_line.WriteMessage(std::string(title) + ": " + std::string(text));
}

bool CConsoleNotifier::AskYesNo(std::string_view text, std::string_view) {
    // Brute force is asked for by an option of the user or of the problem; nobody has asked for more threads.
    return text == kBruteForceQuestion;
}

} // namespace quillon
