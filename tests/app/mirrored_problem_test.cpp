#include "app/mirrored_problem.h"

#include <gtest/gtest.h>

#include "core/fen.h"
#include "core/heuristic_parameters.h"
#include "library/problem_file.h"

namespace quillon {
namespace {

using TMirrors = std::vector<TMirror>;

ChessProblem Problem(const std::string& placement, ProblemFlags flags = 0) {
    ChessProblem problem;
    problem.flags = flags;
    SetOriginalPosition(problem, ChessboardFromFEN(placement));
    return problem;
}

std::string Placement(const ChessProblem& problem) { return WriteFEN(*problem.originalPosition, false); }

constexpr const char* kPawnless = "7k/8/6K1/8/8/8/8/R7";
constexpr const char* kWithPawn = "8/8/8/8/8/1K5Q/1p6/kn6";
constexpr const char* kWithCastling = "8/8/8/8/8/5k2/8/R3K3";

TEST(MirroredProblem, SquaresByWhatTheNumberIsMadeOf) {
    const TSquare b3 = 17;
    EXPECT_EQ(MirrorSquare(b3, kAsGiven), b3);
    EXPECT_EQ(MirrorSquare(b3, kMirrorFiles), 22);                   // g3
    EXPECT_EQ(MirrorSquare(b3, kMirrorRanks), 41);                   // b6
    EXPECT_EQ(MirrorSquare(b3, kMirrorDiagonal), 10);                // c2
    EXPECT_EQ(MirrorSquare(b3, kMirrorFiles | kMirrorDiagonal), 50); // g3, then c7
    EXPECT_EQ(MirrorSquare(kNoSquare, kLastMirror), kNoSquare);
    EXPECT_EQ(MirrorSquare(64, kMirrorFiles), 64);
}

TEST(MirroredProblem, EachCopyIsAnotherOne) {
    std::set<std::string> placements{kPawnless};
    for (const TMirror mirror : MirrorsOf(Problem(kPawnless)))
        placements.insert(Placement(MirroredProblem(Problem(kPawnless), mirror)));
    EXPECT_EQ(placements.size(), 8u);
    EXPECT_TRUE(placements.contains("k7/8/1K6/8/8/8/8/7R"));
}

TEST(MirroredProblem, PawnsLeaveTheFiles) {
    EXPECT_EQ(MirrorsOf(Problem(kWithPawn)), TMirrors{kMirrorFiles});
    EXPECT_EQ(Placement(MirroredProblem(Problem(kWithPawn), kMirrorFiles)), "8/8/8/8/8/Q5K1/6p1/6nk");
}

TEST(MirroredProblem, NoCopyWhereACastlingIsPossibleInTheProblemOrInTheCopy) {
    EXPECT_EQ(MirrorsOf(Problem(kWithCastling)), TMirrors{});
    EXPECT_EQ(MirrorsOf(Problem("r3k3/8/8/8/8/5K2/8/8")), TMirrors{});
    // Kd1 Rh1 would stand on e1 and a1.
    EXPECT_EQ(MirrorsOf(Problem("8/8/8/8/8/5k2/p7/3K3R")), TMirrors{});
}

TEST(MirroredProblem, RunsByTheFlagsOfTheProblem) {
    EXPECT_EQ(RunsOf(Problem(kWithPawn), false), TMirrors{kAsGiven});
    EXPECT_EQ(RunsOf(Problem(kWithPawn), true), (TMirrors{kAsGiven, kMirrorFiles}));
    EXPECT_EQ(RunsOf(Problem(kPawnless), true).size(), 8u);
    EXPECT_EQ(RunsOf(Problem(kWithPawn, kFlagNoMirror), true), TMirrors{kAsGiven});
    EXPECT_EQ(RunsOf(Problem(kWithCastling), true), TMirrors{kAsGiven});
    EXPECT_EQ(RunsOf(Problem(kWithPawn, kFlagMirrorOnly), false), TMirrors{});
    EXPECT_EQ(RunsOf(Problem(kWithPawn, kFlagMirrorOnly), true), (TMirrors{kAsGiven, kMirrorFiles}));
}

TEST(MirroredProblem, TakesAllThatASolveLooksAt) {
    TProblemMap library;
    ReadProblemText("7 #3 AllSolutions SafeMode THREADS 2^3 GUICHECK 2 Requires Q SH_DONTLETFIGUREUNBLOCK(b2, B1) "
                    "SH_SEASNAKE OFF\n//!VARIANTS\n//!{Main variant} Kb3-c2 Ka1-a2\n//!ENDVARIANTS\n"
                    "//@SortIndications: 1.Kb3-c2; Qh8\n"
                    "{ Desc: of one\nFEN: 8/8/8/8/8/1K5Q/1p6/kn6\nAnswer: Kb3-c2, b7-a8N }",
                    library, [](const ProblemFileError&) {});
    const ChessProblem copy = MirroredProblem(*library.at(7), kMirrorFiles);
    EXPECT_EQ(copy.id, 7);
    EXPECT_EQ(copy.kind, kDirectMate);
    EXPECT_EQ(copy.plies, 5);
    EXPECT_EQ(copy.originalPosition->m_nMoves, 5);
    EXPECT_EQ(copy.currentPosition, copy.originalPosition.get());
    EXPECT_EQ(copy.flags, library.at(7)->flags);
    EXPECT_EQ(copy.threads, 2);
    EXPECT_EQ(copy.levels, 3);
    EXPECT_EQ(copy.guiCheckCount, 2u);
    EXPECT_EQ(copy.description, "of one");
    EXPECT_EQ(copy.requiredMaterials, std::set<std::string>{"Q"});
    ASSERT_EQ(copy.answer.size(), 2u);
    EXPECT_TRUE(SameMove(copy.answer[0], {22, 13, 0, 0}));       // Kg3-f2
    EXPECT_TRUE(SameMove(copy.answer[1], {54, 63, kKnight, 0})); // g7-h8N
    EXPECT_EQ(copy.heuristicClauses.at(SH_DONTLETFIGUREUNBLOCK), "G2G1");
    EXPECT_EQ(copy.heuristicClauses.size(), 2u);
    EXPECT_EQ(copy.variants.begin()->second.moves[1].move.m_nTo, 15); // h2
    EXPECT_EQ(FormatSortIndications(copy.sortIndications), "Qa8; 1.Kg3-f2");
}

TEST(MirroredProblem, IndicationsKeepTheirOrder) {
    SortIndication first, second;
    first.m_nTo = 0; // a1, in the copy h1
    second.m_nFrom = 9;
    second.m_nTo = 1;
    const std::vector<SortIndication> copy = MirrorIndications({first, second}, kMirrorFiles);
    EXPECT_EQ(copy[0].m_nFrom, kNoSquare);
    EXPECT_EQ(copy[0].m_nTo, 7);
    EXPECT_EQ(copy[1].m_nFrom, 14);
    EXPECT_EQ(copy[1].m_nTo, 6);
}

TEST(MirroredProblem, AClauseThatCannotBeReadStays) {
    ChessProblem problem = Problem(kWithPawn);
    for (const char* const text : {"OFF", "z9"}) {
        problem.heuristicClauses[SH_DONTLETFIGUREUNBLOCK] = text;
        EXPECT_EQ(MirroredProblem(problem, kMirrorFiles).heuristicClauses.at(SH_DONTLETFIGUREUNBLOCK), text);
    }
}

} // namespace
} // namespace quillon
