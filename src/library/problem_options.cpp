// The run options that stand between the stipulation of a problem and its body.

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "heuristics/heuristic_set.h"
#include "library/ascii.h"
#include "library/problem_parser.h"

namespace quillon {

namespace {

/// The token that follows an option. Special comments are kept: they end the options and are no argument.
std::string_view NextArgument(TProblemParser& parser) { return NextToken(parser.m_position, true, true); }

/// The number that the lexeme read last begins with, 0 if it begins with none; fails if it is above nMost.
int ToNumber(const TProblemParser& parser, std::string_view text, int nMost, std::string_view option) {
    const int number = LeadingNumber(text);
    if (number > nMost)
        parser.m_position.Fail("Number out of range after " + std::string(option) + ": " + std::string(text));
    return number;
}

int ReadNumber(TProblemParser& parser, int nMost, std::string_view option) {
    const std::string_view argument = NextArgument(parser);
    return ToNumber(parser, argument, nMost, option);
}

/// A count of eight bits, where 255 stands for "not set".
std::int8_t ToCount(const TProblemParser& parser, std::string_view text) {
    constexpr int kUnsetInFile = 255;
    if (!AreAllDigits(text))
        parser.m_position.Fail("Number expected after THREADS. Found: " + std::string(text));
    const int number = ToNumber(parser, text, kUnsetInFile, "THREADS");
    if (number == kUnsetInFile)
        return kUnsetCount;
    return static_cast<std::int8_t>(ToNumber(parser, text, std::numeric_limits<std::int8_t>::max(), "THREADS"));
}

/// "n" or "n^m": n threads, on m levels of the search.
void ReadThreads(TProblemParser& parser) {
    const std::string_view argument = NextArgument(parser);
    const auto hat = argument.find('^');
    parser.m_problem.threads = ToCount(parser, argument.substr(0, hat));
    if (hat != std::string_view::npos)
        parser.m_problem.levels = ToCount(parser, argument.substr(hat + 1));
}

void ReadSchedulerLevels(TProblemParser& parser) {
    constexpr int kMost = std::numeric_limits<std::int16_t>::max();
    parser.m_problem.schedulerLevels = static_cast<std::int16_t>(ReadNumber(parser, kMost, "SCHEDULERLEVELS"));
}

void ReadLichessLevels(TProblemParser& parser) {
    parser.m_problem.lichessLevels = ReadNumber(parser, std::numeric_limits<std::int16_t>::max(), "LICHESSLEVELS");
}

void ReadGlobRegMB(TProblemParser& parser) {
    constexpr int kMost = 1'000'000'000;
    parser.m_problem.globRegMB = ReadNumber(parser, kMost, "GLOBREGMB");
}

void ReadRequires(TProblemParser& parser) {
    parser.m_problem.requiredMaterials.emplace(NextIdentifier(parser.m_position));
}

void ReadAllSolutionsRequires(TProblemParser& parser) {
    parser.m_problem.allSolutionsRequiredMaterials.emplace(NextIdentifier(parser.m_position));
}

/// The count is optional: what is no number above 0 is put back, to be read as the next option.
void ReadGuiCheckCount(TProblemParser& parser) {
    const CTextPosition before = parser.m_position;
    const int count = LeadingNumber(NextArgument(parser));
    parser.m_problem.guiCheckCount = count < 1 ? 1 : static_cast<unsigned>(count);
    if (count < 1)
        parser.m_position = before;
}

void UseMainVariant(TProblemParser& parser) { parser.m_problem.useMainVariantAsSortIndications = 1; }

void StopRelaxing(TProblemParser& parser) { parser.m_problem.stopRelaxHeuristicsOnFirstSolution = true; }

/// An option: the flags it sets and what is done besides.
struct TOption {
    std::string_view m_name;
    ProblemFlags m_flags;
    void (*m_read)(TProblemParser&);
};

constexpr std::array kOptions{
    TOption{"NOMIRROR", kFlagNoMirror, nullptr},
    TOption{"MIRRORONLY", kFlagMirrorOnly, nullptr},
    TOption{"ALLSOLUTIONS", kFlagAllSolutions, nullptr},
    TOption{"STOPONDUAL", kFlagStopOnDual, nullptr},
    TOption{"STOPON3SOL", kFlagStopOn3Sol, nullptr},
    TOption{"STOPON4SOL", kFlagStopOn4Sol, nullptr},
    TOption{"USEMAINVARIANTASSORTINDICATIONS", kFlagUseMainVariantAsSortIndications, UseMainVariant},
    TOption{"THREADS", 0, ReadThreads},
    TOption{"SCHEDULERLEVELS", 0, ReadSchedulerLevels},
    TOption{"LICHESSLEVELS", 0, ReadLichessLevels},
    TOption{"NOGLOBREG", kFlagNoGlobReg, nullptr},
    TOption{"GLOBREGMB", 0, ReadGlobRegMB},
    TOption{"GUICHECK", kFlagGuiCheck, ReadGuiCheckCount},
    TOption{"GUICHECKBESTDEFENCEANDAUX", kFlagGuiCheck, ReadGuiCheckCount},
    TOption{"GUICHECKBESTDEFENCE", kFlagGuiCheckBestDefence, ReadGuiCheckCount},
    TOption{"SAFEMODE", kFlagSafeMode, nullptr},
    TOption{"ONLYIFAVAIL", 0, ReadRequires},
    TOption{"REQUIRES", 0, ReadRequires},
    TOption{"ALLSOLUTIONSREQUIRES", 0, ReadAllSolutionsRequires},
    TOption{"REQUIRESSYZYGY", kFlagRequiresSyzygy, nullptr},
    TOption{"ALLSOLUTIONSREQUIRESSYZYGY", kFlagAllSolutionsRequiresSyzygy, nullptr},
    TOption{"USEPREDEFINEDSETTINGS", kFlagUsePredefinedSettings, nullptr},
    TOption{"HYBRIDBRUTEFORCE", kFlagHybridBruteForce, nullptr},
    TOption{"BRUTEFORCE", kFlagBruteForce, nullptr},
    TOption{"STOPRELAXHEURISTICSONFIRSTSOLUTION", 0, StopRelaxing},
};

/// Does the token, in capitals, stand behind the options?
bool EndsOptions(const std::string& token) {
    const std::string_view line = Trimmed(token);
    return token == "{" || line == "//#TAGS" || line == "//!VARIANTS" || token.starts_with("//@");
}

/// "(argument)" or "OFF" behind the name of a heuristic. Lexemes of the argument are put together without blanks.
void ReadHeuristicClause(TProblemParser& parser, std::uint32_t bit, const std::string& name) {
    constexpr std::string_view kOff = "OFF";
    const std::string_view opening = NextArgument(parser);
    std::string argument;
    if (ToUpperAscii(opening) == kOff) {
        argument = kOff;
    } else if (opening == "(") {
        for (std::string_view part = NextArgument(parser); part != ")"; part = NextArgument(parser))
            argument += part;
    } else {
        parser.m_position.Fail("Unexpected lexem after " + name + ": " + std::string(opening) +
                               " (expected opening bracket or OFF)");
    }
    parser.m_problem.heuristicClauses.insert_or_assign(bit, std::move(argument));
}

/// An option of the table, or the name of a heuristic.
void ReadOption(TProblemParser& parser, const std::string& token) {
    const auto option = std::find_if(kOptions.begin(), kOptions.end(),
                                     [&](const TOption& candidate) { return candidate.m_name == token; });
    if (option != kOptions.end()) {
        parser.m_problem.flags |= option->m_flags;
        if (option->m_read)
            option->m_read(parser);
        return;
    }
    const std::optional<std::uint32_t> bit = FindHeuristic(token);
    if (!bit)
        parser.m_position.Fail("Opening bracket expected { or unrecognized option encountered: " + token);
    ReadHeuristicClause(parser, *bit, token);
}

} // namespace

void ParseOptions(TProblemParser& parser) {
    for (;;) {
        const CTextPosition before = parser.m_position;
        const std::string token = ToUpperAscii(NextArgument(parser));
        if (EndsOptions(token)) {
            parser.m_position = before;
            return;
        }
        ReadOption(parser, token);
    }
}

} // namespace quillon
