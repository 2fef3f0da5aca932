// What a problem says about heuristics, between its stipulation and its body.

#include <gtest/gtest.h>
#include <map>
#include <string>

#include "heuristics/heuristic_set.h"
#include "library/problem_reading.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TClauses = std::map<std::uint32_t, std::string>;

TClauses ClausesOf(const std::string& options) {
    return ReadOne("1 #9 " + options + "\n" + std::string(kPlainBody))->heuristicClauses;
}

std::string ErrorOf(const std::string& options) {
    return StrictMessage("1 #9 " + options + "\n" + std::string(kPlainBody));
}

TEST(HeuristicClauses, TakeABracketOrOff) {
    EXPECT_EQ(ClausesOf("SH_KEEPKINGONTHEEDGE()"), (TClauses{{SH_KEEPKINGONTHEEDGE, ""}}));
    EXPECT_EQ(ClausesOf("SH_SEASNAKE off"), (TClauses{{SH_SEASNAKE, "OFF"}}));
    EXPECT_EQ(ClausesOf("sh_zugzwang (on) NoMirror SH_KEYLINE OFF"),
              (TClauses{{SH_KEYLINE, "OFF"}, {SH_ZUGZWANG, "on"}}));
}

TEST(HeuristicClauses, ArgumentIsPutTogetherWithoutBlanksAndComments) {
    EXPECT_EQ(ClausesOf("SH_DONTLETFIGUREUNBLOCK ( a7 , /* and */ b8\n\tH1 )"),
              (TClauses{{SH_DONTLETFIGUREUNBLOCK, "a7,b8H1"}}));
}

TEST(HeuristicClauses, LastOneOfAHeuristicHolds) {
    EXPECT_EQ(ClausesOf("SH_KEYLINE OFF SH_KEYLINE(a)"), (TClauses{{SH_KEYLINE, "a"}}));
}

TEST(HeuristicClauses, EveryNameThatIsALexemeIsKnown) {
    for (const THeuristic& row : kHeuristics) {
        const std::string name(row.m_name);
        if (name == kNoHeuristicName || name.find('/') != std::string::npos)
            continue;
        EXPECT_EQ(ClausesOf(name + " OFF"), (TClauses{{row.m_nBit, "OFF"}})) << name;
    }
}

TEST(HeuristicClauses, ANameWithASlashIsNoLexeme) {
    EXPECT_EQ(ErrorOf("SH_SAVEQUEEN/ROOK OFF"),
              "Opening bracket expected { or unrecognized option encountered: SH_SAVEQUEEN");
}

TEST(HeuristicClauses, AnythingElseBehindTheNameFails) {
    EXPECT_EQ(ErrorOf("SH_KeyLine on"), "Unexpected lexem after SH_KEYLINE: on (expected opening bracket or OFF)");
    EXPECT_EQ(ErrorOf("SH_KEYLINE"), "Unexpected lexem after SH_KEYLINE: { (expected opening bracket or OFF)");
    EXPECT_EQ(StrictMessage("1 #9 SH_KEYLINE(a\n{\nW: Ke1 B: Ke8\n}\n"), "Unexpected end of file.");
    EXPECT_EQ(ErrorOf("SH_DONTLETKINGMOVE OFF"),
              "Opening bracket expected { or unrecognized option encountered: SH_DONTLETKINGMOVE");
}

} // namespace
} // namespace quillon
