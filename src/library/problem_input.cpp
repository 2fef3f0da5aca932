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

} // namespace

EProblemFormat ProblemFormat(const std::string& path, std::string_view text) {
    const std::string extension = ToUpperAscii(std::filesystem::path(path).extension().string());
    if (extension == ".EPD")
        return EProblemFormat::Epd;
    if (extension == ".CP" || extension == ".CPX")
        return EProblemFormat::Library;
    return FormatOfText(text);
}

TProblemInput ReadProblemInput(const std::string& path, std::istream& standardInput) {
    const bool bStandardInput = path == "-";
    TProblemInput input;
    input.m_name = bStandardInput ? kStandardInput : path;
    const std::error_code failure =
        bStandardInput ? ReadStreamText(standardInput, input.m_text) : ReadFileText(path, input.m_text);
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
        ReadProblems(input.m_text, countProblem, countError);
    if (!bAny)
        FailEmpty(input.m_name);
}

TProblemMap CollectProblems(const TProblemInput& input, const TOnError& onError) {
    TProblemMap problems;
    const auto store = [&](std::unique_ptr<ChessProblem> problem) {
        const std::int32_t id = problem->id;
        problems.insert_or_assign(id, std::move(problem));
    };
    ReadProblems(input, store, onError);
    return problems;
}

} // namespace quillon
