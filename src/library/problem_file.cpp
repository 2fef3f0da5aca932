#include "library/problem_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

#include "library/ascii.h"
#include "library/file_text.h"
#include "library/problem_file_writer.h"
#include "library/problem_resync.h"
#include "library/text_decoding.h"

namespace quillon {

namespace {

constexpr std::string_view kDefaultClause = "//!default";

/// Skips the mark of the encoding; true if it is there.
bool SkipUtf8Mark(CTextPosition& position) {
    std::string_view rest = position.Rest();
    const bool bUtf8 = TakeUtf8Mark(rest);
    position.Advance(position.Rest().size() - rest.size());
    return bUtf8;
}

/// Cuts a line at every single blank: two blanks in a row have an empty piece between them.
std::vector<std::string_view> SplitAtBlanks(std::string_view line) {
    std::vector<std::string_view> pieces;
    for (;;) {
        const auto end = line.find_first_of(" \t");
        pieces.push_back(line.substr(0, end));
        if (end == std::string_view::npos)
            return pieces;
        line.remove_prefix(end + 1);
    }
}

/// Enters the clause "//!default #N OPTION".
void ReadDefaultClause(CTextPosition& position, TDefaultClauses& defaults) {
    const std::vector<std::string_view> pieces = SplitAtBlanks(NextToken(position, true, true));
    if (pieces.size() != 3)
        position.Fail("Incorrect 'default' clause.");
    const int nMoves = pieces[1].starts_with('#') ? LeadingNumber(pieces[1].substr(1)) : 0;
    if (nMoves == 0)
        position.Fail("Error in 'default' clause.");
    defaults[nMoves].emplace(pieces[2]);
}

/// What follows next, empty at the end of the text. Where not even that can be told, it is the parser of the problem
/// that stumbles over it, and tells.
std::string_view PeekWhatFollows(CTextPosition position) {
    try {
        return NextToken(position, false, true);
    } catch (const ProblemFileError&) {
        return position.Rest();
    }
}

bool HasMoreProblems(CTextPosition position) {
    try {
        return !NextToken(position, false, false).empty();
    } catch (const ProblemFileError&) {
        return true;
    }
}

/// Hands failures and warnings on, up to the most that are told of each.
class CTold {
  public:
    explicit CTold(const TOnError& onError) : m_onError(onError) {}

    /// False: it was the last, and nothing that stands behind `place` is to be read.
    bool Fail(const ProblemFileError& error, TTextPlace place) {
        m_onError(error);
        if (++m_nFailures <= kMostFailures)
            return true;
        m_onError(TooManyFailures(place));
        return false;
    }

    /// However many there are, the problems can be read.
    void Warn(const ProblemFileError& warning) {
        ++m_nWarnings;
        if (m_nWarnings <= kMostFailures)
            m_onError(warning);
        else if (m_nWarnings == kMostFailures + 1)
            m_onError({"More than " + std::to_string(kMostFailures) + " warnings: the rest is not told.",
                       warning.Place(), ProblemFileError::ESeverity::Warning});
    }

