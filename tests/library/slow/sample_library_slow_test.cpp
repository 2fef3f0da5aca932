// Every answer of the sample library proved anew by the solver, and by the reference as far as that reaches.

#include <gtest/gtest.h>

#include "library/sample_proofs.h"

namespace quillon::sample_proofs {
namespace {

TEST(SampleLibrarySlow, SolverAndReferenceProveEveryAnswer) {
    constexpr std::uint64_t kEnoughNodes = 200'000'000;
    constexpr int kLongestByReference = 12; // it tries every move, which takes too long beyond
    int longest = 0;
    for (const TSample& sample : Samples()) {
        EXPECT_EQ(KeysBySolver(sample), sample.m_keys) << "problem " << sample.m_nId << " " << sample.m_fen;
        longest = std::max(longest, sample.m_nStipulation);
        if (sample.m_nStipulation > kLongestByReference)
            continue;
        const auto keys = KeysByReference(sample, kEnoughNodes);
        ASSERT_TRUE(keys.has_value()) << "problem " << sample.m_nId << " is out of the reference's reach";
        EXPECT_EQ(*keys, sample.m_keys) << "problem " << sample.m_nId << " " << sample.m_fen;
    }
    EXPECT_GT(longest, kLongestByReference);
}

} // namespace
} // namespace quillon::sample_proofs
