#include "cli/library_source.h"

#include <algorithm>
#include <iostream>

#include "cli/file_settings.h"
#include "cli/output.h"
#include "library/problem_input.h"

namespace quillon {

bool TLibrarySource::HasUnreadable() const {
    return std::any_of(m_errors.begin(), m_errors.end(),
                       [](const ProblemFileError& error) { return !error.IsWarning(); });
}

bool TLibrarySource::HasRepeatedIds() const {
    return std::ranges::any_of(m_errors, [](const ProblemFileError& error) {
        return error.Severity() == ProblemFileError::ESeverity::RepeatedId;
    });
}

TLibrarySource ReadLibrarySource(const std::string& path) {
    const TProblemInput input = ReadProblemInput(path, std::cin, SetFileOptions());
    TLibrarySource source;
    source.m_name = input.m_name;
    ReadProblems(
        input, [&](std::unique_ptr<ChessProblem> problem) { source.m_problems.push_back(std::move(problem)); },
        [&](const ProblemFileError& error) { source.m_errors.push_back(error); });
    return source;
}

void TellErrors(const TLibrarySource& source) {
    for (const ProblemFileError& error : source.m_errors)
        WriteDiagnostic(FailureText(source.m_name, error));
}

TProblemMap ById(TLibrarySource& source) {
    TProblemMap problems;
    for (auto& problem : source.m_problems)
        PutById(problems, std::move(problem));
    source.m_problems.clear();
    return problems;
}

} // namespace quillon
