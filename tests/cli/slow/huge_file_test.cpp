// Libraries far larger than people have: they are read in time and memory that grow with their size and no faster.

#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <string>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;

constexpr std::size_t kMegabyte = 1'000'000;

struct TMeasuredRun {
    TProgramResult m_result;
    double m_seconds = 0;
};

TMeasuredRun MeasureRun(const std::vector<std::string>& words) {
    const auto start = std::chrono::steady_clock::now();
    TMeasuredRun run{RunQuillon(words), 0};
    run.m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::cout << words[0] << ": " << run.m_seconds << " s, peak "
              << static_cast<std::size_t>(run.m_result.m_nPeakBytes) / kMegabyte << " MB\n";
    return run;
}

std::string LargeProblem(int id) {
    return "\n" + std::to_string(id) + " #3 AllSolutions\n//#TAGS\n//#ideal mate\n//#miniature\n//!VARIANTS\n" +
           "//!{Main variant} Kb3-c2 a2-a1Q[the only defence; others are shorter] Qh3-a3 Qa1-a2 Qa3:a2\n" +
           "//!{Try} Qh3-h1 Kb1-c1[and the king gets out]\n//!ENDVARIANTS\n{\n\tDescription: Somebody, some journal " +
           std::to_string(1900 + id % 120) + ", third honourable mention in a tourney of that year\n" +
           "\tFEN: 8/8/8/8/8/1K5Q/1p6/kn6\n\tAnswer:  Kb3-c2\n}\n";
}

TEST(HugeFiles, AHundredMegabytesAreReadInBoundedTimeAndMemory) {
    const CTemporaryFolder folder;
    const std::string path = folder.Path() / "a.cp";
    int id = 0;
    std::size_t nBytes = 0;
    {
        std::ofstream file(path, std::ios::binary);
        file << "UTF-8\n";
        for (std::string problem; nBytes < 100 * kMegabyte; nBytes += problem.size()) {
            problem = LargeProblem(++id);
            file << problem;
        }
    }
    const TMeasuredRun list = MeasureRun({"list", path});
    EXPECT_EQ(list.m_result.m_nStatus, 0);
    EXPECT_EQ(list.m_result.OutLines().size(), static_cast<std::size_t>(id));
    EXPECT_LT(list.m_seconds, 120);
    EXPECT_LT(static_cast<std::size_t>(list.m_result.m_nPeakBytes), 12 * nBytes);

    // Of the others nothing is kept.
    const TMeasuredRun solve = MeasureRun({"solve", path, "--id", std::to_string(id), "--quiet"});
    EXPECT_EQ(solve.m_result.m_nStatus, 0);
    EXPECT_LT(solve.m_seconds, 120);
    EXPECT_LT(static_cast<std::size_t>(solve.m_result.m_nPeakBytes), 4 * nBytes);

    // Every problem stands there often: the findings are cut, and so is the looking.
    const TMeasuredRun check = MeasureRun({"check", path});
    EXPECT_EQ(check.m_result.m_nStatus, 1);
    EXPECT_LT(check.m_seconds, 120);
    EXPECT_LT(check.m_result.OutLines().size(), 21'000u);
}

TEST(HugeFiles, ALineOfTenMegabytesIsReadInBoundedTimeAndMemory) {
    const CTemporaryFolder folder;
    for (const char* const line : {"Desc: ", "//!{v} Ke1-e2["}) {
        const bool bBody = line[0] == 'D';
        const std::string word(10 * kMegabyte, 'a'), body = "FEN: 8/8/8/4k3/8/8/8/3QK3\n}\n";
        folder.Write("a.cp", bBody ? "UTF-8\n1 #2\n{\n" + (line + word) + "\n" + body
                                   : "UTF-8\n1 #2\n//!VARIANTS\n" + (line + word) + "]\n{\n" + body);
        const TMeasuredRun check = MeasureRun({"list", folder.Path() / "a.cp"});
        EXPECT_EQ(check.m_result.m_nStatus, 0) << line;
        EXPECT_LT(check.m_seconds, 20) << line;
        EXPECT_LT(static_cast<std::size_t>(check.m_result.m_nPeakBytes), 200 * kMegabyte) << line;
    }
}

} // namespace
} // namespace quillon
