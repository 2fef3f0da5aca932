// Every answer of the sample library, the long ones too, proved twice.

#include <gtest/gtest.h>

#include "library/sample_proofs.h"

namespace quillon::sample_proofs {
namespace {

TEST(SampleLibrarySlow, SolverAndReferenceProveEveryAnswer) {
    constexpr std::uint64_t kEnoughNodes = 200'000'000;
    for (const TSample& sample : Samples()) {
        EXPECT_EQ(KeysBySolver(sample), sample.m_keys) << "problem " << sample.m_nId << " " << sample.m_fen;
        const auto keys = KeysByReference(sample, kEnoughNodes);
        ASSERT_TRUE(keys.has_value()) << "problem " << sample.m_nId << " is out of the reference's reach";
        EXPECT_EQ(*keys, sample.m_keys) << "problem " << sample.m_nId << " " << sample.m_fen;
    }
}

} // namespace
} // namespace quillon::sample_proofs
