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

/// Does the token, in capitals, stand behind the options?
bool EndsOptions(const std::string& token) {
    const std::string_view line = Trimmed(token);
    return token == "{" || line == "//#TAGS" || line == "//!VARIANTS" || token.starts_with("//@");
}

void WarnMissing(TProblemParser& parser, const char* what, std::string_view option, std::string_view found) {
    parser.Warn(std::string(what) + " expected after " + std::string(option) + ". Found: " + std::string(found));
}

/// What stands behind an option that cannot do without. Where the options end instead, that is warned of and left to be
/// read again.
std::optional<std::string_view> ReadArgument(TProblemParser& parser, const char* what, std::string_view option) {
    const CTextPosition before = parser.m_position;
    const std::string_view argument = NextArgument(parser);
    if (!EndsOptions(ToUpperAscii(argument)))
        return argument;
    WarnMissing(parser, what, option, argument);
    parser.m_position = before;
    return std::nullopt;
}

constexpr const char* kNumber = "Number";

/// The number that a text begins with, 0 if it begins with none; the nearest that the option can have.
int ToNumber(TProblemParser& parser, std::string_view text, int nMost, std::string_view option) {
    if (text.empty() || !IsAsciiDigit(text.front()))
        WarnMissing(parser, kNumber, option, text);
    const int number = LeadingNumber(text);
    if (number > nMost)
        parser.Warn("Number out of range after " + std::string(option) + ": " + std::string(text));
    return std::min(number, nMost);
}

/// The number behind an option; without one the field keeps its value.
template <class TNumber> void ReadNumber(TProblemParser& parser, int nMost, std::string_view option, TNumber& number) {
    if (const auto argument = ReadArgument(parser, kNumber, option))
        number = static_cast<TNumber>(ToNumber(parser, *argument, nMost, option));
}

/// A count of eight bits, where 255 stands for "not set"; so does what is no number.
std::int8_t ToCount(TProblemParser& parser, std::string_view text) {
    constexpr int kUnsetInFile = 255, kMost = std::numeric_limits<std::int8_t>::max();
    if (AreAllDigits(text) && LeadingNumber(text) == kUnsetInFile)
        return kUnsetCount;
    const int number = ToNumber(parser, text, kMost, "THREADS");
    return text.empty() || !IsAsciiDigit(text.front()) ? kUnsetCount : static_cast<std::int8_t>(number);
}

/// "n" or "n^m": n threads, on m levels of the search.
void ReadThreads(TProblemParser& parser) {
    const auto argument = ReadArgument(parser, kNumber, "THREADS");
    if (!argument)
        return;
    const auto hat = argument->find('^');
    parser.m_problem.threads = ToCount(parser, argument->substr(0, hat));
    if (hat != std::string_view::npos)
        parser.m_problem.levels = ToCount(parser, argument->substr(hat + 1));
}

void ReadSchedulerLevels(TProblemParser& parser) {
    constexpr int kMost = std::numeric_limits<std::int16_t>::max();
    ReadNumber(parser, kMost, "SCHEDULERLEVELS", parser.m_problem.schedulerLevels);
}

void ReadLichessLevels(TProblemParser& parser) {
    constexpr int kMost = std::numeric_limits<std::int16_t>::max();
    ReadNumber(parser, kMost, "LICHESSLEVELS", parser.m_problem.lichessLevels);
}

void ReadGlobRegMB(TProblemParser& parser) {
    constexpr int kMost = 1'000'000'000;
    ReadNumber(parser, kMost, "GLOBREGMB", parser.m_problem.globRegMB);
}

void ReadMaterial(TProblemParser& parser, std::string_view option, std::set<std::string>& materials) {
    if (const auto argument = ReadArgument(parser, "Material", option))
        materials.emplace(*argument);
}

void ReadRequires(TProblemParser& parser) { ReadMaterial(parser, "REQUIRES", parser.m_problem.requiredMaterials); }

void ReadAllSolutionsRequires(TProblemParser& parser) {
    ReadMaterial(parser, "ALLSOLUTIONSREQUIRES", parser.m_problem.allSolutionsRequiredMaterials);
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
