#pragma once
// Runs the program itself, as a user would, and tells what came out of it.

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

#include "platform/temporary_folder.h"

namespace quillon::testing {

struct TProgramResult {
    int m_nStatus = -1; // exit status; 128 and the signal for one that a signal ended
    std::string m_out;
    std::string m_err;
    std::int64_t m_nPeakBytes = 0; // the most physical memory it has held

    [[nodiscard]] std::vector<std::string> OutLines() const;
};

/// The process group of the program, which tells whether Ctrl+Z can stop it: one of its own is under job control, the
/// group of a session of its own is not, for nobody outside it could continue it.
enum class EProcessGroup { OfTheTest, Own, OwnSession };

struct TProgramInput {
    std::string m_text;       // of standard input
    std::string m_outputPath; // where standard output goes; a file of its own if empty
    bool m_bFed = false;      // m_text is the beginning: Feed goes on, CloseInput ends it
    EProcessGroup m_group = EProcessGroup::OfTheTest;
};

/// A run that has been started. The destructor ends it if it has not ended.
class CProgramRun {
  public:
    explicit CProgramRun(const std::vector<std::string>& arguments, const TProgramInput& input = {});
    CProgramRun(const CProgramRun&) = delete;
    CProgramRun& operator=(const CProgramRun&) = delete;
    ~CProgramRun();

    void Signal(int signal) const;

    /// Waits, up to ten seconds, until the program has a handler for the signal; false if it gets none.
    [[nodiscard]] bool WaitForHandler(int signal) const;

    /// Waits, up to a minute, until a signal has stopped the process; false if none does.
    [[nodiscard]] bool WaitForStop() const;

    /// More of standard input. A program that has ended hears nothing of it.
    void Feed(const std::string& text) const;
    void CloseInput();

    [[nodiscard]] std::string OutputSoFar() const;
    [[nodiscard]] std::string ErrorSoFar() const;

    /// Waits, up to a minute, until standard error has the text; false if it does not come.
    [[nodiscard]] bool WaitForError(const std::string& text) const;
    [[nodiscard]] bool WaitForOutput(const std::string& text) const;

    [[nodiscard]] TProgramResult Finish();

  private:
    CTemporaryFolder m_folder;
    pid_t m_pid = -1;
    int m_nInput = -1; // the end of the pipe that Feed writes to
};

/// From start to end.
[[nodiscard]] TProgramResult RunQuillon(const std::vector<std::string>& arguments, const TProgramInput& input = {});

/// Without what differs from run to run: times and speeds become "T".
[[nodiscard]] std::string WithoutTimes(const std::string& text);

} // namespace quillon::testing
