#include "app/required_materials.h"

#include <algorithm>

#include "core/chessboard.h"
#include "globalregister/piece_letters.h"

namespace quillon {

namespace {

// The scratch board of a material: kings out of the way, its figures in a row below them. It is no legal position.
constexpr TSquare kScratchWhiteKing = 61, kScratchBlackKing = 63, kFirstScratchSquare = 8;

bool Has(const ChessProblem& problem, ProblemFlags flag) { return (problem.flags & flag) != 0; }

} // namespace

TPositionType TypeOfMaterial(std::string_view material) {
    TChessboard b = EmptyChessboard();
    PutFigure(b, kScratchWhiteKing, kWhiteKing);
    PutFigure(b, kScratchBlackKing, kBlackKing);
    TSquare square = kFirstScratchSquare;
    for (const char letter : material) {
        const TFigure figure = FigureOfLetter(letter);
        if (figure == kNoFigure || square == kScratchWhiteKing)
            return 0;
        PutFigure(b, square++, figure);
    }
    return GetPositionType(b);
}

bool AreMaterialsAvailable(const std::set<std::string>& materials, const TIsTypeAvailable& isTypeAvailable) {
    return std::ranges::all_of(materials, [&](const std::string& material) {
        const TPositionType type = TypeOfMaterial(material);
        return type != 0 && isTypeAvailable(type);
    });
}

std::string_view UnmetRequirement(const ChessProblem& problem, const TIsTypeAvailable& isTypeAvailable,
                                  int nLichessLevels) {
    const bool bAllSolutions = Has(problem, kFlagAllSolutions);
    const bool bTablebaseOff = nLichessLevels <= 0;
    if (!AreMaterialsAvailable(problem.requiredMaterials, isTypeAvailable))
        return "Requires clause not satisfied\n";
    if (bAllSolutions && !AreMaterialsAvailable(problem.allSolutionsRequiredMaterials, isTypeAvailable))
        return "AllSolutionsRequires clause not satisfied\n";
    if (bTablebaseOff && Has(problem, kFlagRequiresSyzygy))
        return "RequiresSyzygy not satisfied\n";
    if (bTablebaseOff && bAllSolutions && Has(problem, kFlagAllSolutionsRequiresSyzygy))
        return "AllSolutionsRequiresSyzygy not satisfied\n";
    return {};
}

} // namespace quillon
