#include "globalregister/missing_types.h"

#include "globalregister/generator/existing_table.h"
#include "globalregister/verification/one_move_types.h"

namespace quillon {

namespace {

/// Adds `nLetters` letters, from the first one on that may follow, in every way.
void AddTypes(const std::string& begun, std::size_t firstLetter, int nLetters, std::vector<std::string>& types) {
    constexpr std::string_view kFigures = kTypeLetters.substr(0, 10);
    if (nLetters == 0) {
        types.push_back(begun);
        return;
    }
    for (std::size_t i = firstLetter; i < kFigures.size(); ++i)
        AddTypes(begun + kFigures[i], i, nLetters - 1, types);
}

} // namespace

std::vector<std::string> MissingTypes(int nPieces, const CGlobalRegisters& registers) {
    std::vector<std::string> types;
    AddTypes("", 0, nPieces - 2, types);
    std::erase_if(types, [&](const std::string& type) {
        if (CannotMate(type))
            return true;
        const TPositionIndexing indexing(type);
        return registers.IsTypeAvailable(indexing.nPositionType) &&
               HasFinishedTable(indexing, registers.Options().m_folders);
    });
    return types;
}

std::string MissingTypesText(int nPieces, const std::vector<std::string>& types) {
    std::string text =
        "List of missing precalculated data for positions with " + std::to_string(nPieces) + " pieces " + ":\n";
    for (std::size_t i = 0; i < types.size(); ++i)
        text += (i == 0 ? "" : "\n") + types[i];
    return text;
}

void ListMissing(int nPieces, const CGlobalRegisters& registers, INotifier& notifier) {
    for (; nPieces < kMostTableMen; ++nPieces)
        if (!notifier.AskYesNo(MissingTypesText(nPieces, MissingTypes(nPieces, registers)) +
                                   "\n\nShould program look for missing precalculated data for positions with more "
                                   "pieces?",
                               "Question"))
            return;
    notifier.Inform(MissingTypesText(nPieces, MissingTypes(nPieces, registers)), "Information");
}

} // namespace quillon
