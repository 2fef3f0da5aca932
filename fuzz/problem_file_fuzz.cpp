// Any bytes as a problem library and as an EPD file: the readers come to an end, failures have a place in the text, and
// problems have a position that White may move in.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "library/epd_file.h"
#include "library/problem_file.h"
#include "library/text_decoding.h"

namespace {

void Require(bool bCondition) {
    if (!bCondition)
        std::abort();
}

void CheckProblem(const quillon::ChessProblem& problem) {
    Require(problem.originalPosition != nullptr);
    Require(problem.originalPosition->m_nMoves == problem.plies);
    Require(problem.originalPosition->m_blackChecker == quillon::kNoChecker);
    Require(quillon::IsValidUtf8(problem.description));
    for (const std::string& tag : problem.tags)
        Require(quillon::IsValidUtf8(tag));
}

void CheckError(const quillon::ProblemFileError& error, std::string_view text) {
    Require(error.Line() >= 1 && error.Line() <= 1 + std::count(text.begin(), text.end(), '\n'));
    Require(error.Column() >= 1);
    Require(*error.what() != '\0');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto onProblem = [](std::unique_ptr<quillon::ChessProblem> problem) { CheckProblem(*problem); };
    const auto onError = [text](const quillon::ProblemFileError& error) { CheckError(error, text); };
    quillon::ReadProblems(text, onProblem, onError);
    quillon::ReadEpdProblems(text, onProblem, onError);
    return 0;
}
