#pragma once
// Problems from where the user names them: a library, an EPD file or standard input.

#include <filesystem>
#include <iosfwd>
#include <string>
#include <string_view>

#include "library/chess_problem.h"
#include "library/problem_file.h"

namespace quillon {

enum class EProblemFormat { Library, Epd };

/// A text of problems and what is known of it.
struct TProblemInput {
    std::string m_name; // for messages: the path as given, or "standard input"
    std::string m_text;
    EProblemFormat m_format = EProblemFormat::Library;
    ELanguage m_language = ELanguage::English; // that names of tags and variants are brought to
};

/// Reads the file whole and tells its format; "-" is standard input, which is handed in. Where comments are kept apart
/// a library "NAME.cp" is read from its twin "NAME.cpx", if there is one, and goes by the name of that.
///   Errors  ChessException, which names the file: it cannot be opened or read ("Error opening file: ", path and
///   reason),
///           is empty ("File cannot be empty."), is no text.
[[nodiscard]] TProblemInput ReadProblemInput(const std::string& path, std::istream& standardInput,
                                             const TProblemFileOptions& options = {});

/// Is the file a library by its name, that may have a twin?
[[nodiscard]] bool IsLibraryName(const std::filesystem::path& path);

/// The format by the extension (.cp, .cpx, .epd), and else by what the text looks like.
[[nodiscard]] EProblemFormat ProblemFormat(const std::string& path, std::string_view text);

/// Hands out the problems of the input, in the order of the text, and what is wrong with the others.
///   Errors  ChessException "File cannot be empty." and the name if there was neither problem nor failure.
void ReadProblems(const TProblemInput& input, const TOnProblem& onProblem, const TOnError& onError);

/// The same, by id; a later problem replaces an earlier one of its id.
[[nodiscard]] TProblemMap CollectProblems(const TProblemInput& input, const TOnError& onError);

} // namespace quillon
