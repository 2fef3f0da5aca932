// Any bytes as a problem library and as an EPD file: the readers come to an end, failures have a place in the text,
// problems have a position that White may move in, and what is written of them is read as the same.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz_check.h"
#include "library/epd_file.h"
#include "library/library_check.h"
#include "library/pgn_text.h"
#include "library/problem_file.h"
#include "library/problem_writer.h"
#include "library/text_decoding.h"

namespace {

using quillon::Require;

void CheckProblem(const quillon::ChessProblem& problem) {
    Require(problem.originalPosition != nullptr, "a problem has a position");
    Require(problem.originalPosition->m_nMoves == problem.plies, "the position has the plies of the problem");
    Require(problem.currentPosition->m_nMoves + problem.playedPositions.size() == problem.plies,
            "played moves are counted");
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

/// The one kind of problem that is written in an order in which it cannot be read.
bool CanBeReadBack(const quillon::ChessProblem& problem) {
    return problem.playedPositions.empty() || (problem.flags & quillon::kFlagAnswer) == 0;
}

std::string Written(const quillon::ChessProblem& problem) {
    std::string text = "UTF-8\n\n";
    quillon::AppendProblemText(text, problem, true);
    return text;
}

void CheckWriting(const quillon::ChessProblem& problem) {
    const std::string text = Written(problem);
    std::string again;
    quillon::ReadProblems(
        text, [&](std::unique_ptr<quillon::ChessProblem> read) { again += Written(*read); },
        [](const quillon::ProblemFileError&) { Require(false, "what was written can be read"); });
    Require(again == text, "what was written is read as the same");
}

void CheckConversions(const std::vector<std::unique_ptr<quillon::ChessProblem>>& problems) {
    for (const auto& problem : problems) {
        if (CanBeReadBack(*problem))
            CheckWriting(*problem);
        std::vector<std::string> faults;
        Require(!quillon::PgnText(*problem, faults).empty(), "a problem is a game");
    }
    static_cast<void>(quillon::CheckProblems(problems));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = quillon::AsText(data, size);
    std::vector<std::unique_ptr<quillon::ChessProblem>> problems;
    const auto onProblem = [&](std::unique_ptr<quillon::ChessProblem> problem) {
        CheckProblem(*problem);
        problems.push_back(std::move(problem));
    };
    const auto onError = [text](const quillon::ProblemFileError& error) { CheckError(error, text); };
    quillon::ReadProblems(text, onProblem, onError);
    CheckConversions(problems);
    quillon::ReadEpdProblems(text, onProblem, onError);
    return 0;
}
