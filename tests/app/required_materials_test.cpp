#include "app/required_materials.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace quillon {
namespace {

/// Has data of some types, and notes what it is asked for.
class CNotedData {
  public:
    explicit CNotedData(std::vector<std::string> types) : m_types(std::move(types)) {}

    [[nodiscard]] TIsTypeAvailable Question() {
        return [this](TPositionType type) {
            m_asked.push_back(PositionTypeToString(type));
            return std::ranges::count(m_types, m_asked.back()) != 0;
        };
    }

    std::vector<std::string> m_types, m_asked;
};

ChessProblem Problem(ProblemFlags flags, std::set<std::string> required = {}, std::set<std::string> forAll = {}) {
    ChessProblem problem;
    problem.flags = flags;
    problem.requiredMaterials = std::move(required);
    problem.allSolutionsRequiredMaterials = std::move(forAll);
    return problem;
}

std::string Unmet(const ChessProblem& problem, std::vector<std::string> types, int nLichessLevels = 1) {
    CNotedData data(std::move(types));
    return std::string(UnmetRequirement(problem, data.Question(), nLichessLevels));
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

TEST(RequiredMaterials, AllHaveToBeThere) {
    CNotedData data({"Q", "RR"});
    EXPECT_TRUE(AreMaterialsAvailable({"Q", "RRk"}, data.Question()));
    EXPECT_EQ(data.m_asked, (std::vector<std::string>{"Q", "RR"}));
    EXPECT_FALSE(AreMaterialsAvailable({"Q", "R"}, data.Question()));
    EXPECT_TRUE(AreMaterialsAvailable({}, data.Question()));
}

TEST(RequiredMaterials, ATypeThatIsNoneIsNeverAskedFor) {
    CNotedData data({""});
    EXPECT_FALSE(AreMaterialsAvailable({"Kk"}, data.Question()));
    EXPECT_TRUE(data.m_asked.empty());
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
