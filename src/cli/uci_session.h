#pragma once
// A session with a chess interface: its commands come in as lines, until "quit" or the end of the input.

#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/exit_status.h"
#include "cli/uci_precalc.h"
#include "cli/uci_search.h"
#include "platform/thread.h"

namespace quillon {

/// Threads: Run reads on the caller's thread; a search has threads of its own, none is left when Run returns.
class CUciSession {
  public:
    CUciSession(std::istream& input, CUciOutput& output, CUciPrecalc& precalc);
    CUciSession(const CUciSession&) = delete;
    CUciSession& operator=(const CUciSession&) = delete;
    ~CUciSession() { EndSearch(); }

    EExitStatus Run();

  private:
    using TWords = std::vector<std::string>; // of a command, without its name
    struct TCommand;
    static const TCommand kCommands[];

    void Obey();
    void TellName(const TWords& words);
    void TellReady(const TWords& words);
    void Ignore(const TWords& words);
    void SetOption(const TWords& words);
    void SetNumber(const TUciOption& option);
    void SetPrecalcPath(const std::string& folder);
    void SetPosition(const TWords& words);
    void Go(const TWords& words);
    void Stop(const TWords& words);
    void PonderHit(const TWords& words);
    void Quit(const TWords& words);

    void Start(TUciGo go);
    void EndSearch();
    void Say(const std::string& text) { m_output.Line(InfoString(text)); }

    std::istream& m_input;
    CUciOutput& m_output;
    CUciPrecalc& m_precalc;
    std::string m_line;                      // the command that is obeyed
    TSolveRequest m_request;                 // what the options have set
    std::optional<TGamePosition> m_position; // none: the last one given could not be read
    bool m_bQuit = false;
    std::unique_ptr<CUciSearch> m_search; // the last one; outlives its thread
    CThread m_thread;                     // of m_search
};

} // namespace quillon
