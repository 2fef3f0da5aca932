// The verifier of claimed mates: what it accepts, and that it refuses each kind of false claim.

#include "support/proof_verifier.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/reference_solver.h"

namespace reference {
namespace {

constexpr const char* kRookSacrifice = "kbK5/pp6/1P6/8/8/8/8/R7"; // #2 Ra1-a6
constexpr const char* kKingInTheCorner = "k7/8/1K6/8/8/8/3Q4/8";  // #1 Qd2-d8, and Qd2-d7 traps without mate
constexpr const char* kTwoRooks = "7k/8/8/8/8/8/R7/1R5K";         // #2
constexpr std::uint64_t kAmple = 10'000;

/// Tells the truth.
std::string Honest(const Turn& turn) {
    for (int length = 1; length <= turn.movesLeft; ++length)
        if (const Answer answer = SolveAll(turn.position, length); answer.mateExists)
            return answer.keys.front();
    return {};
}

/// Names a legal move, whatever it does.
std::string Careless(const Turn& turn) { return LongNotation(turn.position, LegalMoves(turn.position).front()); }

ProofReport Verify(const char* placement, int nMoves, const char* key, const MoveOracle& oracle = Honest,
                   std::uint64_t maxPositions = kAmple) {
    return VerifyMate(ProblemFromFen(placement), nMoves, key, oracle, maxPositions);
}

TEST(ProofVerifier, AcceptsWhatIsTrue) {
    EXPECT_EQ(Verify(kKingInTheCorner, 1, "Qd2-d8").fault, "");
    const ProofReport report = Verify(kRookSacrifice, 2, "Ra1-a6");
    EXPECT_EQ(report.verdict, ProofVerdict::Proved) << report.fault;
    EXPECT_GT(report.positions, 1u) << "every reply has its mate";
}

TEST(ProofVerifier, AcceptsEveryKeyOfTheSolverAndNoOtherMove) {
    for (const char* const placement : {kRookSacrifice, kTwoRooks, kKingInTheCorner}) {
        const Position root = ProblemFromFen(placement);
        const std::vector<std::string> keys = SolveAll(root, 2).keys;
        for (const Move move : LegalMoves(root)) {
            const std::string text = LongNotation(root, move);
            const bool bKey = std::find(keys.begin(), keys.end(), text) != keys.end();
            EXPECT_EQ(Verify(placement, 2, text.c_str()).verdict == ProofVerdict::Proved, bKey) << text;
        }
    }
}

TEST(ProofVerifier, RefusesAWrongKeyOfAnHonestOracle) {
    const ProofReport report = Verify(kRookSacrifice, 2, "Ra1-a5");
    EXPECT_EQ(report.verdict, ProofVerdict::Failed);
    EXPECT_NE(report.fault.find("no mate is known with 1 moves left, after Ra1-a5"), std::string::npos) << report.fault;
}

TEST(ProofVerifier, RefusesTheMovesOfACarelessOracle) {
    const ProofReport report = Verify(kTwoRooks, 2, "Rb1-b7", Careless);
    EXPECT_EQ(report.verdict, ProofVerdict::Failed);
    EXPECT_NE(report.fault.find("no mate in time"), std::string::npos) << report.fault;
}

TEST(ProofVerifier, RefusesALengthTooShort) {
    EXPECT_EQ(Verify(kTwoRooks, 2, "Rb1-b7").verdict, ProofVerdict::Proved);
    const ProofReport report = Verify(kTwoRooks, 1, "Rb1-b7");
    EXPECT_EQ(report.verdict, ProofVerdict::Failed);
    EXPECT_EQ(report.fault, "no mate in time, after Rb1-b7");
    EXPECT_EQ(Verify(kKingInTheCorner, 0, "Qd2-d8").verdict, ProofVerdict::Failed);
}

TEST(ProofVerifier, RefusesStalemate) {
    EXPECT_EQ(Verify("k7/3Q4/1K6/8/8/8/8/8", 3, "Qd7-c7").fault, "stalemate, after Qd7-c7");
}

TEST(ProofVerifier, RefusesWhatIsNoMove) {
    EXPECT_EQ(Verify(kTwoRooks, 2, "Ra2-b3").fault, "no legal move: Ra2-b3, after");
    EXPECT_EQ(Verify(kTwoRooks, 2, "").verdict, ProofVerdict::Failed);
    const auto Illegal = [](const Turn&) { return std::string("a1-a9"); };
    EXPECT_EQ(Verify(kTwoRooks, 2, "Rb1-b7", Illegal).verdict, ProofVerdict::Failed);
}

/// The double step mates a king whose own pawn cannot take in passing.
TEST(ProofVerifier, KnowsTheCaptureInPassing) {
    EXPECT_EQ(Verify("8/8/R7/5k2/5n2/3P1N1P/4P3/7K", 1, "e2-e4").fault, "");
    EXPECT_EQ(Verify("8/8/R7/5k2/5p2/3P1N1P/4P3/7K", 1, "e2-e4").fault, "no mate in time, after e2-e4");
}

TEST(ProofVerifier, TellsWhenTheProofIsTooLarge) {
    const ProofReport whole = Verify(kRookSacrifice, 2, "Ra1-a6");
    EXPECT_EQ(Verify(kRookSacrifice, 2, "Ra1-a6", Honest, whole.positions).verdict, ProofVerdict::Proved);
    const ProofReport report = Verify(kRookSacrifice, 2, "Ra1-a6", Honest, whole.positions - 1);
    EXPECT_EQ(report.verdict, ProofVerdict::TooLarge);
    EXPECT_NE(report.fault, "");
}

TEST(MatingLine, EndsInMateInTime) {
    const Position root = ProblemFromFen(kTwoRooks);
    EXPECT_EQ(FaultOfMatingLine(root, 2, {"Rb1-b7", "Kh8-g8", "Ra2-a8"}), "");
    EXPECT_NE(FaultOfMatingLine(root, 1, {"Rb1-b7", "Kh8-g8", "Ra2-a8"}), "");
    EXPECT_EQ(FaultOfMatingLine(root, 2, {"Rb1-b7", "Kh8-g8", "Ra2-a7"}), "no mate at the end");
    EXPECT_EQ(FaultOfMatingLine(root, 2, {"Rb1-b7", "Kh8-f8", "Ra2-a8"}), "no legal move: Kh8-f8");
    EXPECT_NE(FaultOfMatingLine(root, 2, {"Rb1-b7", "Kh8-g8"}), "");
    EXPECT_NE(FaultOfMatingLine(root, 2, {}), "");
}

} // namespace
} // namespace reference
