// The memory of the register is what the command line grants it, whatever the search would like to store.

#include <gtest/gtest.h>
#include <iostream>
#include <nlohmann/json.hpp>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TJson = nlohmann::ordered_json;

constexpr std::int64_t kMebibyte = 1 << 20;

// Nothing settles it in the time given, and few men on an open board reach a new position with almost every move.
constexpr const char* kHopelessFen = "8/5p2/4k1p1/3n4/8/2BNKN2/PP6/8";

struct TMeasured {
    std::int64_t m_nPeakBytes = 0;
    TJson m_register;
};

TMeasured Measure(int nMemoryMB, const char* seconds) {
    const TProgramResult run =
        RunQuillon({"solve", "--fen", kHopelessFen, "--moves", "20", "--all", "--time-limit", seconds,
                    "--short-mate-depth", "0", "--json", "--memory", std::to_string(nMemoryMB)});
    EXPECT_EQ(run.m_nStatus, 1) << run.m_err;
    const TMeasured measured{run.m_nPeakBytes, TJson::parse(run.m_out)["register"]};
    std::cout << "--memory " << nMemoryMB << ": peak " << measured.m_nPeakBytes / kMebibyte << " MiB, register "
              << measured.m_register << "\n";
    return measured;
}

TEST(MemoryBudget, BoundsWhatTheProgramHolds) {
    const TMeasured none = Measure(0, "2");
    EXPECT_EQ(none.m_register["elements"], 0);
    EXPECT_EQ(none.m_register["lookups"], 0);

    const TMeasured small = Measure(64, "25");
    EXPECT_GT(small.m_register["evictions"], 0) << "the register has not been filled";
    EXPECT_LE(small.m_register["megabytes"], 64);
    EXPECT_LE(small.m_nPeakBytes - none.m_nPeakBytes, 64 * kMebibyte);

    const TMeasured large = Measure(1024, "25");
    EXPECT_LE(large.m_register["megabytes"], 1024);
    EXPECT_LE(large.m_nPeakBytes - none.m_nPeakBytes, 1024 * kMebibyte);
    EXPECT_GT(large.m_register["elements"], small.m_register["elements"]);
    EXPECT_GT(large.m_nPeakBytes, small.m_nPeakBytes) << "the greater budget has been of no use";
}

} // namespace
} // namespace quillon
