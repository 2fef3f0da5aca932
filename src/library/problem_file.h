#pragma once
// The reader of problem libraries (.cp files).
//
//   file = [ "UTF-8" ] { "//!default #N OPTION" } problem { problem }        problem: see problem_parser.h
//
// Without the mark "UTF-8" (or a byte order mark of UTF-8), descriptions, tags and variants are in the legacy code page
// (text_decoding.h). Everything else is ASCII.

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "library/chess_problem.h"
#include "library/lexer.h"
#include "library/problem_file_error.h"
#include "library/problem_language.h"
#include "library/problem_parser.h"

namespace quillon {

/// Takes a problem, in the order of the text.
using TOnProblem = std::function<void(std::unique_ptr<ChessProblem>)>;

/// Takes a failure, which is the loss of one problem or line, or a warning (ProblemFileError::IsWarning).
using TOnError = std::function<void(const ProblemFileError&)>;

/// So many failures are told of one text, and so many warnings. A text that has more failures is none of this format:
/// what follows is not read, and the last failure says so. More warnings are not told, which the last one says.
inline constexpr int kMostFailures = 20'000;

/// That last failure.
[[nodiscard]] ProblemFileError TooManyFailures(TTextPlace place);

/// A file that cannot be opened at all: "Error opening file: " and the path, perhaps with the reason.
class CFileError : public ChessException {
  public:
    using ChessException::ChessException;
};

/// How problem files are read and written.
struct TProblemFileOptions {
    ELanguage m_language = ELanguage::English; // that of the names of tags and variants in memory
    bool m_bCommentCompatibility = false;      // a file "NAME.cpx" holds the comments of variants, "NAME.cp" does not
    bool m_bCreateIfMissing = false;           // reading: a file that does not exist is made (problem_file_writer.h)
    std::function<void(const std::string&)> m_log; // takes a line for the log; may be empty
};

/// Reads one problem; the result is the position behind its closing bracket.
///   Errors  ProblemFileError, with the id of the problem once it has been read.
[[nodiscard]] CTextPosition ParseProblem(ChessProblem& problem, CTextPosition position, bool bUtf8,
                                         const TDefaultClauses& defaults);

/// Reads every problem of a text that can be read. After a failure the reading goes on at the next line that looks like
/// the beginning of a problem ("12 #3", "12 s#3") and is no part of the body that failed. A problem whose id was there
/// before is told with a warning, and then handed out: it is meant to replace the earlier one.
///   language  names of tags and of the main variant are brought to it.
///   Errors  none of its own; what the callbacks throw ends the reading.
void ReadProblems(std::string_view text, const TOnProblem& onProblem, const TOnError& onError,
                  ELanguage language = ELanguage::English);

/// Reads the problems of a text into `library`, up to the first failure; a later problem replaces an earlier one of its
/// id. An empty text has no problems.
///   Errors  ProblemFileError; what was stored before stays. Warnings go to onWarning.
void ReadProblemText(std::string_view text, TProblemMap& library, const TOnError& onWarning,
                     const TProblemFileOptions& options = {});

/// The same for a file.
///   Errors  also CFileError, and what a file that is made may fail with (problem_file_writer.h).
void ReadProblemFile(const std::filesystem::path& path, TProblemMap& library, const TOnError& onWarning,
                     const TProblemFileOptions& options = {});

/// The two files of a library whose comments are kept apart: an "x" at the end of the name makes the difference.
[[nodiscard]] std::filesystem::path PathWithComments(const std::filesystem::path& path);
[[nodiscard]] std::filesystem::path PathWithoutComments(const std::filesystem::path& path);

/// The files that a library consists of, the one that alone has everything first.
[[nodiscard]] std::vector<std::filesystem::path> FilesOfLibrary(const std::filesystem::path& path,
                                                                const TProblemFileOptions& options);

/// The warning that the problem of `id`, which begins at `line`, replaces an earlier one.
[[nodiscard]] ProblemFileError RedefinitionWarning(std::int32_t id, int line);

} // namespace quillon
