#pragma once
// The other side of `quillon uci`: sends commands, waits for answers, and judges lines by an independent rule book.

#include <string>
#include <vector>

#include "cli/program_run.h"

namespace quillon::testing {

class CUciClient {
  public:
    ///   arguments  of the command line, behind "uci".
    explicit CUciClient(const std::vector<std::string>& arguments = {});

    /// One line.
    void Send(const std::string& line) const { m_run.Feed(line + "\n"); }

    /// As it stands.
    void SendRaw(const std::string& text) const { m_run.Feed(text); }

    /// The lines that have come since the last call, up to the first that begins with the text. Waits up to two
    /// minutes; what ends without it is a line "(nothing)".
    [[nodiscard]] std::vector<std::string> Until(const std::string& beginning);

    /// The lines of a search: sends the position and the order, and waits for the best move.
    [[nodiscard]] std::vector<std::string> Ask(const std::string& position, const std::string& order);

    void CloseInput() { m_run.CloseInput(); }

    /// Waits for the end of the program; the whole output.
    [[nodiscard]] TProgramResult Finish() { return m_run.Finish(); }

  private:
    CProgramRun m_run;
    std::size_t m_nRead = 0; // lines
};

/// The first and the last line that begin with the text; empty if there is none.
[[nodiscard]] std::string First(const std::vector<std::string>& lines, const std::string& beginning);
[[nodiscard]] std::string Last(const std::vector<std::string>& lines, const std::string& beginning);

[[nodiscard]] int Count(const std::vector<std::string>& lines, const std::string& beginning);

/// The last line with a mate score; empty if there is none.
[[nodiscard]] std::string MateLine(const std::vector<std::string>& lines);

/// The word behind another; empty if there is none.
[[nodiscard]] std::string WordBehind(const std::string& line, const std::string& word);

[[nodiscard]] std::vector<std::string> MovesOfLine(const std::string& line);

/// "mate" if the moves are legal one by one and the last one mates; else what is wrong.
[[nodiscard]] std::string Judge(const std::string& fen, const std::vector<std::string>& moves);

/// "legal", "none" for 0000 where there is no legal move, or what is wrong.
[[nodiscard]] std::string JudgeMove(const std::string& fen, const std::string& move);

} // namespace quillon::testing
