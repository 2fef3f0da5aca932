#pragma once
// The live line on standard error that tells how far a solve has come.
//
// Threads: every function may be called from any thread; messages and the line never mix.

#include <mutex>
#include <string>
#include <string_view>

namespace quillon {

class CProgressLine {
  public:
    /// A line that is not shown takes all calls and writes only messages and reports.
    explicit CProgressLine(bool bShown) : m_bShown(bShown) {}
    CProgressLine(const CProgressLine&) = delete;
    CProgressLine& operator=(const CProgressLine&) = delete;
    ~CProgressLine() { Erase(); }

    [[nodiscard]] bool IsShown() const { return m_bShown; }

    /// Characters that fit the line.
    [[nodiscard]] static std::size_t Width();

    /// Replaces what the line shows, cut to the width of the terminal.
    void Show(std::string_view text);

    /// Writes the text as it stands, for a log: it ends with the carriage return that lets the next one replace it.
    void Write(std::string_view text);

    void Erase();

    /// Erases the line and writes the message below what has been written so far.
    void WriteMessage(std::string_view message);

    /// The same for lines of text, each with its end.
    void WriteReport(std::string_view text);

    /// The same on standard output, where a terminal shows both.
    ///   Errors  COutputError.
    void WriteResult(std::string_view text);

  private:
    void EraseLocked();

    const bool m_bShown;
    std::mutex m_mutex;
    std::size_t m_nWritten = 0; // characters on the line; guarded by m_mutex
};

} // namespace quillon
