#include "app/required_materials.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

/// Has some types and counts the uses of them.
class CCountedData : public IPrecalcData {
  public:
    explicit CCountedData(std::vector<std::string> types) : m_types(std::move(types)) {}

    bool Acquire(TPositionType type) override {
        m_asked.push_back(PositionTypeToString(type));
        if (!std::ranges::count(m_types, m_asked.back()))
            return false;
        ++m_nUses;
        return true;
    }
    void Release(TPositionType type) override {
        --m_nUses;
        m_released.push_back(PositionTypeToString(type));
    }

    std::vector<std::string> m_types, m_asked, m_released;
    int m_nUses = 0;
};

ChessProblem Problem(ProblemFlags flags, std::set<std::string> required = {}, std::set<std::string> forAll = {}) {
    ChessProblem problem;
    problem.flags = flags;
    problem.requiredMaterials = std::move(required);
    problem.allSolutionsRequiredMaterials = std::move(forAll);
    return problem;
}

std::string Unmet(const ChessProblem& problem, std::vector<std::string> types, int nLichessLevels = 1) {
    CCountedData data(std::move(types));
    const std::string line(UnmetRequirement(problem, data, nLichessLevels));
    EXPECT_EQ(data.m_nUses, 0) << "data stay in use behind the check";
    return line;
}

TEST(RequiredMaterials, LettersMakeATypeInAnyOrderAndKingsCountForNothing) {
    EXPECT_EQ(PositionTypeToString(TypeOfMaterial("RRk")), "RR");
    EXPECT_EQ(PositionTypeToString(TypeOfMaterial("pQN")), "QNp");
    EXPECT_EQ(PositionTypeToString(TypeOfMaterial("KQRBNPk")), "QRBNP");
}

TEST(RequiredMaterials, WhatIsNoMaterialHasNoType) {
    for (const std::string text : {"", "Kk", "QX", "QRBNPp", "Q1"})
        EXPECT_EQ(TypeOfMaterial(text), 0u) << text;
    EXPECT_EQ(TypeOfMaterial(std::string(400, 'P')), 0u) << "more than the scratch board holds";
}

TEST(RequiredMaterials, AllHaveToBeThereAndNoneStaysInUse) {
    CCountedData data({"Q", "RR"});
    EXPECT_TRUE(AreMaterialsAvailable({"Q", "RRk"}, data));
    EXPECT_EQ(data.m_released.size(), 2u);
    EXPECT_FALSE(AreMaterialsAvailable({"Q", "R"}, data));
    EXPECT_EQ(data.m_nUses, 0);
    EXPECT_TRUE(AreMaterialsAvailable({}, data));
}

TEST(RequiredMaterials, ATypeThatIsNoneIsNeverAskedFor) {
    CCountedData data({""});
    EXPECT_FALSE(AreMaterialsAvailable({"Kk"}, data));
    EXPECT_TRUE(data.m_asked.empty());
}

TEST(RequiredMaterials, TheSearchHasNoDataOfMaterialsItIsNotGiven) {
    CPrecalcDataAtHand data;
    EXPECT_FALSE(AreMaterialsAvailable({"QRBNP"}, data));
}

TEST(UnmetRequirement, RequiresClause) {
    EXPECT_EQ(Unmet(Problem(0, {"Q"}), {}), "Requires clause not satisfied\n");
    EXPECT_EQ(Unmet(Problem(0, {"Q"}), {"Q"}), "");
    EXPECT_EQ(Unmet(Problem(0), {}), "");
}

TEST(UnmetRequirement, OfAllSolutionsCountsForSuchARunOnly) {
    EXPECT_EQ(Unmet(Problem(kFlagAllSolutions, {}, {"R"}), {}), "AllSolutionsRequires clause not satisfied\n");
    EXPECT_EQ(Unmet(Problem(kFlagAllSolutions, {}, {"R"}), {"R"}), "");
    EXPECT_EQ(Unmet(Problem(0, {}, {"R"}), {}), "");
}

TEST(UnmetRequirement, TheFirstOneIsTold) {
    EXPECT_EQ(Unmet(Problem(kFlagAllSolutions | kFlagRequiresSyzygy, {"Q"}, {"R"}), {}, 0),
              "Requires clause not satisfied\n");
    EXPECT_EQ(Unmet(Problem(kFlagAllSolutions | kFlagRequiresSyzygy, {"Q"}, {"R"}), {"Q"}, 0),
              "AllSolutionsRequires clause not satisfied\n");
}

TEST(UnmetRequirement, TheOnlineTablebaseSwitchedOff) {
    for (const int nOff : {0, -1}) {
        EXPECT_EQ(Unmet(Problem(kFlagRequiresSyzygy), {}, nOff), "RequiresSyzygy not satisfied\n");
        EXPECT_EQ(Unmet(Problem(kFlagAllSolutions | kFlagAllSolutionsRequiresSyzygy), {}, nOff),
                  "AllSolutionsRequiresSyzygy not satisfied\n");
        EXPECT_EQ(Unmet(Problem(kFlagAllSolutionsRequiresSyzygy), {}, nOff), "");
    }
    EXPECT_EQ(Unmet(Problem(kFlagRequiresSyzygy | kFlagAllSolutions | kFlagAllSolutionsRequiresSyzygy), {}, 1), "");
}

} // namespace
} // namespace quillon
