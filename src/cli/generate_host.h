#pragma once
// How a run of the generator speaks to the person at the command line: options answer what it asks.

#include <mutex>
#include <string>

#include "cli/console_notifier.h"
#include "cli/exit_status.h"
#include "globalregister/generator/generate.h"

namespace quillon {

struct TGenerateAnswers {
    bool m_bYes = false;           // to what is offered
    bool m_bRemovePartial = false; // a stopped run leaves no unfinished table
    bool m_bJson = false;
};

/// Threads: questions and ends of types on the thread of the run, progress on its threads, ProgressText on any.
class CGenerateHost final : public IGenerateHost {
  public:
    CGenerateHost(CProgressLine& line, TGenerateAnswers answers) : m_line(line), m_notifier(line), m_answers(answers) {}

    void Inform(std::string_view text, std::string_view title) override { m_notifier.Inform(text, title); }
    [[nodiscard]] bool AskYesNo(std::string_view text, std::string_view title) override;
    [[nodiscard]] EThreeWay AskYesNoCancel(std::string_view text, std::string_view title) override;
    void Progress(const TGenerateProgress& progress) override;
    void TypeEnded(const TGenerateReport& report) override;

    /// "QR, 2 of 3: level 7, 45.2%, 123456 found, 1.2 million a second, 0:45 left". What is not known yet is left out.
    [[nodiscard]] std::string ProgressText() const;

    /// Of all types that have ended.
    [[nodiscard]] EExitStatus Status() const { return m_status; }

  private:
    CProgressLine& m_line;
    CConsoleNotifier m_notifier;
    const TGenerateAnswers m_answers;
    EExitStatus m_status = EExitStatus::Answered;

    mutable std::mutex m_mutex; // of all below
    TGenerateProgress m_progress;
    unsigned m_nFirstPermille = 0; // where the level was first seen
    double m_firstSeen = 0;        // seconds of the table's run
};

/// What became of a table, as a line for a person or as a JSON object.
[[nodiscard]] std::string GenerateText(const TGenerateReport& report);
[[nodiscard]] std::string GenerateJson(const TGenerateReport& report);

} // namespace quillon
