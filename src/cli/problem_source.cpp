#include "cli/problem_source.h"

#include <algorithm>
#include <iostream>
#include <map>

#include "cli/file_settings.h"
#include "cli/given_position.h"
#include "cli/option_values.h"
#include "core/chess_exception.h"
#include "library/embedded_sample_library.h"
#include "library/problem_file_error.h"
#include "library/problem_input.h"

namespace quillon {

namespace {

constexpr const char* kSampleLibrary = "sample library";
constexpr const char* kWhiteToMoveOnly = "Black is to move; a problem starts with White to move.";

/// The list of --id, and which parts of it have been met.
class CIdChoice {
  public:
    explicit CIdChoice(const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            for (const TIdRange& range : ParseIds(text).value_or(std::vector<TIdRange>{}))
                m_ranges.push_back({range, false});
    }

    [[nodiscard]] bool IsChosen(std::optional<int> id) {
        if (m_ranges.empty())
            return true;
        bool bChosen = false;
        for (auto& [range, bMet] : m_ranges)
            if (id && range.m_nFirst <= *id && *id <= range.m_nLast)
                bMet = bChosen = true;
        return bChosen;
    }

    [[nodiscard]] std::vector<std::string> Missing(const std::string& name) const {
        std::vector<std::string> lines;
        for (const auto& [range, bMet] : m_ranges)
            if (!bMet)
                lines.push_back(name + ": there is no problem " + RangeText(range));
        return lines;
    }

  private:
    static std::string RangeText(const TIdRange& range) {
        const std::string first = std::to_string(range.m_nFirst);
        return range.m_nFirst == range.m_nLast ? first : first + " to " + std::to_string(range.m_nLast);
    }

    std::vector<std::pair<TIdRange, bool>> m_ranges;
};

TProblemInput ReadInput(const std::optional<std::string>& file) {
    const TProblemFileOptions options = SetFileOptions();
    if (file)
        return ReadProblemInput(*file, std::cin, options);
    return {kSampleLibrary, std::string(EmbeddedSampleLibrary()), EProblemFormat::Library, options.m_language};
}

/// A later problem replaces an earlier one of its id.
void RemoveReplaced(std::vector<TSourceItem>& items) {
    std::map<int, std::size_t> last;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (items[i].m_problem)
            last[items[i].m_problem->id] = i;
    std::size_t index = 0;
    std::erase_if(items, [&](const TSourceItem& item) {
        const std::size_t own = index++;
        return item.m_problem && last[item.m_problem->id] != own;
    });
}

std::unique_ptr<ChessProblem> ReadFenProblem(const std::string& fen, int nMoves, std::vector<std::string>& warnings) {
    const TGivenPosition given = ReadGivenPosition(fen);
    if (given.m_fields.m_cSideToMove != 'w')
        throw ChessException(kWhiteToMoveOnly);
    if (!given.m_note.empty())
        warnings.push_back(given.m_note);
    auto problem = std::make_unique<ChessProblem>();
    SetStipulation(*problem, kDirectMate, nMoves);
    SetOriginalPosition(*problem, given.m_board);
    return problem;
}

} // namespace

std::string PlaceText(const std::string& name, const TSourceItem& item) {
    return PlaceText(name, {item.m_nLine, item.m_nColumn}, item.m_id);
}

TProblemSource ReadProblemSource(const std::optional<std::string>& file, const std::vector<std::string>& ids) {
    const TProblemInput input = ReadInput(file);
    CIdChoice choice(ids);
    TProblemSource source;
    source.m_name = input.m_name;
    const auto addProblem = [&](std::unique_ptr<ChessProblem> problem) {
        if (choice.IsChosen(problem->id)) {
            const int id = problem->id, line = problem->line;
            source.m_items.push_back({std::move(problem), id, line, {}, 0});
        }
    };
    const auto addError = [&](const ProblemFileError& error) {
        if (!choice.IsChosen(error.ProblemId()))
            return;
        if (error.IsWarning())
            source.m_warnings.push_back(FailureText(input.m_name, error));
        else
            source.m_items.push_back({nullptr, error.ProblemId(), error.Line(), error.what(), error.Column()});
    };
    ReadProblems(input, addProblem, addError);
    RemoveReplaced(source.m_items);
    source.m_missing = choice.Missing(input.m_name);
    return source;
}

TProblemSource MakeFenSource(const std::string& fen, int nMoves) {
    TProblemSource source;
    TSourceItem item;
    item.m_id = 0;
    try {
        item.m_problem = ReadFenProblem(fen, nMoves, source.m_warnings);
    } catch (const ChessException& failure) {
        item.m_error = failure.what();
    }
    source.m_items.push_back(std::move(item));
    return source;
}

} // namespace quillon
