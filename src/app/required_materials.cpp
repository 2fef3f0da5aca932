#include "app/required_materials.h"

#include "core/chessboard.h"
#include "core/queries.h"
#include "globalregister/piece_letters.h"

namespace quillon {

namespace {

// The scratch board of a material: kings out of the way, its figures in a row below them. It is no legal position.
constexpr TSquare kScratchWhiteKing = 61, kScratchBlackKing = 63, kFirstScratchSquare = 8;

/// A use of the data of a type, given back at the end.
class CPrecalcUse {
  public:
    CPrecalcUse(IPrecalcData& data, TPositionType type)
        : m_data(data), m_type(type), m_bGranted(type != 0 && data.Acquire(type)) {}
    ~CPrecalcUse() {
        if (m_bGranted)
            m_data.Release(m_type);
    }
    CPrecalcUse(const CPrecalcUse&) = delete;
    CPrecalcUse& operator=(const CPrecalcUse&) = delete;

    [[nodiscard]] bool IsGranted() const { return m_bGranted; }

  private:
    IPrecalcData& m_data;
    const TPositionType m_type;
    const bool m_bGranted;
};

bool Has(const ChessProblem& problem, ProblemFlags flag) { return (problem.flags & flag) != 0; }

} // namespace

bool CPrecalcDataAtHand::Acquire(TPositionType type) { return IsPrecalcDataAvailable(type); }

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

bool AreMaterialsAvailable(const std::set<std::string>& materials, IPrecalcData& data) {
    for (const std::string& material : materials)
        if (!CPrecalcUse(data, TypeOfMaterial(material)).IsGranted())
            return false;
    return true;
}

std::string_view UnmetRequirement(const ChessProblem& problem, IPrecalcData& data, int nLichessLevels) {
    const bool bAllSolutions = Has(problem, kFlagAllSolutions);
    const bool bTablebaseOff = nLichessLevels <= 0;
    if (!AreMaterialsAvailable(problem.requiredMaterials, data))
        return "Requires clause not satisfied\n";
    if (bAllSolutions && !AreMaterialsAvailable(problem.allSolutionsRequiredMaterials, data))
        return "AllSolutionsRequires clause not satisfied\n";
    if (bTablebaseOff && Has(problem, kFlagRequiresSyzygy))
        return "RequiresSyzygy not satisfied\n";
    if (bTablebaseOff && bAllSolutions && Has(problem, kFlagAllSolutionsRequiresSyzygy))
        return "AllSolutionsRequiresSyzygy not satisfied\n";
    return {};
}

} // namespace quillon
