// Tables that the program makes, as the program verifies them: the two share no code but the rules of chess.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;

TEST(VerifyGenerated, TablesOfFourMenAreRight) {
    const CTemporaryFolder folder;
    const std::string home = folder.Path().string();
    const std::vector<std::string> types{"Pp", "PP", "Qr", "BN", "Rr"};
    std::vector<std::string> generate{"generate", "--with-subtypes", "--precalc", home, "--work-dir", home};
    generate.insert(generate.end(), types.begin(), types.end());
    const TProgramResult made = RunQuillon(generate);
    ASSERT_EQ(made.m_nStatus, 0) << made.m_err;
    std::vector<std::string> verify{"verify", "--json", "--precalc", home, "--work-dir", home};
    verify.insert(verify.end(), types.begin(), types.end());
    const TProgramResult verified = RunQuillon(verify);
    EXPECT_EQ(verified.m_nStatus, 0) << verified.m_err;
    ASSERT_EQ(verified.OutLines().size(), types.size());
    for (std::size_t i = 0; i < types.size(); ++i) {
        const auto object = nlohmann::json::parse(verified.OutLines()[i]);
        EXPECT_EQ(object["type"], types[i]);
        EXPECT_EQ(object["result"], "ok") << types[i] << ": " << object["faults"] << " faults";
    }
}

} // namespace
} // namespace quillon