  private:
    const TOnError& m_onError;
    int m_nFailures = 0;
    std::int64_t m_nWarnings = 0;
};

/// False if there was too much to tell.
bool ReadDefaultClauses(CTextPosition& position, CTold& told, TDefaultClauses& defaults) {
    while (PeekWhatFollows(position).starts_with(kDefaultClause)) {
        try {
            ReadDefaultClause(position, defaults);
        } catch (const ProblemFileError& error) {
            if (!told.Fail(error, position.Place()))
                return false;
        }
    }
    return true;
}

/// Runs the parser; a failure gets the id of the problem.
void Parse(TProblemParser& parser, const TDefaultClauses& defaults) {
    try {
        ParseWholeProblem(parser, defaults);
    } catch (ProblemFileError& error) {
        if (parser.m_bIdRead)
            error.SetProblemId(parser.m_problem.id);
        throw;
    }
}

} // namespace

CTextPosition ParseProblem(ChessProblem& problem, CTextPosition position, bool bUtf8, const TDefaultClauses& defaults) {
    TProblemParser parser{.m_problem = problem, .m_position = position, .m_bUtf8 = bUtf8};
    Parse(parser, defaults);
    return parser.m_position;
}

ProblemFileError TooManyFailures(TTextPlace place) {
    return {"More than " + std::to_string(kMostFailures) + " failures: the rest is not read.", place};
}

ProblemFileError RedefinitionWarning(std::int32_t id, int line) {
    // The spelling is that of the log of old: people and scripts search for it.
    ProblemFileError warning("WARINING: Problem id=" + std::to_string(id) + " redefinition - overwriting.", {line, 1},
                             ProblemFileError::ESeverity::RepeatedId);
    warning.SetProblemId(id);
    return warning;
}

void ReadProblems(std::string_view text, const TOnProblem& onProblem, const TOnError& onError, ELanguage language) {
    CTextPosition position(text);
    const bool bUtf8 = SkipUtf8Mark(position);
    CTold told(onError);
    TDefaultClauses defaults;
    if (!ReadDefaultClauses(position, told, defaults))
        return;
    std::set<std::int32_t> ids;
    while (HasMoreProblems(position)) {
        auto problem = std::make_unique<ChessProblem>();
        TProblemParser parser{.m_problem = *problem, .m_position = position, .m_bUtf8 = bUtf8};
        parser.m_bPolish = language == ELanguage::Polish;
        try {
            Parse(parser, defaults);
        } catch (const ProblemFileError& error) {
            position = FindNextProblem(position, parser.m_position, parser.m_bInBody);
            if (!told.Fail(error, position.Place()))
                return;
            continue;
        }
        position = parser.m_position;
        if (!BringToLanguage(*problem, language))
            parser.Warn("Two main variants: only one is kept.", {problem->line, 1});
        if (!ids.insert(problem->id).second)
            parser.m_warnings.push_back(RedefinitionWarning(problem->id, problem->line));
        for (ProblemFileError& warning : parser.m_warnings) {
            warning.SetProblemId(problem->id);
            told.Warn(warning);
        }
        onProblem(std::move(problem));
    }
}

namespace {

/// A repeated number is told as it always was; it names the problem itself.
std::string LogLine(const ProblemFileError& warning) {
    const bool bNamesProblem = warning.Severity() == ProblemFileError::ESeverity::RepeatedId;
    const std::string place = bNamesProblem ? ""
                                            : "Problem " + std::to_string(warning.ProblemId().value_or(0)) + ", line " +
                                                  std::to_string(warning.Line()) + ": ";
    return place + warning.what() + "\n";
}

} // namespace

void ReadProblemText(std::string_view text, TProblemMap& library, const TOnError& onWarning,
                     const TProblemFileOptions& options) {
    const auto log = [&](const std::string& line) {
        if (options.m_log)
            options.m_log(line);
    };
    const auto store = [&](std::unique_ptr<ChessProblem> problem) {
        const std::int32_t id = problem->id;
        PutById(library, std::move(problem));
        log("Problem " + std::to_string(id) + " read from file.\n");
    };
    const auto failOrWarn = [&](const ProblemFileError& error) {
        if (!error.IsWarning())
            throw error;
        log(LogLine(error));
        onWarning(error);
    };
    ReadProblems(text, store, failOrWarn, options.m_language);
}

void ReadProblemFile(const std::filesystem::path& path, TProblemMap& library, const TOnError& onWarning,
                     const TProblemFileOptions& options) {
    const std::filesystem::path file = options.m_bCommentCompatibility ? PathWithComments(path) : path;
    std::string text;
    std::error_code failure = ReadFileText(file, text);
    if (failure && options.m_bCreateIfMissing && !ProblemFileExists(path, options)) {
        WriteDefaultProblemFile(path, options);
        failure = ReadFileText(file, text);
    }
    if (failure)
        throw CFileError("Error opening file: " + file.string());
    ReadProblemText(text, library, onWarning, options);
}

std::filesystem::path PathWithComments(const std::filesystem::path& path) {
    return path.native().ends_with('x') ? path : std::filesystem::path(path.native() + 'x');
}

std::filesystem::path PathWithoutComments(const std::filesystem::path& path) {
    if (!path.native().ends_with('x'))
        return path;
    return path.native().substr(0, path.native().size() - 1);
}

std::vector<std::filesystem::path> FilesOfLibrary(const std::filesystem::path& path,
                                                  const TProblemFileOptions& options) {
    if (!options.m_bCommentCompatibility)
        return {path};
    return {PathWithComments(path), PathWithoutComments(path)};
}

} // namespace quillon
