#include "library/problem_input.h"

#include <algorithm>
#include <filesystem>
#include <istream>

#include "core/chess_exception.h"
#include "library/ascii.h"
#include "library/epd_file.h"
#include "library/file_text.h"
#include "library/problem_resync.h"

namespace quillon {

namespace {

constexpr const char* kStandardInput = "standard input";

[[noreturn]] void FailEmpty(const std::string& name) { throw ChessException("File cannot be empty. (" + name + ")"); }

/// By the first line that tells: the mark or a problem's first line is of a library, a placement of an EPD file.
EProblemFormat FormatOfText(std::string_view text) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (LooksLikeEpd(line))
            return EProblemFormat::Epd;
        if (LooksLikeHeader(line) || Trimmed(line).starts_with("UTF-8"))
            return EProblemFormat::Library;
    }
    return EProblemFormat::Library;
}

void CheckText(const TProblemInput& input) {
    if (input.m_text.find_first_not_of(" \t\r\n") == std::string::npos)
        FailEmpty(input.m_name);
    if (input.m_text.find('\0') != std::string::npos)
        throw ChessException("Not a text file: " + input.m_name);
}

std::string FileToRead(const std::string& path, const TProblemFileOptions& options) {
    if (!options.m_bCommentCompatibility || !IsLibraryName(path))
        return path;
    const std::filesystem::path twin = PathWithComments(path);
    std::error_code ignored;
    return std::filesystem::exists(twin, ignored) ? twin.string() : path;
}

} // namespace

bool IsLibraryName(const std::filesystem::path& path) {
    const std::string extension = ToUpperAscii(path.extension().string());
    return extension == ".CP" || extension == ".CPX";
}

EProblemFormat ProblemFormat(const std::string& path, std::string_view text) {
    if (ToUpperAscii(std::filesystem::path(path).extension().string()) == ".EPD")
        return EProblemFormat::Epd;
    return IsLibraryName(path) ? EProblemFormat::Library : FormatOfText(text);
}

TProblemInput ReadProblemInput(const std::string& path, std::istream& standardInput,
                               const TProblemFileOptions& options) {
    const bool bStandardInput = path == "-";
    TProblemInput input;
    input.m_language = options.m_language;
    input.m_name = bStandardInput ? kStandardInput : FileToRead(path, options);
    const std::error_code failure =
        bStandardInput ? ReadStreamText(standardInput, input.m_text) : ReadFileText(input.m_name, input.m_text);
    if (failure)
        throw ChessException("Error opening file: " + input.m_name + " (" + failure.message() + ")");
    CheckText(input);
    input.m_format = ProblemFormat(path, input.m_text);
    return input;
}

void ReadProblems(const TProblemInput& input, const TOnProblem& onProblem, const TOnError& onError) {
    bool bAny = false;
    const TOnProblem countProblem = [&](std::unique_ptr<ChessProblem> problem) {
        bAny = true;
        onProblem(std::move(problem));
    };
    const TOnError countError = [&](const ProblemFileError& error) {
        bAny = true;
        onError(error);
    };
    if (input.m_format == EProblemFormat::Epd)
        ReadEpdProblems(input.m_text, countProblem, countError);
    else
        ReadProblems(input.m_text, countProblem, countError, input.m_language);
    if (!bAny)
        FailEmpty(input.m_name);
}

TProblemMap CollectProblems(const TProblemInput& input, const TOnError& onError) {
    TProblemMap problems;
    ReadProblems(
        input, [&](std::unique_ptr<ChessProblem> problem) { PutById(problems, std::move(problem)); }, onError);
    return problems;
}

} // namespace quillon
