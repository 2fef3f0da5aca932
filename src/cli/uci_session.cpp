#include "cli/uci_session.h"

#include <algorithm>
#include <exception>

#include "app/version.h"
#include "cli/output.h"
#include "cli/uci_position.h"
#include "core/chess_exception.h"
#include "platform/memory_info.h"

namespace quillon {

namespace {

constexpr std::size_t kWatchStackBytes = std::size_t{1} << 20;
constexpr std::int64_t kMostUciThreads = 255;

std::int64_t PhysicalMegabytes() { return static_cast<std::int64_t>(PhysicalMemory() >> 20); }

/// What the solver takes without the option.
std::int64_t UsualMegabytes() {
    return static_cast<std::int64_t>(ShareMB(PhysicalMemory(), TSolveRequest().m_nMemoryShare));
}

/// What the options bear on.
struct TSetUp {
    TSolveRequest& m_request;
    CUciPrecalc& m_precalc;
};

struct TNumberOption {
    const char* m_name;
    const char* m_lowered;
    std::int64_t m_nLeast;
    std::int64_t (*m_most)();
    std::int64_t (*m_usual)(const CUciPrecalc&);
    void (*m_set)(const TSetUp&, std::int64_t);
};

constexpr TNumberOption kNumberOptions[] = {
    {"Threads", "threads", 1, [] { return kMostUciThreads; }, [](const CUciPrecalc&) { return std::int64_t{1}; },
     [](const TSetUp& setUp, std::int64_t value) { setUp.m_request.m_nThreads = static_cast<int>(value); }},
    {"Hash", "hash", 0, PhysicalMegabytes, [](const CUciPrecalc&) { return UsualMegabytes(); },
     [](const TSetUp& setUp, std::int64_t value) { setUp.m_request.m_nMemoryBudgetMB = value; }},
    {"PrecalcMemory", "precalcmemory", 0, [] { return std::int64_t{kMostPrecalcMB}; },
     [](const CUciPrecalc& precalc) { return precalc.UsualMegabytes(); },
     [](const TSetUp& setUp, std::int64_t value) { setUp.m_precalc.SetMegabytes(value); }},
    // A proof has one line: interfaces may ask for more and get one.
    {"MultiPV", "multipv", 1, [] { return std::int64_t{1}; }, [](const CUciPrecalc&) { return std::int64_t{1}; },
     [](const TSetUp&, std::int64_t) {}},
};

constexpr const char* kPonderOption = "ponder";
constexpr const char* kPrecalcPathOption = "precalcpath";

std::string OptionLine(const TNumberOption& option, const CUciPrecalc& precalc) {
    return std::string("option name ") + option.m_name + " type spin default " +
           std::to_string(option.m_usual(precalc)) + " min " + std::to_string(option.m_nLeast) + " max " +
           std::to_string(option.m_most());
}

std::string PrecalcPathLine(const std::string& folder) {
    return "option name PrecalcPath type string default " + (folder.empty() ? "<empty>" : WithoutControls(folder));
}

} // namespace

struct CUciSession::TCommand {
    const char* m_name;
    void (CUciSession::*m_obey)(const TWords&);
};

const CUciSession::TCommand CUciSession::kCommands[] = {
    {"uci", &CUciSession::TellName},
    {"isready", &CUciSession::TellReady},
    {"debug", &CUciSession::Ignore},
    {"register", &CUciSession::Ignore},
    {"ucinewgame", &CUciSession::Ignore},
    {"setoption", &CUciSession::SetOption},
    {"position", &CUciSession::SetPosition},
    {"go", &CUciSession::Go},
    {"stop", &CUciSession::Stop},
    {"ponderhit", &CUciSession::PonderHit},
    {"quit", &CUciSession::Quit},
};

CUciSession::CUciSession(std::istream& input, CUciOutput& output, CUciPrecalc& precalc)
    : m_input(input), m_output(output), m_precalc(precalc), m_position(StartOfGame()) {}

EExitStatus CUciSession::Run() {
    while (!m_bQuit && !m_output.IsBroken() && std::getline(m_input, m_line))
        Obey();
    EndSearch();
    return m_output.IsBroken() ? EExitStatus::SystemFailure : EExitStatus::Answered;
}

void CUciSession::Obey() {
    TWords words = WordsOf(m_line);
    if (words.empty())
        return;
    const std::string name = Lowered(words.front());
    const auto command =
        std::ranges::find_if(kCommands, [&name](const TCommand& known) { return known.m_name == name; });
    if (command == std::end(kCommands)) {
        Say("unknown command: " + words.front());
        return;
    }
    words.erase(words.begin());
    (this->*command->m_obey)(words);
}

void CUciSession::TellName(const TWords&) {
    m_output.Line("id name Quillon " + std::string(kVersion));
    m_output.Line("id author the Quillon developers");
    for (const TNumberOption& option : kNumberOptions)
        m_output.Line(OptionLine(option, m_precalc));
    m_output.Line(PrecalcPathLine(m_precalc.UsualFolder()));
    m_output.Line("option name Ponder type check default false");
    m_output.Line("uciok");
}

void CUciSession::TellReady(const TWords&) { m_output.Line("readyok"); }

/// Commands that ask for nothing that is done here.
void CUciSession::Ignore(const TWords&) {}

void CUciSession::SetOption(const TWords&) {
    const TUciOption option = ReadOption(m_line);
    if (option.m_name == kPrecalcPathOption)
        SetPrecalcPath(option.m_value);
    else if (option.m_name != kPonderOption) // whether to ponder is for the interface to decide
        SetNumber(option);
}

/// Takes effect with the next search.
void CUciSession::SetPrecalcPath(const std::string& folder) {
    try {
        m_precalc.SetFolder(folder);
    } catch (const ChessException& failure) {
        Say(failure.what());
    }
}

/// Takes effect with the next search.
void CUciSession::SetNumber(const TUciOption& option) {
    const TNumberOption* const known = std::ranges::find_if(
        kNumberOptions, [&option](const TNumberOption& row) { return row.m_lowered == option.m_name; });
    if (known == std::end(kNumberOptions)) {
        Say("unknown option: " + option.m_name);
        return;
    }
    const std::optional<std::int64_t> value = ReadNumber(option.m_value);
    if (!value) {
        Say(std::string(known->m_name) + " wants a number, not: " + option.m_value);
        return;
    }
    const std::int64_t used = std::clamp(*value, known->m_nLeast, std::max(known->m_most(), known->m_nLeast));
    if (used != *value)
        Say(std::string(known->m_name) + " is " + std::to_string(used));
    known->m_set({m_request, m_precalc}, used);
}

/// A position that cannot be read leaves none: a search of the one before would answer another question.
void CUciSession::SetPosition(const TWords& words) {
    m_position.reset();
    try {
        const TUciPosition read = ReadUciPosition(words);
        if (!read.m_note.empty())
            Say(read.m_note);
        m_position = read.m_position;
    } catch (const ChessException& failure) {
        Say(failure.what());
    }
}

void CUciSession::Go(const TWords& words) {
    if (m_search != nullptr && !m_search->IsEnding()) {
        Say("a search is running: stop it first");
        return;
    }
    EndSearch();
    TUciGo go = ReadGo(words);
    for (const std::string& word : go.m_unused)
        Say("go: not used: " + word);
    if (m_position) {
        Start(std::move(go));
        return;
    }
    Say("there is no position");
    m_output.Line("bestmove 0000");
}

/// Without a search the interface gets its move all the same.
void CUciSession::Start(TUciGo go) {
    try {
        m_precalc.Apply();
        m_search = std::make_unique<CUciSearch>(TUciOrder{*m_position, std::move(go), m_request}, m_output);
        m_thread = CThread(kWatchStackBytes, [search = m_search.get()] { search->Run(); });
    } catch (const std::exception& failure) { // of the system, which has no thread or no memory
        m_search.reset();
        m_output.Failure(failure);
        m_output.Line("bestmove " + AnyMove(*m_position));
    }
}

/// Returns when the best move has been sent and the memory is free.
void CUciSession::EndSearch() {
    if (m_search == nullptr)
        return;
    m_search->Stop();
    m_thread.Join();
    m_search.reset();
}

void CUciSession::Stop(const TWords&) {
    if (m_search != nullptr)
        m_search->Stop();
}

void CUciSession::PonderHit(const TWords&) {
    if (m_search != nullptr)
        m_search->PonderHit();
}

void CUciSession::Quit(const TWords&) { m_bQuit = true; }

} // namespace quillon
