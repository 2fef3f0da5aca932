#include <gtest/gtest.h>

#include <map>

#include "library/sample_proofs.h"

namespace quillon::sample_proofs {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr std::uint64_t kQuickNodes = 20'000; // a sanitizer build is an order of magnitude slower
constexpr int kLongestQuick = 4;
#else
constexpr std::uint64_t kQuickNodes = 400'000;
constexpr int kLongestQuick = 6;
#endif

TEST(SampleLibrary, HasSixtyProblemsOfDifferentLengths) {
    std::map<int, int> byLength;
    for (const TSample& sample : Samples()) {
        EXPECT_FALSE(sample.m_keys.empty()) << "problem " << sample.m_nId;
        ++byLength[sample.m_nStipulation];
    }
    EXPECT_GE(Samples().size(), 60u);
    EXPECT_GE(byLength.size(), 7u);
    EXPECT_EQ(byLength.begin()->first, 2);
}

TEST(SampleLibrary, SolverFindsExactlyTheAnswers) {
    for (const TSample& sample : Samples())
        if (sample.m_nStipulation <= kLongestQuick) {
            EXPECT_EQ(KeysBySolver(sample), sample.m_keys) << "problem " << sample.m_nId << " " << sample.m_fen;
        }
}

TEST(SampleLibrary, ReferenceFindsExactlyTheAnswersWithinItsQuickReach) {
    int proved = 0;
    for (const TSample& sample : Samples())
        if (const auto keys = KeysByReference(sample, kQuickNodes)) {
            EXPECT_EQ(*keys, sample.m_keys) << "problem " << sample.m_nId << " " << sample.m_fen;
            ++proved;
        }
    EXPECT_GE(proved, 40);
}

TEST(SampleLibrary, NoProblemHasAShorterMate) {
    for (const TSample& sample : Samples()) {
        const auto keys = sample.m_nStipulation > 1 ? reference::ShortestMate(reference::ProblemFromFen(sample.m_fen),
                                                                              sample.m_nStipulation - 1, kQuickNodes)
                                                    : std::nullopt;
        if (keys) {
            EXPECT_EQ(*keys, 0) << "problem " << sample.m_nId << " " << sample.m_fen;
        }
    }
}

} // namespace
} // namespace quillon::sample_proofs
