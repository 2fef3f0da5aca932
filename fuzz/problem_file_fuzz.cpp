// Any bytes as a problem library and as an EPD file: the readers come to an end, failures have a place in the text, and
// problems have a position that White may move in.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz_check.h"
#include "library/epd_file.h"
#include "library/problem_file.h"
#include "library/text_decoding.h"

namespace {

using quillon::Require;

void CheckProblem(const quillon::ChessProblem& problem) {
    Require(problem.originalPosition != nullptr, "a problem has a position");
    Require(problem.originalPosition->m_nMoves == problem.plies, "the position has the plies of the problem");
    Require(problem.originalPosition->m_blackChecker == quillon::kNoChecker, "Black is not in check");
    Require(quillon::IsValidUtf8(problem.description), "a description is UTF-8");
    for (const std::string& tag : problem.tags)
        Require(quillon::IsValidUtf8(tag), "a tag is UTF-8");
}

void CheckError(const quillon::ProblemFileError& error, std::string_view text) {
    Require(error.Line() >= 1 && error.Line() <= 1 + std::count(text.begin(), text.end(), '\n'), "a line of the text");
    Require(error.Column() >= 1, "columns begin at 1");
    Require(*error.what() != '\0', "a failure has a message");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = quillon::AsText(data, size);
    const auto onProblem = [](std::unique_ptr<quillon::ChessProblem> problem) { CheckProblem(*problem); };
    const auto onError = [text](const quillon::ProblemFileError& error) { CheckError(error, text); };
    quillon::ReadProblems(text, onProblem, onError);
    quillon::ReadEpdProblems(text, onProblem, onError);
    return 0;
}
