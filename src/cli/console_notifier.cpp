#include "cli/console_notifier.h"

#include "cli/harmless_question.h"
#include "heuristics/result_texts.h"

namespace quillon {

void CConsoleNotifier::Inform(std::string_view text, std::string_view title) {
    std::string line; // of a text of several
    for (const char c : text)
        if (c != '\n')
            line += c;
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    m_line.WriteMessage(std::string(title) + ": " + line);
}

bool CConsoleNotifier::AskYesNo(std::string_view text, std::string_view) {
    // Brute force is asked for by an option of the user or of the problem; nobody has asked for more threads.
    return text == kBruteForceQuestion || IsHarmlessQuestion(text);
}

} // namespace quillon
