#include "search/proof_team.h"

#include <gtest/gtest.h>

#include "search/control.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kTeamPlacement = "8/8/8/3k4/8/8/8/KQ6";
constexpr std::uint64_t kNodesOfTeam = 1000;

TEST(ProofTeam, AStopOfTheCallerHoldsForAll) {
    CSearchedPosition caller(kTeamPlacement, 9), helper(kTeamPlacement, 9);
    const auto team = std::make_unique<CProofTeam>(caller.Root(), 2, kNodesOfTeam);
    EXPECT_FALSE(team->IsOver(helper.Root()));
    AskThread(caller.Context(), kStopRequest);
    EXPECT_TRUE(team->IsOver(helper.Root()));
    EXPECT_TRUE(team->IsOver(caller.Root()));
}

TEST(ProofTeam, ABoundOfTheCallerIsHisAlone) {
    CSearchedPosition caller(kTeamPlacement, 9), helper(kTeamPlacement, 9);
    const auto team = std::make_unique<CProofTeam>(caller.Root(), 2, kNodesOfTeam);
    caller.Context().m_nStopRequest = kBoundRequest;
    EXPECT_FALSE(team->IsOver(helper.Root()));
    EXPECT_TRUE(team->IsOver(caller.Root()));
    team->End(); // what he does when he leaves
    EXPECT_TRUE(team->IsOver(helper.Root()));
}

} // namespace
} // namespace quillon::test
